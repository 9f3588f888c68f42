#include "core/content_playing/ads_block.h"
#include "core/content_playing/ads_scheduler.h"
#include "core/content_playing/ads_scheduler_observer.h"
#include "core/content_playing/playable_block_builder.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/playable_period_builder.h"
#include "core/settings.h"
#include "core/utilities/clock.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_period_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/support/event_log.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

#include <stdexcept>

using Core::ContentPlaying::AdsBlock;
using Core::ContentPlaying::PlayableBlockBuilder;
using Core::ContentPlaying::PlayablePeriodBuilder;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Playlist;
using Core::DataTypes::Playback::Track;
using Kind = Tests::RecordingPeriodObserver::Kind;
using Tests::EventLog;
using Tests::TestPeriods;
using Ids = std::vector<std::int32_t>;

Q_DECLARE_METATYPE(ContentType)
Q_DECLARE_METATYPE(Ids)

namespace {

Track MakeTrack(int id, ContentType type, const char* fileName)
{
    return Tests::PlaybackTestTracks::Make(id, type, QString::fromUtf8(fileName));
}

Playlist MakePlaylist(int id, ContentType type, const Ids& trackIds, const std::string& name = "")
{
    Playlist playlist;
    playlist.id = id;
    playlist.contentType = type;
    playlist.trackIds = trackIds;
    playlist.name = name;
    playlist.image = "/img/" + name + ".png";
    return playlist;
}

PlaybackPeriod MakePeriod(const std::string& name, const std::string& start, const std::string& end,
                          int music = 0, int video = 0)
{
    PlaybackPeriod period;
    period.name = name;
    period.startTime = start;
    period.endTime = end;
    period.scheduleId = 7;
    period.contentVolume = 70;
    period.adsVolume = 40;
    period.playlistIds = {{ContentType::Music, music}, {ContentType::Video, video}, {ContentType::Photo, 0}};
    return period;
}

Core::DataTypes::Playback::Day MakeDay(const std::string& date, const std::string& dayOfWeek,
                                       const std::vector<PlaybackPeriod>& periods)
{
    Core::DataTypes::Playback::Day day;
    day.date = date;
    day.dayOfWeek = dayOfWeek;
    day.periods = periods;
    return day;
}

PlaybackConfiguration EmptyConfiguration()
{
    PlaybackConfiguration configuration;
    configuration.tracks = {{ContentType::Clip, {}},
                            {ContentType::Music, {}},
                            {ContentType::Video, {}},
                            {ContentType::Photo, {}}};
    return configuration;
}

Ids IdsOf(const std::vector<Track>& tracks)
{
    Ids ids;
    for (const Track& track : tracks) {
        ids.push_back(track.id);
    }
    return ids;
}

// An ad block whose file is not in the cache: when due it is only logged.
std::shared_ptr<AdsBlock> Ad(const std::string& name, const std::string& start, bool interrupts = true)
{
    return TestPeriods::Ad(name, start, {MakeTrack(1, ContentType::Clip, "нет_файла.mp3")}, interrupts);
}

class RecordingAdsObserver : public Core::ContentPlaying::AdsSchedulerObserver
{
public:
    void InterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) override
    {
        due.emplace_back(block->GetName(), true);
    }
    void NoninterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) override
    {
        due.emplace_back(block->GetName(), false);
    }

    std::vector<std::pair<std::string, bool>> due;
};

} // namespace

// Nothing here plays: the ads have no files and blocks touch libvlc only when started.
class PeriodBuildingTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
            Core::Settings::SetShuffle(type, false);
        }
    }

    void cleanup()
    {
        Core::Utilities::Clock::ResetForTesting();
        dataDirectory.reset();
    }

    void blocksFollowThePeriodsPlaylists_data()
    {
        QTest::addColumn<ContentType>("type");
        QTest::addColumn<int>("playlist");
        QTest::addColumn<Ids>("ids");
        // -1: no block at all.
        QTest::newRow("music: unknown tracks skipped, repeats kept, first of a twice-named playlist")
            << ContentType::Music << 10 << Ids{5, 3, 5};
        QTest::newRow("video") << ContentType::Video << 20 << Ids{21};
        QTest::newRow("photo") << ContentType::Photo << 30 << Ids{31};
        QTest::newRow("no playlist, and no tracks of its kind to look in")
            << ContentType::Photo << 0 << Ids{-1};
        QTest::newRow("a playlist of another kind") << ContentType::Music << 40 << Ids{-1};
        // Advertising reaches a period as ads blocks only.
        QTest::newRow("clips") << ContentType::Clip << 10 << Ids{-1};
    }

    void blocksFollowThePeriodsPlaylists()
    {
        QFETCH(ContentType, type);
        QFETCH(int, playlist);
        QFETCH(Ids, ids);
        PlaybackPeriod period = MakePeriod("День", "10:00", "18:00");
        period.playlistIds[type] = playlist;
        PlayableBlockBuilder::TracksByType tracks = EmptyConfiguration().tracks;
        tracks[ContentType::Music] = {MakeTrack(3, ContentType::Music, "c.mp3"),
                                      MakeTrack(5, ContentType::Music, "e.mp3"),
                                      MakeTrack(5, ContentType::Music, "e_copy.mp3")};
        tracks[ContentType::Video] = {MakeTrack(21, ContentType::Video, "v.mp4")};
        tracks[ContentType::Photo] = {MakeTrack(31, ContentType::Photo, "p.jpg")};
        if (playlist == 0) {
            tracks.erase(ContentType::Photo);
        }
        const auto block = PlayableBlockBuilder::CreateContentBlock(
            type, period, tracks,
            {MakePlaylist(10, ContentType::Music, {5, 3, 7, 5}), MakePlaylist(20, ContentType::Video, {21}),
             MakePlaylist(30, ContentType::Photo, {31}), MakePlaylist(40, ContentType::Video, {21}),
             MakePlaylist(10, ContentType::Music, {3})});
        QCOMPARE(block ? IdsOf(block->TrackList()) : Ids{-1}, ids);
        QVERIFY(!block || block->GetContentType() == type);
        if (block && type == ContentType::Music) {
            QCOMPARE(block->TrackList().front().path, tracks.at(ContentType::Music)[1].path);
            QCOMPARE(block->GetVolume(), 70);
        }
    }

    void shuffleFollowsTheSettingOfEachKind()
    {
        PlayableBlockBuilder::TracksByType tracks = EmptyConfiguration().tracks;
        Ids ordered;
        for (int id = 1; id <= 20; ++id) {
            ordered.push_back(id);
            tracks[ContentType::Music].push_back(MakeTrack(id, ContentType::Music, "m.mp3"));
            tracks[ContentType::Video].push_back(MakeTrack(id, ContentType::Video, "v.mp4"));
        }
        const PlayableBlockBuilder::Playlists playlists = {MakePlaylist(1, ContentType::Music, ordered),
                                                           MakePlaylist(2, ContentType::Video, ordered)};
        const auto idsOf = [&](ContentType type) {
            return IdsOf(PlayableBlockBuilder::CreateContentBlock(type, MakePeriod("", "", "", 1, 2), tracks,
                                                                  playlists)
                             ->TrackList());
        };
        Core::Settings::SetShuffle(ContentType::Music, true);
        // With twenty tracks a shuffle that keeps the playlist's order never happens.
        Ids shuffled = idsOf(ContentType::Music);
        QVERIFY(shuffled != ordered);
        std::sort(shuffled.begin(), shuffled.end());
        QCOMPARE(shuffled, ordered);
        QCOMPARE(idsOf(ContentType::Video), ordered);
    }

    // One block per date, earliest first, only the clips there are, audio before video.
    void adsBlocksPerDateAudioFirst()
    {
        Core::DataTypes::Playback::AdBlock morning;
        morning.name = "Утро";
        morning.interruptContent = true;
        morning.startTime = "09:30";
        morning.tracks = {{"21.11.2026", 1}, {"20.11.2026", 2}, {"20.11.2026", 9}, {"20.11.2026", 3}};
        Core::DataTypes::Playback::AdBlock evening;
        evening.name = "Вечер";
        evening.startTime = "19:00";
        evening.tracks = {{"20.11.2026", 4}, {"20.11.2026", 1}};
        QStringList built;
        for (const auto& block : PlayableBlockBuilder::CreateAdsBlock(
                 {morning, evening},
                 {MakeTrack(1, ContentType::Clip, "1.mp4"), MakeTrack(2, ContentType::Clip, "2.mp4"),
                  MakeTrack(3, ContentType::Clip, "3.mp3"), MakeTrack(4, ContentType::Clip, "4.mp3")})) {
            built << QString::fromStdString(block->GetName() + " " + block->GetDate() + " " +
                                            block->GetStartTimeStr() +
                                            (block->InterruptsContent() ? " ! " : " "));
            for (const std::int32_t id : IdsOf(block->TrackList())) {
                built.last() += QString::number(id);
            }
        }
        QCOMPARE(built, (QStringList{"Утро 20.11.2026 09:30 ! 32", "Утро 21.11.2026 09:30 ! 1",
                                     "Вечер 20.11.2026 19:00 41"}));
    }

    // The player logs a failed build instead of playing half a schedule.
    void aPlaylistOfAKindThePeriodLacksFailsTheBuild()
    {
        PlaybackConfiguration configuration = EmptyConfiguration();
        configuration.playlists = {MakePlaylist(5, ContentType::Clip, {})};
        configuration.days = {MakeDay("20.11.2026", "Пятница", {MakePeriod("Утро", "09:00", "12:00")})};
        QVERIFY_EXCEPTION_THROWN(PlayablePeriodBuilder::BuildPlayablePeriods(configuration),
                                 std::out_of_range);
    }

    // Each period decides by its own date and times whether it is current, so no sorting.
    void theChainIsTheScheduleAsDelivered()
    {
        QVERIFY(PlayablePeriodBuilder::BuildPlayablePeriods(EmptyConfiguration()).empty());
        PlaybackConfiguration configuration = EmptyConfiguration();
        configuration.tracks[ContentType::Music] = {MakeTrack(3, ContentType::Music, "c.mp3")};
        configuration.playlists = {MakePlaylist(10, ContentType::Music, {3}, "Утро"),
                                   MakePlaylist(10, ContentType::Music, {}, "Копия")};
        configuration.days = {
            MakeDay("20.11.2026", "Пятница",
                    {MakePeriod("После обеда", "12:00", "18:00", 10), MakePeriod("Утро", "09:00", "12:00")}),
            MakeDay("19.11.2026", "Четверг", {MakePeriod("Весь день", "00:00", "00:00", 0, 20)})};

        const auto periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration);
        QCOMPARE(periods.size(), std::size_t(3));
        QCOMPARE(periods[0]->GetNextPeriod(), periods[1]);
        QCOMPARE(periods[1]->GetNextPeriod(), periods[2]);
        QVERIFY(!periods[2]->GetNextPeriod());
        auto first = periods[0]->GetInfo();
        QCOMPARE(periods[0]->ToString(), std::string("После обеда Пятница 20.11.2026 12:00-18:00"));
        QCOMPARE(first.scheduleId, 7);
        QCOMPARE(first.contentVolume, 70);
        QCOMPARE(first.adsVolume, 40);
        QCOMPARE(first.GetPlaylistName(ContentType::Music), std::string("Копия"));
        QCOMPARE(first.GetPlaylistImage(ContentType::Music), std::string("/img/Копия.png"));
        QCOMPARE(IdsOf(periods[0]->GetTracks(ContentType::Music)), Ids{3});
        QCOMPARE(periods[1]->GetInfo().GetPlaylistName(ContentType::Music), std::string());
        QVERIFY(periods[1]->GetAllTracksList().empty());
        // A playlist the configuration lacks leaves the period without that block.
        QCOMPARE(periods[2]->GetInfo().date, std::string("19.11.2026"));
        QCOMPARE(periods[2]->GetInfo().GetPlaylistIdentifier(ContentType::Video), 0);
        QVERIFY(!periods[2]->HasBlock(ContentType::Video));
    }

    // Start ads whose files are missing leave the content to start, not wait.
    void periodsKeepTheAdsOfTheirDate()
    {
        PlaybackConfiguration configuration = EmptyConfiguration();
        configuration.tracks[ContentType::Clip] = {MakeTrack(1, ContentType::Clip, "noon.mp3")};
        Core::DataTypes::Playback::AdBlock noon;
        noon.name = "Полдень";
        noon.startTime = "12:00";
        noon.tracks = {{"20.11.2026", 1}};
        configuration.adBlocks = {noon};
        configuration.days = {
            MakeDay("20.11.2026", "Пятница",
                    {MakePeriod("Утро", "10:00", "12:00"), MakePeriod("День", "12:00", "14:00")}),
            MakeDay("21.11.2026", "Суббота", {MakePeriod("День", "12:00", "14:00")})};
        const auto periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration);
        QCOMPARE(periods.size(), std::size_t(3));
        periods[1]->StartFromPreviousPeriod(*periods[0]);
        periods[2]->StartFromPreviousPeriod(*periods[1]);
        QVERIFY(!periods[1]->IsPlayingAdBlock());
        periods.front()->FindAndStopCurrent();
        const QStringList log = EventLog::Entries();
        QVERIFY(log.contains(
            "У периода День Пятница 20.11.2026 12:00-14:00 есть реклама, совпадающая с началом периода"));
        QVERIFY(log.contains(
            "\tУ рекламного блока начала периода нет скачанных файлов - запуск воспроизведения контента"));
        QVERIFY(log.contains(
            "У периода День Суббота 21.11.2026 12:00-14:00 нет рекламы, совпадающей с началом периода"));
    }

    void isCurrent_data()
    {
        QTest::addColumn<QTime>("now");
        QTest::addColumn<QString>("end");
        QTest::addColumn<QString>("date");
        QTest::addColumn<bool>("current");
        const QString today = QString::fromStdString(TestPeriods::Today());
        QTest::newRow("the start counts") << QTime(11, 0) << "12:00" << today << true;
        QTest::newRow("the last second") << QTime(11, 59, 59) << "12:00" << today << true;
        QTest::newRow("the end does not") << QTime(12, 0) << "12:00" << today << false;
        QTest::newRow("before the start") << QTime(10, 59, 59) << "12:00" << today << false;
        QTest::newRow("00:00 ends the day") << QTime(23, 59, 59) << "00:00" << today << true;
        QTest::newRow("another day") << QTime(11, 30) << "12:00"
                                     << "22.11.2026" << false;
    }

    void isCurrent()
    {
        QFETCH(QTime, now);
        QFETCH(QString, end);
        QFETCH(QString, date);
        QFETCH(bool, current);
        TestPeriods::SetNow(now);
        QCOMPARE(TestPeriods::Make("P", "11:00", end.toStdString(), date.toStdString())->IsCurrent(),
                 current);
    }

    // Started in its middle, a period leaves the ads of its start alone.
    void theChainFindsItsCurrentPeriod()
    {
        Tests::RecordingPeriodObserver observer;
        const auto a = TestPeriods::Make("A", "11:00", "12:00");
        const auto b = TestPeriods::Make("B", "12:00", "13:00");
        const auto c = TestPeriods::Make("C", "13:00", "14:00");
        TestPeriods::Chain({a, b, c});
        a->SetObserverForSequence(&observer);
        b->TryToAddAdvertisingBlocks({Ad("Начало B", "12:00"), Ad("Внутри B", "12:40")});

        TestPeriods::SetNow(QTime(12, 30));
        a->FindAndStartCurrent();
        QCOMPARE(observer.events.size(), std::size_t{1});
        QCOMPARE(observer.events[0].kind, Kind::PeriodStarted);
        QCOMPARE(observer.events[0].period, b.get());
        QVERIFY(!a->IsStarted() && b->IsStarted() && !c->IsStarted());
        QVERIFY(!b->IsPlayingAdBlock());
        QCOMPARE(EventLog::Entries(), QStringList({"Период " + TestPeriods::Text("B", "12:00", "13:00") +
                                                       " закончится через 30:00",
                                                   "\tЗапуск таймера на окончание периода 30:00"}));
        a->FindAndStopCurrent();
    }

    // One reading of the clock for the whole list, so ads due together fire in order.
    void theSchedulerTimesOnlyFutureAds()
    {
        RecordingAdsObserver observer;
        RecordingAdsObserver cancelledObserver;
        Core::ContentPlaying::AdsScheduler scheduler(&observer);
        Core::ContentPlaying::AdsScheduler cancelled(&cancelledObserver);
        TestPeriods::SetNow(QTime(11, 30));
        scheduler.ScheduleAds({Ad("прошедший", "11:29"), Ad("сейчас", "11:30"), nullptr});

        TestPeriods::SetNow(QTime(11, 30, 59));
        QElapsedTimer elapsed;
        elapsed.start();
        scheduler.ScheduleAds({Ad("вежливый", "11:31", false), Ad("прерывающий", "11:31")});
        cancelled.ScheduleAds({Ad("отменённый", "11:31")});
        cancelled.Cancel();
        QTRY_COMPARE_WITH_TIMEOUT(observer.due.size(), std::size_t{2}, Tests::Timeouts::Process);
        QVERIFY2(elapsed.elapsed() >= 900, qPrintable(QString::number(elapsed.elapsed())));
        QCOMPARE(observer.due,
                 (std::vector<std::pair<std::string, bool>>{{"вежливый", false}, {"прерывающий", true}}));
        QVERIFY(!QTest::qWaitFor([&]() { return observer.due.size() > 2 || !cancelledObserver.due.empty(); },
                                 Tests::Timeouts::Silence));
    }

    // An ad without a file, or without spots at all, would never end: the content plays on.
    void adsWithoutSpotsArePassedOver()
    {
        TestPeriods::SetNow(QTime(11, 30));
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        period->StartAsCurrent();
        period->InterruptAdBlockStarted(TestPeriods::Ad("Пустой", "11:30", {}, true));
        period->NoninterruptAdBlockStarted(Ad("Нескачанный", "11:30", false));
        QVERIFY(!period->IsPlayingAdBlock());
        QCOMPARE(
            EventLog::Entries().mid(2),
            QStringList({"Настало время реклманого блока Пустой", "Блок Пустой должен прерывать контент",
                         "У блока Пустой нет скачанных файлов", "Настало время реклманого блока Нескачанный",
                         "Блок Нескачанный НЕ должен прерывать контент",
                         "У блока Нескачанный нет скачанных файлов"}));
        period->FindAndStopCurrent();
    }

    // The periods left running prove the wait was long enough for timers to fire.
    void aPeriodsTimersEndWithIt()
    {
        Tests::RecordingPeriodObserver observer;
        TestPeriods::SetNow(QTime(11, 58, 59));
        const auto makeStarted = [&observer](const std::string& name, const std::string& end, bool politeAd) {
            const auto period = TestPeriods::Make(name, "10:00", end);
            period->SetObserverForSequence(&observer);
            period->TryToAddAdvertisingBlocks({Ad("Реклама " + name, "11:59", !politeAd)});
            period->StartAsCurrent();
            return period;
        };
        const auto stoppedWithAd = makeStarted("X", "12:00", false);
        const auto stoppedAtItsEnd = makeStarted("Y", "11:59", false);
        auto dropped = makeStarted("W", "12:00", false);
        const auto ending = makeStarted("Z", "11:59", false);
        const auto withAd = makeStarted("V", "12:00", true);
        stoppedWithAd->FindAndStopCurrent();
        stoppedAtItsEnd->FindAndStopCurrent();
        dropped.reset();

        QTRY_COMPARE_WITH_TIMEOUT(observer.Count(Kind::LastPeriodFinished), 1, Tests::Timeouts::Process);
        QTRY_COMPARE_WITH_TIMEOUT(EventLog::Count("Настало время реклманого блока Реклама V"), 1,
                                  Tests::Timeouts::Process);
        const QString log = EventLog::Text();
        QVERIFY(!QTest::qWaitFor([&]() { return EventLog::Text() != log; }, Tests::Timeouts::Silence));
        QCOMPARE(observer.events.back().period, ending.get());
        QCOMPARE(EventLog::Count("У периода " + TestPeriods::Text("Z", "10:00", "11:59") +
                                 " нет следующего периода"),
                 1);
        QCOMPARE(log.count(QStringLiteral("Сработал таймер")), 1);
        QCOMPARE(log.count(QStringLiteral("Настало время")), 1);
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

QTEST_MAIN(PeriodBuildingTest)
#include "tst_period_building.moc"

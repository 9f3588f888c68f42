#include "core/content_playing/ads_block.h"
#include "core/content_playing/music_block.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/player.h"
#include "core/utilities/clock.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/recording_period_observer.h"
#include "tests/core/content_playing/recording_player_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/event_log.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

using Core::ContentPlaying::PlayablePeriod;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Track;
using Kind = Tests::RecordingPeriodObserver::Kind;
using Tests::EventLog;
using Tests::TestPeriods;
using Tests::ToneTimeline;
using Ids = std::vector<std::int32_t>;

namespace {

constexpr double ToneA = Tests::TestMedia::MusicAFrequency;
constexpr double ToneB = Tests::TestMedia::MusicBFrequency;
constexpr double ToneC = Tests::TestMedia::MusicCFrequency;
constexpr double ToneAd = Tests::TestMedia::AdFrequency;
// Seconds listened to after each boundary.
constexpr double After = 1.5;

Track Cached(int id, ContentType type, const char* media)
{
    return Tests::PlaybackTestTracks::Cached(id, type, QString::fromUtf8(media));
}

Track Clip(int id, const char* media)
{
    return Cached(id, ContentType::Clip, media);
}

void SetMusic(PlayablePeriod& period, int playlist, const std::vector<Track>& tracks)
{
    auto info = period.GetInfo();
    info.SetPlaylistIdentifier(ContentType::Music, playlist);
    period.SetInfo(info);
    period.SetBlock(ContentType::Music, std::make_shared<Core::ContentPlaying::MusicBlock>(tracks, 100));
}

PlaybackPeriod Period(const std::string& name, const std::string& start, const std::string& end, int music,
                      int volume, int video, int photo)
{
    PlaybackPeriod period;
    period.name = name;
    period.startTime = start;
    period.endTime = end;
    period.contentVolume = volume;
    period.adsVolume = 100;
    period.playlistIds = {
        {ContentType::Music, music}, {ContentType::Video, video}, {ContentType::Photo, photo}};
    return period;
}

// 09:00-13:00: the first two periods share the music at different volumes, each
// with its own video; the third has other music and photos; the last a spot first.
Core::DataTypes::Playback::PlaybackConfiguration FourPeriodDay()
{
    std::vector<Track> all = {Cached(1, ContentType::Music, "music_a.mp3"),
                              Cached(2, ContentType::Music, "music_b.mp3"),
                              Cached(3, ContentType::Music, "music_c.mp3"),
                              Cached(31, ContentType::Photo, "photo_landscape.jpg"),
                              Cached(41, ContentType::Video, "video_short.mp4"),
                              Cached(42, ContentType::Video, "video_short.mp4"),
                              Clip(50, "ad_short.mp3")};
    Core::DataTypes::Playback::PlaybackConfiguration configuration;
    configuration.tracks[ContentType::Clip] = {all.back()};
    for (std::size_t i = 0; i + 1 < all.size(); ++i) {
        configuration.tracks[all[i].contentType].push_back(all[i]);
        Core::DataTypes::Playback::Playlist playlist;
        playlist.id = static_cast<int>(i) + 1;
        playlist.contentType = all[i].contentType;
        playlist.name = "Список " + std::to_string(playlist.id);
        playlist.trackIds = {all[i].id};
        configuration.playlists.push_back(playlist);
    }
    Core::DataTypes::Playback::Day day;
    day.dayOfWeek = "Суббота";
    day.date = TestPeriods::Today();
    day.periods = {Period("Утро", "09:00", "10:00", 1, 100, 5, 0),
                   Period("Позднее утро", "10:00", "11:00", 1, 70, 6, 0),
                   Period("Перед обедом", "11:00", "12:00", 2, 100, 0, 4),
                   Period("Обед", "12:00", "13:00", 3, 100, 0, 0)};
    configuration.days = {day};
    Core::DataTypes::Playback::AdBlock noon;
    noon.name = "Полдень";
    noon.interruptContent = true;
    noon.startTime = "12:00";
    noon.tracks = {{day.date, 50}};
    configuration.adBlocks = {noon};
    return configuration;
}

} // namespace

// Periods and the player on real sound, "now" moved to just before an ad or a
// boundary, which then passes in real time.
class PeriodPlaybackTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Tests::RecordingPeriodObserver>();
    }

    void cleanup()
    {
        player.reset();
        // Each period that ran may still hold a playing block or a timer.
        for (const auto& period : periods) {
            if (period->IsStarted()) {
                period->FindAndStopCurrent();
            }
        }
        periods.clear();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Core::Utilities::Clock::ResetForTesting();
        observer.reset();
        dataDirectory.reset();
    }

    // Each boundary is reached by switching off, moving the clock and switching on.
    void aDayPlaysPeriodByPeriod()
    {
        TestPeriods::SetNow(QTime(8, 59));
        player = std::make_unique<Core::ContentPlaying::Player>(FourPeriodDay());
        player->AddObserver(&day);

        // Before the first period the player stays on with nothing to play.
        player->Start();
        QCOMPARE(day.Events(), QStringList{"no current period"});
        QVERIFY(player->CurrentState().playingNow);
        QCOMPARE(player->CurrentPeriodName(), std::string());
        QVERIFY(player->GetCurrentTracks(ContentType::Music).empty());
        QCOMPARE(EventLog::Entries().last(), "Период " + TestPeriods::Text("Обед", "12:00", "13:00") +
                                                 " не является текущим и не имеет следующего");
        player->GoToNextTrack(ContentType::Music);
        QVERIFY(!QTest::qWaitFor([this]() { return day.calls.size() > 1; }, Tests::Timeouts::Silence));

        // 10:00: the same music goes on without a gap, quieter; the new video is silent.
        StartAt(QTime(9, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneA), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Позднее утро")));
        QTRY_VERIFY_WITH_TIMEOUT(day.IndexOf(QStringLiteral("track video 42")) >= 0,
                                 Tests::Timeouts::Playback);
        QCOMPARE(day.Events().filter(QStringLiteral("track music")), QStringList{"track music 1"});
        QVERIFY(day.IndexOf(QStringLiteral("period Позднее утро")) <
                day.IndexOf(QStringLiteral("track video 42")));
        QCOMPARE(EventLog::Count(QStringLiteral("Блок music передан в следующий период")), 1);
        // The music goes on through the boundary. A lone silent window is let pass: under
        // load the null sink may drop one as the new video's stream joins it, while music
        // that stopped stays silent; a restart is too short to hear and shows above instead.
        int silentInARow = 0;
        for (double t = boundary - 0.5; t < boundary + 0.5; t += ToneTimeline::Window) {
            const double level = ToneTimeline::Level(listener.A(), ToneA, t, t + ToneTimeline::Window);
            silentInARow = level > ToneTimeline::NotHeard ? 0 : silentInARow + 1;
            QVERIFY2(silentInARow < 2, qPrintable(QStringLiteral("%1 s: %2").arg(t - boundary).arg(level)));
        }
        const double louder = ToneTimeline::Level(listener.A(), ToneA, boundary - 1.3, boundary - 0.3);
        const double quieter = ToneTimeline::Level(listener.A(), ToneA, boundary + 0.4, boundary + 1.4);
        QVERIFY2(quieter < louder * 0.5, qPrintable(QStringLiteral("%1 -> %2").arg(louder).arg(quieter)));
        // A player is muted only once libvlc reports it playing: skip the video's start.
        const double video = ToneTimeline::Level(listener.A(), Tests::TestMedia::VideoFrequency,
                                                 boundary + 0.9, boundary + After);
        const double music = ToneTimeline::Level(listener.A(), ToneA, boundary + 0.9, boundary + After);
        QVERIFY2(video < music / 4, qPrintable(QStringLiteral("%1 beside %2").arg(video).arg(music)));

        // 11:00: another playlist, with photos beside it, takes over.
        StartAt(QTime(10, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneA), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Перед обедом")));
        QTRY_VERIFY_WITH_TIMEOUT(day.IndexOf(QStringLiteral("track photo 31")) >= 0,
                                 Tests::Timeouts::Process);
        QVERIFY(EventLog::Entries().mid(logStart).contains(
            QStringLiteral("Блок music НЕ передан в следующий период")));
        QCOMPARE(player->CurrentState().contentPlayingStates.at(ContentType::Photo).playlistName,
                 std::string("Список 4"));
        QVERIFY(ToneTimeline::Level(listener.A(), ToneA, boundary + 0.5, boundary + After) <
                ToneTimeline::NotHeard);
        // Under load libvlc may drop a file's first moments: count from when it is heard.
        const double b = ToneTimeline::FirstHeard(listener.A(), ToneB, ToneTimeline::Heard, soundStart);
        QVERIFY2(b > boundary - 0.5 && b < boundary + After, qPrintable(QString::number(b - boundary)));

        // 12:00: the period's spot first, then its music.
        StartAt(QTime(11, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneB), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Обед")));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneC), Tests::Timeouts::Playback);
        QVERIFY(day.IndexOf(QStringLiteral("track clip 50")) < day.IndexOf(QStringLiteral("track music 3")));
        QVERIFY(ToneTimeline::Level(listener.A(), ToneB, boundary + 0.5, boundary + After) <
                ToneTimeline::NotHeard);
        // The music follows the spot's heard end, not its nominal length (see above).
        const double adHeard =
            ToneTimeline::FirstHeard(listener.A(), ToneAd, ToneTimeline::Heard, soundStart);
        const double adEnded = ToneTimeline::LastHeard(listener.A(), ToneAd, ToneTimeline::Heard);
        const double cHeard = ToneTimeline::FirstHeard(listener.A(), ToneC, ToneTimeline::Heard, soundStart);
        const QString timeline = QStringLiteral("spot %1 s to %2 s, music from %3 s")
                                     .arg(adHeard - boundary)
                                     .arg(adEnded - boundary)
                                     .arg(cHeard - boundary);
        QVERIFY2(adHeard > boundary - 0.5 && adHeard < boundary + 1.0, qPrintable(timeline));
        QVERIFY2(cHeard >= adEnded - ToneTimeline::Window && cHeard < adEnded + 1.0, qPrintable(timeline));

        // 13:00: silence, the player stays on; started mid-period, it skipped its spot.
        StartAt(QTime(12, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneC), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("last period finished")));
        QVERIFY(day.IndexOf(QStringLiteral("track clip 50")) < 0);
        QVERIFY(player->CurrentState().playingNow);
        const double silence = Tests::PcmAnalysis::Rms(listener.A(), boundary + 0.5, boundary + After);
        QVERIFY2(silence < ToneTimeline::NotHeard, qPrintable(QString::number(silence)));
    }

    // A second ad due meanwhile queues behind the first; the track buttons do nothing.
    void anInterruptingAdCutsInAndTheMusicResumes()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        SetMusic(
            *period, 3,
            {Cached(1, ContentType::Music, "music_a.mp3"), Cached(2, ContentType::Music, "short_b.mp3")});
        period->TryToAddAdvertisingBlocks(
            {TestPeriods::Ad("Первый", "11:30", {Clip(11, "ad_short.mp3")}, true),
             TestPeriods::Ad("Второй", "11:30", {Clip(12, "short_c.mp3")}, true)});
        Start({period}, QTime(11, 29, 58));
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), Ids{1},
                                  Tests::Timeouts::Playback);
        QTRY_VERIFY_WITH_TIMEOUT(period->IsPlayingAdBlock(), Tests::Timeouts::Process);
        period->GoToNextTrack(ContentType::Music);
        period->PlayTrack(ContentType::Music, 2);
        QTRY_COMPARE_WITH_TIMEOUT(observer->Count(Kind::AdBlockFinished), 1, Tests::Timeouts::Playback);
        QVERIFY(!period->IsPlayingAdBlock());
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (Ids{1, 1}),
                                  Tests::Timeouts::Process);
        QCOMPARE(observer->StartedIds(ContentType::Clip), (Ids{11, 12}));
        const auto resumed =
            std::find_if(observer->events.rbegin(), observer->events.rend(), [](const auto& event) {
                return event.kind == Kind::TrackStarted && event.type == ContentType::Music;
            });
        QVERIFY(resumed->resumed);
        QVERIFY(observer->IndexOf(Kind::AdBlockFinished) < observer->events.rend() - resumed - 1);
        QCOMPARE(EventLog::Count(
                     QStringLiteral("Треки рекламного блока Второй добавлены к рекламному блоку Первый")),
                 1);
    }

    // Held polite blocks play as one after the track, then the next track.
    void politeAdsWaitForTheEndOfTheTrack()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        SetMusic(
            *period, 3,
            {Cached(1, ContentType::Music, "medium_a.mp3"), Cached(2, ContentType::Music, "short_b.mp3")});
        period->TryToAddAdvertisingBlocks(
            {TestPeriods::Ad("Первый", "11:30", {Clip(11, "short_a.mp3"), Clip(12, "short_b.mp3")}, false),
             TestPeriods::Ad("Второй", "11:30", {Clip(13, "short_c.mp3")}, false)});
        Start({period}, QTime(11, 29, 59));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (Ids{1, 2}),
                                  Tests::Timeouts::Playback);
        QCOMPARE(observer->StartedIds(ContentType::Clip), (Ids{11, 12, 13}));
        QVERIFY(observer->IndexOf(Kind::ShouldPlayNextTrack) < observer->IndexOf(Kind::TrackStarted, 11));
        QVERIFY(observer->IndexOf(Kind::TrackStarted, 13) < observer->IndexOf(Kind::AdBlockFinished));
        QVERIFY(observer->IndexOf(Kind::AdBlockFinished) < observer->IndexOf(Kind::TrackStarted, 2));
        QCOMPARE(
            EventLog::Count(QStringLiteral("В очереди есть 'вежливая' реклама, начинаем воспроизведение")),
            1);
    }

    // The next period's start ads queue behind it; its content waits for both.
    void anAdBlockPlaysAcrossTheBoundary()
    {
        const auto a = TestPeriods::Make("A", "11:00", "12:00");
        const auto b = TestPeriods::Make("B", "12:00", "13:00");
        SetMusic(*a, 1, {Cached(1, ContentType::Music, "music_a.mp3")});
        SetMusic(*b, 2, {Cached(2, ContentType::Music, "music_b.mp3")});
        const std::vector<std::shared_ptr<Core::ContentPlaying::AdsBlock>> ads = {
            TestPeriods::Ad("Начало A", "11:00", {Clip(10, "short_c.mp3")}, true),
            TestPeriods::Ad("Начало B", "12:00", {Clip(12, "short_c.mp3")}, false),
            TestPeriods::Ad("Конец B", "13:00", {Clip(13, "short_c.mp3")}, true),
            TestPeriods::Ad("Завтра", "11:59", {Clip(14, "short_c.mp3")}, true, "22.11.2026")};
        a->TryToAddAdvertisingBlocks(ads);
        b->TryToAddAdvertisingBlocks(ads);
        Start({a, b}, QTime(11, 59, 58));
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), Ids{1},
                                  Tests::Timeouts::Playback);
        // As if its timer had fired: a spot of 3 s, two before the boundary.
        a->InterruptAdBlockStarted(TestPeriods::Ad("Реклама", "11:59", {Clip(11, "ad_short.mp3")}, true));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (Ids{1, 2}),
                                  Tests::Timeouts::Playback);
        QCOMPARE(observer->StartedIds(ContentType::Clip), (Ids{11, 12}));
        QCOMPARE(observer->Count(Kind::AdBlockFinished), 1);
        QCOMPARE(observer->events[static_cast<std::size_t>(observer->IndexOf(Kind::AdBlockFinished))].period,
                 b.get());
        QVERIFY(observer->IndexOf(Kind::TrackStarted, 12) < observer->IndexOf(Kind::AdBlockFinished));
        QVERIFY(observer->IndexOf(Kind::AdBlockFinished) < observer->IndexOf(Kind::TrackStarted, 2));
        QCOMPARE(EventLog::Count(QStringLiteral("\tЕсть воспроизводящийся рекламный блок в начале периода")),
                 1);
    }

    // With no track to wait for a polite ad starts at once; the last period's end stops it.
    void theLastPeriodStopsEverythingAtItsEnd()
    {
        const auto period = TestPeriods::Make("R", "11:00", "12:00");
        Start({period}, QTime(11, 59, 58));
        const auto ad = TestPeriods::Ad("Реклама", "11:59", {Clip(11, "ad_short.mp3")}, false);
        period->NoninterruptAdBlockStarted(ad);
        QVERIFY(period->IsPlayingAdBlock());

        QTRY_COMPARE_WITH_TIMEOUT(observer->Count(Kind::LastPeriodFinished), 1, Tests::Timeouts::Process);
        QVERIFY(!period->IsPlayingAdBlock());
        QCOMPARE(observer->StartedIds(ContentType::Clip), Ids{11});
        Tests::RecordingBlockObserver afterEnd;
        ad->SetObserver(&afterEnd);
        QVERIFY(!QTest::qWaitFor([&]() { return !afterEnd.progress.empty() || !afterEnd.starts.empty(); },
                                 Tests::Timeouts::Silence));
        QCOMPARE(observer->Count(Kind::AdBlockFinished), 0);
    }

private:
    void Start(const std::vector<std::shared_ptr<PlayablePeriod>>& chain, const QTime& now)
    {
        TestPeriods::Chain(chain);
        chain.front()->SetObserverForSequence(observer.get());
        periods.insert(periods.end(), chain.begin(), chain.end());
        TestPeriods::SetNow(now);
        chain.front()->FindAndStartCurrent();
    }

    // The player off, the clock to `time`, on again; checks start from here.
    void StartAt(const QTime& time)
    {
        player->Stop(true);
        day.calls.clear();
        logStart = static_cast<int>(EventLog::Entries().size());
        soundStart = listener.SecondsRecorded();
        TestPeriods::SetNow(time);
        player->Start();
    }

    bool HeardSinceStart(double frequency) const
    {
        return ToneTimeline::FirstHeard(listener.A(), frequency, ToneTimeline::Heard, soundStart) >= 0;
    }

    // Notes where the reported boundary falls in the recording and listens past it.
    bool PassBoundary(const QString& event)
    {
        if (!QTest::qWaitFor([&]() { return day.IndexOf(event) >= 0; }, Tests::Timeouts::Playback)) {
            qWarning().noquote() << "Not reported:" << event << "after" << day.Events().join(", ");
            return false;
        }
        boundary = listener.SecondsRecorded();
        return listener.WaitUntilRecorded(boundary + After, Tests::Timeouts::Playback);
    }

    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingPeriodObserver> observer;
    std::vector<std::shared_ptr<PlayablePeriod>> periods;
    Tests::RecordingPlayerObserver day;
    std::unique_ptr<Core::ContentPlaying::Player> player;
    int logStart = 0;
    double soundStart = 0.0;
    double boundary = 0.0;
};

QTEST_GUILESS_MAIN(PeriodPlaybackTest)
#include "tst_period_playback.moc"

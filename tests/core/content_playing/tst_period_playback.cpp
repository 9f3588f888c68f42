#include "core/content_playing/ads_block.h"
#include "core/content_playing/music_block.h"
#include "core/content_playing/photo_block.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/player.h"
#include "core/settings.h"
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

#include <QtTest>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

using Core::ContentPlaying::AdsBlock;
using Core::ContentPlaying::MusicBlock;
using Core::ContentPlaying::PhotoBlock;
using Core::ContentPlaying::PlayablePeriod;
using Core::ContentPlaying::Player;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::DataTypes::Playback::PlaybackPeriod;
using Core::DataTypes::Playback::Playlist;
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
constexpr double Heard = 0.01;
constexpr double NotHeard = 0.002;
// How long each boundary is listened to after it.
constexpr double After = 1.5;

Track Cached(int id, ContentType type, const char* media)
{
    return Tests::PlaybackTestTracks::Cached(id, type, QString::fromUtf8(media));
}

Track Clip(int id, const char* media)
{
    return Cached(id, ContentType::Clip, media);
}

std::shared_ptr<MusicBlock> Music(const std::vector<Track>& tracks)
{
    return std::make_shared<MusicBlock>(tracks, 100);
}

void SetMusic(PlayablePeriod& period, int playlist, const std::shared_ptr<MusicBlock>& block)
{
    auto info = period.GetInfo();
    info.SetPlaylistIdentifier(ContentType::Music, playlist);
    period.SetInfo(info);
    period.SetBlock(ContentType::Music, block);
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

// Four periods of the test day from 09:00 to 13:00: the first two on the same
// music at different volumes, each with a video playlist of its own; the third
// with another playlist and photos beside it; the last with a spot at its start.
PlaybackConfiguration FourPeriodDay()
{
    std::vector<Track> all = {Cached(1, ContentType::Music, "music_a.mp3"),
                              Cached(2, ContentType::Music, "music_b.mp3"),
                              Cached(3, ContentType::Music, "music_c.mp3"),
                              Cached(31, ContentType::Photo, "photo_landscape.jpg"),
                              Cached(41, ContentType::Video, "video_short.mp4"),
                              Cached(42, ContentType::Video, "video_short.mp4"),
                              Clip(50, "ad_short.mp3")};
    PlaybackConfiguration configuration;
    for (const ContentType type : Core::DataTypes::Playback::AllContentTypes()) {
        configuration.tracks[type];
    }
    for (std::size_t i = 0; i + 1 < all.size(); ++i) {
        configuration.tracks[all[i].contentType].push_back(all[i]);
        Playlist playlist;
        playlist.id = static_cast<int>(i) + 1;
        playlist.contentType = all[i].contentType;
        playlist.name = "Список " + std::to_string(playlist.id);
        playlist.trackIds = {all[i].id};
        configuration.playlists.push_back(playlist);
    }
    configuration.tracks[ContentType::Clip] = {all.back()};
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

// Periods and the player playing real media on the test sound server, with "now"
// moved to a few seconds before an ad or a period boundary, which then passes in
// real time. Both sinks are recorded throughout.
class PeriodPlaybackTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        Core::Settings::SetUseCrossfade(false);
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Tests::RecordingPeriodObserver>();
    }

    void cleanup()
    {
        if (QTest::currentTestFailed()) {
            qInfo().noquote() << "The event log:\n" << EventLog::Text();
        }
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

    // One day's configuration played by the player, boundary by boundary: each is
    // reached by switching off, moving the clock to just before it and switching
    // on again.
    void aDayPlaysPeriodByPeriod()
    {
        TestPeriods::SetNow(QTime(8, 59));
        player = std::make_unique<Player>(FourPeriodDay());
        player->AddObserver(&day);

        // Before the first period nothing covers now: the player says so, stays on,
        // shows no tracks and starts nothing on a skip.
        player->Start();
        QCOMPARE(day.Events(), QStringList{"no current period"});
        QVERIFY(player->CurrentState().playingNow);
        QCOMPARE(player->CurrentPeriodName(), std::string());
        QVERIFY(player->GetCurrentTracks(ContentType::Music).empty());
        QCOMPARE(EventLog::Entries().last(), "Период " + TestPeriods::Text("Обед", "12:00", "13:00") +
                                                 " не является текущим и не имеет следующего");
        player->GoToNextTrack(ContentType::Music);
        QVERIFY(!QTest::qWaitFor([this]() { return day.calls.size() > 1; }, Tests::Timeouts::Silence));

        // 10:00, the same music playlist on both sides: the block on air goes on,
        // without a gap, at the later period's volume. The video playlist changes:
        // the new one starts, silent beneath the music like the old one.
        StartAt(QTime(9, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneA), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Позднее утро")));
        QTRY_VERIFY_WITH_TIMEOUT(day.HasEvent(QStringLiteral("track video 42")), Tests::Timeouts::Playback);
        QCOMPARE(day.Events().filter(QStringLiteral("track music")), QStringList{"track music 1"});
        QVERIFY(day.IndexOf(QStringLiteral("period Позднее утро")) <
                day.IndexOf(QStringLiteral("track video 42")));
        QCOMPARE(EventLog::Count(QStringLiteral("Блок music передан в следующий период")), 1);
        for (double t = boundary - 0.5; t < boundary + 0.5; t += ToneTimeline::Window) {
            const double level = ToneTimeline::Level(listener.A(), ToneA, t, t + ToneTimeline::Window);
            QVERIFY2(level > NotHeard, qPrintable(QStringLiteral("%1 s: %2").arg(t - boundary).arg(level)));
        }
        const double louder = ToneTimeline::Level(listener.A(), ToneA, boundary - 1.3, boundary - 0.3);
        const double quieter = ToneTimeline::Level(listener.A(), ToneA, boundary + 0.4, boundary + 1.4);
        QVERIFY2(quieter < louder * 0.5, qPrintable(QStringLiteral("%1 -> %2").arg(louder).arg(quieter)));
        // The new video's first moments are left out: the track list player mutes
        // a player only once libvlc reports it playing.
        const double video = ToneTimeline::Level(listener.A(), Tests::TestMedia::VideoFrequency,
                                                 boundary + 0.9, boundary + After);
        const double music = ToneTimeline::Level(listener.A(), ToneA, boundary + 0.9, boundary + After);
        QVERIFY2(video < music / 4, qPrintable(QStringLiteral("%1 beside %2").arg(video).arg(music)));

        // 11:00, another playlist, with photos beside it: the old tone stops, the
        // new one takes over.
        StartAt(QTime(10, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneA), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Перед обедом")));
        QTRY_VERIFY_WITH_TIMEOUT(day.HasEvent(QStringLiteral("track photo 31")), Tests::Timeouts::Process);
        QVERIFY(LogSinceStart().contains(QStringLiteral("Блок music НЕ передан в следующий период")));
        QCOMPARE(player->CurrentState().contentPlayingStates.at(ContentType::Photo).playlistName,
                 std::string("Список 4"));
        QVERIFY(ToneTimeline::Level(listener.A(), ToneA, boundary + 0.5, boundary + After) < NotHeard);
        // Under load libvlc may drop the first moments of the new file, and the
        // old video stops at the same moment: the new tone counts from when it is
        // heard, within the time listened to.
        const double b = ToneTimeline::FirstHeard(listener.A(), ToneB, Heard, soundStart);
        QVERIFY2(b > boundary - 0.5 && b < boundary + After, qPrintable(QString::number(b - boundary)));

        // 12:00, a spot at the period's start: it plays first, the music after it.
        StartAt(QTime(11, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneB), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("period Обед")));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneC), Tests::Timeouts::Playback);
        QVERIFY(day.IndexOf(QStringLiteral("track clip 50")) < day.IndexOf(QStringLiteral("track music 3")));
        QVERIFY(ToneTimeline::Level(listener.A(), ToneB, boundary + 0.5, boundary + After) < NotHeard);
        // Nothing else in the recording has the spot's pitch, so its last sound is
        // the spot's end. The music must follow that end, not the spot's nominal
        // length: libvlc starved of processor time at a file's start drops what it
        // is late for, and the spot is then heard shorter than it is.
        const double adHeard = ToneTimeline::FirstHeard(listener.A(), ToneAd, Heard, soundStart);
        const double adEnded = ToneTimeline::LastHeard(listener.A(), ToneAd, Heard);
        const double cHeard = ToneTimeline::FirstHeard(listener.A(), ToneC, Heard, soundStart);
        const QString timeline = QStringLiteral("spot %1 s to %2 s, music from %3 s")
                                     .arg(adHeard - boundary)
                                     .arg(adEnded - boundary)
                                     .arg(cHeard - boundary);
        QVERIFY2(adHeard > boundary - 0.5 && adHeard < boundary + 1.0, qPrintable(timeline));
        QVERIFY2(cHeard >= adEnded - ToneTimeline::Window && cHeard < adEnded + 1.0, qPrintable(timeline));

        // 13:00, the end of the last period: everything stops, the player stays on.
        // Started in the middle of its period, the last one does not play its spot.
        StartAt(QTime(12, 59, 57));
        QTRY_VERIFY_WITH_TIMEOUT(HeardSinceStart(ToneC), Tests::Timeouts::Playback);
        QVERIFY(PassBoundary(QStringLiteral("last period finished")));
        QVERIFY(!day.HasEvent(QStringLiteral("track clip 50")));
        QVERIFY(player->CurrentState().playingNow);
        const double silence = Tests::PcmAnalysis::Rms(listener.A(), boundary + 0.5, boundary + After);
        QVERIFY2(silence < NotHeard, qPrintable(QString::number(silence)));
    }

    // An interrupting ad cuts into the music at once; a second one due meanwhile
    // is queued behind it; the track buttons do nothing meanwhile; then the music
    // resumes its track where it paused.
    void anInterruptingAdCutsInAndTheMusicResumes()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        SetMusic(*period, 3,
                 Music({Cached(1, ContentType::Music, "music_a.mp3"),
                        Cached(2, ContentType::Music, "short_b.mp3")}));
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

    // Polite ads due while music plays wait for the end of its track and then play
    // as one block, the first block's spots before the second's; the music goes on
    // with its next track.
    void politeAdsWaitForTheEndOfTheTrack()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        SetMusic(*period, 3,
                 Music({Cached(1, ContentType::Music, "medium_a.mp3"),
                        Cached(2, ContentType::Music, "short_b.mp3")}));
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

    // With only photos showing there is no track to wait for.
    void aPoliteAdBesidePhotosStartsAtOnce()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        period->SetBlock(ContentType::Photo, std::make_shared<PhotoBlock>(std::vector<Track>{
                                                 Cached(1, ContentType::Photo, "photo_landscape.jpg")}));
        period->TryToAddAdvertisingBlocks(
            {TestPeriods::Ad("Вежливый", "11:30", {Clip(11, "short_a.mp3")}, false)});
        Start({period}, QTime(11, 29, 59));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Clip), Ids{11}, Tests::Timeouts::Process);
        QCOMPARE(observer->StartedIds(ContentType::Photo), Ids{1});
    }

    // An ad block still playing at the boundary goes on in the next period with
    // that period's start ads behind it; its content starts only afterwards. Each
    // period keeps only the ads of its own date and span, and a period started in
    // its middle does not play the ads of its start.
    void anAdBlockPlaysAcrossTheBoundary()
    {
        const auto a = TestPeriods::Make("A", "11:00", "12:00");
        const auto b = TestPeriods::Make("B", "12:00", "13:00");
        SetMusic(*a, 1, Music({Cached(1, ContentType::Music, "music_a.mp3")}));
        SetMusic(*b, 2, Music({Cached(2, ContentType::Music, "music_b.mp3")}));
        const std::vector<std::shared_ptr<AdsBlock>> ads = {
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

    // At the end of the day's last period everything stops, an ad block playing
    // then as well, and the chain reports its end.
    void theLastPeriodStopsEverythingAtItsEnd()
    {
        const auto withMusic = TestPeriods::Make("M", "11:00", "12:00");
        const auto music = Music({Cached(1, ContentType::Music, "music_a.mp3")});
        SetMusic(*withMusic, 1, music);
        const auto withAd = TestPeriods::Make("R", "11:00", "12:00");
        Start({withMusic}, QTime(11, 59, 58));
        withAd->SetObserverForSequence(observer.get());
        withAd->StartAsCurrent();
        periods.push_back(withAd);
        const auto ad = TestPeriods::Ad("Реклама", "11:59", {Clip(11, "ad_short.mp3")}, true);
        withAd->InterruptAdBlockStarted(ad);

        QTRY_COMPARE_WITH_TIMEOUT(observer->Count(Kind::LastPeriodFinished), 2, Tests::Timeouts::Process);
        QVERIFY(!withAd->IsPlayingAdBlock());
        QCOMPARE(observer->StartedIds(ContentType::Music), Ids{1});
        QCOMPARE(observer->StartedIds(ContentType::Clip), Ids{11});
        // Stopped players report no more progress.
        Tests::RecordingBlockObserver afterEnd;
        music->SetObserver(&afterEnd);
        ad->SetObserver(&afterEnd);
        QVERIFY(!QTest::qWaitFor([&]() { return !afterEnd.progress.empty() || !afterEnd.starts.empty(); },
                                 Tests::Timeouts::Silence));
        QCOMPARE(observer->Count(Kind::AdBlockFinished), 0);
    }

private:
    // Chains the periods, lets them report to the observer, moves the clock and
    // starts the chain.
    void Start(const std::vector<std::shared_ptr<PlayablePeriod>>& chain, const QTime& now)
    {
        TestPeriods::Chain(chain);
        chain.front()->SetObserverForSequence(observer.get());
        periods.insert(periods.end(), chain.begin(), chain.end());
        TestPeriods::SetNow(now);
        chain.front()->FindAndStartCurrent();
    }

    // The player off, the clock to `time` and on again; what follows is checked
    // from here on.
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
        return ToneTimeline::FirstHeard(listener.A(), frequency, Heard, soundStart) >= 0;
    }

    // Waits for the report of the boundary, notes where it falls in the recording
    // and listens on past it; false when it is not reported.
    bool PassBoundary(const QString& event)
    {
        if (!QTest::qWaitFor([&]() { return day.HasEvent(event); }, Tests::Timeouts::Playback)) {
            qWarning().noquote() << "Not reported:" << event << "after" << day.Events().join(", ");
            return false;
        }
        boundary = listener.SecondsRecorded();
        return listener.WaitUntilRecorded(boundary + After, Tests::Timeouts::Playback);
    }

    QStringList LogSinceStart() const
    {
        return EventLog::Entries().mid(logStart);
    }

    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingPeriodObserver> observer;
    std::vector<std::shared_ptr<PlayablePeriod>> periods;
    Tests::RecordingPlayerObserver day;
    std::unique_ptr<Player> player;
    int logStart = 0;
    double soundStart = 0.0;
    double boundary = 0.0;
};

QTEST_GUILESS_MAIN(PeriodPlaybackTest)
#include "tst_period_playback.moc"

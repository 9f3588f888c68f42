#include "core/content_playing/ads_block.h"
#include "core/content_playing/music_block.h"
#include "core/content_playing/photo_block.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/video_block.h"
#include "core/utilities/clock.h"
#include "tests/core/content_playing/event_log_messages.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/recording_period_observer.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
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
using Core::ContentPlaying::VideoBlock;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Kind = Tests::RecordingPeriodObserver::Kind;
using Tests::PlaybackTestTracks;
using Tests::TestPeriods;

namespace {

Track Cached(int id, ContentType type, const QString& media)
{
    return PlaybackTestTracks::Cached(id, type, media);
}

Track Clip(int id, const QString& media)
{
    return Cached(id, ContentType::Clip, media);
}

std::shared_ptr<MusicBlock> Music(const std::vector<Track>& tracks, int volume = 100)
{
    return std::make_shared<MusicBlock>(tracks, volume);
}

void SetMusic(PlayablePeriod& period, int playlist, const std::shared_ptr<MusicBlock>& block)
{
    auto info = period.GetInfo();
    info.SetPlaylistIdentifier(ContentType::Music, playlist);
    period.SetInfo(info);
    period.SetBlock(ContentType::Music, block);
}

QString Text(const std::string& name, const std::string& start, const std::string& end)
{
    return QString::fromStdString(TestPeriods::Text(name, start, end));
}

QStringList AdDue(const QString& name, bool interrupts)
{
    return {"Настало время реклманого блока " + name,
            "Блок " + name + (interrupts ? " должен прерывать контент" : " НЕ должен прерывать контент"),
            "У блока " + name + " есть скачанные файлы"};
}

QStringList FinishTimer(const QString& period, const QString& left)
{
    return {"Период " + period + " закончится через " + left,
            "\tЗапуск таймера на окончание периода " + left};
}

} // namespace

// Periods playing real media on the test sound server, with "now" moved to a few
// seconds before an ad or a period boundary.
class PeriodPlaybackTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("PULSE_SERVER"), "register the test with NEEDS sound");
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Tests::RecordingPeriodObserver>();
        // Both sinks kept running, so that libvlc plays in real time from the start.
        sinks = std::make_unique<Tests::TestSinksKeepAlive>();
        QVERIFY2(sinks->Start(), qPrintable(sinks->ErrorString()));
    }

    void cleanup()
    {
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

    // Same music playlist on both sides: the playing block goes on across the
    // boundary, without a gap and at the new period's volume. Another video
    // playlist: the old video stops and the new one starts from its first track.
    void theHandOverKeepsTheBlockOfTheSamePlaylist()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));

        const auto a = TestPeriods::Make("A", "11:00", "12:00");
        const auto b = TestPeriods::Make("B", "12:00", "13:00");
        const auto music = Music({Cached(1, ContentType::Music, QStringLiteral("music_a.mp3"))});
        SetMusic(*a, 7, music);
        SetMusic(*b, 7, Music({Cached(2, ContentType::Music, QStringLiteral("music_b.mp3"))}));
        auto infoA = a->GetInfo();
        infoA.SetPlaylistIdentifier(ContentType::Video, 5);
        a->SetInfo(infoA);
        a->SetBlock(
            ContentType::Video,
            std::make_shared<VideoBlock>(
                std::vector<Track>{Cached(3, ContentType::Video, QStringLiteral("video_short.mp4"))}, 100));
        auto infoB = b->GetInfo();
        infoB.contentVolume = 40;
        infoB.SetPlaylistIdentifier(ContentType::Video, 6);
        b->SetInfo(infoB);
        b->SetBlock(
            ContentType::Video,
            std::make_shared<VideoBlock>(
                std::vector<Track>{Cached(4, ContentType::Video, QStringLiteral("video_short.mp4"))}, 100));
        Start({a, b}, QTime(11, 59, 58));

        QTRY_COMPARE_WITH_TIMEOUT(observer->Count(Kind::PeriodStarted), 2, Tests::Timeouts::Process);
        const double boundary = listener.SecondsRecorded();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Video), (std::vector<std::int32_t>{3, 4}),
                                  Tests::Timeouts::Playback);
        QVERIFY(listener.WaitUntilRecorded(boundary + 1.6, Tests::Timeouts::Playback));

        QCOMPARE(b->GetBlock(ContentType::Music),
                 std::static_pointer_cast<Core::ContentPlaying::AbstractContentBlock>(music));
        // The music's first and only start was in the first period.
        QCOMPARE(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1}));

        // No window without the tone around the boundary, and the tone quieter after
        // it (at volume 40 about a sixteenth of the level at 100).
        const double frequency = Tests::TestMedia::MusicAFrequency;
        for (double t = boundary - 0.5; t < boundary + 0.5; t += Tests::ToneTimeline::Window) {
            const double level = Tests::ToneTimeline::Level(listener.A(), frequency, t, t + 0.1);
            QVERIFY2(level > 0.001, qPrintable(QStringLiteral("%1 s: %2").arg(t - boundary).arg(level)));
        }
        const double before =
            Tests::ToneTimeline::Level(listener.A(), frequency, boundary - 1.3, boundary - 0.3);
        const double after =
            Tests::ToneTimeline::Level(listener.A(), frequency, boundary + 0.4, boundary + 1.4);
        QVERIFY2(after < before * 0.5, qPrintable(QStringLiteral("%1 -> %2").arg(before).arg(after)));

        // Both videos run silent beneath the music once playing. The first moments of
        // each video are left out: the track list player mutes a player only when
        // libvlc reports it playing, so a video opens with a short burst of its sound.
        for (const double from : {boundary - 1.2, boundary + 0.9}) {
            const double video =
                Tests::ToneTimeline::Level(listener.A(), Tests::TestMedia::VideoFrequency, from, from + 0.6);
            const double tone = Tests::ToneTimeline::Level(listener.A(), frequency, from, from + 0.6);
            QVERIFY2(video < tone / 4, qPrintable(QStringLiteral("%1 beside %2").arg(video).arg(tone)));
        }

        const QString textA = Text("A", "11:00", "12:00");
        const QString textB = Text("B", "12:00", "13:00");
        const QStringList expectedLog =
            FinishTimer(textA, "00:02") +
            QStringList{"Сработал таймер окончания периода " + textA, "Блок music передан в следующий период",
                        "Блок video НЕ передан в следующий период"} +
            FinishTimer(textB, "01:00:00") +
            QStringList{"\tНет воспроизводящегося рекламного блока в начале периода",
                        "У периода " + textB + " нет рекламы, совпадающей с началом периода"};
        QCOMPARE(Tests::EventLogMessages::ReadWithoutTrackStarts(), expectedLog);
    }

    // An interrupting ad cuts into the music at once; a second one due meanwhile
    // is queued behind it; the track buttons do nothing meanwhile; then the music
    // resumes its track where it paused. The music itself first waits for its file.
    void anInterruptingAdCutsInAndTheMusicResumes()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        // Neither file is in the cache yet.
        const Track first = PlaybackTestTracks::Make(1, ContentType::Music, QStringLiteral("music_a.mp3"));
        const Track second = PlaybackTestTracks::Make(2, ContentType::Music, QStringLiteral("short_b.mp3"));
        SetMusic(*period, 3, Music({first, second}));
        period->TryToAddAdvertisingBlocks(
            {TestPeriods::Ad("Первый", "11:30", {Clip(11, QStringLiteral("ad_short.mp3"))}, true),
             TestPeriods::Ad("Второй", "11:30", {Clip(12, QStringLiteral("short_c.mp3"))}, true)});
        Start({period}, QTime(11, 29, 58));

        const auto music = period->GetBlock(ContentType::Music);
        QVERIFY(music->IsWaitingForDownload());
        QVERIFY(PlaybackTestTracks::Install(first, QStringLiteral("music_a.mp3")));
        QVERIFY(PlaybackTestTracks::Install(second, QStringLiteral("short_b.mp3")));
        period->TryStartWaitingForDownloadBlocks();
        QVERIFY(!music->IsWaitingForDownload());
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1}),
                                  Tests::Timeouts::Playback);

        QTRY_VERIFY_WITH_TIMEOUT(period->IsPlayingAdBlock(), Tests::Timeouts::Process);
        period->GoToNextTrack(ContentType::Music);
        period->PlayTrack(ContentType::Music, 2);
        QTRY_COMPARE_WITH_TIMEOUT(observer->Count(Kind::AdBlockFinished), 1, Tests::Timeouts::Playback);
        QVERIFY(!period->IsPlayingAdBlock());
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1, 1}),
                                  Tests::Timeouts::Process);
        QCOMPARE(observer->StartedIds(ContentType::Clip), (std::vector<std::int32_t>{11, 12}));
        const auto resumed =
            std::find_if(observer->events.rbegin(), observer->events.rend(), [](const auto& event) {
                return event.kind == Kind::TrackStarted && event.type == ContentType::Music;
            });
        QVERIFY(resumed->resumed);
        QVERIFY(observer->IndexOf(Kind::AdBlockFinished) < observer->events.rend() - resumed - 1);

        const QStringList expectedLog =
            FinishTimer(Text("P", "11:00", "12:00"), "30:02") + AdDue("Первый", true) +
            QStringList{"Начинаем воспроизведение рекламного блока Первый"} + AdDue("Второй", true) +
            QStringList{"Треки рекламного блока Второй добавлены к рекламному блоку Первый",
                        "Завершено воспроизведение рекламного блока Первый"};
        QCOMPARE(Tests::EventLogMessages::ReadWithoutTrackStarts(), expectedLog);
    }

    // Polite ads due while music plays wait for the end of its track and then play
    // as one block, the first block's spots before the second's; the music goes on
    // with its next track.
    void politeAdsWaitForTheEndOfTheTrack()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        SetMusic(*period, 3,
                 Music({Cached(1, ContentType::Music, QStringLiteral("medium_a.mp3")),
                        Cached(2, ContentType::Music, QStringLiteral("short_b.mp3"))}));
        period->TryToAddAdvertisingBlocks(
            {TestPeriods::Ad(
                 "Первый", "11:30",
                 {Clip(11, QStringLiteral("short_a.mp3")), Clip(12, QStringLiteral("short_b.mp3"))}, false),
             TestPeriods::Ad("Второй", "11:30", {Clip(13, QStringLiteral("short_c.mp3"))}, false)});
        Start({period}, QTime(11, 29, 59));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1, 2}),
                                  Tests::Timeouts::Playback);
        QCOMPARE(observer->StartedIds(ContentType::Clip), (std::vector<std::int32_t>{11, 12, 13}));
        // The spots came only after the music's track had ended, and the music only
        // after the spots.
        QVERIFY(observer->IndexOf(Kind::ShouldPlayNextTrack) < observer->IndexOf(Kind::TrackStarted, 11));
        QVERIFY(observer->IndexOf(Kind::TrackStarted, 13) < observer->IndexOf(Kind::AdBlockFinished));
        QVERIFY(observer->IndexOf(Kind::AdBlockFinished) < observer->IndexOf(Kind::TrackStarted, 2));

        const QStringList expectedLog =
            FinishTimer(Text("P", "11:00", "12:00"), "30:01") + AdDue("Первый", false) +
            AdDue("Второй", false) +
            QStringList{"Блок контента остановил воспроизведение после окончания текущего трека",
                        "В очереди есть 'вежливая' реклама, начинаем воспроизведение",
                        "Начинаем воспроизведение рекламного блока Первый",
                        "Завершено воспроизведение рекламного блока Первый"};
        QCOMPARE(Tests::EventLogMessages::ReadWithoutTrackStarts(), expectedLog);
    }

    // With only photos showing there is no track to wait for.
    void aPoliteAdBesidePhotosStartsAtOnce()
    {
        const auto period = TestPeriods::Make("P", "11:00", "12:00");
        period->SetBlock(ContentType::Photo,
                         std::make_shared<PhotoBlock>(std::vector<Track>{
                             Cached(1, ContentType::Photo, QStringLiteral("photo_landscape.jpg"))}));
        period->TryToAddAdvertisingBlocks(
            {TestPeriods::Ad("Вежливый", "11:30", {Clip(11, QStringLiteral("short_a.mp3"))}, false)});
        Start({period}, QTime(11, 29, 59));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Clip), (std::vector<std::int32_t>{11}),
                                  Tests::Timeouts::Process);
        QCOMPARE(observer->StartedIds(ContentType::Photo), (std::vector<std::int32_t>{1}));
        const QStringList expectedLog =
            AdDue("Вежливый", false) + QStringList{"Начинаем воспроизведение рекламного блока Вежливый"};
        QCOMPARE(Tests::EventLogMessages::ReadWithoutTrackStarts().mid(2), expectedLog);
    }

    // An ad block still playing at the boundary goes on in the next period with
    // that period's start ads behind it; its content starts only afterwards. Each
    // period keeps only the ads of its own date and span, and a period started in
    // its middle does not play the ads of its start.
    void anAdBlockPlaysAcrossTheBoundary()
    {
        const auto a = TestPeriods::Make("A", "11:00", "12:00");
        const auto b = TestPeriods::Make("B", "12:00", "13:00");
        SetMusic(*a, 1, Music({Cached(1, ContentType::Music, QStringLiteral("music_a.mp3"))}));
        SetMusic(*b, 2, Music({Cached(2, ContentType::Music, QStringLiteral("music_b.mp3"))}));
        const std::vector<std::shared_ptr<AdsBlock>> ads = {
            TestPeriods::Ad("Начало A", "11:00", {Clip(10, QStringLiteral("short_c.mp3"))}, true),
            TestPeriods::Ad("Начало B", "12:00", {Clip(12, QStringLiteral("short_c.mp3"))}, false),
            TestPeriods::Ad("Конец B", "13:00", {Clip(13, QStringLiteral("short_c.mp3"))}, true),
            TestPeriods::Ad("Завтра", "11:59", {Clip(14, QStringLiteral("short_c.mp3"))}, true,
                            "22.11.2026")};
        a->TryToAddAdvertisingBlocks(ads);
        b->TryToAddAdvertisingBlocks(ads);
        Start({a, b}, QTime(11, 59, 58));
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1}),
                                  Tests::Timeouts::Playback);
        // As if its timer had fired: a spot of 3 s, two before the boundary.
        a->InterruptAdBlockStarted(
            TestPeriods::Ad("Реклама", "11:59", {Clip(11, QStringLiteral("ad_short.mp3"))}, true));

        QTRY_COMPARE_WITH_TIMEOUT(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1, 2}),
                                  Tests::Timeouts::Playback);
        QCOMPARE(observer->StartedIds(ContentType::Clip), (std::vector<std::int32_t>{11, 12}));
        QCOMPARE(observer->Count(Kind::AdBlockFinished), 1);
        const auto& finished =
            observer->events[static_cast<std::size_t>(observer->IndexOf(Kind::AdBlockFinished))];
        QCOMPARE(finished.period, b.get());
        QVERIFY(observer->IndexOf(Kind::TrackStarted, 12) < observer->IndexOf(Kind::AdBlockFinished));
        QVERIFY(observer->IndexOf(Kind::AdBlockFinished) < observer->IndexOf(Kind::TrackStarted, 2));

        const QString textA = Text("A", "11:00", "12:00");
        const QString textB = Text("B", "12:00", "13:00");
        const QStringList expectedLog =
            FinishTimer(textA, "00:02") + AdDue("Реклама", true) +
            QStringList{"Начинаем воспроизведение рекламного блока Реклама",
                        "Сработал таймер окончания периода " + textA,
                        "Блок music НЕ передан в следующий период"} +
            FinishTimer(textB, "01:00:00") +
            QStringList{"\tЕсть воспроизводящийся рекламный блок в начале периода",
                        "Завершено воспроизведение рекламного блока Реклама"};
        QCOMPARE(Tests::EventLogMessages::ReadWithoutTrackStarts(), expectedLog);
    }

    // At the end of the day's last period everything stops, an ad block playing
    // then as well, and the chain reports its end.
    void theLastPeriodStopsEverythingAtItsEnd()
    {
        const auto withMusic = TestPeriods::Make("M", "11:00", "12:00");
        const auto music = Music({Cached(1, ContentType::Music, QStringLiteral("music_a.mp3"))});
        SetMusic(*withMusic, 1, music);
        const auto withAd = TestPeriods::Make("R", "11:00", "12:00");
        Start({withMusic}, QTime(11, 59, 58));
        withAd->SetObserverForSequence(observer.get());
        withAd->StartAsCurrent();
        periods.push_back(withAd);
        const auto ad = TestPeriods::Ad("Реклама", "11:59", {Clip(11, QStringLiteral("ad_short.mp3"))}, true);
        withAd->InterruptAdBlockStarted(ad);

        QTRY_COMPARE_WITH_TIMEOUT(observer->Count(Kind::LastPeriodFinished), 2, Tests::Timeouts::Process);
        QVERIFY(!withAd->IsPlayingAdBlock());
        QCOMPARE(observer->StartedIds(ContentType::Music), (std::vector<std::int32_t>{1}));
        QCOMPARE(observer->StartedIds(ContentType::Clip), (std::vector<std::int32_t>{11}));
        // Stopped players report no more progress.
        Tests::RecordingBlockObserver afterEnd;
        music->SetObserver(&afterEnd);
        ad->SetObserver(&afterEnd);
        QVERIFY(!QTest::qWaitFor([&]() { return !afterEnd.progress.empty() || !afterEnd.starts.empty(); },
                                 Tests::Timeouts::Silence));
        QCOMPARE(observer->Count(Kind::AdBlockFinished), 0);

        const QStringList messages = Tests::EventLogMessages::ReadWithoutTrackStarts();
        for (const QString& name : {QStringLiteral("M"), QStringLiteral("R")}) {
            const QString text = Text(name.toStdString(), "11:00", "12:00");
            QVERIFY(messages.contains("Сработал таймер окончания периода " + text));
            QVERIFY(messages.contains("У периода " + text + " нет следующего периода"));
        }
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

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingPeriodObserver> observer;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
    std::vector<std::shared_ptr<PlayablePeriod>> periods;
};

QTEST_GUILESS_MAIN(PeriodPlaybackTest)
#include "tst_period_playback.moc"

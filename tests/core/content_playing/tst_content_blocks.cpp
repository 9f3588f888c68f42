#include "core/content_playing/ads_block.h"
#include "core/content_playing/music_block.h"
#include "core/content_playing/video_block.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/test_sinks_keep_alive.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <memory>

using Core::ContentPlaying::AdsBlock;
using Core::ContentPlaying::MusicBlock;
using Core::ContentPlaying::VideoBlock;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Tests::PlaybackTestTracks;

namespace {

Track Cached(int id, ContentType type, const QString& media)
{
    return PlaybackTestTracks::Cached(id, type, media);
}

Track Missing(int id, ContentType type)
{
    return PlaybackTestTracks::Make(id, type, QStringLiteral("missing_%1.mp3").arg(id));
}

} // namespace

// The music, video and ads blocks over their track list players, on real sound:
// what they forward, what they keep as built, and how an ads block ends.
class ContentBlocksTest : public QObject
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
        observer = std::make_unique<Tests::RecordingBlockObserver>();
        // Both sinks kept running, so that libvlc plays in real time from the start.
        sinks = std::make_unique<Tests::TestSinksKeepAlive>();
        QVERIFY2(sinks->Start(), qPrintable(sinks->ErrorString()));
    }

    void cleanup()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
    }

    void kindsVolumesAndTrackLists()
    {
        const std::vector<Track> tracks = {Cached(1, ContentType::Music, QStringLiteral("short_a.mp3")),
                                           Missing(2, ContentType::Music)};
        MusicBlock music(tracks, 80);
        QCOMPARE(music.GetContentType(), ContentType::Music);
        QCOMPARE(music.GetVolume(), 80);
        music.SetVolume(30);
        QCOMPARE(music.GetVolume(), 80);
        QCOMPARE(music.TrackList(), tracks);
        QVERIFY(music.HasAnyDownloadedFile());
        QVERIFY(!music.CurrentTrackIsVideo());
        QVERIFY(!music.IsWaitingForDownload());
        music.SetWaitingForDownload(true);
        QVERIFY(music.IsWaitingForDownload());

        QCOMPARE(VideoBlock({}, 10).GetContentType(), ContentType::Video);
        // An empty block has nothing to wait for.
        QVERIFY(VideoBlock({}, 10).HasAnyDownloadedFile());
        QVERIFY(!VideoBlock({Missing(3, ContentType::Video)}, 10).HasAnyDownloadedFile());

        AdsBlock ads({Cached(4, ContentType::Clip, QStringLiteral("ad_short.mp3"))}, 90, true);
        QCOMPARE(ads.GetContentType(), ContentType::Clip);
        QVERIFY(ads.InterruptsContent());
        QVERIFY(!AdsBlock({}, 90, false).InterruptsContent());
        ads.SetName("Утро");
        ads.SetDate("21.11.2026");
        ads.SetStartTimeStr("09:30");
        QCOMPARE(ads.GetName(), std::string("Утро"));
        QCOMPARE(ads.GetDate(), std::string("21.11.2026"));
        QCOMPARE(ads.GetStartTimeStr(), std::string("09:30"));
    }

    void aMusicBlockOfOneTrackIgnoresNextAndPrevious()
    {
        MusicBlock music({Cached(1, ContentType::Music, QStringLiteral("music_a.mp3"))}, 100);
        music.SetObserver(observer.get());
        music.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() >= 2, Tests::Timeouts::Playback);
        music.GoToNextTrack();
        music.GoToPreviousTrack();
        QVERIFY(!QTest::qWaitFor([this]() { return observer->StartCount() > 1; }, Tests::Timeouts::Silence));
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1}));

        // Progress reaches the period as (progress, duration in seconds).
        for (const auto& entry : observer->progress) {
            QVERIFY(std::abs(entry.durationSeconds - 8.07) < 0.1);
            QVERIFY(entry.progress >= 0 && entry.progress < 0.5);
        }
        QCOMPARE(observer->starts.front().block, &music);

        // Without an observer nothing is reported.
        music.RemoveObserver();
        const auto reports = observer->progress.size();
        QVERIFY(!QTest::qWaitFor([&]() { return observer->progress.size() > reports; },
                                 Tests::Timeouts::Silence));
        music.Stop();
    }

    void aMusicBlockMovesThroughItsTracks()
    {
        MusicBlock music({Cached(1, ContentType::Music, QStringLiteral("music_a.mp3")),
                          Cached(2, ContentType::Music, QStringLiteral("music_b.mp3"))},
                         100);
        music.SetObserver(observer.get());
        music.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 1, Tests::Timeouts::Playback);
        music.GoToNextTrack();
        music.GoToPreviousTrack();
        music.PlayTrack(2);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 1, 2}));
        music.Stop();
    }

    void theStopAfterTheTrackReachesThePeriod()
    {
        MusicBlock music({Cached(1, ContentType::Music, QStringLiteral("short_a.mp3")),
                          Cached(2, ContentType::Music, QStringLiteral("short_b.mp3"))},
                         100);
        music.SetObserver(observer.get());
        music.Start();
        music.SetDontPlayNextTrack(true);
        QTRY_COMPARE_WITH_TIMEOUT(observer->doesntPlayNext, 1, Tests::Timeouts::Playback);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1}));
    }

    void mergedAdsPlayAllTracksAndFinishOnce()
    {
        Tests::TwoSinkListener listener;
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        const double from = listener.SecondsRecorded();

        auto ads = std::make_shared<AdsBlock>(
            std::vector<Track>{Cached(1, ContentType::Clip, QStringLiteral("short_a.mp3"))}, 100, true);
        const auto second = std::make_shared<AdsBlock>(
            std::vector<Track>{Cached(2, ContentType::Clip, QStringLiteral("short_b.mp3"))}, 100, true);
        const auto third = std::make_shared<AdsBlock>(
            std::vector<Track>{Cached(3, ContentType::Clip, QStringLiteral("short_c.mp3"))}, 100, false);
        ads->AddTracksFromAnotherBlock(*second);
        ads->AddTracksFromAnotherBlocks({nullptr, third});
        // Only the player's list has grown.
        QCOMPARE(ads->TrackList().size(), static_cast<std::size_t>(1));

        int finished = 0;
        // The period lets go of the block from its finish handler.
        ads->SetFinishHandler([&finished, &ads]() {
            ++finished;
            ads.reset();
        });
        ads->SetObserver(observer.get());
        ads->Start();
        // One track of its own: next and previous are ignored.
        ads->GoToNextTrack();
        ads->GoToPreviousTrack();
        QTRY_COMPARE_WITH_TIMEOUT(finished, 1, Tests::Timeouts::Playback);
        QVERIFY(!ads);
        QVERIFY(listener.WaitUntilRecorded(listener.SecondsRecorded() + 0.8, Tests::Timeouts::Playback));
        QCOMPARE(finished, 1);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 3}));

        const double a =
            Tests::ToneTimeline::FirstHeard(listener.A(), Tests::TestMedia::MusicAFrequency, 0.01, from);
        const double b =
            Tests::ToneTimeline::FirstHeard(listener.A(), Tests::TestMedia::MusicBFrequency, 0.01, from);
        const double c =
            Tests::ToneTimeline::FirstHeard(listener.A(), Tests::TestMedia::MusicCFrequency, 0.01, from);
        QVERIFY2(a >= 0 && b > a + 1.0 && c > b + 1.0,
                 qPrintable(QStringLiteral("%1 %2 %3").arg(a).arg(b).arg(c)));
    }

    void anAdsBlockWithoutAHandlerJustEnds()
    {
        AdsBlock ads({Cached(1, ContentType::Clip, QStringLiteral("short_a.mp3"))}, 100, false);
        ads.SetObserver(observer.get());
        ads.Start();
        QTRY_VERIFY_WITH_TIMEOUT(std::any_of(observer->progress.begin(), observer->progress.end(),
                                             [](const auto& entry) { return entry.progress > 0.75; }),
                                 Tests::Timeouts::Playback);
        // Played once, not again.
        QVERIFY(!QTest::qWaitFor([this]() { return observer->StartCount() > 1; }, Tests::Timeouts::Silence));
        QCOMPARE(observer->StartCount(), 1);
    }

    void aVideoBlockLoopsWithoutAWidget()
    {
        VideoBlock video({Cached(1, ContentType::Video, QStringLiteral("video_short.mp4"))}, 100);
        video.SetObserver(observer.get());
        video.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 2, Tests::Timeouts::Playback);
        QVERIFY(video.CurrentTrackIsVideo());
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 1}));
        video.Stop();
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingBlockObserver> observer;
    std::unique_ptr<Tests::TestSinksKeepAlive> sinks;
};

QTEST_GUILESS_MAIN(ContentBlocksTest)
#include "tst_content_blocks.moc"

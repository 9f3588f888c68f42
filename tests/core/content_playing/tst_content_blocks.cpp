#include "core/content_playing/music_block.h"
#include "core/content_playing/video_block.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_block_observer.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"

using Core::ContentPlaying::MusicBlock;
using Core::DataTypes::Playback::ContentType;
using Ids = std::vector<std::int32_t>;

namespace {

Core::DataTypes::Playback::Track Cached(int id, ContentType type, const char* media)
{
    return Tests::PlaybackTestTracks::Cached(id, type, QString::fromUtf8(media));
}

} // namespace

// What the music and video blocks forward from their track list players.
class ContentBlocksTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Recorded sinks keep libvlc playing in real time.
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Tests::RecordingBlockObserver>();
    }

    void cleanup()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
    }

    // One track ignores next and previous rather than restart it.
    void tracksProgressAndTheObserver()
    {
        MusicBlock one({Cached(1, ContentType::Music, "music_a.mp3")}, 100);
        one.SetObserver(observer.get());
        one.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() >= 2, Tests::Timeouts::Playback);
        one.GoToNextTrack();
        one.GoToPreviousTrack();
        QVERIFY(!QTest::qWaitFor([this]() { return observer->StartCount() > 1; }, Tests::Timeouts::Silence));
        QCOMPARE(observer->starts.front().block, &one);
        for (const auto& entry : observer->progress) {
            QVERIFY(std::abs(entry.durationSeconds - 8.07) < 0.1);
            QVERIFY(entry.progress >= 0 && entry.progress < 0.5);
        }
        one.RemoveObserver();
        const auto reports = observer->progress.size();
        QVERIFY(!QTest::qWaitFor([&]() { return observer->progress.size() > reports; },
                                 Tests::Timeouts::Silence));
        one.Stop();

        Tests::RecordingBlockObserver moves;
        MusicBlock two(
            {Cached(1, ContentType::Music, "music_a.mp3"), Cached(2, ContentType::Music, "music_b.mp3")},
            100);
        two.SetObserver(&moves);
        two.Start();
        QTRY_COMPARE_WITH_TIMEOUT(moves.StartCount(), 1, Tests::Timeouts::Playback);
        two.GoToNextTrack();
        two.GoToPreviousTrack();
        two.PlayTrack(2);
        QCOMPARE(moves.StartedIds(), (Ids{1, 2, 1, 2}));
        two.Stop();
    }

    void aVideoBlockLoopsWithoutAWidget()
    {
        Core::ContentPlaying::VideoBlock video({Cached(1, ContentType::Video, "video_short.mp4")}, 100);
        video.SetObserver(observer.get());
        video.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 2, Tests::Timeouts::Playback);
        QVERIFY(video.CurrentTrackIsVideo());
        QCOMPARE(observer->StartedIds(), (Ids{1, 1}));
        video.Stop();
    }

private:
    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingBlockObserver> observer;
};

QTEST_GUILESS_MAIN(ContentBlocksTest)
#include "tst_content_blocks.moc"

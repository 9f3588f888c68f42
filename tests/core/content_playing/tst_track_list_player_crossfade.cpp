#include "core/content_playing/track_list_player.h"
#include "core/settings.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_track_list_observer.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QtTest>

#include <memory>

using Core::Settings;
using Core::ContentPlaying::TrackListPlayer;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Tests::PlaybackTestTracks;
using Tests::ToneTimeline;

namespace {

constexpr double ToneA = Tests::TestMedia::MusicAFrequency;
constexpr double ToneB = Tests::TestMedia::MusicBFrequency;
// Audible at all: the fades pass through levels far below a full tone.
constexpr double Faint = 0.004;
constexpr double NotHeard = 0.002;
constexpr int Interval = 3;

Track Music(int id, const QString& media, const QString& title = QString())
{
    return PlaybackTestTracks::Cached(id, ContentType::Music, media, title);
}

QString Seconds(double value)
{
    return QString::number(value, 'f', 2);
}

} // namespace

// Crossfades heard on the test sound server, with a 3 s interval: on 8 s tones the
// next track fades in 3 s before the end, the playing one fades out from 2.25 s
// before its end, both sound together in between, and the players swap when the
// first ends.
class TrackListPlayerCrossfadeTest : public QObject
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
        Settings::SetUseCrossfade(true);
        Settings::SetCrossfadeIntervalSeconds(Interval);
        observer = std::make_unique<Tests::RecordingTrackListObserver>();
        listener = std::make_unique<Tests::TwoSinkListener>();
        QVERIFY2(listener->Start(), qPrintable(listener->ErrorString()));
    }

    void cleanup()
    {
        if (QTest::currentTestFailed()) {
            qInfo().noquote() << "The event log:\n" << PlaybackTestTracks::EventLog();
        }
        listener.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
    }

    void crossfadeBetweenTwoTracks()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3"), QStringLiteral("Первый")),
                                Music(2, QStringLiteral("music_b.mp3"), QStringLiteral("Второй"))},
                               100, observer.get(), true, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->StartCount() >= 2, Tests::Timeouts::Playback);
        const QString logAtSwap = PlaybackTestTracks::EventLog();
        const auto progressAtSwap = observer->progress;
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 2.0, Tests::Timeouts::Playback));
        player.Stop();

        const auto& sound = listener->A();
        const double start = ToneTimeline::FirstHeard(sound, ToneA, Faint, from);
        QVERIFY2(start >= 0, "the first track was not heard");
        const double full = ToneTimeline::Level(sound, ToneA, start + 1.0, start + 3.0);
        QVERIFY2(full > 0.02, qPrintable(Seconds(full)));

        // Fade-in: nothing of the second track until I seconds before the end of
        // the first (8 s), then it rises.
        const double nextHeard = ToneTimeline::FirstHeard(sound, ToneB, Faint, from) - start;
        QVERIFY2(nextHeard >= 5.0 - 0.1 && nextHeard <= 5.0 + 1.2,
                 qPrintable(
                     QStringLiteral("the next track was heard %1 s into the first").arg(Seconds(nextHeard))));
        QVERIFY(ToneTimeline::FirstHeard(sound, ToneB, NotHeard, from) - start >= 4.8);

        // Fade-out: full until 0.75 × I before the end (5.75 s), then down.
        const double untilFadeOut = ToneTimeline::Level(sound, ToneA, start + 3.0, start + 5.6);
        QVERIFY2(untilFadeOut > full * 0.85, qPrintable(Seconds(untilFadeOut)));
        double dipped = -1;
        for (double at = start + 4.0; at < start + 9.0; at += ToneTimeline::Window) {
            if (ToneTimeline::Level(sound, ToneA, at, at + ToneTimeline::Window) < full * 0.85) {
                dipped = at - start;
                break;
            }
        }
        QVERIFY2(dipped >= 5.75 - 0.1 && dipped <= 5.75 + 1.0,
                 qPrintable(QStringLiteral("the first track dipped %1 s into it").arg(Seconds(dipped))));
        QVERIFY(ToneTimeline::Level(sound, ToneA, start + 7.0, start + 7.5) < full * 0.5);

        // Both together during the crossfade, for some half a second at least.
        int together = 0;
        for (double at = start + 4.5; at < start + 8.5; at += ToneTimeline::Window) {
            const double end = at + ToneTimeline::Window;
            if (ToneTimeline::Level(sound, ToneA, at, end) > Faint &&
                ToneTimeline::Level(sound, ToneB, at, end) > Faint) {
                ++together;
            }
        }
        QVERIFY2(together >= 5, qPrintable(QStringLiteral("%1 tenths of a second together").arg(together)));

        // Neither outside it: only the first before, only the second after.
        const double lastA = ToneTimeline::LastHeard(sound, ToneA, NotHeard) - start;
        QVERIFY2(lastA <= 8.4,
                 qPrintable(QStringLiteral("the first track sounded until %1 s").arg(Seconds(lastA))));
        QVERIFY(ToneTimeline::Level(sound, ToneB, start + 8.6, start + 9.6) > full * 0.8);

        // The swap comes when the first track ends: the second is reported started
        // then, not when its fade-in began.
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2}));
        QVERIFY(!observer->starts[1].resumed);
        const double swapAfter = (observer->starts[1].atMs - observer->starts[0].atMs) / 1000.0;
        QVERIFY2(swapAfter >= 7.9 && swapAfter <= 8.9, qPrintable(Seconds(swapAfter)));
        // The progress sent at the swap: position over milliseconds, next to the
        // duration in seconds.
        const qint64 swappedAt = observer->starts[1].atMs;
        const auto atSwap =
            std::find_if(progressAtSwap.begin(), progressAtSwap.end(), [swappedAt](const auto& entry) {
                return std::abs(entry.atMs - swappedAt) <= 5 && entry.progress < 0.001;
            });
        QVERIFY2(atSwap != progressAtSwap.end(), "no progress in the unit of the swap");
        QVERIFY(std::abs(atSwap->durationSeconds - 8.07) < 0.1);
        QVERIFY(atSwap->progress > 0);
        // The event log names the second track once, when its fade-in began.
        QCOMPARE(logAtSwap.count(QStringLiteral("\tВторой-Тест 2 music")), 1);
    }

    void tracksShorterThanTheIntervalDoNotCrossfade()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player(
            {Music(1, QStringLiteral("short_a.mp3")), Music(2, QStringLiteral("short_b.mp3"))}, 100,
            observer.get(), true, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->StartCount() >= 2, Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 1.8, Tests::Timeouts::Playback));
        player.Stop();

        const auto& sound = listener->A();
        const double lastA = ToneTimeline::LastHeard(sound, ToneA, NotHeard);
        const double firstB = ToneTimeline::FirstHeard(sound, ToneB, NotHeard, from);
        QVERIFY2(
            lastA > 0 && firstB >= lastA - ToneTimeline::Window,
            qPrintable(QStringLiteral("A until %1, B from %2").arg(Seconds(lastA)).arg(Seconds(firstB))));
        // At full volume right after it starts: no fade-in either.
        QVERIFY(ToneTimeline::Level(sound, ToneB, firstB + 0.2, firstB + 0.5) > 0.02);
    }

    void theLastTrackOfAListThatDoesNotLoopPlaysOutWithoutAFade()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Music(1, QStringLiteral("medium_a.mp3"))}, 100, observer.get(), true, false);
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->finished, 1, Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 0.5, Tests::Timeouts::Playback));
        const auto& sound = listener->A();
        const double start = ToneTimeline::FirstHeard(sound, ToneA, Faint, from);
        const double early = ToneTimeline::Level(sound, ToneA, start + 0.3, start + 1.0);
        const double late = ToneTimeline::Level(sound, ToneA, start + 3.2, start + 3.8);
        QVERIFY2(late > early * 0.85, qPrintable(QStringLiteral("%1 late, %2 early").arg(late).arg(early)));
        QCOMPARE(observer->StartCount(), 1);
        QCOMPARE(observer->finished, 1);
        QCOMPARE(PlaybackTestTracks::EventLog().count(QStringLiteral("Начато воспроизведение трека")), 1);
    }

    void noCrossfadeWhenTheNextTrackMustNotPlay()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player(
            {Music(1, QStringLiteral("medium_a.mp3")), Music(2, QStringLiteral("short_b.mp3"))}, 100,
            observer.get(), true, true);
        player.Start();
        player.SetDontPlayNextTrack(true);
        QTRY_COMPARE_WITH_TIMEOUT(observer->doesntPlayNext, 1, Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 0.3, Tests::Timeouts::Playback));
        QVERIFY(ToneTimeline::FirstHeard(listener->A(), ToneB, NotHeard, from) < 0);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1}));
    }

private:
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingTrackListObserver> observer;
    std::unique_ptr<Tests::TwoSinkListener> listener;
};

QTEST_GUILESS_MAIN(TrackListPlayerCrossfadeTest)
#include "tst_track_list_player_crossfade.moc"

#include "core/content_playing/track_list_player.h"
#include "core/settings.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/recording_track_list_observer.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
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

namespace {

constexpr double ToneA = Tests::TestMedia::MusicAFrequency;
constexpr double ToneB = Tests::TestMedia::MusicBFrequency;
constexpr double ToneC = Tests::TestMedia::MusicCFrequency;
constexpr double Heard = 0.01;
constexpr double NotHeard = 0.002;

Track Music(int id, const QString& media, const QString& title = QString())
{
    return PlaybackTestTracks::Cached(id, ContentType::Music, media, title);
}

Track Missing(int id)
{
    return PlaybackTestTracks::Make(id, ContentType::Music, QStringLiteral("missing_%1.mp3").arg(id));
}

} // namespace

// A list of tracks played from the content cache on real libvlc and heard on the
// test sound server: order, looping, the end of a list, files that are missing or
// cannot be played, pause, stop, the volume and mute rules and the equaliser.
class TrackListPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(!qEnvironmentVariableIsEmpty("PULSE_SERVER"), "register the test with NEEDS sound");
        // One recording for the whole run: every case listens from where it starts.
        listener = std::make_unique<Tests::TwoSinkListener>();
        QVERIFY2(listener->Start(), qPrintable(listener->ErrorString()));
    }

    void cleanupTestCase()
    {
        listener.reset();
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Tests::RecordingTrackListObserver>();
    }

    void cleanup()
    {
        if (QTest::currentTestFailed()) {
            qInfo().noquote() << "The event log:\n" << PlaybackTestTracks::EventLog();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
    }

    void indexSearchPassesOverTracksWithoutFiles()
    {
        const std::vector<Track> tracks = {Missing(1), Music(2, QStringLiteral("short_a.mp3")), Missing(3),
                                           Music(4, QStringLiteral("short_b.mp3"))};
        TrackListPlayer player(tracks, 100, observer.get(), false, true);
        QCOMPARE(player.FindNextIndex(0), 1);
        QCOMPARE(player.FindNextIndex(1), 1);
        QCOMPARE(player.FindNextIndex(2), 3);
        QCOMPARE(player.FindNextIndex(4), 1);
        QCOMPARE(player.FindNextIndex(-1), 3);
        QCOMPARE(player.FindPreviousIndex(0), 3);
        QCOMPARE(player.FindPreviousIndex(2), 1);
        QCOMPARE(player.FindPreviousIndex(-1), 3);
        QVERIFY(player.DownloadedTrackExist());
        QCOMPARE(player.CalculatePlayerVolume(), 100);
        QVERIFY(!player.CurrentTrackIsVideo());

        TrackListPlayer nothingDownloaded({Missing(5), Missing(6)}, 100, observer.get(), false, true);
        QCOMPARE(nothingDownloaded.FindNextIndex(0), -1);
        QCOMPARE(nothingDownloaded.FindPreviousIndex(0), -1);
        QVERIFY(!nothingDownloaded.DownloadedTrackExist());
        TrackListPlayer empty({}, 100, observer.get(), false, true);
        QCOMPARE(empty.FindNextIndex(0), -1);
        QVERIFY(!empty.DownloadedTrackExist());

        // Without a player, moving through the list does nothing.
        player.GoToNextTrack();
        player.GoToPreviousTrack();
        player.PlayTrack(4);
        QCOMPARE(observer->StartCount(), 0);
    }

    void playsTheListInOrderAndLoops()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Missing(1), Music(2, QStringLiteral("short_a.mp3"), QStringLiteral("Первый")),
                                Music(3, QStringLiteral("short_b.mp3"), QStringLiteral("Второй"))},
                               100, observer.get(), false, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->StartCount() >= 3, Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 1.0, Tests::Timeouts::Playback));
        player.Stop();
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{2, 3, 2}));
        QVERIFY(std::none_of(observer->starts.begin(), observer->starts.end(),
                             [](auto start) { return start.resumed; }));
        QCOMPARE(observer->finished, 0);

        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 0.3, Tests::Timeouts::Playback));
        const double firstA = Tests::ToneTimeline::FirstHeard(listener->A(), ToneA, Heard, from);
        const double firstB = Tests::ToneTimeline::FirstHeard(listener->A(), ToneB, Heard, from);
        QVERIFY2(firstA >= 0 && firstB > firstA + 1.0,
                 qPrintable(QStringLiteral("A at %1, B at %2").arg(firstA).arg(firstB)));
        QVERIFY2(Tests::ToneTimeline::FirstHeard(listener->A(), ToneA, Heard, firstB + 1.0) > firstB,
                 "the list did not start again after its last track");

        const QString log = PlaybackTestTracks::EventLog();
        QCOMPARE(log.count(QStringLiteral(" Начато воспроизведение трека:\n\tПервый-Тест 2 music")), 2);
        QCOMPARE(log.count(QStringLiteral(" Начато воспроизведение трека:\n\tВторой-Тест 3 music")), 1);
    }

    void unplayableFilesAreSkippedWithLogLines()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Music(1, QStringLiteral("broken.mp3"), QStringLiteral("Шум")),
                                Music(2, QStringLiteral("empty.mp3"), QStringLiteral("Пусто")),
                                Music(3, QStringLiteral("short_a.mp3"))},
                               100, observer.get(), false, false);
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->finished, 1, Tests::Timeouts::Playback);
        // The end of a list that does not loop is told once, and it stays quiet.
        const double finishedAt = listener->SecondsRecorded();
        QVERIFY(listener->WaitUntilRecorded(finishedAt + 0.8, Tests::Timeouts::Playback));
        QCOMPARE(observer->finished, 1);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 3}));
        QCOMPARE(observer->failed, 0);
        QVERIFY(Tests::ToneTimeline::FirstHeard(listener->A(), ToneA, Heard, from) >= 0);
        QVERIFY(Tests::ToneTimeline::Level(listener->A(), ToneA, finishedAt + 0.3, finishedAt + 0.8) <
                NotHeard);

        const QString log = PlaybackTestTracks::EventLog();
        QVERIFY2(log.contains(QStringLiteral("Ошибка воспроизведения файла Шум\n")), qPrintable(log));
        QVERIFY2(log.contains(QStringLiteral("Ошибка воспроизведения файла Пусто\n")), qPrintable(log));
        QCOMPARE(log.count(QStringLiteral(
                     "В списке воспроизведения больше одного трека, попытка перейти к следующему файлу\n")),
                 2);
        QCOMPARE(log.count(QStringLiteral("Переход к следующему файлу после ошибки\n")), 2);
        QVERIFY(!log.contains(QStringLiteral("Ошибка воспроизведения файла short_a.mp3")));
    }

    void aListWhoseOnlyFileIsMissingPlaysNothing()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Missing(1)}, 100, observer.get(), false, true);
        player.Start();
        QVERIFY(listener->WaitUntilRecorded(from + 1.0, Tests::Timeouts::Playback));
        QCOMPARE(observer->StartCount(), 0);
        QVERIFY(Tests::PcmAnalysis::Rms(listener->A(), from, from + 1.0) < NotHeard);
        QVERIFY(PlaybackTestTracks::EventLog().isEmpty());
    }

    void aSingleFailingTrackInALoopStaysSilent()
    {
        TrackListPlayer player({Music(1, QStringLiteral("broken.mp3"), QStringLiteral("Шум"))}, 100,
                               observer.get(), false, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(PlaybackTestTracks::EventLog().contains(QStringLiteral(
                                     "В списке воспроизведения не больше одного трека, невозможно перейти к "
                                     "следущему файлу")),
                                 Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 1.0, Tests::Timeouts::Playback));
        QCOMPARE(observer->StartCount(), 1);
        QCOMPARE(observer->finished, 0);
        QCOMPARE(observer->failed, 0);
    }

    void aLoopOfBrokenFilesStopsInsteadOfSpinning()
    {
        TrackListPlayer player({Music(1, QStringLiteral("broken.mp3"), QStringLiteral("Шум")),
                                Music(2, QStringLiteral("empty.mp3"), QStringLiteral("Пусто"))},
                               100, observer.get(), false, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(PlaybackTestTracks::EventLog().contains(QStringLiteral(
                                     "Невозможно найти следующий файл для воспроизведения, ОСТАНОВКА "
                                     "ВОСПРОИЗВЕДЕНИЯ\n")),
                                 Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 1.0, Tests::Timeouts::Playback));
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2}));

        // Starting again tries the list once more.
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 4, Tests::Timeouts::Playback);
    }

    void pauseResumeAndProgress()
    {
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3"))}, 100, observer.get(), false, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() >= 4, Tests::Timeouts::Playback);
        QVERIFY(WaitUntilHeard(ToneA));
        const double heard = ListenTo(ToneA, 0.4);
        QVERIFY2(heard > Heard, qPrintable(QString::number(heard)));

        // Duration in seconds and the position as a fraction, rising.
        for (std::size_t i = 0; i < observer->progress.size(); ++i) {
            QVERIFY(std::abs(observer->progress[i].durationSeconds - 8.07) < 0.1);
            QVERIFY(observer->progress[i].progress >= 0 && observer->progress[i].progress < 1);
            if (i > 0) {
                QVERIFY(observer->progress[i].progress >= observer->progress[i - 1].progress);
            }
        }

        player.Pause();
        QVERIFY(WaitUntilSilent(ToneA));
        const double paused = ListenTo(ToneA, 0.5, 0);
        QVERIFY2(paused < NotHeard, qPrintable(QString::number(paused)));
        const auto progressWhilePaused = observer->progress.size();

        player.Start();
        QCOMPARE(observer->StartCount(), 2);
        QVERIFY(observer->starts.back().resumed);
        QCOMPARE(observer->starts.back().trackId, 1);
        // A loaded machine may take longer than the settling moment to uncork the
        // stream: wait for the tone, then measure it.
        QVERIFY(WaitUntilHeard(ToneA));
        const double resumed = ListenTo(ToneA, 0.4);
        QVERIFY2(resumed > Heard, qPrintable(QString::number(resumed)));
        QVERIFY(observer->progress.size() > progressWhilePaused);
        // Resumed where it paused, well before the end of the 8 s tone.
        QVERIFY(observer->progress.back().progress < 0.6);

        // Starting a playing list changes nothing.
        player.Start();
        QCOMPARE(observer->StartCount(), 2);
    }

    void volumeAndMuteRules()
    {
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3"))}, 100, observer.get(), false, true);
        player.Start();
        QVERIFY(WaitUntilHeard(ToneA));

        const double full = ListenTo(ToneA, 0.4);
        QVERIFY2(full > Heard, qPrintable(QString::number(full)));
        player.SetVolume(70);
        double lower = 0;
        QVERIFY2(listener->WaitForToneLevel(
                     ToneA, [&](double level) { return level < full * 0.7; }, 0.4, Tests::Timeouts::Playback,
                     &lower),
                 qPrintable(QStringLiteral("%1 / %2").arg(lower).arg(full)));
        QVERIFY2(lower > NotHeard, qPrintable(QString::number(lower)));
        player.SetMuted(true);
        QVERIFY(WaitUntilSilent(ToneA));
        // A volume change while muted is kept for later, not heard now.
        player.SetVolume(100);
        const double stillMuted = ListenTo(ToneA, 0.4);
        QVERIFY2(stillMuted < NotHeard, qPrintable(QString::number(stillMuted)));
        player.SetMuted(false);
        QVERIFY(WaitUntilHeard(ToneA));
        const double unmuted = ListenTo(ToneA, 0.4);
        QVERIFY2(std::abs(unmuted - full) < full * 0.2,
                 qPrintable(QStringLiteral("%1 / %2").arg(unmuted).arg(full)));
    }

    void aMutedListStartsSilent()
    {
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3"))}, 100, observer.get(), false, true);
        player.SetMuted(true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() >= 2, Tests::Timeouts::Playback);
        const double muted = ListenTo(ToneA, 0.5);
        QVERIFY2(muted < NotHeard, qPrintable(QString::number(muted)));
        player.SetMuted(false);
        const double unmuted = ListenTo(ToneA, 0.4);
        QVERIFY2(unmuted > Heard, qPrintable(QString::number(unmuted)));
    }

    void nextPreviousAndChosenTrack()
    {
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3")),
                                Music(2, QStringLiteral("music_b.mp3")),
                                Music(3, QStringLiteral("music_c.mp3")), Missing(4)},
                               100, observer.get(), false, true);
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 1, Tests::Timeouts::Playback);
        player.GoToNextTrack();
        QVERIFY(ListenTo(ToneB, 0.3) > Heard);
        player.GoToPreviousTrack();
        QVERIFY(ListenTo(ToneA, 0.3) > Heard);
        // Back from the first wraps to the last playable one.
        player.GoToPreviousTrack();
        QVERIFY(ListenTo(ToneC, 0.3) > Heard);
        player.PlayTrack(2);
        QVERIFY(ListenTo(ToneB, 0.3) > Heard);
        // The current track, a track without a file and an unknown id are ignored.
        player.PlayTrack(2);
        player.PlayTrack(4);
        player.PlayTrack(99);
        QVERIFY(ListenTo(ToneB, 0.3) > Heard);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 1, 3, 2}));
        QVERIFY(ListenTo(ToneA, 0.3) < NotHeard);
    }

    void stopReleasesPlaybackAndStartBeginsAgain()
    {
        TrackListPlayer player(
            {Music(1, QStringLiteral("music_a.mp3")), Music(2, QStringLiteral("music_b.mp3"))}, 100,
            observer.get(), false, true);
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 1, Tests::Timeouts::Playback);
        player.GoToNextTrack();
        QVERIFY(ListenTo(ToneB, 0.3) > Heard);
        player.Stop();
        QVERIFY(WaitUntilSilent(ToneB));
        QVERIFY(ListenTo(ToneB, 0.4, 0) < NotHeard);
        player.Start();
        QVERIFY(ListenTo(ToneA, 0.3) > Heard);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 1}));
        QVERIFY(!observer->starts.back().resumed);
    }

    void dontPlayNextTrackEndsAfterTheCurrentOne()
    {
        TrackListPlayer player(
            {Music(1, QStringLiteral("short_a.mp3")), Music(2, QStringLiteral("short_b.mp3"))}, 100,
            observer.get(), false, true);
        player.Start();
        player.SetDontPlayNextTrack(true);
        QTRY_COMPARE_WITH_TIMEOUT(observer->doesntPlayNext, 1, Tests::Timeouts::Playback);
        QVERIFY(ListenTo(ToneB, 0.5) < NotHeard);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1}));

        // Start() clears the flag and goes on with the next track.
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 2, Tests::Timeouts::Playback);
        QCOMPARE(observer->starts.back().trackId, 2);
        QVERIFY(ListenTo(ToneB, 0.3) > Heard);
    }

    void equaliserOfTheSettingsIsApplied()
    {
        const Track track = Music(1, QStringLiteral("music_a.mp3"));
        double plain = 0;
        {
            TrackListPlayer player({track}, 100, observer.get(), false, true);
            player.Start();
            QVERIFY(WaitUntilHeard(ToneA));
            plain = ListenTo(ToneA, 0.4);
        }
        Settings::SetUseEqualizer(true);
        Settings::SetAmplifier(-20);
        Settings::SetEqualizerBands(std::vector<double>(10, -20.0));
        observer->progress.clear();
        TrackListPlayer player({track}, 100, observer.get(), false, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() >= 2, Tests::Timeouts::Playback);
        const double equalised = ListenTo(ToneA, 0.4, 0.8);
        QVERIFY2(plain > Heard, qPrintable(QString::number(plain)));
        QVERIFY2(equalised < plain * 0.2, qPrintable(QStringLiteral("%1 / %2").arg(equalised).arg(plain)));
    }

private:
    // Waits until the tone sounds on the default sink.
    bool WaitUntilHeard(double frequency)
    {
        const double from = listener->SecondsRecorded();
        return QTest::qWaitFor(
            [&]() { return Tests::ToneTimeline::FirstHeard(listener->A(), frequency, Heard, from) >= 0; },
            Tests::Timeouts::Playback);
    }

    // Waits until the tone has gone quiet on the default sink.
    bool WaitUntilSilent(double frequency)
    {
        double level = -1;
        const bool silent = listener->WaitForToneLevel(
            frequency, [](double measured) { return measured < NotHeard; }, 0.3, Tests::Timeouts::Playback,
            &level);
        if (!silent) {
            qWarning("still heard at %f", level);
        }
        return silent;
    }

    // The level of a tone on the default sink over the next `seconds`, after a
    // moment for the change just made to reach the sink.
    double ListenTo(double frequency, double seconds, double settle = 0.35)
    {
        const double from = listener->SecondsRecorded() + settle;
        if (!listener->WaitUntilRecorded(from + seconds, Tests::Timeouts::Playback)) {
            qWarning("the recording stalled");
            return -1.0;
        }
        return Tests::ToneTimeline::Level(listener->A(), frequency, from, from + seconds);
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Tests::RecordingTrackListObserver> observer;
    std::unique_ptr<Tests::TwoSinkListener> listener;
};

QTEST_GUILESS_MAIN(TrackListPlayerTest)
#include "tst_track_list_player.moc"

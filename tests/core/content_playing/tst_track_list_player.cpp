#include "core/content_playing/track_list_player.h"
#include "core/content_playing/track_list_player_observer.h"
#include "core/settings.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/event_log.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

using Core::Settings;
using Core::ContentPlaying::TrackListPlayer;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Core::Vendor::VlcWrapper;
using Tests::EventLog;
using Tests::ToneTimeline;

namespace {

constexpr double ToneA = Tests::TestMedia::MusicAFrequency;
constexpr double ToneB = Tests::TestMedia::MusicBFrequency;
constexpr double ToneC = Tests::TestMedia::MusicCFrequency;
// Audible at all: the fades pass through levels far below a full tone.
constexpr double Faint = 0.004;

Track Music(int id, const QString& media, const QString& title = QString())
{
    return Tests::PlaybackTestTracks::Cached(id, ContentType::Music, media, title);
}

Track Missing(int id)
{
    return Tests::PlaybackTestTracks::Make(id, ContentType::Music, QStringLiteral("missing_%1.mp3").arg(id));
}

QString Describe(double level, double reference)
{
    return QStringLiteral("%1 against %2").arg(level, 0, 'f', 4).arg(reference, 0, 'f', 4);
}

// Writes down what the player reports, with when it came.
class Observer : public Core::ContentPlaying::TrackListPlayerObserver
{
public:
    struct Start
    {
        std::int32_t trackId;
        bool resumed;
        qint64 atMs;
    };
    struct Progress
    {
        double durationSeconds;
        double progress;
        qint64 atMs;
    };

    Observer()
    {
        clock.start();
    }
    void TrackListPlayerDidStartPlayingTrack(const Track& track, bool resumed) override
    {
        starts.push_back({track.id, resumed, clock.elapsed()});
    }
    void TrackListPlayerDidChangeProgress(double durationSeconds, double value) override
    {
        progress.push_back({durationSeconds, value, clock.elapsed()});
    }
    void TrackListPlayerDidFinishTrackList() override
    {
        ++finished;
    }
    void TrackListPlayerDidFailWithError() override {}
    void TrackListPlayerDoesntPlayNextTrack() override
    {
        ++doesntPlayNext;
    }
    std::vector<std::int32_t> StartedIds() const
    {
        std::vector<std::int32_t> ids;
        for (const auto& start : starts) {
            ids.push_back(start.trackId);
        }
        return ids;
    }
    int StartCount() const
    {
        return static_cast<int>(starts.size());
    }

    std::vector<Start> starts;
    std::vector<Progress> progress;
    int finished = 0;
    int doesntPlayNext = 0;
    QElapsedTimer clock;
};

} // namespace

// A list of tracks played from the content cache on real libvlc and heard on the test
// sound server. libvlc into a null sink now and then loses sound near the start of a
// file: levels are judged in the loudest windows or well into a file, times by order.
class TrackListPlayerTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // One recording for the whole run: every case listens from where it starts.
        listener = std::make_unique<Tests::TwoSinkListener>();
        QVERIFY2(listener->Start(), qPrintable(listener->ErrorString()));
    }

    void init()
    {
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        observer = std::make_unique<Observer>();
        // The previous case's player may still be heard for a moment after it went.
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 0.3, Tests::Timeouts::Playback));
        QVERIFY(QTest::qWaitFor(
            [this]() {
                const double now = listener->SecondsRecorded();
                return Tests::PcmAnalysis::Rms(listener->A(), now - 0.3, now) < ToneTimeline::NotHeard;
            },
            Tests::Timeouts::Playback));
        Settings::SetCrossfadeIntervalSeconds(3);
    }

    void cleanup()
    {
        if (QTest::currentTestFailed()) {
            qInfo().noquote() << "The event log:\n" << EventLog::Text();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        observer.reset();
        dataDirectory.reset();
    }

    void nothingToPlayWithoutFiles()
    {
        TrackListPlayer player({Missing(1), Missing(2)}, 100, observer.get(), false, true);
        QCOMPARE(player.FindNextIndex(0), -1);
        QCOMPARE(player.FindPreviousIndex(0), -1);
        QVERIFY(!player.DownloadedTrackExist());
        QVERIFY(!player.CurrentTrackIsVideo());
        // Nor, before Start(), does moving through the list play anything.
        player.GoToNextTrack();
        player.GoToPreviousTrack();
        player.PlayTrack(1);
        QCOMPARE(observer->StartCount(), 0);
    }

    void playsInOrderAndLoopsWithoutCrossfadingShortTracks()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Missing(1), Music(2, QStringLiteral("short_a.mp3"), QStringLiteral("Первый")),
                                Music(3, QStringLiteral("short_b.mp3"))},
                               100, observer.get(), true, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->StartCount() >= 3, Tests::Timeouts::Playback);
        QVERIFY(WaitUntilHeard(ToneA));
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 0.5, Tests::Timeouts::Playback));
        player.Stop();
        const double to = listener->SecondsRecorded();
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{2, 3, 2}));
        QCOMPARE(observer->finished, 0);
        QCOMPARE(EventLog::Count(QStringLiteral(" Начато воспроизведение трека:\n\tПервый-Тест 2 music")), 2);

        const double firstA = ToneTimeline::FirstHeard(listener->A(), ToneA, ToneTimeline::Heard, from);
        const double firstB = ToneTimeline::FirstHeard(listener->A(), ToneB, ToneTimeline::Heard, from);
        const double lastB = ToneTimeline::LastHeard(listener->A(), ToneB, ToneTimeline::Heard);
        QVERIFY2(firstA >= 0 && firstB > firstA &&
                     ToneTimeline::FirstHeard(listener->A(), ToneA, ToneTimeline::Heard, lastB) > 0,
                 qPrintable(QStringLiteral("A at %1, B from %2 to %3").arg(firstA).arg(firstB).arg(lastB)));
        // Shorter than the crossfade interval: one after the other, and each at full
        // volume at once, where a fade-in over the interval would keep it far below.
        const int together = TogetherWindows(from, to, ToneTimeline::NotHeard);
        QVERIFY2(together <= 2, qPrintable(QStringLiteral("%1 tenths of a second together").arg(together)));
        const double a = ToneTimeline::Loudest(listener->A(), ToneA, from, to);
        const double b = ToneTimeline::Loudest(listener->A(), ToneB, from, to);
        QVERIFY2(b > a * 0.85, qPrintable(Describe(b, a)));
    }

    void unplayableFilesAreSkippedAndTheLastTrackPlaysOutWithoutAFade()
    {
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Music(1, QStringLiteral("broken.mp3"), QStringLiteral("Шум")),
                                Music(2, QStringLiteral("empty.mp3"), QStringLiteral("Пусто")),
                                Music(3, QStringLiteral("medium_a.mp3"))},
                               100, observer.get(), true, false);
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->finished, 1, Tests::Timeouts::Playback);
        // The end of a list that does not loop is told once, and it stays quiet.
        const double finishedAt = listener->SecondsRecorded();
        QVERIFY(listener->WaitUntilRecorded(finishedAt + 0.8, Tests::Timeouts::Playback));
        QCOMPARE(observer->finished, 1);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 3}));
        QVERIFY(ToneTimeline::Level(listener->A(), ToneA, finishedAt + 0.3, finishedAt + 0.8) <
                ToneTimeline::NotHeard);
        QCOMPARE(EventLog::Count(QStringLiteral("Ошибка воспроизведения файла Шум")), 1);
        QCOMPARE(EventLog::Count(QStringLiteral("Ошибка воспроизведения файла Пусто")), 1);
        QCOMPARE(EventLog::Count(QStringLiteral("Переход к следующему файлу после ошибки")), 2);
        QVERIFY(!EventLog::Text().contains(QStringLiteral("Ошибка воспроизведения файла medium_a.mp3")));

        // With nothing to crossfade into, its last second is as loud as the loudest
        // before: a fade-out would have brought it below half.
        const double lastA = ToneTimeline::LastHeard(listener->A(), ToneA, ToneTimeline::NotHeard);
        const double whole = ToneTimeline::Loudest(listener->A(), ToneA, from, lastA);
        const double late = ToneTimeline::Loudest(listener->A(), ToneA, lastA - 1.0, lastA);
        QVERIFY2(whole > ToneTimeline::Heard && late > whole * 0.85, qPrintable(Describe(late, whole)));
    }

    void aListThatCannotPlayStopsQuietly_data()
    {
        QTest::addColumn<QStringList>("media");
        QTest::addColumn<QString>("entry");
        QTest::addColumn<int>("starts");
        QTest::newRow("only file missing") << QStringList{QString()} << QString() << 0;
        QTest::newRow("one broken file in a loop")
            << QStringList{QStringLiteral("broken.mp3")}
            << QStringLiteral(
                   "В списке воспроизведения не больше одного трека, невозможно перейти к следущему файлу")
            << 1;
        // Going round a list of broken files for ever would spin the processor.
        QTest::newRow("broken files in a loop")
            << QStringList{QStringLiteral("broken.mp3"), QStringLiteral("empty.mp3")}
            << QStringLiteral(
                   "Невозможно найти следующий файл для воспроизведения, ОСТАНОВКА ВОСПРОИЗВЕДЕНИЯ")
            << 2;
    }

    void aListThatCannotPlayStopsQuietly()
    {
        QFETCH(QStringList, media);
        QFETCH(QString, entry);
        QFETCH(int, starts);
        std::vector<Track> tracks;
        for (const QString& name : media) {
            const int id = static_cast<int>(tracks.size()) + 1;
            tracks.push_back(name.isEmpty() ? Missing(id) : Music(id, name));
        }
        const double from = listener->SecondsRecorded();
        TrackListPlayer player(tracks, 100, observer.get(), false, true);
        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(EventLog::Count(entry), entry.isEmpty() ? 0 : 1, Tests::Timeouts::Playback);
        // Then it stays silent and says so once (a list without files says nothing).
        const double stoppedAt = listener->SecondsRecorded();
        QVERIFY(listener->WaitUntilRecorded(stoppedAt + 1.0, Tests::Timeouts::Playback));
        QCOMPARE(observer->StartCount(), starts);
        QCOMPARE(observer->finished, 0);
        QVERIFY(Tests::PcmAnalysis::Rms(listener->A(), from, stoppedAt + 1.0) < ToneTimeline::NotHeard);
        QCOMPARE(EventLog::Count(entry), entry.isEmpty() ? 0 : 1);
        QVERIFY(!entry.isEmpty() || EventLog::Entries().isEmpty());

        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 2 * starts, Tests::Timeouts::Playback);
    }

    void pauseResumeAndStop()
    {
        TrackListPlayer player(
            {Music(1, QStringLiteral("music_a.mp3")), Music(2, QStringLiteral("music_b.mp3"))}, 100,
            observer.get(), false, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() >= 4, Tests::Timeouts::Playback);
        QVERIFY(WaitUntilHeard(ToneA));
        const double pausedAt = observer->progress.back().progress;
        player.Pause();
        QVERIFY(WaitUntilSilent(ToneA));
        QVERIFY(LoudestOver(ToneA, 0.5, 0) < ToneTimeline::NotHeard);
        const auto progressWhilePaused = observer->progress.size();
        player.Start();
        QVERIFY(observer->starts.back().resumed);
        QVERIFY(WaitUntilHeard(ToneA));
        QTRY_VERIFY_WITH_TIMEOUT(observer->progress.size() > progressWhilePaused, Tests::Timeouts::Quick);
        QVERIFY2(observer->progress.back().progress >= pausedAt,
                 qPrintable(QStringLiteral("%1 after pausing at %2")
                                .arg(observer->progress.back().progress)
                                .arg(pausedAt)));
        // Starting a playing list changes nothing.
        player.Start();
        QCOMPARE(observer->StartCount(), 2);

        // Stopped, it is silent, and Start() begins the list afresh.
        player.GoToNextTrack();
        QVERIFY(WaitUntilHeard(ToneB));
        player.Stop();
        QVERIFY(WaitUntilSilent(ToneB));
        QVERIFY(LoudestOver(ToneB, 0.4, 0) < ToneTimeline::NotHeard);
        player.Start();
        QVERIFY(WaitUntilHeard(ToneA));
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 1, 2, 1}));
        QVERIFY(!observer->starts.back().resumed);
    }

    void volumeAndMuteRules()
    {
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3"))}, 100, observer.get(), false, true);
        player.SetMuted(true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(!observer->progress.empty() && observer->progress.back().progress > 0.25,
                                 Tests::Timeouts::Playback);
        QVERIFY(LoudestOver(ToneA, 0.4, 0) < ToneTimeline::NotHeard);

        player.SetMuted(false);
        QVERIFY(WaitUntilHeard(ToneA));
        const double full = LoudestOver(ToneA, 0.5);
        QVERIFY2(full > ToneTimeline::Heard, qPrintable(QString::number(full)));
        // A volume change while muted is kept for later, not heard now.
        player.SetMuted(true);
        QVERIFY(WaitUntilSilent(ToneA));
        player.SetVolume(70);
        QVERIFY(LoudestOver(ToneA, 0.4) < ToneTimeline::NotHeard);
        player.SetMuted(false);
        QVERIFY(WaitUntilHeard(ToneA));
        const double lower = LoudestOver(ToneA, 0.5);
        QVERIFY2(lower < full * 0.7 && lower > ToneTimeline::NotHeard, qPrintable(Describe(lower, full)));
        // Unmuted, a volume change is heard at once.
        player.SetVolume(100);
        double restored = -1;
        QVERIFY2(listener->WaitForToneLevel(
                     ToneA, [&](double level) { return level > full * 0.8; }, 0.3, Tests::Timeouts::Playback,
                     &restored),
                 qPrintable(Describe(restored, full)));
    }

    void theEqualiserAndMovingThroughTheList()
    {
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3")),
                                Music(2, QStringLiteral("music_b.mp3")),
                                Music(3, QStringLiteral("music_c.mp3")), Missing(4)},
                               100, observer.get(), false, true);
        player.Start();
        WaitUntilPlayedFor(0.25);
        QVERIFY(WaitUntilHeard(ToneA));
        const double plain = LoudestOver(ToneA, 0.5);
        QVERIFY2(plain > ToneTimeline::Heard, qPrintable(QString::number(plain)));

        // Every band and the amplifier at their lowest: a cut of some 40 dB.
        Settings::SetUseEqualizer(true);
        Settings::SetAmplifier(VlcWrapper::GetMinAmplifierValue());
        Settings::SetEqualizerBands(
            std::vector<double>(VlcWrapper::GetEqualizerBandCount(), VlcWrapper::GetMinBandValue()));
        player.GoToNextTrack();
        WaitUntilPlayedFor(0.25);
        const double equalised = LoudestOver(ToneB, 1.0, 0);
        QVERIFY2(equalised < plain * 0.2, qPrintable(Describe(equalised, plain)));

        Settings::SetUseEqualizer(false);
        player.GoToPreviousTrack();
        WaitUntilPlayedFor(0.25);
        double restored = -1;
        QVERIFY2(listener->WaitForToneLevel(
                     ToneA, [&](double level) { return level > plain * 0.7; }, 0.3, Tests::Timeouts::Playback,
                     &restored),
                 qPrintable(Describe(restored, plain)));

        // Back from the first wraps to the last playable one.
        player.GoToPreviousTrack();
        QVERIFY(WaitUntilHeard(ToneC));
        player.PlayTrack(2);
        QVERIFY(WaitUntilHeard(ToneB));
        // The current track, a track without a file and an unknown id are ignored.
        player.PlayTrack(2);
        player.PlayTrack(4);
        player.PlayTrack(99);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2, 1, 3, 2}));
        QVERIFY(LoudestOver(ToneA, 0.5) < ToneTimeline::NotHeard);
    }

    void dontPlayNextTrackEndsAfterTheCurrentOne()
    {
        // Crossfading, where a fade-in of the next track would begin before the end.
        const double from = listener->SecondsRecorded();
        TrackListPlayer player(
            {Music(1, QStringLiteral("medium_a.mp3")), Music(2, QStringLiteral("short_b.mp3"))}, 100,
            observer.get(), true, true);
        player.Start();
        player.SetDontPlayNextTrack(true);
        QTRY_COMPARE_WITH_TIMEOUT(observer->doesntPlayNext, 1, Tests::Timeouts::Playback);
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 0.5, Tests::Timeouts::Playback));
        QVERIFY(ToneTimeline::FirstHeard(listener->A(), ToneB, ToneTimeline::NotHeard, from) < 0);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1}));

        player.Start();
        QTRY_COMPARE_WITH_TIMEOUT(observer->StartCount(), 2, Tests::Timeouts::Playback);
        QCOMPARE(observer->starts.back().trackId, 2);
        QVERIFY(WaitUntilHeard(ToneB));
    }

    void crossfadeBetweenTwoTracks()
    {
        // A 3 s interval on 8 s tones: the next track fades in 3 s before the end, the
        // playing one fades out from 2.25 s before its end, and they swap at its end.
        const double from = listener->SecondsRecorded();
        TrackListPlayer player({Music(1, QStringLiteral("music_a.mp3")),
                                Music(2, QStringLiteral("music_b.mp3"), QStringLiteral("Второй"))},
                               100, observer.get(), true, true);
        player.Start();
        QTRY_VERIFY_WITH_TIMEOUT(observer->StartCount() >= 2, Tests::Timeouts::Playback);
        const int entriesAtSwap =
            EventLog::Count(QStringLiteral(" Начато воспроизведение трека:\n\tВторой-Тест 2 music"));
        const auto progressAtSwap = observer->progress;
        QVERIFY(listener->WaitUntilRecorded(listener->SecondsRecorded() + 2.0, Tests::Timeouts::Playback));
        player.Stop();

        // The first at full volume 3 to 5 s in, before anything of the second.
        const auto& sound = listener->A();
        const double full = ToneTimeline::Loudest(sound, ToneA, from + 3.0, from + 4.8);
        QVERIFY2(full > 0.02, qPrintable(QString::number(full)));
        const double nextHeard = ToneTimeline::FirstHeard(sound, ToneB, ToneTimeline::NotHeard, from);
        QVERIFY2(nextHeard - from >= 4.8, qPrintable(QString::number(nextHeard - from)));
        // Both together for a while, the first dipping 0.75 × the interval before its
        // end and well below full at it, then the second at full.
        const int together = TogetherWindows(nextHeard, nextHeard + 4.0, Faint);
        QVERIFY2(together >= 3, qPrintable(QStringLiteral("%1 tenths of a second together").arg(together)));
        const double lastA = ToneTimeline::LastHeard(sound, ToneA, ToneTimeline::NotHeard);
        double dipped = -1;
        for (double at = from + 4.0; at < lastA && dipped < 0; at += ToneTimeline::Window) {
            dipped = ToneTimeline::Level(sound, ToneA, at, at + ToneTimeline::Window) < full * 0.85 ? at : -1;
        }
        QVERIFY2(
            dipped - from >= 5.6 && dipped <= lastA - 1.5,
            qPrintable(QStringLiteral("dipped at %1 s, ended at %2 s").arg(dipped - from).arg(lastA - from)));
        const double endOfA = ToneTimeline::Loudest(sound, ToneA, lastA - 0.5, lastA);
        QVERIFY2(endOfA < full * 0.5, qPrintable(Describe(endOfA, full)));
        const double afterA = ToneTimeline::Loudest(sound, ToneB, lastA + 0.2, lastA + 1.5);
        QVERIFY2(afterA > full * 0.8, qPrintable(Describe(afterA, full)));

        // Reported started at the swap (logged once, when its fade-in began), with the
        // progress at the swap in the unit of position over milliseconds.
        QCOMPARE(entriesAtSwap, 1);
        QCOMPARE(observer->StartedIds(), (std::vector<std::int32_t>{1, 2}));
        QVERIFY(!observer->starts[1].resumed);
        const double swapAfter = (observer->starts[1].atMs - observer->starts[0].atMs) / 1000.0;
        QVERIFY2(swapAfter >= 7.9 && swapAfter <= 9.5, qPrintable(QString::number(swapAfter)));
        const qint64 swappedAt = observer->starts[1].atMs;
        QVERIFY2(std::any_of(progressAtSwap.begin(), progressAtSwap.end(),
                             [swappedAt](const auto& entry) {
                                 return std::abs(entry.atMs - swappedAt) <= 5 && entry.progress > 0 &&
                                        entry.progress < 0.001 &&
                                        std::abs(entry.durationSeconds - 8.07) < 0.1;
                             }),
                 "no progress in the unit of the swap");
    }

private:
    // How many tenths of a second within [from, to) both tones A and B sound in.
    int TogetherWindows(double from, double to, double threshold)
    {
        int together = 0;
        for (double at = from; at + ToneTimeline::Window <= to; at += ToneTimeline::Window) {
            const double end = at + ToneTimeline::Window;
            together += ToneTimeline::Level(listener->A(), ToneA, at, end) > threshold &&
                        ToneTimeline::Level(listener->A(), ToneB, at, end) > threshold;
        }
        return together;
    }

    // Waits until the track that has just started has played `fraction` of itself.
    void WaitUntilPlayedFor(double fraction)
    {
        observer->progress.clear();
        QTRY_VERIFY_WITH_TIMEOUT(!observer->progress.empty() && observer->progress.back().progress > fraction,
                                 Tests::Timeouts::Playback);
    }

    bool WaitUntilHeard(double frequency)
    {
        const double from = listener->SecondsRecorded();
        return QTest::qWaitFor(
            [&]() {
                return ToneTimeline::FirstHeard(listener->A(), frequency, ToneTimeline::Heard, from) >= 0;
            },
            Tests::Timeouts::Playback);
    }

    bool WaitUntilSilent(double frequency)
    {
        return listener->WaitForToneLevel(
            frequency, [](double level) { return level < ToneTimeline::NotHeard; }, 0.3,
            Tests::Timeouts::Playback);
    }

    // A tone's loudest window over the next `seconds`, once the last change is heard.
    double LoudestOver(double frequency, double seconds, double settle = 0.35)
    {
        const double from = listener->SecondsRecorded() + settle;
        if (!listener->WaitUntilRecorded(from + seconds, Tests::Timeouts::Playback)) {
            return -1.0;
        }
        return ToneTimeline::Loudest(listener->A(), frequency, from, from + seconds);
    }

    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<Observer> observer;
    std::unique_ptr<Tests::TwoSinkListener> listener;
};

QTEST_GUILESS_MAIN(TrackListPlayerTest)
#include "tst_track_list_player.moc"

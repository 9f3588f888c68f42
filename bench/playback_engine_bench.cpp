// The playback engine's figures, on real libvlc sound:
//
// 1. Ad start latency: from the minute an interrupting ad block is due, with music
//    playing, to its first spot playing. Goal: p99 at most 300 ms to the spot's
//    libvlc status Playing. The engine makes and holds the spot's media player out
//    of a benchmark's reach, so the spot is heard on the sink's monitor instead, and
//    the delay from Playing to heard, measured in the same run on a media player of
//    our own playing the same spot on the same sink, is taken off. That also takes
//    off the error of placing the recording on the steady clock (the sink renders
//    ahead in blocks of a few tens of milliseconds), which both share. The ads are
//    timed in a chain started on a whole second, as when playback runs into a period
//    at its minute, and in one started elsewhere in a second, as when a person
//    starts the player.
// 2. Hand-over silence: how long the sound stops when one period hands over to the
//    next at a minute boundary, with another playlist (440 Hz, then 660 Hz) and with
//    the same one (the block goes on: no silence expected).
// 3. Building the chain of periods for a large configuration against parsing that
//    configuration's JSON, the median of several runs of each.
//
//   playback_engine_bench [AD_BLOCKS]      (25 by default, at least 20)
//
// Exits with 0 when the goal is met for a chain started on a whole second. Uses
// PULSE_SERVER when it is set (with the sinks of ZELMAR_TEST_SINK_A and _B, else the
// tests' sink names), else starts the tests' private sound server; uses
// ZELMAR_TEST_MEDIA_DIR when it is set, else makes the tests' media. "Now" is moved
// to a couple of seconds before a minute for each case: nothing waits for a real one.

#include "bench/configuration_generator.h"
#include "core/content_playing/ads_block.h"
#include "core/content_playing/music_block.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/playable_period_builder.h"
#include "core/content_playing/playable_period_observer.h"
#include "core/networking/json_converter.h"
#include "core/utilities/clock.h"
#include "core/utilities/local_time_helper.h"
#include "core/vendor/vlc_wrapper.h"
#include "tests/core/content_playing/playback_test_tracks.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/support/pcm_analysis.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"

#include <QCoreApplication>
#include <QDate>
#include <QDateTime>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTime>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

using Core::ContentPlaying::AdsBlock;
using Core::ContentPlaying::MusicBlock;
using Core::ContentPlaying::PlayablePeriod;
using Core::ContentPlaying::PlayablePeriodInfo;
using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;
using Core::Utilities::Clock;
using Tests::PcmAnalysis;
using Tests::TestMedia;
using Tests::ToneTimeline;

constexpr int kDefaultAdBlocks = 25;
constexpr int kMinimumAdBlocks = 20;
// Ads of a chain started in the middle of a second, at these fractions of it.
constexpr int kMidSecondBlocks = 10;
constexpr int kBarePlays = 10;
constexpr int kHandOvers = 5;
constexpr int kBuildRuns = 9;
constexpr double kGoalMs = 300.0;
// Scheduling happens this long before the minute, so that a couple of seconds of
// music run before each ad.
constexpr int kLeadMs = 2000;
// How long after the moment of interest the recording is kept before it is judged.
constexpr double kHeardAfterSeconds = 1.2;
// A tone counts as sounding in a window of 5 ms where its level is at least half its
// steady level; the tone's edge is then the window's middle, to about 1 ms.
constexpr double kEdgeWindow = 0.005;
constexpr double kEdgeStep = 0.001;
// A tone above this level in a tenth of a second is heard (the tests' threshold; the
// generated tones sound at about 0.09).
constexpr double kHeard = Tests::ToneTimeline::Heard;
constexpr int kWaitMs = 20000;

double SteadyMs()
{
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double Percentile(std::vector<double> values, double fraction)
{
    if (values.empty()) {
        return std::nan("");
    }
    std::sort(values.begin(), values.end());
    // Nearest rank: with 25 values the 99th percentile is the largest.
    const auto rank = static_cast<std::size_t>(std::ceil(fraction * static_cast<double>(values.size())));
    return values[std::min(values.size(), std::max<std::size_t>(rank, 1)) - 1];
}

double Median(const std::vector<double>& values)
{
    return Percentile(values, 0.5);
}

// Runs one of the tests' fixture scripts to its end; true when it succeeded.
bool RunFixture(const char* script, const QStringList& arguments)
{
    return QProcess::execute(QString::fromLocal8Bit(script), arguments) == 0;
}

// Keeps the event loop turning (timers, libvlc's polled states, the recorders) for
// `ms` milliseconds.
void RunEventLoop(int ms)
{
    QEventLoop loop;
    QTimer::singleShot(ms, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// The tests' sound server runs in a session of its own: an interrupted run must not
// leave one behind. Only what is safe in a signal handler is used here.
pid_t ownSoundServer = 0;

void StopOwnSoundServerAndExit(int signalNumber)
{
    if (ownSoundServer > 0) {
        kill(ownSoundServer, SIGTERM);
    }
    _exit(128 + signalNumber);
}

// The tests' sound server, its media and a fresh data directory, unless the caller
// already gave the first two.
class Environment
{
public:
    bool Prepare()
    {
        if (!work.isValid()) {
            std::fprintf(stderr, "no temporary folder\n");
            return false;
        }
        if (qEnvironmentVariableIsEmpty("PULSE_SERVER")) {
            soundDirectory = work.filePath(QStringLiteral("sound"));
            if (!RunFixture(ZELMAR_BENCH_SOUND_SERVER, {QStringLiteral("start"), soundDirectory})) {
                std::fprintf(stderr, "the sound server did not start\n");
                soundDirectory.clear();
                return false;
            }
            qputenv("PULSE_SERVER", ("unix:" + soundDirectory + QStringLiteral("/native")).toLocal8Bit());
            QFile pidFile(soundDirectory + QStringLiteral("/pulseaudio.pid"));
            if (pidFile.open(QIODevice::ReadOnly)) {
                ownSoundServer = static_cast<pid_t>(pidFile.readAll().trimmed().toInt());
                std::signal(SIGINT, StopOwnSoundServerAndExit);
                std::signal(SIGTERM, StopOwnSoundServerAndExit);
            }
        }
        // The sinks the tests' sound server makes, unless the caller names others.
        if (qEnvironmentVariableIsEmpty("ZELMAR_TEST_SINK_A")) {
            qputenv("ZELMAR_TEST_SINK_A", "zelmar_sink_a");
        }
        if (qEnvironmentVariableIsEmpty("ZELMAR_TEST_SINK_B")) {
            qputenv("ZELMAR_TEST_SINK_B", "zelmar_sink_b");
        }
        if (TestMedia::Directory().isEmpty()) {
            const QString media = work.filePath(QStringLiteral("media"));
            if (!RunFixture(ZELMAR_BENCH_MAKE_TEST_MEDIA, {media})) {
                std::fprintf(stderr, "the test media could not be made (run scripts/install-deps)\n");
                return false;
            }
            qputenv("ZELMAR_TEST_MEDIA_DIR", media.toLocal8Bit());
        }
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        return dataDirectory->IsValid();
    }

    ~Environment()
    {
        dataDirectory.reset();
        if (!soundDirectory.isEmpty()) {
            std::signal(SIGINT, SIG_DFL);
            std::signal(SIGTERM, SIG_DFL);
            RunFixture(ZELMAR_BENCH_SOUND_SERVER, {QStringLiteral("stop"), soundDirectory});
        }
    }

private:
    QTemporaryDir work;
    QString soundDirectory;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
};

// Where the default sink's recording stands against the steady clock. A sample
// reaches the recorder only after the sink has played it, so every look at the
// recording bounds the steady time of its first sample from above; the lowest bound
// seen near a moment is taken, which the recorder's 20 ms reads keep within a few
// milliseconds of the truth.
class RecordingClock
{
public:
    explicit RecordingClock(const Tests::TwoSinkListener& listener)
        : listener(listener)
    {
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, [this]() { TakeLook(); });
        timer.start(2);
    }

    double SecondsAt(double steadyMs) const
    {
        return (steadyMs - FirstSampleAt(steadyMs)) / 1000.0;
    }

private:
    struct Bound
    {
        double steadyMs;
        double firstSampleMs;
    };

    void TakeLook()
    {
        const double now = SteadyMs();
        const auto count = static_cast<double>(listener.A().size());
        bounds.push_back({now, now - count * 1000.0 / PcmAnalysis::SampleRate});
    }

    double FirstSampleAt(double steadyMs) const
    {
        // Only looks from the ten seconds around the moment: a sound server that
        // drops samples under load moves the timeline, and a late moment must not be
        // placed by an early bound.
        constexpr double kNearMs = 10000.0;
        double best = std::numeric_limits<double>::max();
        for (const auto& bound : bounds) {
            if (std::abs(bound.steadyMs - steadyMs) <= kNearMs) {
                best = std::min(best, bound.firstSampleMs);
            }
        }
        return best;
    }

    const Tests::TwoSinkListener& listener;
    QTimer timer;
    std::vector<Bound> bounds;
};

// Where a tone starts and ends in a recording, to about a millisecond, given its
// level where it sounds steadily.
class ToneEdges
{
public:
    ToneEdges(const std::vector<std::int16_t>& samples, double frequency)
        : samples(samples)
        , frequency(frequency)
    {
    }

    // The tone's level over a stretch where it sounds; 0 when it is not heard in
    // [from, to).
    double SteadyLevel(double fromSeconds, double toSeconds) const
    {
        const double heard = ToneTimeline::FirstHeard(samples, frequency, kHeard, fromSeconds);
        if (heard < 0 || heard >= toSeconds) {
            return 0.0;
        }
        return ToneTimeline::Level(samples, frequency, heard + 0.3, heard + 0.6);
    }

    // The first moment in [from, to) at which the tone sounds; -1 when it does not.
    double Start(double steady, double fromSeconds, double toSeconds) const
    {
        for (int step = 0;; ++step) {
            const double at = fromSeconds + step * kEdgeStep;
            if (at + kEdgeWindow > toSeconds) {
                return -1.0;
            }
            if (Sounds(steady, at)) {
                return at + kEdgeWindow / 2;
            }
        }
    }

    // The last moment in [from, to) at which the tone sounds; -1 when it does not.
    double End(double steady, double fromSeconds, double toSeconds) const
    {
        for (int step = 0;; ++step) {
            const double at = toSeconds - kEdgeWindow - step * kEdgeStep;
            if (at < fromSeconds) {
                return -1.0;
            }
            if (Sounds(steady, at)) {
                return at + kEdgeWindow / 2;
            }
        }
    }

    // The longest stretch of [from, to) in which the tone does not sound.
    double LongestGap(double steady, double fromSeconds, double toSeconds) const
    {
        int longest = 0;
        int current = 0;
        for (int step = 0; fromSeconds + step * kEdgeStep + kEdgeWindow <= toSeconds; ++step) {
            current = Sounds(steady, fromSeconds + step * kEdgeStep) ? 0 : current + 1;
            longest = std::max(longest, current);
        }
        return longest * kEdgeStep;
    }

private:
    bool Sounds(double steady, double at) const
    {
        return PcmAnalysis::ToneLevel(samples, frequency, at, at + kEdgeWindow) >= steady / 2;
    }

    const std::vector<std::int16_t>& samples;
    double frequency;
};

// Notes when the periods started and when the engine started an ad block's first
// spot.
class PeriodEventsObserver : public Core::ContentPlaying::PlayablePeriodObserver
{
public:
    void PeriodStarted(std::shared_ptr<PlayablePeriod>) override
    {
        ++periodsStarted;
        lastPeriodStartedMs = SteadyMs();
    }
    void LastPeriodFinished(std::shared_ptr<PlayablePeriod>) override {}
    void CurrentPeriodNotFound() override {}
    void PeriodStartedPlayingTrack(std::shared_ptr<PlayablePeriod>, ContentType type, int, const Track&,
                                   bool resumed) override
    {
        if (type == ContentType::Clip && !resumed && adStartedMs < 0) {
            adStartedMs = SteadyMs();
        }
    }
    void PeriodChangedProgress(std::shared_ptr<PlayablePeriod>, ContentType, double, double) override {}
    void PeriodFinishedPlayingAdBlock(std::shared_ptr<PlayablePeriod>) override {}
    bool PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod>) override
    {
        return true;
    }

    int periodsStarted = 0;
    double lastPeriodStartedMs = -1.0;
    double adStartedMs = -1.0;
};

std::string HoursMinutes(const QTime& time)
{
    return time.toString(QStringLiteral("HH:mm")).toStdString();
}

// A period of today from `start` for `minutes`, with music of one playlist.
std::shared_ptr<PlayablePeriod> MakePeriod(const QTime& start, int minutes, const Track& music,
                                           int playlistId)
{
    PlayablePeriodInfo info;
    info.name = "Бенчмарк " + HoursMinutes(start);
    info.startTime = HoursMinutes(start);
    info.endTime = HoursMinutes(start.addSecs(minutes * 60));
    info.date = Core::Utilities::LocalTimeHelper::CurrentDateToString();
    info.dayOfWeek = QDate::currentDate().toString(QStringLiteral("dddd")).toStdString();
    info.adsVolume = 100;
    info.contentVolume = 100;
    info.SetPlaylistIdentifier(ContentType::Music, playlistId);
    auto period = std::make_shared<PlayablePeriod>();
    period->SetInfo(info);
    period->SetBlock(ContentType::Music, std::make_shared<MusicBlock>(std::vector<Track>{music}, 100));
    return period;
}

// From now on the clock reads `leadMs` before `minute` of today, and runs on.
void MoveClockBefore(const QTime& minute, int leadMs = kLeadMs)
{
    Clock::SetCurrentDateTimeForTesting(QDateTime(QDate::currentDate(), minute).addMSecs(-leadMs));
}

// The steady time at which the clock reaches `minute` of today: now, plus what is
// left to it.
double SteadyMsAt(const QTime& minute)
{
    const double steadyNow = SteadyMs();
    const std::int64_t left =
        QDateTime(QDate::currentDate(), minute).toMSecsSinceEpoch() - Clock::CurrentMSecsSinceEpoch();
    return steadyNow + static_cast<double>(left);
}

struct Latencies
{
    // The scheduler counts whole seconds: how far past its second "now" was when
    // the ad's timer was set is how late the timer fires.
    std::vector<double> scheduledPastSecondMs;
    std::vector<double> engineMs;
    std::vector<double> heardMs;
};

struct BarePlays
{
    std::vector<double> playingMs;
    std::vector<double> reportedMs;
    std::vector<double> heardMs;
};

// Lets everything play on until the recording holds the moment and a while after it.
bool WaitForRecording(Tests::TwoSinkListener& listener, const RecordingClock& clock, double steadyMs)
{
    return listener.WaitUntilRecorded(clock.SecondsAt(steadyMs) + kHeardAfterSeconds, kWaitMs);
}

// The spot played on a media player of our own: from Play() to libvlc's status
// Playing (looked at every millisecond), to the player's own polled report of it, and
// to its tone on the sink. The first play, which loads libvlc's modules, is not
// counted: the engine's ads come later in the run.
bool MeasureBarePlays(Tests::TwoSinkListener& listener, const RecordingClock& clock, BarePlays& result)
{
    const QString spot = TestMedia::Path(QStringLiteral("ad_short.mp3"));
    for (int i = -1; i < kBarePlays; ++i) {
        Core::Vendor::VlcWrapper player;
        double playingMs = -1.0;
        double reportedMs = -1.0;
        QTimer look;
        look.setTimerType(Qt::PreciseTimer);
        QObject::connect(&look, &QTimer::timeout, [&]() {
            if (playingMs < 0 && player.GetStatus() == Core::Vendor::VlcStatus::Playing) {
                playingMs = SteadyMs();
            }
        });
        QObject::connect(&player, &Core::Vendor::VlcWrapper::mediaStatusChanged,
                         [&](Core::Vendor::VlcStatus status) {
                             if (status == Core::Vendor::VlcStatus::Playing && reportedMs < 0) {
                                 reportedMs = SteadyMs();
                             }
                         });
        player.SetMedia(QUrl::fromLocalFile(spot));
        player.SetVolume(100);
        look.start(1);
        const double playMs = SteadyMs();
        player.Play();
        if (!WaitForRecording(listener, clock, playMs)) {
            std::fprintf(stderr, "the recording stopped\n");
            return false;
        }
        player.Stop();
        const ToneEdges edges(listener.A(), TestMedia::AdFrequency);
        const double from = clock.SecondsAt(playMs);
        const double steady = edges.SteadyLevel(from, from + kHeardAfterSeconds);
        const double heard = steady > 0 ? edges.Start(steady, from, from + kHeardAfterSeconds) : -1.0;
        if (heard < 0 || playingMs < 0 || reportedMs < 0) {
            std::fprintf(stderr, "a spot played on its own was not heard or never reported Playing\n");
            return false;
        }
        if (i >= 0) {
            result.playingMs.push_back(playingMs - playMs);
            result.reportedMs.push_back(reportedMs - playMs);
            result.heardMs.push_back((heard - from) * 1000.0);
        }
        RunEventLoop(300);
    }
    return true;
}

// One interrupting ad block per case, due at a minute, in a period of its own with
// music playing beneath it since a couple of seconds before. Case i starts its period
// `phasesMs[i]` past a whole second: 0 as when the chain runs into a period at its
// minute, anything else as when a person starts the player.
bool MeasureAdStarts(Tests::TwoSinkListener& listener, const RecordingClock& clock,
                     const std::vector<int>& phasesMs, const QTime& firstPeriod, Latencies& result)
{
    const Track music =
        Tests::PlaybackTestTracks::Cached(1, ContentType::Music, QStringLiteral("music_a.mp3"));
    const Track spot =
        Tests::PlaybackTestTracks::Cached(2, ContentType::Clip, QStringLiteral("ad_short.mp3"));
    for (std::size_t i = 0; i < phasesMs.size(); ++i) {
        const QTime periodStart = firstPeriod.addSecs(static_cast<int>(i) * 120);
        const QTime adStart = periodStart.addSecs(60);
        const int leadMs = kLeadMs + (1000 - phasesMs[i]) % 1000;
        MoveClockBefore(adStart, leadMs);
        auto period = MakePeriod(periodStart, 2, music, 1);
        auto ad = std::make_shared<AdsBlock>(std::vector<Track>{spot}, 99, true);
        ad->SetName("Реклама " + HoursMinutes(adStart));
        ad->SetDate(period->GetInfo().date);
        ad->SetStartTimeStr(HoursMinutes(adStart));
        period->TryToAddAdvertisingBlocks({ad});
        PeriodEventsObserver observer;
        period->SetObserverForSequence(&observer);

        const double dueMs = SteadyMsAt(adStart);
        // Starting the period schedules its ads last.
        period->FindAndStartCurrent();
        const double scheduledMs = SteadyMs();
        // A late spot is listened to for as long as one on time.
        const bool recorded = WaitForRecording(listener, clock, dueMs) && observer.adStartedMs >= 0 &&
                              WaitForRecording(listener, clock, observer.adStartedMs);
        period->FindAndStopCurrent();
        if (!recorded || observer.periodsStarted != 1) {
            std::fprintf(stderr, "ad block %zu: the period did not start or the ad was not started\n", i + 1);
            return false;
        }
        const ToneEdges edges(listener.A(), TestMedia::AdFrequency);
        const double due = clock.SecondsAt(dueMs);
        const double to = clock.SecondsAt(observer.adStartedMs) + kHeardAfterSeconds;
        const double steady = edges.SteadyLevel(due - 0.5, to);
        const double at = steady > 0 ? edges.Start(steady, due - 0.5, to) : -1.0;
        if (at < 0) {
            std::fprintf(stderr, "ad block %zu: the spot was not heard\n", i + 1);
            return false;
        }
        const double wholeSecondMs = dueMs - std::ceil(leadMs / 1000.0) * 1000.0;
        result.scheduledPastSecondMs.push_back(scheduledMs - wholeSecondMs);
        result.engineMs.push_back(observer.adStartedMs - dueMs);
        result.heardMs.push_back((at - due) * 1000.0);
        RunEventLoop(300);
    }
    return true;
}

// Two periods meeting at a minute, the second with the first one's music playlist or
// another; the silence between the first period's tone and the second's, in ms
// (-1 when it could not be measured).
double MeasureHandOver(Tests::TwoSinkListener& listener, const RecordingClock& clock,
                       const QTime& periodStart, bool samePlaylist)
{
    const Track musicA =
        Tests::PlaybackTestTracks::Cached(11, ContentType::Music, QStringLiteral("music_a.mp3"));
    const Track musicB =
        Tests::PlaybackTestTracks::Cached(12, ContentType::Music, QStringLiteral("music_b.mp3"));
    const QTime boundaryTime = periodStart.addSecs(60);
    MoveClockBefore(boundaryTime);
    auto first = MakePeriod(periodStart, 1, musicA, 1);
    auto second =
        samePlaylist ? MakePeriod(boundaryTime, 1, musicA, 1) : MakePeriod(boundaryTime, 1, musicB, 2);
    first->SetNextPeriod(second);
    PeriodEventsObserver observer;
    first->SetObserverForSequence(&observer);

    const double boundaryMs = SteadyMsAt(boundaryTime);
    first->FindAndStartCurrent();
    const bool recorded = WaitForRecording(listener, clock, boundaryMs) && observer.periodsStarted == 2 &&
                          WaitForRecording(listener, clock, observer.lastPeriodStartedMs);
    second->FindAndStopCurrent();
    first->FindAndStopCurrent();
    if (!recorded) {
        std::fprintf(stderr, "the second period did not take over\n");
        return -1.0;
    }

    const double boundary = clock.SecondsAt(boundaryMs);
    const double from = boundary - 1.0;
    const double to = clock.SecondsAt(observer.lastPeriodStartedMs) + kHeardAfterSeconds;
    const ToneEdges before(listener.A(), TestMedia::MusicAFrequency);
    const double steadyBefore = before.SteadyLevel(boundary - 2.0, boundary);
    if (steadyBefore <= 0) {
        std::fprintf(stderr, "the first period's music was not heard\n");
        return -1.0;
    }
    if (samePlaylist) {
        return before.LongestGap(steadyBefore, from, to) * 1000.0;
    }
    const ToneEdges after(listener.A(), TestMedia::MusicBFrequency);
    const double steadyAfter = after.SteadyLevel(boundary - 0.5, to);
    const double end = before.End(steadyBefore, from, to);
    const double start = steadyAfter > 0 ? after.Start(steadyAfter, from, to) : -1.0;
    if (end < 0 || start < 0) {
        std::fprintf(stderr, "the hand-over was not heard\n");
        return -1.0;
    }
    return (start - end) * 1000.0;
}

struct HandOvers
{
    std::vector<double> otherPlaylistMs;
    std::vector<double> samePlaylistMs;
};

bool MeasureHandOvers(Tests::TwoSinkListener& listener, const RecordingClock& clock, HandOvers& result)
{
    for (int i = 0; i < kHandOvers; ++i) {
        const QTime start = QTime(12, 0).addSecs(i * 240);
        result.otherPlaylistMs.push_back(MeasureHandOver(listener, clock, start, false));
        result.samePlaylistMs.push_back(MeasureHandOver(listener, clock, start.addSecs(120), true));
        if (result.otherPlaylistMs.back() < 0 || result.samePlaylistMs.back() < 0) {
            return false;
        }
    }
    return true;
}

double Milliseconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// Building the chain against parsing the JSON it comes from, alternately, the
// median of each side.
bool MeasureBuilding()
{
    using Core::ContentPlaying::PlayablePeriodBuilder;
    using Core::Networking::JsonConverter;

    const Core::DataTypes::Playback::PlaybackConfiguration configuration =
        Bench::ConfigurationGenerator().Generate(Bench::ConfigurationGenerator::Sizes());
    const QString text = JsonConverter::PlaybackConfigurationToString(configuration);
    std::size_t periodCount = 0;
    for (const auto& day : configuration.days) {
        periodCount += day.periods.size();
    }

    // A fast build of the wrong chain proves nothing.
    std::vector<std::shared_ptr<PlayablePeriod>> periods;
    try {
        periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "building the chain failed: %s\n", error.what());
        return false;
    }
    const bool linked =
        !periods.empty() && std::all_of(periods.begin(), periods.end() - 1,
                                        [&](const auto& p) { return p->GetNextPeriod() != nullptr; });
    if (periods.size() != periodCount || !linked || periods.front()->GetTracks(ContentType::Music).empty()) {
        std::fprintf(stderr, "the chain does not hold the configuration's periods\n");
        return false;
    }
    periods.clear();

    std::vector<double> buildTimes;
    std::vector<double> parseTimes;
    volatile std::size_t sink = 0;
    for (int i = 0; i < kBuildRuns; ++i) {
        parseTimes.push_back(Milliseconds(
            [&] { sink = sink + JsonConverter::PlaybackConfigurationFromResponse(text)->days.size(); }));
        // The chain is let go outside the measured time.
        buildTimes.push_back(
            Milliseconds([&] { periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration); }));
        sink = sink + periods.size();
        periods.clear();
    }
    const double build = Median(buildTimes);
    const double parse = Median(parseTimes);
    std::printf("\nBuilding the chain (%zu periods, %zu ad blocks configured), median of %d runs:\n",
                periodCount, configuration.adBlocks.size(), kBuildRuns);
    std::printf("  parse the configuration (JsonConverter): %8.1f ms\n", parse);
    std::printf("  build the chain (PlayablePeriodBuilder): %8.1f ms\n", build);
    std::printf("  ratio build / parse: %.2f\n", build / parse);
    return true;
}

void PrintLatency(const char* what, const std::vector<double>& values)
{
    std::printf("  %-56s p50 %5.0f ms   p99 %5.0f ms\n", what, Median(values), Percentile(values, 0.99));
}

// What a spot's first sound says of its libvlc status Playing: the sound less the
// delay from Playing to the sound of the spot played on its own.
std::vector<double> PlayingFromHeard(const std::vector<double>& heardMs, double outputDelayMs)
{
    std::vector<double> playing;
    for (const double heard : heardMs) {
        playing.push_back(heard - outputDelayMs);
    }
    return playing;
}

// Prints the figures of one series; true when it meets the goal.
bool PrintAdStarts(const char* title, const Latencies& ads, double outputDelayMs)
{
    std::printf("\n%s, %zu interrupting ad blocks over music, from the minute due:\n", title,
                ads.heardMs.size());
    PrintLatency("(its timer set, past the whole second it counts from)", ads.scheduledPastSecondMs);
    PrintLatency("the engine starts the spot", ads.engineMs);
    PrintLatency("its tone on the sink", ads.heardMs);
    const std::vector<double> playing = PlayingFromHeard(ads.heardMs, outputDelayMs);
    PrintLatency("its libvlc status Playing (tone less the baseline delay)", playing);
    const double p99 = Percentile(playing, 0.99);
    std::printf("  goal p99 <= %.0f ms to Playing: %s\n", kGoalMs, p99 <= kGoalMs ? "met" : "NOT met");
    return p99 <= kGoalMs;
}

} // namespace

int main(int argc, char** argv)
{
    const int blocks = argc > 1 ? std::atoi(argv[1]) : kDefaultAdBlocks;
    if (blocks < kMinimumAdBlocks) {
        std::fprintf(stderr, "usage: %s [AD_BLOCKS]   (at least %d)\n", argv[0], kMinimumAdBlocks);
        return 2;
    }
    QCoreApplication application(argc, argv);
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the building figures mean little\n");
#endif
    Environment environment;
    if (!environment.Prepare()) {
        return 1;
    }
    if (!MeasureBuilding()) {
        return 1;
    }

    Tests::TwoSinkListener listener;
    if (!listener.Start()) {
        std::fprintf(stderr, "cannot listen to the sinks: %s\n", qPrintable(listener.ErrorString()));
        return 1;
    }
    RecordingClock clock(listener);
    RunEventLoop(500);

    BarePlays bare;
    Latencies onWholeSecond;
    Latencies midSecond;
    std::vector<int> midSecondPhases;
    for (int i = 0; i < kMidSecondBlocks; ++i) {
        midSecondPhases.push_back(50 + i * 1000 / kMidSecondBlocks);
    }
    HandOvers handOvers;
    const bool measured =
        MeasureBarePlays(listener, clock, bare) &&
        MeasureAdStarts(listener, clock, std::vector<int>(static_cast<std::size_t>(blocks), 0), QTime(8, 0),
                        onWholeSecond) &&
        MeasureAdStarts(listener, clock, midSecondPhases, QTime(10, 0), midSecond) &&
        MeasureHandOvers(listener, clock, handOvers);
    Clock::ResetForTesting();
    if (!measured) {
        return 1;
    }

    std::vector<double> outputDelay;
    for (std::size_t i = 0; i < bare.heardMs.size(); ++i) {
        outputDelay.push_back(bare.heardMs[i] - bare.playingMs[i]);
    }
    const double delay = Median(outputDelay);
    std::printf("\nBaseline: the spot played on a media player of our own, %d times:\n", kBarePlays);
    PrintLatency("Play() to libvlc status Playing", bare.playingMs);
    PrintLatency("Play() to the player's polled report of Playing", bare.reportedMs);
    PrintLatency("Play() to its tone on the sink", bare.heardMs);
    PrintLatency("Playing to its tone on the sink (the baseline delay)", outputDelay);

    const bool met = PrintAdStarts(
        "Ad start latency, chain started on a whole second (as at a period's start)", onWholeSecond, delay);
    PrintAdStarts("Ad start latency, chain started 50..950 ms past a second", midSecond, delay);

    std::printf("\nHand-over silence at the minute, %d hand-overs each:\n", kHandOvers);
    std::printf("  another playlist (440 Hz, then 660 Hz): median %5.0f ms   max %5.0f ms\n",
                Median(handOvers.otherPlaylistMs), Percentile(handOvers.otherPlaylistMs, 1.0));
    std::printf("  the same playlist (the block goes on):  median %5.0f ms   max %5.0f ms   (expected 0)\n",
                Median(handOvers.samePlaylistMs), Percentile(handOvers.samePlaylistMs, 1.0));
    return met ? 0 : 1;
}

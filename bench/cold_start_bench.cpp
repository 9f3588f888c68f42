// How soon a shop hears music after the computer starts the player: from the
// launch of zelmar-player, with a stored sign-in and the schedule's files already
// in its cache, to the first sound on the sink. Goal: at most 1.5 s. cvlc started
// on the same file, on the same sound server, is the baseline of the same run.
//
//   cold_start_bench [RUNS]      (5 by default)
//
// The sound is timed on the sink, from a recording that began before the launch,
// never from the event log. "Cold" is the program's own start: the system's file
// cache is warm, as it is for a player started again after a crash or a sign-out.

#include "bench/demo_stage.h"
#include "bench/measured_process.h"
#include "bench/stored_sign_in.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

using Bench::DemoStage;
using Bench::MeasuredProcess;

constexpr double GoalSeconds = 1.5;
// Far above the goal: a start that takes this long is a failure, not a figure.
constexpr int FirstSoundTimeoutMs = 60000;

struct Figures
{
    double median = 0;
    double best = 0;
    double worst = 0;
};

Figures Summarise(std::vector<double> seconds)
{
    std::sort(seconds.begin(), seconds.end());
    return {seconds[seconds.size() / 2], seconds.front(), seconds.back()};
}

// `runs` launches, each timed to its first sound and stopped.
bool TimeRuns(DemoStage& stage, const QString& name, int runs,
              const std::function<bool(MeasuredProcess&, QString*)>& launch, std::vector<double>* seconds,
              QString* error)
{
    for (int run = 1; run <= runs; ++run) {
        MeasuredProcess process(name, stage.WorkPath(QStringLiteral("%1-%2.out").arg(name).arg(run)));
        double heard = 0;
        if (!stage.TimeToFirstSound([&](QString* launchError) { return launch(process, launchError); },
                                    [&process]() { return process.IsRunning(); }, FirstSoundTimeoutMs, &heard,
                                    error)) {
            *error = name + QStringLiteral(", run %1: ").arg(run) + *error +
                     QStringLiteral("; its last output:\n") + process.OutputTail();
            return false;
        }
        process.Stop();
        std::printf("  %s, run %d: %.3f s\n", qPrintable(name), run, heard);
        std::fflush(stdout);
        seconds->push_back(heard);
    }
    return true;
}

bool Run(DemoStage& stage, int runs)
{
    QString error;
    const auto failed = [&error]() {
        std::fprintf(stderr, "error: %s\n",
                     DemoStage::Interrupted() ? "interrupted; stopping what was started" : qPrintable(error));
        return false;
    };
    QString dataDirectory;
    if (!stage.PrepareDataDirectory(QStringLiteral("cold"), false, &dataDirectory, &error)) {
        return failed();
    }
    // The first start downloads the schedule's files; the timed ones find them cached.
    QString firstMusic;
    {
        MeasuredProcess first(QStringLiteral("zelmar-player"), stage.WorkPath(QStringLiteral("first.out")));
        DemoStage::StartUp startUp;
        if (!stage.StartApplication(first, dataDirectory, {QStringLiteral("music")}, &startUp, &error)) {
            return failed();
        }
        firstMusic =
            stage.MediaFile(QStringLiteral("music"), startUp.firstTracks.value(QStringLiteral("music")));
        std::printf("first start, signed in and downloading: heard after %.1f s, cache full by %.1f s\n",
                    startUp.heardSeconds, startUp.cacheFullSeconds);
        first.Stop();
    }
    if (firstMusic.isEmpty()) {
        error = QStringLiteral("the first music track is not among the served files");
        return failed();
    }

    std::vector<double> player;
    std::vector<double> cvlc;
    const bool timed = TimeRuns(
                           stage, QStringLiteral("zelmar-player"), runs,
                           [&](MeasuredProcess& process, QString* launchError) {
                               return stage.LaunchApplication(process, dataDirectory, launchError);
                           },
                           &player, &error) &&
                       TimeRuns(
                           stage, QStringLiteral("cvlc"), runs,
                           [&](MeasuredProcess& process, QString* launchError) {
                               return stage.LaunchCvlc(process, firstMusic, false, launchError);
                           },
                           &cvlc, &error);
    if (!timed) {
        return failed();
    }
    const Figures ours = Summarise(player);
    const Figures reference = Summarise(cvlc);
    std::printf("\nfrom launch to the first sound on the sink, s (%d runs each; cvlc on %s)\n", runs,
                qPrintable(QFileInfo(firstMusic).fileName()));
    std::printf("  %-14s %8s %8s %8s\n", "", "median", "best", "worst");
    std::printf("  %-14s %8.3f %8.3f %8.3f\n", "zelmar-player", ours.median, ours.best, ours.worst);
    std::printf("  %-14s %8.3f %8.3f %8.3f\n", "cvlc", reference.median, reference.best, reference.worst);
    std::printf("  ratio of the medians (zelmar-player / cvlc): %.2f\n", ours.median / reference.median);
    std::printf("  zelmar-player's median against the goal: %.2f of %.1f s (%s); worst run %.2f of it\n",
                ours.median / GoalSeconds, GoalSeconds, ours.median <= GoalSeconds ? "met" : "NOT met",
                ours.worst / GoalSeconds);
    std::fflush(stdout);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    if (Bench::StoredSignIn::Requested(argc, argv)) {
        return Bench::StoredSignIn::Run(argc, argv);
    }
    QCoreApplication application(argc, argv);
    DemoStage::StopOnInterrupt();
    const int runs = DemoStage::CountArgument(argc, argv, "RUNS", 5);
    if (runs == 0) {
        return 2;
    }
    DemoStage stage;
    QString error;
    if (!stage.Start(&error)) {
        std::fprintf(stderr, "error: %s\n", qPrintable(error));
        return 1;
    }
    std::printf("zelmar-player's start with a stored sign-in and a full cache, the demo point of sale %s\n"
                "(a virtual X display, Qt Quick's software renderer; sound into a PulseAudio null sink)\n",
                DemoStage::ObjectCode);
    std::fflush(stdout);
    return Run(stage, runs) ? 0 : 1;
}

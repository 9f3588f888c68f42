// How soon a newcomer hears the demo the second time: from the command
// `scripts/demo` (the build and the media already there, the data directory
// holding the first run's sign-in and downloads) to the first sound on the sink.
// The script runs as a person would run it: it checks the packages and the build,
// starts its own demo server, and the player signs in and plays. The sound is
// timed by where it lies in a recording of the null sink's monitor that began
// before the command, not by the player's log.
//   demo_second_run_bench [RUNS]   (3)

#include "bench/demo_stage.h"

#include <QCoreApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>

#include <algorithm>
#include <cstdio>
#include <signal.h>
#include <vector>

namespace {

using Bench::DemoStage;

constexpr double GoalSeconds = 10.0;
constexpr int StopTimeoutMs = 15000;

int FreePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : 0;
}

// Ctrl+C, as a person ends the demo: the script stops the player and its server.
bool StopDemo(QProcess& demo)
{
    if (demo.state() == QProcess::NotRunning) {
        return true;
    }
    ::kill(static_cast<pid_t>(demo.processId()), SIGINT);
    if (demo.waitForFinished(StopTimeoutMs)) {
        return true;
    }
    demo.kill();
    demo.waitForFinished(StopTimeoutMs);
    return false;
}

// Runs scripts/demo and returns the seconds from the command to the first sound,
// or a negative figure with the reason in *error.
double RunDemo(DemoStage& stage, const QProcessEnvironment& environment, const QString& output,
               QString* error)
{
    QProcess demo;
    demo.setProcessEnvironment(environment);
    demo.setStandardOutputFile(output);
    demo.setStandardErrorFile(output, QIODevice::Append);
    double seconds = -1;
    const bool heard = stage.TimeToFirstSound(
        [&demo](QString* launchError) {
            demo.start(QStringLiteral(ZELMAR_BENCH_SOURCE_DIR "/scripts/demo"), QStringList());
            if (!demo.waitForStarted()) {
                *launchError = demo.errorString();
                return false;
            }
            return true;
        },
        [&demo]() { return demo.state() != QProcess::NotRunning; }, DemoStage::StartTimeoutMs, &seconds,
        error);
    if (!StopDemo(demo)) {
        *error = QStringLiteral("scripts/demo did not stop on Ctrl+C; see ") + output;
        return -1;
    }
    if (!heard) {
        *error = QStringLiteral("scripts/demo: ") + *error + QStringLiteral("; see ") + output;
        return -1;
    }
    return seconds;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    DemoStage::StopOnInterrupt();
    const int runs = DemoStage::CountArgument(argc, argv, "RUNS", 3);
    if (runs == 0) {
        return 2;
    }
    // Before the stage gives the programs homes of their own: the media are the
    // ones the demo keeps in the user's cache.
    const QString content = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                            QStringLiteral("/zelmar-player/demo-content");
    DemoStage stage;
    QString error;
    if (!stage.Start(&error)) {
        std::fprintf(stderr, "error: %s\n", qPrintable(error));
        return 1;
    }
    const int port = FreePort();
    if (port <= 0) {
        std::fprintf(stderr, "error: no free port for the demo server\n");
        return 1;
    }
    QProcessEnvironment environment = stage.ProgramEnvironment(stage.WorkPath(QStringLiteral("data")));
    environment.insert(QStringLiteral("ZELMAR_DEMO_BUILD_DIR"), QStringLiteral(ZELMAR_BENCH_BUILD_DIR));
    environment.insert(QStringLiteral("ZELMAR_DEMO_CONTENT"), content);
    environment.insert(QStringLiteral("ZELMAR_DEMO_PORT"), QString::number(port));

    std::printf("scripts/demo, second run: from the command to the first sound on the sink\n"
                "(build and media present, the data directory signed in and its media downloaded by a first\n"
                "run; the script starts its own demo server; a virtual X display, a PulseAudio null sink)\n");
    std::fflush(stdout);
    // The first run signs in and downloads: what a newcomer's first run leaves.
    if (RunDemo(stage, environment, stage.WorkPath(QStringLiteral("first-run.out")), &error) < 0) {
        std::fprintf(stderr, "error: first run: %s\n", qPrintable(error));
        return 1;
    }
    std::vector<double> figures;
    for (int run = 1; run <= runs && !DemoStage::Interrupted(); ++run) {
        const double seconds =
            RunDemo(stage, environment, stage.WorkPath(QStringLiteral("run%1.out").arg(run)), &error);
        if (seconds < 0) {
            std::fprintf(stderr, "error: run %d: %s\n", run, qPrintable(error));
            return 1;
        }
        std::printf("  run %d: first sound after %.2f s\n", run, seconds);
        std::fflush(stdout);
        figures.push_back(seconds);
    }
    if (figures.empty()) {
        return 1;
    }
    std::sort(figures.begin(), figures.end());
    const double median = figures[figures.size() / 2];
    const double ratio = median / GoalSeconds;
    std::printf("  median %.2f s against the goal of %.0f s: ratio %.2f (goal <= 1.00: %s)\n", median,
                GoalSeconds, ratio, ratio <= 1.0 ? "met" : "MISSED");
    return 0;
}

// What the whole program costs in processor time while it plays music: the real
// zelmar-player, signed in to the demo point of sale on the reference service,
// against cvlc playing the same file on the same sound server, both for the same
// time. Twice: with the now-playing screen on a virtual display, and minimised to
// the tray at start (the setting "minimise to tray on application start").
// Goals: at most 1.5 × cvlc's time with the screen, 1.15 × in the tray.
//
//   app_cpu_bench [SECONDS]      (60 by default)
//
// Each program is measured from the moment it is heard (the player also waits
// for its start-up downloads to end); what its start cost is shown apart. The
// player plays the demo schedule with its music only, since cvlc plays no video.

#include "bench/demo_stage.h"
#include "bench/measured_process.h"
#include "bench/stored_sign_in.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

#include <cstdio>
#include <string>

namespace {

using Bench::DemoStage;
using Bench::MeasuredProcess;

constexpr double ShownGoal = 1.5;
constexpr double TrayGoal = 1.15;
// A moment's listening after the measured time: still playing at its end.
constexpr int StillHeardTimeoutMs = 10000;

// The demo point of sale's configuration with everything but its music taken out:
// no video or photo playlists in its periods, no advertising.
QJsonObject MusicOnly(QJsonObject configuration)
{
    QJsonArray days;
    for (const QJsonValue& day : configuration.value("schedule").toArray()) {
        QJsonObject dayObject = day.toObject();
        QJsonArray periods;
        for (const QJsonValue& period : dayObject.value("periods").toArray()) {
            QJsonObject periodObject = period.toObject();
            periodObject.insert("video_playlist_id", 0);
            periodObject.insert("photo_playlist_id", 0);
            periods.append(periodObject);
        }
        dayObject.insert("periods", periods);
        days.append(dayObject);
    }
    configuration.insert("schedule", days);
    QJsonArray playlists;
    for (const QJsonValue& playlist : configuration.value("playlists").toArray()) {
        if (playlist.toObject().value("content_type").toString() == QLatin1String("music")) {
            playlists.append(playlist);
        }
    }
    configuration.insert("playlists", playlists);
    configuration.insert("ads", QJsonArray());
    QJsonArray content;
    for (const QJsonValue& group : configuration.value("content").toArray()) {
        QJsonObject groupObject = group.toObject();
        if (groupObject.value("type").toString() != QLatin1String("music")) {
            groupObject.insert("tracks", QJsonArray());
        }
        content.append(groupObject);
    }
    configuration.insert("content", content);
    return configuration;
}

struct Measured
{
    double startSeconds = 0;
    double startCpuSeconds = 0;
    double cpuSeconds = 0;
    double displayCpuSeconds = 0;
    QString file;
};

// Lets `seconds` pass while `process` plays and reads what it spent meanwhile.
bool MeasureWindow(DemoStage& stage, MeasuredProcess& process, int seconds, Measured* measured,
                   QString* error)
{
    const double before = process.CpuSeconds();
    const double displayBefore = stage.DisplayServerCpuSeconds();
    if (!DemoStage::Pass(seconds * 1000)) {
        return false;
    }
    const double after = process.CpuSeconds();
    measured->displayCpuSeconds = stage.DisplayServerCpuSeconds() - displayBefore;
    if (!process.IsRunning() || before < 0 || after < 0) {
        *error = process.Name() + QStringLiteral(" ended while it was measured; its last output:\n") +
                 process.OutputTail();
        return false;
    }
    if (!stage.WaitUntilHeard(process, StillHeardTimeoutMs)) {
        *error = process.Name() + QStringLiteral(" was no longer heard at the end of the measured time");
        return false;
    }
    measured->cpuSeconds = after - before;
    return true;
}

bool MeasureApplication(DemoStage& stage, const QString& name, bool minimizeToTray, int seconds,
                        Measured* measured, QString* error)
{
    QString dataDirectory;
    if (!stage.PrepareDataDirectory(name, minimizeToTray, &dataDirectory, error)) {
        return false;
    }
    MeasuredProcess application(QStringLiteral("zelmar-player"),
                                stage.WorkPath(name + QStringLiteral(".out")));
    DemoStage::StartUp startUp;
    if (!stage.StartApplication(application, dataDirectory, {QStringLiteral("music")}, &startUp, error)) {
        return false;
    }
    measured->startSeconds = application.WallSeconds();
    measured->startCpuSeconds = application.CpuSeconds();
    measured->file =
        stage.MediaFile(QStringLiteral("music"), startUp.firstTracks.value(QStringLiteral("music")));
    bool viewable = false;
    if (!stage.MainWindowViewable(&viewable, error)) {
        return false;
    }
    std::printf(
        "  zelmar-player: heard after %.1f s, start-up downloads over by %.1f s, %.2f s CPU until then\n",
        startUp.heardSeconds, startUp.cacheFullSeconds, measured->startCpuSeconds);
    std::printf("  window on the display: %s; first track %s\n", viewable ? "shown" : "not shown",
                qPrintable(QFileInfo(measured->file).fileName()));
    std::fflush(stdout);
    if (viewable == minimizeToTray) {
        *error = minimizeToTray
                     ? QStringLiteral("the window is on the display although the program was to start "
                                      "minimised to the tray")
                     : QStringLiteral("the window is not on the display");
        return false;
    }
    if (measured->file.isEmpty()) {
        *error = QStringLiteral("the first music track is not among the served files");
        return false;
    }
    return MeasureWindow(stage, application, seconds, measured, error);
}

bool MeasureCvlc(DemoStage& stage, const QString& name, const QString& file, int seconds, Measured* measured,
                 QString* error)
{
    MeasuredProcess cvlc(QStringLiteral("cvlc"), stage.WorkPath(name + QStringLiteral(".out")));
    if (!stage.StartCvlc(cvlc, file, false, error)) {
        return false;
    }
    measured->startSeconds = cvlc.WallSeconds();
    measured->startCpuSeconds = cvlc.CpuSeconds();
    std::printf("  cvlc: heard after %.1f s, %.2f s CPU until then\n", measured->startSeconds,
                measured->startCpuSeconds);
    std::fflush(stdout);
    return MeasureWindow(stage, cvlc, seconds, measured, error);
}

// One pair: the player as the run sets it up, then cvlc on the file it began with.
bool RunPair(DemoStage& stage, const QString& name, const char* title, bool minimizeToTray, int seconds,
             double goal)
{
    std::printf("\n%s\n", title);
    std::fflush(stdout);
    Measured player;
    Measured reference;
    QString error;
    if (!MeasureApplication(stage, name, minimizeToTray, seconds, &player, &error) ||
        !MeasureCvlc(stage, name + QStringLiteral("-cvlc"), player.file, seconds, &reference, &error)) {
        std::fprintf(stderr, "error: %s\n",
                     DemoStage::Interrupted() ? "interrupted; stopping what was started" : qPrintable(error));
        return false;
    }
    std::printf("  %-16s %12s %14s %22s\n", "", "CPU, s", "of one core, %", "X server meanwhile, s");
    std::printf("  %-16s %12.2f %14.1f %22.2f\n", "zelmar-player", player.cpuSeconds,
                100.0 * player.cpuSeconds / seconds, player.displayCpuSeconds);
    std::printf("  %-16s %12.2f %14.1f %22.2f\n", "cvlc", reference.cpuSeconds,
                100.0 * reference.cpuSeconds / seconds, reference.displayCpuSeconds);
    const double ratio = player.cpuSeconds / reference.cpuSeconds;
    std::printf("  CPU ratio (zelmar-player / cvlc): %.2f (goal <= %.2f: %s)\n", ratio, goal,
                ratio <= goal ? "met" : "NOT met");
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
    const int seconds = DemoStage::CountArgument(argc, argv, "SECONDS", 60);
    if (seconds == 0) {
        return 2;
    }
    DemoStage stage;
    QString error;
    if (!stage.Start(&error)) {
        std::fprintf(stderr, "error: %s\n", qPrintable(error));
        return 1;
    }
    const QJsonObject scenario = stage.ScenarioConfiguration(&error);
    if (scenario.isEmpty() || stage.Service().ReplaceConfiguration(QLatin1String(DemoStage::ObjectCode),
                                                                   MusicOnly(scenario)) <= 0) {
        std::fprintf(stderr, "error: the music-only schedule was not taken: %s\n",
                     qPrintable(error.isEmpty() ? stage.Service().ErrorString() : error));
        return 1;
    }

    std::printf("zelmar-player against cvlc, each playing music for %d s from the moment it is heard\n",
                seconds);
    std::printf("(the demo point of sale %s with its music only; a virtual X display without a system tray,\n"
                "Qt Quick's software renderer; sound into a PulseAudio null sink)\n",
                DemoStage::ObjectCode);
    std::fflush(stdout);
    if (!RunPair(stage, QStringLiteral("shown"), "With the now-playing screen shown:", false, seconds,
                 ShownGoal) ||
        !RunPair(stage, QStringLiteral("tray"), "Minimised to the tray at start:", true, seconds, TrayGoal)) {
        return 1;
    }
    return 0;
}

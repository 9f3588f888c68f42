#include "bench/demo_stage.h"

#include "bench/measured_process.h"
#include "core/utilities/data_directory.h"
#include "tests/support/event_log.h"
#include "tests/support/pcm_analysis.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTimer>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <signal.h>
#include <unistd.h>

namespace Bench {

namespace {

// Display numbers above the tests' range (100-899, see cmake/ZelmarTesting.cmake),
// so that a benchmark never takes the display of a test run that starts later.
constexpr int FirstDisplay = 900;
constexpr int LastDisplay = 999;
constexpr int ScriptTimeoutMs = 600000;
constexpr int SignInTimeoutMs = 60000;
// The player's smallest window, 1024 × 708; nothing else the program maps is as big.
constexpr int MainWindowMinimumWidth = 1000;
constexpr int MainWindowMinimumHeight = 700;
// A null sink's silence is exact zeros; the demo's quietest music (35 % at night)
// is well above this.
constexpr double HeardLevel = 0.001;
constexpr double ListenWindowSeconds = 0.5;
// The slice of a recording in which a first sound is looked for.
constexpr double SoundWindowSeconds = 0.01;
// How long a program just stopped may still be heard.
constexpr int QuietTimeoutMs = 15000;
constexpr int PollMs = 100;

QString SourcePath(const QString& relative)
{
    return QStringLiteral(ZELMAR_BENCH_SOURCE_DIR "/") + relative;
}

// The cache folder a kind of content lands in (ContentFilesHelper's layout).
QString CacheFolder(const QString& kind)
{
    return kind == QLatin1String("clip") ? QStringLiteral("ads") : kind;
}

// Set by a signal: the waits end, and the benchmark stops what it started.
volatile std::sig_atomic_t sInterrupted = 0;

} // namespace

DemoStage::DemoStage() = default;

DemoStage::~DemoStage()
{
    service.reset();
    QString ignored;
    if (soundStarted) {
        RunScript(QStringLiteral("tests/fixtures/sound-server"), {QStringLiteral("stop"), WorkPath("sound")},
                  &ignored);
    }
    if (displayStarted) {
        RunScript(QStringLiteral("tests/fixtures/virtual-display"),
                  {QStringLiteral("stop"), WorkPath("display")}, &ignored);
    }
}

bool DemoStage::Start(QString* error)
{
    if (!work.isValid()) {
        *error = QStringLiteral("no temporary folder");
        return false;
    }
    for (const QString& tool :
         {QStringLiteral("Xvfb"), QStringLiteral("xwininfo"), QStringLiteral("pulseaudio"),
          QStringLiteral("parec"), QStringLiteral("cvlc")}) {
        if (!HasProgram(tool)) {
            *error = QStringLiteral("'%1' is missing; run scripts/install-deps").arg(tool);
            return false;
        }
    }

    for (int number = FirstDisplay; number <= LastDisplay && display.isEmpty(); ++number) {
        if (!QFileInfo::exists(QStringLiteral("/tmp/.X%1-lock").arg(number)) &&
            !QFileInfo::exists(QStringLiteral("/tmp/.X11-unix/X%1").arg(number))) {
            display = QStringLiteral(":%1").arg(number);
            if (!RunScript(QStringLiteral("tests/fixtures/virtual-display"),
                           {QStringLiteral("start"), WorkPath("display"), QString::number(number)}, error)) {
                return false;
            }
            displayStarted = true;
        }
    }
    if (display.isEmpty()) {
        *error =
            QStringLiteral("no free X display number between %1 and %2").arg(FirstDisplay).arg(LastDisplay);
        return false;
    }
    if (!RunScript(QStringLiteral("tests/fixtures/sound-server"),
                   {QStringLiteral("start"), WorkPath("sound")}, error)) {
        return false;
    }
    soundStarted = true;
    // The recorder that listens to the sink finds the server here.
    qputenv("PULSE_SERVER", (QStringLiteral("unix:") + WorkPath("sound/native")).toLocal8Bit());

    // The same folder as the demo's own service and the screenshots use, so the
    // media are made once per machine.
    contentDirectory = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation) +
                       QStringLiteral("/zelmar-player/demo-content");
    if (!RunScript(QStringLiteral("scripts/make-demo-content"), {contentDirectory}, error)) {
        return false;
    }

    if (qEnvironmentVariableIsEmpty("ZELMAR_REFERENCE_SERVICE")) {
        qputenv("ZELMAR_REFERENCE_SERVICE", ZELMAR_BENCH_REFERENCE_SERVICE);
    }
    service = std::make_unique<Tests::ReferenceService>(SourcePath(QStringLiteral("demo/scenario")),
                                                        contentDirectory);
    if (!service->Start()) {
        *error = QStringLiteral("the reference service did not start: ") + service->ErrorString();
        return false;
    }
    return true;
}

Tests::ReferenceService& DemoStage::Service() const
{
    return *service;
}

QJsonObject DemoStage::ScenarioConfiguration(QString* error) const
{
    QFile file(
        SourcePath(QStringLiteral("demo/scenario/configurations/%1.json").arg(QLatin1String(ObjectCode))));
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("cannot read %1").arg(file.fileName());
        return {};
    }
    QJsonParseError parsing{};
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parsing);
    if (!document.isObject()) {
        *error = QStringLiteral("%1: %2").arg(file.fileName(), parsing.errorString());
        return {};
    }
    return document.object();
}

bool DemoStage::PrepareDataDirectory(const QString& name, bool minimizeToTray, QString* directory,
                                     QString* error)
{
    *directory = WorkPath(name);
    if (!QDir().mkpath(*directory)) {
        *error = QStringLiteral("cannot make %1").arg(*directory);
        return false;
    }
    QStringList arguments = {QStringLiteral("--sign-in"), *directory, service->BaseUrl(),
                             QLatin1String(ObjectCode)};
    if (minimizeToTray) {
        arguments << QStringLiteral("--minimize-to-tray");
    }
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start(QCoreApplication::applicationFilePath(), arguments);
    if (!child.waitForFinished(SignInTimeoutMs) || child.exitStatus() != QProcess::NormalExit ||
        child.exitCode() != 0) {
        *error = QStringLiteral("signing in to %1 did not succeed").arg(QLatin1String(ObjectCode));
        return false;
    }
    return true;
}

QProcessEnvironment DemoStage::ProgramEnvironment(const QString& dataDirectory) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // Nothing of the desktop the benchmark was started from: no Wayland, no session
    // bus (a tray there would take the icon), no platform or renderer chosen by hand.
    for (const QString& name : {QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                                QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("QT_XCB_GL_INTEGRATION"),
                                QStringLiteral("LIBGL_DRIVERS_PATH"), QStringLiteral("ZELMAR_API_HOST")}) {
        environment.remove(name);
    }
    environment.insert(QStringLiteral("DISPLAY"), display);
    environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QStringLiteral("software"));
    environment.insert(QStringLiteral("PULSE_SERVER"), QStringLiteral("unix:") + WorkPath("sound/native"));
    environment.insert(QStringLiteral("PULSE_SINK"), QLatin1String(Sink));
    environment.insert(QStringLiteral("HOME"), WorkPath("home"));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), WorkPath("home/.config"));
    environment.insert(QStringLiteral("XDG_CACHE_HOME"), WorkPath("home/.cache"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), WorkPath("home/.local/share"));
    environment.insert(QStringLiteral("ZELMAR_DATA_DIR"), dataDirectory);
    QDir().mkpath(WorkPath("home"));
    return environment;
}

QString DemoStage::MediaFile(const QString& kind, int trackId) const
{
    const QJsonArray content = service->Configuration(QLatin1String(ObjectCode)).value("content").toArray();
    for (const QJsonValue& group : content) {
        if (group.toObject().value("type").toString() != kind) {
            continue;
        }
        for (const QJsonValue& track : group.toObject().value("tracks").toArray()) {
            if (track.toObject().value("id").toInt() == trackId) {
                const QString path = track.toObject().value("path").toString();
                return contentDirectory + QLatin1Char('/') + kind + QLatin1Char('/') +
                       QFileInfo(path).fileName();
            }
        }
    }
    return {};
}

QStringList DemoStage::CacheFiles(const QString& dataDirectory) const
{
    QStringList files;
    const QJsonArray content = service->Configuration(QLatin1String(ObjectCode)).value("content").toArray();
    for (const QJsonValue& group : content) {
        const QString folder = CacheFolder(group.toObject().value("type").toString());
        for (const QJsonValue& track : group.toObject().value("tracks").toArray()) {
            const QString name = QFileInfo(track.toObject().value("path").toString()).fileName();
            files << dataDirectory + QLatin1Char('/') + folder + QLatin1Char('/') + name;
        }
    }
    return files;
}

bool DemoStage::AllExist(const QStringList& files)
{
    return std::all_of(files.begin(), files.end(),
                       [](const QString& file) { return QFileInfo(file).isFile(); });
}

bool DemoStage::StartApplication(MeasuredProcess& application, const QString& dataDirectory,
                                 const QStringList& kinds, StartUp* startUp, QString* error)
{
    if (!LaunchApplication(application, dataDirectory, error)) {
        return false;
    }
    const QStringList files = CacheFiles(dataDirectory);
    const auto ended = [&application, error]() {
        *error = QStringLiteral("zelmar-player ended during its start; its last output:\n") +
                 application.OutputTail();
        return false;
    };
    const bool started = WaitFor(
        [&]() {
            for (const QString& kind : kinds) {
                startUp->firstTracks[kind] = FirstStartedTrack(dataDirectory, kind);
            }
            return !application.IsRunning() || !startUp->firstTracks.values().contains(0);
        },
        StartTimeoutMs);
    if (!application.IsRunning()) {
        return ended();
    }
    if (!started) {
        *error = QStringLiteral("zelmar-player started no track of each of %1 within %2 s; see %3/log.txt")
                     .arg(kinds.join(QStringLiteral(", ")))
                     .arg(StartTimeoutMs / 1000)
                     .arg(dataDirectory);
        return false;
    }
    if (!WaitUntilHeard(application, StartTimeoutMs)) {
        if (!application.IsRunning()) {
            return ended();
        }
        *error = QStringLiteral("zelmar-player logged its tracks started, but nothing was heard on the sink");
        return false;
    }
    startUp->heardSeconds = application.WallSeconds();
    if (!WaitFor([&]() { return !application.IsRunning() || AllExist(files); }, StartTimeoutMs)) {
        *error = QStringLiteral("zelmar-player had not downloaded the schedule's files after %1 s")
                     .arg(StartTimeoutMs / 1000);
        return false;
    }
    if (!application.IsRunning()) {
        return ended();
    }
    startUp->cacheFullSeconds = application.WallSeconds();
    return true;
}

bool DemoStage::LaunchCvlc(MeasuredProcess& cvlc, const QString& file, bool video, QString* error)
{
    QProcessEnvironment environment = ProgramEnvironment(WorkPath(QStringLiteral("cvlc")));
    // vlc will not run as root, which CI is.
    if (geteuid() == 0) {
        environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(ZELMAR_BENCH_ROOT_CHECK_SHIM));
    }
    QStringList arguments = {QStringLiteral("--quiet"), QStringLiteral("--no-stats"),
                             QStringLiteral("--verbose=0"), QStringLiteral("--loop")};
    if (video) {
        arguments << QStringLiteral("--no-video-title-show");
    } else {
        arguments << QStringLiteral("--vout") << QStringLiteral("dummy");
    }
    arguments << file;
    if (!cvlc.Start(QStringLiteral("cvlc"), arguments, environment)) {
        *error = QStringLiteral("cvlc did not start");
        return false;
    }
    return true;
}

bool DemoStage::StartCvlc(MeasuredProcess& cvlc, const QString& file, bool video, QString* error)
{
    if (!LaunchCvlc(cvlc, file, video, error)) {
        return false;
    }
    if (!WaitUntilHeard(cvlc, StartTimeoutMs)) {
        *error = QStringLiteral("cvlc was not heard playing %1; its last output:\n%2")
                     .arg(file, cvlc.OutputTail());
        return false;
    }
    return true;
}

bool DemoStage::LaunchApplication(MeasuredProcess& application, const QString& dataDirectory, QString* error)
{
    if (!application.Start(QStringLiteral(ZELMAR_BENCH_PLAYER), {}, ProgramEnvironment(dataDirectory))) {
        *error = QStringLiteral("zelmar-player did not start");
        return false;
    }
    return true;
}

bool DemoStage::TimeToFirstSound(const std::function<bool(QString*)>& launch,
                                 const std::function<bool()>& running, int timeoutMs, double* seconds,
                                 QString* error)
{
    Tests::SinkRecorder recorder{QString::fromLatin1(Sink)};
    if (!recorder.Start()) {
        *error = recorder.ErrorString();
        return false;
    }
    // The recording runs before the launch, so that the launch has a place in it:
    // the sound is timed by where it lies in the recording, not by when a poll
    // noticed it. Whatever parec still buffers at the launch only makes the figure
    // larger, never smaller. A sound left over from a program stopped just before
    // would be taken for this one's, so the sink is quiet first.
    const bool quiet = WaitFor(
        [&recorder]() {
            const double recorded = recorder.SecondsRecorded();
            return recorded >= ListenWindowSeconds &&
                   Tests::PcmAnalysis::Rms(recorder.Samples(), recorded - ListenWindowSeconds, recorded) <=
                       HeardLevel;
        },
        QuietTimeoutMs);
    if (!quiet) {
        *error = recorder.SecondsRecorded() < ListenWindowSeconds
                     ? QStringLiteral("nothing came from the sink's monitor")
                     : QStringLiteral("the sink was still heard before the launch");
        return false;
    }
    const double launchedAt = recorder.SecondsRecorded();
    if (!launch(error)) {
        return false;
    }
    double heardAt = -1;
    double scannedTo = launchedAt;
    WaitFor(
        [&]() {
            const double recorded = recorder.SecondsRecorded();
            for (; scannedTo + SoundWindowSeconds <= recorded; scannedTo += SoundWindowSeconds) {
                if (Tests::PcmAnalysis::Rms(recorder.Samples(), scannedTo, scannedTo + SoundWindowSeconds) >
                    HeardLevel) {
                    heardAt = scannedTo;
                    return true;
                }
            }
            return !running();
        },
        timeoutMs);
    recorder.Stop();
    if (heardAt < 0) {
        *error = running() ? QStringLiteral("nothing was heard within %1 s").arg(timeoutMs / 1000)
                           : QStringLiteral("it ended before anything was heard");
        return false;
    }
    *seconds = heardAt - launchedAt;
    return true;
}

bool DemoStage::WaitUntilHeard(const MeasuredProcess& process, int timeoutMs)
{
    Tests::SinkRecorder recorder{QString::fromLatin1(Sink)};
    if (!recorder.Start()) {
        return false;
    }
    const bool heard = WaitFor(
        [&recorder, &process]() {
            const double recorded = recorder.SecondsRecorded();
            return !process.IsRunning() ||
                   (recorded >= ListenWindowSeconds &&
                    Tests::PcmAnalysis::Rms(recorder.Samples(), recorded - ListenWindowSeconds, recorded) >
                        HeardLevel);
        },
        timeoutMs);
    recorder.Stop();
    return heard && process.IsRunning();
}

bool DemoStage::MainWindowViewable(bool* viewable, QString* error) const
{
    *viewable = false;
    QProcess tree;
    tree.start(QStringLiteral("xwininfo"),
               {QStringLiteral("-display"), display, QStringLiteral("-root"), QStringLiteral("-children")});
    if (!tree.waitForFinished() || tree.exitCode() != 0) {
        *error = QStringLiteral("xwininfo could not list the windows of %1").arg(display);
        return false;
    }
    // "     0x1200007 "ЗЕЛМАР": ("zelmar-player" "zelmar-player")  1024x708+0+0  +0+0"
    static const QRegularExpression child(
        QStringLiteral("^\\s+(0x[0-9a-f]+) .*\\s(\\d+)x(\\d+)[+-]\\d+[+-]\\d+"));
    for (const QString& line : QString::fromUtf8(tree.readAllStandardOutput()).split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch match = child.match(line);
        if (!match.hasMatch() || match.captured(2).toInt() < MainWindowMinimumWidth ||
            match.captured(3).toInt() < MainWindowMinimumHeight) {
            continue;
        }
        QProcess window;
        window.start(QStringLiteral("xwininfo"),
                     {QStringLiteral("-display"), display, QStringLiteral("-id"), match.captured(1)});
        if (!window.waitForFinished() || window.exitCode() != 0) {
            *error = QStringLiteral("xwininfo could not describe window %1").arg(match.captured(1));
            return false;
        }
        if (QString::fromUtf8(window.readAllStandardOutput())
                .contains(QStringLiteral("Map State: IsViewable"))) {
            *viewable = true;
        }
    }
    return true;
}

int DemoStage::FirstStartedTrack(const QString& dataDirectory, const QString& kind)
{
    qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, dataDirectory.toLocal8Bit());
    // "Начато воспроизведение трека:\n\t<name>-<author> <id> <kind>"
    const QRegularExpression started(QStringLiteral("Начато воспроизведение трека:\n\t[^\n]* (\\d+) ") +
                                     kind + QStringLiteral("(\n|$)"));
    return started.match(Tests::EventLog::Text()).captured(1).toInt();
}

double DemoStage::DisplayServerCpuSeconds() const
{
    QFile pidFile(WorkPath(QStringLiteral("display/xvfb.pid")));
    if (!pidFile.open(QIODevice::ReadOnly)) {
        return -1;
    }
    return MeasuredProcess::CpuSecondsOf(pidFile.readAll().trimmed().toLongLong());
}

QString DemoStage::WorkPath(const QString& name) const
{
    return work.filePath(name);
}

bool DemoStage::WaitFor(const std::function<bool()>& done, int timeoutMs)
{
    // The event loop sleeps between looks: this process shares the processor with
    // the one it measures, so it must not spin.
    QElapsedTimer timer;
    timer.start();
    bool held = done();
    if (held || sInterrupted) {
        return held;
    }
    QEventLoop loop;
    QTimer poll;
    poll.setInterval(PollMs);
    QObject::connect(&poll, &QTimer::timeout, &loop, [&]() {
        held = !sInterrupted && done();
        if (held || sInterrupted || timer.elapsed() > timeoutMs) {
            loop.quit();
        }
    });
    poll.start();
    loop.exec();
    return held;
}

bool DemoStage::Pass(int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    WaitFor([&timer, milliseconds]() { return timer.elapsed() >= milliseconds; }, milliseconds + PollMs);
    return !sInterrupted;
}

void DemoStage::StopOnInterrupt()
{
    struct sigaction action
    {
    };
    action.sa_handler = [](int) {
        sInterrupted = 1;
    };
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}

bool DemoStage::Interrupted()
{
    return sInterrupted != 0;
}

int DemoStage::CountArgument(int argc, char** argv, const char* name, int byDefault)
{
    const int count = argc > 1 ? std::atoi(argv[1]) : byDefault;
    if (argc > 2 || count <= 0) {
        std::fprintf(stderr, "usage: %s [%s]\n", argv[0], name);
        return 0;
    }
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the figures mean little\n");
#endif
    return count;
}

bool DemoStage::HasProgram(const QString& name)
{
    return !QStandardPaths::findExecutable(name).isEmpty();
}

bool DemoStage::RunScript(const QString& script, const QStringList& arguments, QString* error) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(SourcePath(script), arguments);
    if (!process.waitForFinished(ScriptTimeoutMs) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        *error = QStringLiteral("%1 %2 failed (see above)").arg(script, arguments.value(0));
        return false;
    }
    return true;
}

} // namespace Bench

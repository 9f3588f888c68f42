#pragma once

#include "tests/support/reference_service.h"
#include "tests/support/sink_recorder.h"

#include <QJsonObject>
#include <QMap>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace Bench {

class MeasuredProcess;

// What the application benchmarks run the real program against, as a shop would
// have it after the owner signed in once: a virtual X display, a private sound
// server with its null sinks, the demo media and the reference service serving the
// demo scenario. Everything is started by Start() and stopped by the destructor;
// nothing is shared with the tests or the user's own display and sound.
class DemoStage
{
public:
    // The demo account and the first of its points of sale.
    static constexpr const char* Login = "demo";
    static constexpr const char* Password = "demo";
    static constexpr const char* ObjectCode = "demo-cafe";
    // The sink the programs play into and the benchmarks listen to.
    static constexpr const char* Sink = "zelmar_sink_a";

    // How long a program may take from its start until it plays: signing in,
    // loading the schedule and downloading on a busy machine.
    static constexpr int StartTimeoutMs = 180000;

    // What the application's start took, in seconds from its launch.
    struct StartUp
    {
        double heardSeconds = 0;
        double cacheFullSeconds = 0;
        // The first track of each kind asked for, by kind.
        QMap<QString, int> firstTracks;
    };

    DemoStage();
    ~DemoStage();

    DemoStage(const DemoStage&) = delete;
    DemoStage& operator=(const DemoStage&) = delete;

    // False with the reason in *error when a tool is missing or a part did not
    // come up.
    bool Start(QString* error);

    Tests::ReferenceService& Service() const;
    // The demo scenario's configuration template of ObjectCode, as its file has it.
    QJsonObject ScenarioConfiguration(QString* error) const;
    // A fresh data directory, signed in to ObjectCode through the program's own
    // client (in a child process, so that this one keeps no database of its own),
    // with "minimise to tray on application start" set as asked.
    bool PrepareDataDirectory(const QString& name, bool minimizeToTray, QString* directory, QString* error);
    // The environment a person's session would give a program on this display:
    // the platform's defaults, except that Qt Quick draws with its software
    // renderer; home folders of its own, so that nothing lands in the user's.
    QProcessEnvironment ProgramEnvironment(const QString& dataDirectory) const;
    // The served file of a track of the configuration being served, by kind
    // ("music", "video") and id; empty when there is none.
    QString MediaFile(const QString& kind, int trackId) const;
    // Where every file of the served configuration lands in the data directory's
    // cache: once they all exist, the program's start-up downloads are over.
    QStringList CacheFiles(const QString& dataDirectory) const;
    static bool AllExist(const QStringList& files);
    // Starts zelmar-player on a prepared data directory and waits until the event
    // log shows a track of every kind in `kinds` ("music", "video") started, sound
    // is heard and the start-up downloads are over.
    bool StartApplication(MeasuredProcess& application, const QString& dataDirectory,
                          const QStringList& kinds, StartUp* startUp, QString* error);
    // Starts zelmar-player on a data directory and returns at once.
    bool LaunchApplication(MeasuredProcess& application, const QString& dataDirectory, QString* error);
    // Starts cvlc as StartCvlc does and returns at once.
    bool LaunchCvlc(MeasuredProcess& cvlc, const QString& file, bool video, QString* error);
    // Seconds from `launch` to the first sound on the sink, read from a recording of
    // the sink that began, quiet, before the launch; false when the sink did not go
    // quiet, or nothing was heard within the limit or while `running` held.
    bool TimeToFirstSound(const std::function<bool(QString*)>& launch, const std::function<bool()>& running,
                          int timeoutMs, double* seconds, QString* error);
    // Starts cvlc on the same display and sound server, repeating `file`, and waits
    // until it is heard. An audio file plays without a video output, as the
    // player's own libvlc instance would.
    bool StartCvlc(MeasuredProcess& cvlc, const QString& file, bool video, QString* error);
    // Waits until sound is heard on the sink while `process` runs; false when it
    // ended or nothing was heard within the limit.
    bool WaitUntilHeard(const MeasuredProcess& process, int timeoutMs);
    // Whether a window of at least the player's minimum size is mapped on the
    // display; false with the reason in *error when the display cannot be asked.
    bool MainWindowViewable(bool* viewable, QString* error) const;

    // Processor seconds the X server has spent so far: a program's drawing costs
    // there too. Negative when it cannot be read.
    double DisplayServerCpuSeconds() const;

    QString WorkPath(const QString& name) const;

    // Runs the event loop until `done` holds or `timeoutMs` has passed; false
    // also when interrupted.
    static bool WaitFor(const std::function<bool()>& done, int timeoutMs);
    // Lets `milliseconds` pass with the event loop running; false when interrupted.
    static bool Pass(int milliseconds);
    // Ctrl+C, SIGTERM and SIGHUP end the waits instead of the process, so that the
    // display, the sound server and the programs started are stopped on the way out
    // rather than left running.
    static void StopOnInterrupt();
    static bool Interrupted();
    // Whether a program is on the PATH.
    static bool HasProgram(const QString& name);
    // The benchmark's one optional count from its command line (`name` for the
    // usage line: "SECONDS", "RUNS"), `byDefault` without one; 0 after printing the
    // usage when the line is wrong. Warns when the build is not an optimised one.
    static int CountArgument(int argc, char** argv, const char* name, int byDefault);

private:
    // The id of the first track of `kind` the event log of `dataDirectory` shows
    // started, 0 before one has.
    static int FirstStartedTrack(const QString& dataDirectory, const QString& kind);
    bool RunScript(const QString& script, const QStringList& arguments, QString* error) const;

    QTemporaryDir work;
    QString display;
    bool displayStarted = false;
    bool soundStarted = false;
    QString contentDirectory;
    std::unique_ptr<Tests::ReferenceService> service;
};

} // namespace Bench

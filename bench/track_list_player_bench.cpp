// What it costs to play music: CPU time and peak memory of a process that plays one
// mp3 through TrackListPlayer, against cvlc playing the same file on the same sound
// server in the same run. Both run in real time, so the figures compare the work
// done per second of music; the goal is CPU at most 1.1 × cvlc's.
//
//   track_list_player_bench [SECONDS]      (60 by default)
//
// Uses PULSE_SERVER when it is set, else starts the tests' private sound server.

#include "bench/playback_bench_observer.h"
#include "core/content_playing/track_list_player.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"
#include "core/networking/content_files_helper.h"
#include "core/utilities/data_directory.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <chrono>
#include <cstdio>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Usage
{
    bool ok = false;
    double cpuSeconds = 0;
    double wallSeconds = 0;
    double peakMegabytes = 0;
};

// Runs a program to its end and reads what the kernel counted for it. `preload`,
// when not empty, is preloaded into the program.
Usage Measure(const std::vector<std::string>& command, const std::string& preload = std::string())
{
    std::vector<char*> arguments;
    for (const auto& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    const auto started = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child < 0) {
        return {};
    }
    if (child == 0) {
        if (!preload.empty()) {
            setenv("LD_PRELOAD", preload.c_str(), 1);
        }
        execvp(arguments[0], arguments.data());
        std::perror(arguments[0]);
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (wait4(child, &status, 0, &usage) != child) {
        return {};
    }
    Usage result;
    result.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    result.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    const auto seconds = [](const timeval& value) {
        return value.tv_sec + value.tv_usec / 1e6;
    };
    result.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    result.peakMegabytes = usage.ru_maxrss / 1024.0;
    return result;
}

bool Run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    return process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

// The playing process: one track through TrackListPlayer, as a music block would,
// until the list has played through.
int Play(int argc, char** argv, const QString& file)
{
    QCoreApplication application(argc, argv);
    QTemporaryDir data;
    qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, data.path().toLocal8Bit());

    Core::DataTypes::Playback::Track track;
    track.id = 1;
    track.name = "Бенчмарк";
    track.contentType = Core::DataTypes::Playback::ContentType::Music;
    track.path = "/bench/" + QFileInfo(file).fileName().toStdString();
    const QString cached =
        QString::fromStdString(Core::ContentPlaying::ContentFilesHelper::FilenameForTrack(track));
    QDir().mkpath(QFileInfo(cached).absolutePath());
    if (!QFile::copy(file, cached)) {
        std::fprintf(stderr, "cannot copy %s into the cache\n", qPrintable(file));
        return 1;
    }

    Bench::PlaybackBenchObserver observer;
    Core::ContentPlaying::TrackListPlayer player({track}, 100, &observer, false, false);
    player.Start();
    const int result = application.exec();
    player.Stop();
    return result == 0 && !observer.Failed() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && std::string(argv[1]) == "--play") {
        return Play(argc, argv, QString::fromLocal8Bit(argv[2]));
    }
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 60;
    if (seconds <= 0) {
        std::fprintf(stderr, "usage: %s [SECONDS]\n", argv[0]);
        return 2;
    }

    QTemporaryDir work;
    if (!work.isValid()) {
        std::fprintf(stderr, "no temporary folder\n");
        return 1;
    }
    bool ownSoundServer = false;
    const QString soundDirectory = work.filePath(QStringLiteral("sound"));
    if (qEnvironmentVariableIsEmpty("PULSE_SERVER")) {
        if (!Run(QStringLiteral(ZELMAR_BENCH_SOUND_SERVER), {QStringLiteral("start"), soundDirectory})) {
            std::fprintf(stderr, "the sound server did not start\n");
            return 1;
        }
        ownSoundServer = true;
        qputenv("PULSE_SERVER", ("unix:" + soundDirectory + QStringLiteral("/native")).toLocal8Bit());
    }

    const QString music = work.filePath(QStringLiteral("bench_music.mp3"));
    const bool made =
        Run(QStringLiteral("ffmpeg"),
            {QStringLiteral("-nostdin"), QStringLiteral("-loglevel"), QStringLiteral("error"),
             QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"),
             QStringLiteral("sine=frequency=440:sample_rate=44100:duration=%1").arg(seconds),
             QStringLiteral("-ac"), QStringLiteral("2"), QStringLiteral("-c:a"), QStringLiteral("libmp3lame"),
             QStringLiteral("-b:a"), QStringLiteral("192k"), music});
    if (!made) {
        std::fprintf(stderr, "ffmpeg could not make the music (run scripts/install-deps)\n");
        return 1;
    }

    std::printf("Playing %d s of mp3 on %s\n", seconds, qgetenv("PULSE_SERVER").constData());
    std::fflush(stdout);
    // The same libvlc arguments as the player's own instance.
    // vlc will not run as root, which CI is.
    const std::string shim = geteuid() == 0 ? ZELMAR_BENCH_ROOT_CHECK_SHIM : "";
    const Usage reference = Measure({"cvlc", "--quiet", "--vout", "dummy", "--no-stats", "--verbose=0",
                                     "--play-and-exit", music.toStdString()},
                                    shim);
    const Usage ours = Measure({argv[0], "--play", music.toStdString()});

    if (ownSoundServer) {
        Run(QStringLiteral(ZELMAR_BENCH_SOUND_SERVER), {QStringLiteral("stop"), soundDirectory});
    }
    if (!reference.ok || !ours.ok) {
        std::fprintf(stderr, "a run failed: cvlc %s, TrackListPlayer %s\n", reference.ok ? "ok" : "failed",
                     ours.ok ? "ok" : "failed");
        return 1;
    }
    std::printf("%-16s %10s %10s %12s\n", "", "wall, s", "CPU, s", "peak RSS, MB");
    std::printf("%-16s %10.2f %10.2f %12.1f\n", "cvlc", reference.wallSeconds, reference.cpuSeconds,
                reference.peakMegabytes);
    std::printf("%-16s %10.2f %10.2f %12.1f\n", "TrackListPlayer", ours.wallSeconds, ours.cpuSeconds,
                ours.peakMegabytes);
    const double cpuRatio = ours.cpuSeconds / reference.cpuSeconds;
    std::printf("CPU ratio (TrackListPlayer / cvlc): %.2f (goal <= 1.10: %s)\n", cpuRatio,
                cpuRatio <= 1.10 ? "met" : "NOT met");
    std::printf("RSS ratio (TrackListPlayer / cvlc): %.2f\n", ours.peakMegabytes / reference.peakMegabytes);
    return 0;
}

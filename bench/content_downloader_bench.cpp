// Measures the media downloader against curl fetching the same files from the
// reference service on loopback, one after another over one connection, with the
// MD5 of every file checked afterwards, as the player would. Both sides write
// into a fresh folder and run alternately; each keeps its fastest run. The figure
// is the downloader's throughput as a ratio of curl's. Goal: at least 0.9.
// The processor time each side spent per file (the downloader's process, or
// curl and the MD5 checks; the service's share is the same for both) is shown
// beside it: on a busy machine it varies far less than the wall-clock figures.
//
//   content_downloader_bench [--quick] [--set large|small]
// --quick runs a tenth of the files, for trying the benchmark out; --set runs
// one of the two sets only, for profiling it.
// The files go under TMPDIR. By default that is on the disk, as the player's
// cache is, and the downloader's work on one file overlaps the next transfer
// while curl's does not; a tmpfs TMPDIR takes the disk out of both sides.

#include "core/networking/content_downloader.h"
#include "core/utilities/data_directory.h"
#include "core/utilities/file_utilities.h"
#include "tests/support/reference_service.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <sys/resource.h>
#include <vector>

namespace {

using Core::DataTypes::Playback::ContentType;
using Core::DataTypes::Playback::Track;

constexpr int kRepetitions = 5;
constexpr double kGoal = 0.9;
// Long enough for the largest set on a slow machine; a stuck run fails rather than hangs.
constexpr int kRunTimeoutMs = 600000;

struct FileSet
{
    const char* name;
    int count;
    int size;
};

// Wall-clock and processor seconds of one run; negative when the run failed.
struct Run
{
    double seconds = -1.0;
    double processorSeconds = 0.0;
};

struct Fastest
{
    Run downloader{1e9, 1e9};
    Run curl{1e9, 1e9};
};

void KeepFastest(Run& fastest, const Run& run)
{
    fastest.seconds = std::min(fastest.seconds, run.seconds);
    fastest.processorSeconds = std::min(fastest.processorSeconds, run.processorSeconds);
}

double SecondsSince(std::chrono::steady_clock::time_point start)
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// User and system time of this process (all its threads), or of its children
// that have finished: curl, but not the service, which runs until the end.
double ProcessorSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return time.tv_sec + time.tv_usec / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double OwnAndChildrenProcessorSeconds()
{
    return ProcessorSeconds(RUSAGE_SELF) + ProcessorSeconds(RUSAGE_CHILDREN);
}

// Bytes that do not compress and differ from file to file, made quickly.
QByteArray Contents(int size, int seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint64 state = 0x9E3779B97F4A7C15ull * static_cast<quint64>(seed + 1);
    for (int i = 0; i + 8 <= size; i += 8) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(bytes.data() + i, &state, 8);
    }
    return bytes;
}

class CountingObserver : public Core::Networking::ContentDownloaderObserver
{
public:
    void FileDownloaderDidFinishDownloadingTrack(const Track&, const ContentType&) override
    {
        ++finished;
        if (finished == expected && loop) {
            loop->quit();
        }
    }

    int expected = 0;
    int finished = 0;
    QEventLoop* loop = nullptr;
};

class Bench
{
public:
    Bench(Tests::ReferenceService& referenceService, const QString& workDirectory)
        : service(referenceService)
        , work(workDirectory)
    {
    }

    // Time for the downloader to bring every track into an empty cache.
    Run RunDownloader(const std::vector<Track>& tracks)
    {
        const QString cache = FreshFolder(QStringLiteral("player"));
        qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, cache.toLocal8Bit());
        CountingObserver observer;
        QEventLoop loop;
        observer.expected = static_cast<int>(tracks.size());
        observer.loop = &loop;
        Core::Networking::ContentDownloader downloader(&observer);
        downloader.SetDomains({service.MediaDomain().toStdString()});
        downloader.SetObjectCode("bench");
        QTimer::singleShot(kRunTimeoutMs, &loop, &QEventLoop::quit);

        const double processorStart = ProcessorSeconds(RUSAGE_SELF);
        const auto start = std::chrono::steady_clock::now();
        downloader.DownloadTracks(tracks, ContentType::Music);
        loop.exec();
        const Run run{SecondsSince(start), ProcessorSeconds(RUSAGE_SELF) - processorStart};
        if (observer.finished != observer.expected) {
            std::fprintf(stderr, "the downloader brought %d of %d files; see %s/log.txt\n", observer.finished,
                         observer.expected, qPrintable(cache));
            return {};
        }
        return run;
    }

    // Time for one curl to fetch the same files, plus their MD5 checks.
    Run RunCurl(const std::vector<Track>& tracks)
    {
        const QString folder = FreshFolder(QStringLiteral("curl"));
        QFile config(work + QStringLiteral("/curl.config"));
        if (!config.open(QIODevice::WriteOnly)) {
            return {};
        }
        for (const auto& track : tracks) {
            const QString url =
                service.MediaDomain() + QStringLiteral("bench/music/") + QString::fromStdString(track.path);
            config.write(QStringLiteral("url = \"%1\"\noutput = \"%2/%3\"\n")
                             .arg(url, folder, QString::fromStdString(track.path))
                             .toUtf8());
        }
        config.close();

        const double processorStart = OwnAndChildrenProcessorSeconds();
        const auto start = std::chrono::steady_clock::now();
        QProcess curl;
        curl.setProcessChannelMode(QProcess::ForwardedChannels);
        curl.start(QStringLiteral("curl"),
                   {QStringLiteral("--silent"), QStringLiteral("--show-error"), QStringLiteral("--fail"),
                    QStringLiteral("--config"), config.fileName()});
        if (!curl.waitForFinished(kRunTimeoutMs) || curl.exitCode() != 0) {
            std::fprintf(stderr, "curl failed with status %d\n", curl.exitCode());
            return {};
        }
        for (const auto& track : tracks) {
            const std::string path = (folder + "/" + QString::fromStdString(track.path)).toStdString();
            if (Core::Utilities::FileUtilities::FileContentsMd5(path) != track.md5) {
                std::fprintf(stderr, "curl brought a wrong %s\n", track.path.c_str());
                return {};
            }
        }
        return {SecondsSince(start), OwnAndChildrenProcessorSeconds() - processorStart};
    }

private:
    // A new folder for every run. Nothing is deleted between runs: on some file
    // systems creating files right after deleting many costs more than the
    // downloads themselves, and that cost would fall on whichever side runs next.
    QString FreshFolder(const QString& name)
    {
        QDir folder(work + "/" + name + QString::number(++runs));
        folder.mkpath(QStringLiteral("."));
        return folder.absolutePath();
    }

    Tests::ReferenceService& service;
    QString work;
    int runs = 0;
};

std::vector<Track> MakeFiles(const QString& content, const FileSet& set)
{
    std::vector<Track> tracks;
    for (int i = 0; i < set.count; ++i) {
        const QByteArray bytes = Contents(set.size, i + set.size);
        Track track;
        track.id = i + 1;
        track.path = QStringLiteral("%1-%2.mp3").arg(QLatin1String(set.name)).arg(i).toStdString();
        track.contentType = ContentType::Music;
        track.fileSize = set.size;
        track.md5 = QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex().toStdString();
        QFile file(content + "/music/" + QString::fromStdString(track.path));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(file.fileName()));
            return {};
        }
        tracks.push_back(track);
    }
    return tracks;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the ratios mean little\n");
#endif
    const QStringList arguments = application.arguments();
    const bool quick = arguments.contains(QStringLiteral("--quick"));
    const int setArgument = arguments.indexOf(QStringLiteral("--set"));
    const QString onlySet = setArgument > 0 ? arguments.value(setArgument + 1) : QString();
    if (setArgument > 0 && onlySet != QLatin1String("large") && onlySet != QLatin1String("small")) {
        std::fprintf(stderr, "--set takes large or small\n");
        return 2;
    }
    if (QStandardPaths::findExecutable(QStringLiteral("curl")).isEmpty()) {
        std::fprintf(stderr, "curl is missing; run scripts/install-deps\n");
        return 2;
    }
    if (!qEnvironmentVariableIsSet("ZELMAR_REFERENCE_SERVICE")) {
        qputenv("ZELMAR_REFERENCE_SERVICE", ZELMAR_BENCH_REFERENCE_SERVICE);
    }

    QTemporaryDir work;
    if (!work.isValid() || !QDir(work.path()).mkpath(QStringLiteral("content/music")) ||
        !QDir(work.path()).mkpath(QStringLiteral("scenario"))) {
        std::fprintf(stderr, "cannot make a work folder\n");
        return 2;
    }
    QFile accounts(work.filePath(QStringLiteral("scenario/accounts.json")));
    if (!accounts.open(QIODevice::WriteOnly) ||
        accounts.write(R"({"accounts": [{"login": "bench", "password": "bench",
                          "objects": [{"id": 1, "code": "bench"}]}]})") < 0) {
        std::fprintf(stderr, "cannot write the scenario\n");
        return 2;
    }
    accounts.close();

    const int scale = quick ? 10 : 1;
    std::vector<FileSet> sets;
    for (const FileSet& set :
         {FileSet{"large", 100 / scale, 4 * 1024 * 1024}, FileSet{"small", 1000 / scale, 40 * 1024}}) {
        if (onlySet.isEmpty() || onlySet == QLatin1String(set.name)) {
            sets.push_back(set);
        }
    }
    std::vector<std::vector<Track>> tracks;
    for (const FileSet& set : sets) {
        tracks.push_back(MakeFiles(work.filePath(QStringLiteral("content")), set));
        if (tracks.back().empty()) {
            return 2;
        }
    }

    Tests::ReferenceService service(work.filePath(QStringLiteral("scenario")),
                                    work.filePath(QStringLiteral("content")));
    if (!service.Start()) {
        std::fprintf(stderr, "%s\n", qPrintable(service.ErrorString()));
        return 2;
    }
    Bench bench(service, work.path());

    bool allMet = true;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        Fastest fastest;
        for (int run = 0; run < kRepetitions; ++run) {
            const Run curl = bench.RunCurl(tracks[i]);
            const Run downloader = bench.RunDownloader(tracks[i]);
            if (curl.seconds < 0 || downloader.seconds < 0) {
                return 1;
            }
            KeepFastest(fastest.curl, curl);
            KeepFastest(fastest.downloader, downloader);
        }
        const double megabytes = static_cast<double>(sets[i].count) * sets[i].size / 1e6;
        const double ratio = fastest.curl.seconds / fastest.downloader.seconds;
        const bool met = ratio >= kGoal;
        allMet = allMet && met;
        std::printf("%d files of %d KiB: downloader %.2f s (%.0f MB/s), curl + MD5 %.2f s (%.0f MB/s)\n",
                    sets[i].count, sets[i].size / 1024, fastest.downloader.seconds,
                    megabytes / fastest.downloader.seconds, fastest.curl.seconds,
                    megabytes / fastest.curl.seconds);
        std::printf("%d files of %d KiB processor time per file: downloader %.0f us, curl + MD5 %.0f us\n",
                    sets[i].count, sets[i].size / 1024,
                    fastest.downloader.processorSeconds * 1e6 / sets[i].count,
                    fastest.curl.processorSeconds * 1e6 / sets[i].count);
        std::printf("%d files of %d KiB throughput ratio: %.2f (goal >= %.1f) %s\n", sets[i].count,
                    sets[i].size / 1024, ratio, kGoal, met ? "met" : "MISSED");
    }
    service.Stop();
    return allMet ? 0 : 1;
}

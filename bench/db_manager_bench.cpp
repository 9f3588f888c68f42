// Measures storing and reading back the large configuration through the local
// database against keeping the same configuration in a plain file, in the same
// run: both sides turn the configuration into the same JSON text and back, one
// keeps the text in "db.sqlite", the other writes it to a file and reads it again.
// The ratio is what SQLite, its journal and the check of the stored text cost on
// top. Goal: at most 3.0.

#include "configuration_generator.h"
#include "core/database/db_manager.h"
#include "core/networking/json_converter.h"
#include "core/utilities/data_directory.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <memory>
#include <vector>

namespace {

using Core::DataBase::DbManager;
using Core::DataTypes::Playback::PlaybackConfiguration;
using Core::Networking::JsonConverter;

constexpr int kRepetitions = 7;
constexpr double kGoal = 3.0;

double Milliseconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// The two sides run alternately and each keeps its fastest run, so that a busy
// moment of the machine does not land on one side only.
void FastestOfAlternatingRuns(const std::function<void()>& measured, const std::function<void()>& baseline,
                              double& measuredMs, double& baselineMs)
{
    std::vector<double> measuredTimes;
    std::vector<double> baselineTimes;
    for (int i = 0; i < kRepetitions; ++i) {
        baselineTimes.push_back(Milliseconds(baseline));
        measuredTimes.push_back(Milliseconds(measured));
    }
    measuredMs = *std::min_element(measuredTimes.begin(), measuredTimes.end());
    baselineMs = *std::min_element(baselineTimes.begin(), baselineTimes.end());
}

bool WriteFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size() &&
           file.flush();
}

QByteArray ReadFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the ratios mean little\n");
#endif
    QTemporaryDir directory;
    if (!directory.isValid()) {
        std::printf("error: no temporary folder\n");
        return 2;
    }
    qputenv(Core::Utilities::DataDirectory::EnvironmentVariable, directory.path().toLocal8Bit());

    const PlaybackConfiguration configuration =
        Bench::ConfigurationGenerator().Generate(Bench::ConfigurationGenerator::Sizes());
    const QString plainPath = directory.filePath(QStringLiteral("configuration.json"));
    std::printf(
        "configuration: %.1f MiB of JSON text\n",
        static_cast<double>(JsonConverter::PlaybackConfigurationToString(configuration).toUtf8().size()) /
            (1024.0 * 1024.0));

    DbManager& database = DbManager::GetInstance();
    if (!database.InitEmptyDataBase()) {
        std::printf("error: cannot create the database\n");
        return 2;
    }
    // What comes back must be what went in on both sides; a fast wrong store
    // proves nothing.
    std::shared_ptr<PlaybackConfiguration> stored;
    if (!database.SavePlaybackConfiguration(configuration) || !database.SavedPlaybackConfiguration(stored) ||
        *stored != configuration) {
        std::printf("error: the database does not give the configuration back\n");
        return 2;
    }
    if (!WriteFile(plainPath, JsonConverter::PlaybackConfigurationToString(configuration).toUtf8()) ||
        *JsonConverter::PlaybackConfigurationFromResponse(QString::fromUtf8(ReadFile(plainPath))) !=
            configuration) {
        std::printf("error: the plain file does not give the configuration back\n");
        return 2;
    }

    bool failed = false;
    volatile std::size_t sink = 0;
    double databaseMs = 0.0;
    double plainMs = 0.0;
    FastestOfAlternatingRuns(
        [&] {
            std::shared_ptr<PlaybackConfiguration> read;
            failed = failed || !database.SavePlaybackConfiguration(configuration) ||
                     !database.SavedPlaybackConfiguration(read);
            sink = sink + (read ? read->days.size() : 0);
        },
        [&] {
            failed =
                failed ||
                !WriteFile(plainPath, JsonConverter::PlaybackConfigurationToString(configuration).toUtf8());
            sink = sink +
                   JsonConverter::PlaybackConfigurationFromResponse(QString::fromUtf8(ReadFile(plainPath)))
                       ->days.size();
        },
        databaseMs, plainMs);
    if (failed) {
        std::printf("error: a run failed\n");
        return 2;
    }

    // The conversions alone, for reading the figures above.
    double conversionMs = Milliseconds([&] {
        sink = sink + JsonConverter::PlaybackConfigurationFromResponse(
                          JsonConverter::PlaybackConfigurationToString(configuration))
                          ->days.size();
    });
    for (int i = 1; i < kRepetitions; ++i) {
        conversionMs =
            std::min(conversionMs, Milliseconds([&] {
                         sink = sink + JsonConverter::PlaybackConfigurationFromResponse(
                                           JsonConverter::PlaybackConfigurationToString(configuration))
                                           ->days.size();
                     }));
    }

    const double ratio = databaseMs / plainMs;
    const bool met = ratio <= kGoal;
    std::printf("fastest of %d alternating runs each\n", kRepetitions);
    std::printf(
        "save + load: database %.1f ms, plain file %.1f ms (of which conversion to text and back %.1f ms)\n",
        databaseMs, plainMs, conversionMs);
    std::printf("save + load ratio: %.2f (goal <= %.1f) %s\n", ratio, kGoal, met ? "met" : "MISSED");
    return met ? 0 : 1;
}

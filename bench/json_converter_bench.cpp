// Measures the configuration reader and writer against Qt's own JSON parsing and
// serialisation of the same text, in the same run, so the figures are ratios that
// do not depend on the machine. Goal: both ratios at most 2.0.

#include "configuration_generator.h"
#include "core/networking/json_converter.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

using Core::Networking::JsonConverter;

constexpr int kRepetitions = 9;
constexpr double kGoal = 2.0;

double Milliseconds(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

struct Timings
{
    double measured = 0.0;
    double baseline = 0.0;
};

// The two sides run alternately and each keeps its fastest run: on a busy machine a
// slow run says something about the machine, and alternating spreads that noise
// over both sides instead of loading it onto one.
Timings FastestOfAlternatingRuns(const std::function<void()>& measured, const std::function<void()>& baseline)
{
    std::vector<double> measuredTimes;
    std::vector<double> baselineTimes;
    for (int i = 0; i < kRepetitions; ++i) {
        baselineTimes.push_back(Milliseconds(baseline));
        measuredTimes.push_back(Milliseconds(measured));
    }
    return {*std::min_element(measuredTimes.begin(), measuredTimes.end()),
            *std::min_element(baselineTimes.begin(), baselineTimes.end())};
}

bool Report(const char* what, const Timings& timings)
{
    const double ratio = timings.measured / timings.baseline;
    const bool met = ratio <= kGoal;
    std::printf("%s: converter %.1f ms, baseline %.1f ms\n", what, timings.measured, timings.baseline);
    std::printf("%s ratio: %.2f (goal <= %.1f) %s\n", what, ratio, kGoal, met ? "met" : "MISSED");
    return met;
}

} // namespace

int main()
{
#ifndef NDEBUG
    std::printf("warning: this is not a release build; the ratios mean little\n");
#endif
    const Core::DataTypes::Playback::PlaybackConfiguration configuration =
        Bench::ConfigurationGenerator().Generate(Bench::ConfigurationGenerator::Sizes());
    const QString text = JsonConverter::PlaybackConfigurationToString(configuration);
    const QJsonObject document = QJsonDocument::fromJson(text.toUtf8()).object();

    std::size_t trackCount = 0;
    for (const auto& [type, tracks] : configuration.tracks) {
        trackCount += tracks.size();
    }
    std::printf("configuration: %zu days, %zu tracks, %zu playlists, %zu ad blocks, %.1f MiB of UTF-8 text\n",
                configuration.days.size(), trackCount, configuration.playlists.size(),
                configuration.adBlocks.size(), static_cast<double>(text.toUtf8().size()) / (1024.0 * 1024.0));

    // The reader must give back what was written; a fast wrong reader proves nothing.
    if (*JsonConverter::PlaybackConfigurationFromResponse(text) != configuration) {
        std::printf("error: reading the written configuration does not give it back\n");
        return 2;
    }

    // Results are kept in volatile sinks so the work cannot be dropped.
    volatile std::size_t sink = 0;
    const Timings read = FastestOfAlternatingRuns(
        [&] { sink = sink + JsonConverter::PlaybackConfigurationFromResponse(text)->days.size(); },
        [&] {
            sink = sink + static_cast<std::size_t>(QJsonDocument::fromJson(text.toUtf8()).object().size());
        });
    const Timings write = FastestOfAlternatingRuns(
        [&] {
            sink = sink + static_cast<std::size_t>(
                              JsonConverter::PlaybackConfigurationToString(configuration).size());
        },
        [&] { sink = sink + static_cast<std::size_t>(QJsonDocument(document).toJson().size()); });

    std::printf("fastest of %d alternating runs each\n", kRepetitions);
    const bool readMet = Report("read", read);
    const bool writeMet = Report("write", write);
    return readMet && writeMet ? 0 : 1;
}

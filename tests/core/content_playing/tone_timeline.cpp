#include "tests/core/content_playing/tone_timeline.h"

#include "tests/support/pcm_analysis.h"

#include <algorithm>
#include <cmath>

namespace Tests {

namespace {

constexpr double Drift = 0.02;
constexpr int DriftSteps = 4;

double DriftTolerantLevel(const std::vector<std::int16_t>& samples, double frequency, double from, double to)
{
    double level = 0.0;
    for (int step = -DriftSteps; step <= DriftSteps; ++step) {
        const double shifted = frequency * (1.0 + Drift * step / DriftSteps);
        level = std::max(level, PcmAnalysis::ToneLevel(samples, shifted, from, to));
    }
    return level;
}

double Seconds(const std::vector<std::int16_t>& samples)
{
    return static_cast<double>(samples.size()) / PcmAnalysis::SampleRate;
}

} // namespace

double ToneTimeline::FirstHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold,
                                double fromSeconds)
{
    const double end = Seconds(samples);
    for (double at = fromSeconds; at + Window <= end; at += Window) {
        if (DriftTolerantLevel(samples, frequency, at, at + Window) > threshold) {
            return at;
        }
    }
    return -1.0;
}

double ToneTimeline::LastHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold)
{
    double last = -1.0;
    const double end = Seconds(samples);
    for (double at = 0.0; at + Window <= end; at += Window) {
        if (DriftTolerantLevel(samples, frequency, at, at + Window) > threshold) {
            last = at + Window;
        }
    }
    return last;
}

double ToneTimeline::Level(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                           double toSeconds)
{
    double sum = 0.0;
    int windows = 0;
    for (double at = fromSeconds; at + Window <= toSeconds + 1e-9; at += Window) {
        const double level = DriftTolerantLevel(samples, frequency, at, at + Window);
        sum += level * level;
        ++windows;
    }
    return windows == 0 ? 0.0 : std::sqrt(sum / windows);
}

double ToneTimeline::Loudest(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                             double toSeconds)
{
    double loudest = 0.0;
    for (double at = fromSeconds; at + Window <= toSeconds + 1e-9; at += Window) {
        loudest = std::max(loudest, DriftTolerantLevel(samples, frequency, at, at + Window));
    }
    return loudest;
}

} // namespace Tests

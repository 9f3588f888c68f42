#include "tests/core/content_playing/tone_timeline.h"

#include "tests/support/pcm_analysis.h"

namespace Tests {

double ToneTimeline::FirstHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold,
                                double fromSeconds)
{
    const double end = Seconds(samples);
    for (double at = fromSeconds; at + Window <= end; at += Window) {
        if (PcmAnalysis::ToneLevel(samples, frequency, at, at + Window) > threshold) {
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
        if (PcmAnalysis::ToneLevel(samples, frequency, at, at + Window) > threshold) {
            last = at + Window;
        }
    }
    return last;
}

double ToneTimeline::Level(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                           double toSeconds)
{
    return PcmAnalysis::ToneLevel(samples, frequency, fromSeconds, toSeconds);
}

double ToneTimeline::Seconds(const std::vector<std::int16_t>& samples)
{
    return static_cast<double>(samples.size()) / PcmAnalysis::SampleRate;
}

} // namespace Tests

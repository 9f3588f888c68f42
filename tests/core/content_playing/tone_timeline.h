#pragma once

#include <cstdint>
#include <vector>

namespace Tests {

// When and how loud a tone was heard in a recording of a sink, in windows of a tenth
// of a second, each searched within ±2 % of the frequency: libvlc nudges its playback
// rate to keep in step with the sound server's clock.
class ToneTimeline
{
public:
    ToneTimeline() = delete;

    static constexpr double Window = 0.1;
    // Levels of a test tone: certainly sounding, and below which a sink counts as
    // silent. The null sinks are digitally silent but for what is played.
    static constexpr double Heard = 0.01;
    static constexpr double NotHeard = 0.002;

    // Start of the first window from `fromSeconds` on in which the tone exceeds
    // `threshold`; -1 when none does.
    static double FirstHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold,
                             double fromSeconds = 0.0);
    // End of the last window in which the tone exceeds `threshold`; -1 when none does.
    static double LastHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold);
    // The tone's root mean square level over the windows of [from, to).
    static double Level(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                        double toSeconds);
    // The tone's level in its loudest window within [from, to): unlike Level(), not
    // lowered by the sound libvlc into a null sink now and then loses.
    static double Loudest(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                          double toSeconds);
};

} // namespace Tests

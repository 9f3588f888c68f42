#pragma once

#include <cstdint>
#include <vector>

namespace Tests {

// When a tone was heard in a recording of a sink: the playback tests ask when a
// track became audible, when it went quiet, and how loud it was, in windows of a
// tenth of a second that allow for libvlc's small changes of playback rate.
class ToneTimeline
{
public:
    ToneTimeline() = delete;

    static constexpr double Window = 0.1;

    // Start of the first window from `fromSeconds` on in which the tone's level
    // exceeds `threshold`; -1 when it never does.
    static double FirstHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold,
                             double fromSeconds = 0.0);
    // End of the last window in which the tone's level exceeds `threshold`; -1
    // when it never does.
    static double LastHeard(const std::vector<std::int16_t>& samples, double frequency, double threshold);
    // The tone's level over [from, to), in whole tenths of a second.
    static double Level(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                        double toSeconds);
    // The tone's level in its loudest window within [from, to). libvlc into a null
    // sink now and then loses stretches of sound near the start of a file; a gap
    // lowers Level() but not this, as long as one whole window was heard.
    static double Loudest(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                          double toSeconds);
    static double Seconds(const std::vector<std::int16_t>& samples);
};

} // namespace Tests

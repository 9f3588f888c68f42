#pragma once

#include <QString>

#include <cstdint>
#include <vector>

namespace Tests {

// Mono 16-bit sound, as recorded from a sink or decoded from a file, and the two
// questions the tests ask of it: how loud, and how strongly one tone sounds.
class PcmAnalysis
{
public:
    PcmAnalysis() = delete;

    static constexpr int SampleRate = 16000;

    // Root mean square of the samples in [from, to) seconds, 0 (silence) to 1.
    static double Rms(const std::vector<std::int16_t>& samples, double fromSeconds, double toSeconds);
    // Amplitude of one frequency in [from, to) seconds (Goertzel), comparable with
    // Rms: a full-scale sine of that frequency gives about 0.707, other tones ~0.
    static double ToneLevel(const std::vector<std::int16_t>& samples, double frequency, double fromSeconds,
                            double toSeconds);
    // Whole seconds in which `frequency` is the loudest of `candidates` and clearly
    // audible.
    static int SecondsDominatedBy(const std::vector<std::int16_t>& samples, double frequency,
                                  const std::vector<double>& candidates);
    // Decodes a media file's sound with ffmpeg; empty (and a warning) on failure.
    static std::vector<std::int16_t> DecodeFile(const QString& path);
};

} // namespace Tests

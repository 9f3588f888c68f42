#pragma once

#include <string>
#include <vector>

namespace Core::Vendor {

// One of libvlc's built-in equaliser presets ("Rock", "Classical", ...): the
// pre-amplification and one gain per band, all in dB.
class AudioPreset
{
public:
    AudioPreset(std::string name, double amplifier, std::vector<double> bands);

    const std::string& Name() const;
    double Amplifier() const;
    const std::vector<double>& Bands() const;

    // Whether an equaliser set by hand matches this preset, to within 0.1 dB on the
    // amplifier and on every band; a different band count never matches. The
    // settings screen uses it to show which preset, if any, is in effect.
    bool Equal(double amplifier, const std::vector<double>& bands) const;

private:
    std::string name;
    double amplifier;
    std::vector<double> bands;
};

} // namespace Core::Vendor

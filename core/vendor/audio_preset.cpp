#include "core/vendor/audio_preset.h"

#include "core/utilities/math_utils.h"

#include <utility>

namespace Core::Vendor {

namespace {

constexpr double Tolerance = 0.1;

} // namespace

AudioPreset::AudioPreset(std::string name, double amplifier, std::vector<double> bands)
    : name(std::move(name))
    , amplifier(amplifier)
    , bands(std::move(bands))
{
}

const std::string& AudioPreset::Name() const
{
    return name;
}

double AudioPreset::Amplifier() const
{
    return amplifier;
}

const std::vector<double>& AudioPreset::Bands() const
{
    return bands;
}

bool AudioPreset::Equal(double otherAmplifier, const std::vector<double>& otherBands) const
{
    if (!Utilities::MathUtils::Equal(amplifier, otherAmplifier, Tolerance) ||
        bands.size() != otherBands.size()) {
        return false;
    }
    for (std::size_t i = 0; i < bands.size(); ++i) {
        if (!Utilities::MathUtils::Equal(bands[i], otherBands[i], Tolerance)) {
            return false;
        }
    }
    return true;
}

} // namespace Core::Vendor

#include "core/data_types/playback/ad_block.h"

#include <tuple>

namespace Core::DataTypes::Playback {

bool AdBlock::Entry::operator==(const Entry& other) const
{
    return std::tie(date, trackId) == std::tie(other.date, other.trackId);
}

bool AdBlock::Entry::operator!=(const Entry& other) const
{
    return !(*this == other);
}

bool AdBlock::operator==(const AdBlock& other) const
{
    return std::tie(name, interruptContent, startTime, tracks) ==
           std::tie(other.name, other.interruptContent, other.startTime, other.tracks);
}

bool AdBlock::operator!=(const AdBlock& other) const
{
    return !(*this == other);
}

} // namespace Core::DataTypes::Playback

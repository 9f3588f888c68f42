#include "core/data_types/playback/playback_period.h"

#include <tuple>

namespace Core::DataTypes::Playback {

bool PlaybackPeriod::operator==(const PlaybackPeriod& other) const
{
    return std::tie(name, startTime, endTime, scheduleName, scheduleId, contentVolume, adsVolume,
                    playlistIds) == std::tie(other.name, other.startTime, other.endTime, other.scheduleName,
                                             other.scheduleId, other.contentVolume, other.adsVolume,
                                             other.playlistIds);
}

bool PlaybackPeriod::operator!=(const PlaybackPeriod& other) const
{
    return !(*this == other);
}

} // namespace Core::DataTypes::Playback

#include "core/data_types/playback/playback_configuration.h"

#include <tuple>

namespace Core::DataTypes::Playback {

bool PlaybackConfiguration::operator==(const PlaybackConfiguration& other) const
{
    return std::tie(version, domains, days, adBlocks, playlists, tracks) ==
           std::tie(other.version, other.domains, other.days, other.adBlocks, other.playlists, other.tracks);
}

bool PlaybackConfiguration::operator!=(const PlaybackConfiguration& other) const
{
    return !(*this == other);
}

} // namespace Core::DataTypes::Playback

#include "core/data_types/playback/playlist.h"

#include <tuple>

namespace Core::DataTypes::Playback {

bool Playlist::operator==(const Playlist& other) const
{
    return std::tie(id, name, contentType, image, trackIds) ==
           std::tie(other.id, other.name, other.contentType, other.image, other.trackIds);
}

bool Playlist::operator!=(const Playlist& other) const
{
    return !(*this == other);
}

} // namespace Core::DataTypes::Playback

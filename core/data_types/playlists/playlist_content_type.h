#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Playlists {

// The catalogue's kinds of playlists. It shares the numbers 1 to 3 with the
// schedule's ContentType; 0 is stock music here, not advertising.
enum class PlaylistContentType : std::int32_t
{
    StockMusic = 0,
    Music = 1,
    Video = 2,
    Photo = 3,
};

// Used as a URL segment of the catalogue requests.
std::string PlaylistContentTypeToString(PlaylistContentType type);

} // namespace Core::DataTypes::Playlists

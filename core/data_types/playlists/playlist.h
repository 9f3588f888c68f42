#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Playlists {

// A catalogue playlist the user can switch on for the playback object.
struct Playlist
{
    std::int32_t id = 0;
    std::string name;
    std::string image;
    // Total size of its files; a double because catalogue sizes pass 2 GiB.
    double contentSizeBytes = 0.0;
    std::int32_t tracksCount = 0;
    bool active = false;
};

} // namespace Core::DataTypes::Playlists

#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Playlists {

// Which playlist plays for one kind of content: one all day, or (advanced) one per
// part of the day.
struct ContentPlaylistSettings
{
    bool advanced = false;
    std::int32_t playlistId = 0;
    std::string playlistName;
    std::int32_t morningPlaylistId = 0;
    std::string morningPlaylistName;
    std::int32_t dayPlaylistId = 0;
    std::string dayPlaylistName;
    std::int32_t eveningPlaylistId = 0;
    std::string eveningPlaylistName;
    std::int32_t nightPlaylistId = 0;
    std::string nightPlaylistName;
};

} // namespace Core::DataTypes::Playlists

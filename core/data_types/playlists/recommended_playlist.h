#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Playlists {

// A playlist suggested at sign-up for the chosen business type and music style.
struct RecommendedPlaylist
{
    std::int32_t id = 0;
    std::string name;
    std::string image;
    bool main = false;
};

} // namespace Core::DataTypes::Playlists

#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Playlists {

// A track of a catalogue playlist, shown to the user and never played from here.
struct Track
{
    std::int32_t id = 0;
    std::string name;
    std::string author;
    std::string image;
};

} // namespace Core::DataTypes::Playlists

#pragma once

#include "core/data_types/playback/content_type.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Core::DataTypes::Playback {

// A playlist the schedule refers to. Its tracks live in the configuration's track
// lists; the playlist only keeps their ids in play order.
struct Playlist
{
    std::int32_t id = 0;
    std::string name;
    ContentType contentType = ContentType::Clip;
    std::string image;
    std::vector<std::int32_t> trackIds;

    bool operator==(const Playlist& other) const;
    bool operator!=(const Playlist& other) const;
};

} // namespace Core::DataTypes::Playback

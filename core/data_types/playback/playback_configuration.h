#pragma once

#include "core/data_types/playback/ad_block.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/day.h"
#include "core/data_types/playback/playlist.h"
#include "core/data_types/playback/track.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Core::DataTypes::Playback {

// Everything the server tells one point of sale to play. Shared read-only between
// the loader, the database and the engine once it has been read.
struct PlaybackConfiguration
{
    std::int32_t version = 0;
    std::vector<std::string> domains;
    std::vector<Day> days;
    std::vector<AdBlock> adBlocks;
    std::vector<Playlist> playlists;
    // After reading, all four kinds are present, with an empty list where the server
    // sent none.
    std::map<ContentType, std::vector<Track>> tracks;

    bool operator==(const PlaybackConfiguration& other) const;
    bool operator!=(const PlaybackConfiguration& other) const;
};

} // namespace Core::DataTypes::Playback

#pragma once

#include "core/data_types/playback/content_type.h"

#include <cstdint>
#include <map>
#include <string>

namespace Core::DataTypes::Playback {

// A stretch of one day with one set of playlists and volumes.
struct PlaybackPeriod
{
    std::string name;
    std::string startTime;
    std::string endTime;
    std::string scheduleName;
    std::int32_t scheduleId = -1;
    std::int32_t contentVolume = 0;
    std::int32_t adsVolume = 0;
    // Always holds exactly Music, Video and Photo (0 = no playlist of that kind):
    // readers and writers use checked access and rely on the keys being there.
    std::map<ContentType, std::int32_t> playlistIds = {
        {ContentType::Music, 0},
        {ContentType::Video, 0},
        {ContentType::Photo, 0},
    };

    bool operator==(const PlaybackPeriod& other) const;
    bool operator!=(const PlaybackPeriod& other) const;
};

} // namespace Core::DataTypes::Playback

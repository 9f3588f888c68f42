#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Core::DataTypes::Playback {

// What the schedule screen shows: one named schedule with its periods and, for each
// kind of background content, a summary of the playlist that plays.
struct UserFacingSchedule
{
    struct PlaylistSummary
    {
        std::int32_t id = 0;
        std::string name;
        std::string image;
        std::int32_t trackCount = 0;
    };

    struct PlaybackPeriodInfo
    {
        std::string name;
        std::string startTime;
        std::string endTime;
        std::int32_t contentVolume = 0;
        std::int32_t adsVolume = 0;
        PlaylistSummary music;
        PlaylistSummary video;
        PlaylistSummary photo;
    };

    std::int32_t id = 0;
    std::string name;
    std::vector<PlaybackPeriodInfo> periods;
};

} // namespace Core::DataTypes::Playback

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Core::DataTypes::Playback {

// A block of advertising clips due at one time of day. The same block is scheduled
// on several dates; each entry says on which date a clip belongs to it.
struct AdBlock
{
    struct Entry
    {
        std::string date;
        std::int32_t trackId = 0;

        bool operator==(const Entry& other) const;
        bool operator!=(const Entry& other) const;
    };

    std::string name;
    // true: cuts into the running content at its start time; false: waits politely
    // for the running track to end.
    bool interruptContent = false;
    std::string startTime;
    std::vector<Entry> tracks;

    bool operator==(const AdBlock& other) const;
    bool operator!=(const AdBlock& other) const;
};

} // namespace Core::DataTypes::Playback

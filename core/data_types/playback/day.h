#pragma once

#include "core/data_types/playback/playback_period.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Core::DataTypes::Playback {

// One dated day of the weekly schedule. The date, not the day of the week, binds
// its periods to the calendar.
struct Day
{
    std::string dayOfWeek;
    std::string date;
    std::int32_t dayOfWeekId = 0;
    std::vector<PlaybackPeriod> periods;
    std::string scheduleName;
    std::int32_t scheduleId = 0;

    bool operator==(const Day& other) const;
    bool operator!=(const Day& other) const;
};

} // namespace Core::DataTypes::Playback

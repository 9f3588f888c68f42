#include "core/data_types/playback/day.h"

#include <tuple>

namespace Core::DataTypes::Playback {

bool Day::operator==(const Day& other) const
{
    return std::tie(dayOfWeek, date, dayOfWeekId, periods, scheduleName, scheduleId) ==
           std::tie(other.dayOfWeek, other.date, other.dayOfWeekId, other.periods, other.scheduleName,
                    other.scheduleId);
}

bool Day::operator!=(const Day& other) const
{
    return !(*this == other);
}

} // namespace Core::DataTypes::Playback

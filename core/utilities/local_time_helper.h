#pragma once

#include <cstdint>
#include <ctime>
#include <string>

namespace Core::Utilities {

// Local-time arithmetic for the schedule and the logs. "Now" always comes from
// Clock, converted with the system's local-time rules.
class LocalTimeHelper
{
public:
    LocalTimeHelper() = delete;

    static std::time_t GetDeviceLocalTimeStamp();
    // The server refuses reports from a machine whose clock is off by more than a
    // minute; true when |now - serverTimestamp| <= 60 s.
    static bool DeviceTimeIsCorrect(std::int64_t serverTimestamp);
    static std::string GetLocalTimeString();
    static std::string GetLocalTimeHoursMinutesString();
    static std::string GetLocalDateString();
    static std::string TimeStringFromSeconds(std::time_t seconds, const char* format);
    // Today as the server writes a day's date ("%d.%m.%Y"); a period belongs to the
    // day whose date text equals this exactly.
    static std::string CurrentDateToString();
    static int LocalTimeToSecondsFromDayStart();
    // The same moment to the millisecond, for timers that must fire on a second
    // rather than up to a second after it.
    static std::int64_t LocalTimeToMSecsFromDayStart();
    // "HH:MM" only (two digits, a colon, two digits); any other length, or a
    // five-character text of another shape such as "ab:cd", gives 0.
    static int StartTimeToSecondsFromDayStart(const std::string& text);
    // As the start time, except that "00:00" is the end of the day (86400).
    static int EndTimeToSecondsFromDayStart(const std::string& text);
};

} // namespace Core::Utilities

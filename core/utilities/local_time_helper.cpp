#include "core/utilities/local_time_helper.h"

#include "core/utilities/clock.h"

#include <cstddef>
#include <ctime>

namespace Core::Utilities {

namespace {

// localtime_r is not required to notice a changed time zone; tzset makes it look
// again, as the non-reentrant conversion would.
bool ToLocalTime(std::time_t seconds, std::tm& result)
{
    tzset();
    return localtime_r(&seconds, &result) != nullptr;
}

bool IsDecimalDigit(char character)
{
    return character >= '0' && character <= '9';
}

// "HH:MM" to seconds since midnight. Anything that is not exactly two digits, a
// colon and two digits gives 0, the same as a text of the wrong length: the
// schedule comes from the server and must never take the player down. Hours and
// minutes are not range-checked, so "24:00" is the end of the day as well.
int TimeTextToSeconds(const std::string& text)
{
    if (text.size() != 5 || text[2] != ':' || !IsDecimalDigit(text[0]) || !IsDecimalDigit(text[1]) ||
        !IsDecimalDigit(text[3]) || !IsDecimalDigit(text[4])) {
        return 0;
    }
    const int hours = (text[0] - '0') * 10 + (text[1] - '0');
    const int minutes = (text[3] - '0') * 10 + (text[4] - '0');
    return hours * 3600 + minutes * 60;
}

} // namespace

std::time_t LocalTimeHelper::GetDeviceLocalTimeStamp()
{
    return Clock::CurrentSecsSinceEpoch();
}

bool LocalTimeHelper::DeviceTimeIsCorrect(std::int64_t serverTimestamp)
{
    // Compared as a window around now rather than as |now - t|, which would
    // overflow for a wild timestamp.
    constexpr std::int64_t allowedDifference = 60;
    const std::int64_t now = GetDeviceLocalTimeStamp();
    return serverTimestamp >= now - allowedDifference && serverTimestamp <= now + allowedDifference;
}

std::string LocalTimeHelper::GetLocalTimeString()
{
    return TimeStringFromSeconds(GetDeviceLocalTimeStamp(), "%H:%M:%S");
}

std::string LocalTimeHelper::GetLocalTimeHoursMinutesString()
{
    return TimeStringFromSeconds(GetDeviceLocalTimeStamp(), "%H:%M");
}

std::string LocalTimeHelper::GetLocalDateString()
{
    return TimeStringFromSeconds(GetDeviceLocalTimeStamp(), "%d.%m.%Y");
}

std::string LocalTimeHelper::TimeStringFromSeconds(std::time_t seconds, const char* format)
{
    if (format == nullptr) {
        return {};
    }
    std::tm local{};
    if (!ToLocalTime(seconds, local)) {
        return {};
    }
    // Every format the program uses fits; a longer result is dropped whole (strftime
    // returns 0) rather than cut at an arbitrary byte.
    char buffer[32];
    const std::size_t length = std::strftime(buffer, sizeof(buffer), format, &local);
    return std::string(buffer, length);
}

std::string LocalTimeHelper::CurrentDateToString()
{
    return TimeStringFromSeconds(GetDeviceLocalTimeStamp(), "%d.%m.%Y");
}

int LocalTimeHelper::LocalTimeToSecondsFromDayStart()
{
    std::tm local{};
    if (!ToLocalTime(GetDeviceLocalTimeStamp(), local)) {
        return 0;
    }
    return local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
}

std::int64_t LocalTimeHelper::LocalTimeToMSecsFromDayStart()
{
    // One reading of the clock for both the second and its fraction.
    const std::int64_t nowMs = Clock::CurrentMSecsSinceEpoch();
    std::tm local{};
    if (!ToLocalTime(static_cast<std::time_t>(nowMs / 1000), local)) {
        return 0;
    }
    const std::int64_t seconds = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
    return seconds * 1000 + nowMs % 1000;
}

int LocalTimeHelper::StartTimeToSecondsFromDayStart(const std::string& text)
{
    return TimeTextToSeconds(text);
}

int LocalTimeHelper::EndTimeToSecondsFromDayStart(const std::string& text)
{
    // A period that ends at midnight ends with its day, not before it starts.
    if (text == "00:00") {
        return 24 * 3600;
    }
    return TimeTextToSeconds(text);
}

} // namespace Core::Utilities

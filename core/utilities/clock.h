#pragma once

#include <QDateTime>

#include <cstdint>
#include <ctime>

namespace Core::Utilities {

// The one place the program reads the wall clock. Schedules, ads and logs all ask
// here, so a test can move "now" to a few seconds before a boundary and let it run
// on in real time instead of waiting for the minute to come.
class Clock
{
public:
    Clock() = delete;

    static std::int64_t CurrentMSecsSinceEpoch();
    static std::time_t CurrentSecsSinceEpoch();
    static QDateTime CurrentLocalDateTime();

    // From this call on the clock reads `now` and keeps running from there.
    static void SetCurrentDateTimeForTesting(const QDateTime& now);
    // Back to the system clock.
    static void ResetForTesting();
};

} // namespace Core::Utilities

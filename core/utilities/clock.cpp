#include "core/utilities/clock.h"

#include <atomic>
#include <chrono>

namespace Core::Utilities {

namespace {

// Atomic because Qt may print a warning, and so read the clock, from one of its
// own threads.
std::atomic<std::int64_t> testingOffsetMSecs{0};

std::int64_t SystemMSecsSinceEpoch()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

} // namespace

std::int64_t Clock::CurrentMSecsSinceEpoch()
{
    return SystemMSecsSinceEpoch() + testingOffsetMSecs.load(std::memory_order_relaxed);
}

std::time_t Clock::CurrentSecsSinceEpoch()
{
    // Truncated toward zero: a timestamp is whole elapsed seconds.
    return static_cast<std::time_t>(CurrentMSecsSinceEpoch() / 1000);
}

QDateTime Clock::CurrentLocalDateTime()
{
    return QDateTime::fromMSecsSinceEpoch(CurrentMSecsSinceEpoch(), Qt::LocalTime);
}

void Clock::SetCurrentDateTimeForTesting(const QDateTime& now)
{
    testingOffsetMSecs.store(now.toMSecsSinceEpoch() - SystemMSecsSinceEpoch(), std::memory_order_relaxed);
}

void Clock::ResetForTesting()
{
    testingOffsetMSecs.store(0, std::memory_order_relaxed);
}

} // namespace Core::Utilities

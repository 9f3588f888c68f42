#include "core/content_playing/ads_scheduler.h"

#include "core/content_playing/ads_block.h"
#include "core/content_playing/ads_scheduler_observer.h"
#include "core/utilities/local_time_helper.h"

#include <QTimer>

namespace Core::ContentPlaying {

using Utilities::LocalTimeHelper;

AdsScheduler::AdsScheduler(AdsSchedulerObserver* observer)
    : QObject(nullptr)
    , observer(observer)
{
}

AdsScheduler::~AdsScheduler()
{
    Cancel();
}

void AdsScheduler::ScheduleAds(const std::vector<std::shared_ptr<AdsBlock>>& blocks)
{
    // One reading of the clock for the whole list, so that blocks due at the same
    // moment get the same interval and fire in list order. A block is due when its
    // second is later than now's; its timer aims at that second itself, so an ad
    // scheduled part-way through a second is not late by that part.
    const std::int64_t nowMs = LocalTimeHelper::LocalTimeToMSecsFromDayStart();
    const std::int64_t now = nowMs / 1000;
    for (const auto& block : blocks) {
        if (!block) {
            continue;
        }
        const std::int64_t start = LocalTimeHelper::StartTimeToSecondsFromDayStart(block->GetStartTimeStr());
        if (start > now) {
            CreateTimer(start * 1000 - nowMs, block);
        }
    }
}

void AdsScheduler::Cancel()
{
    // Deleting at once (not later through the event loop) also drops any timeout
    // already queued, so nothing of this period fires after this.
    for (QTimer* timer : timers) {
        timer->stop();
        delete timer;
    }
    timers.clear();
}

void AdsScheduler::NotifyObserverAdBlockStarted(const std::shared_ptr<AdsBlock>& block)
{
    if (observer == nullptr || !block) {
        return;
    }
    if (block->InterruptsContent()) {
        observer->InterruptAdBlockStarted(block);
    } else {
        observer->NoninterruptAdBlockStarted(block);
    }
}

void AdsScheduler::CreateTimer(std::int64_t milliseconds, const std::shared_ptr<AdsBlock>& block)
{
    auto* timer = new QTimer();
    timer->setSingleShot(true);
    // Never early: a coarse timer may fire up to 5% ahead of the ad's minute.
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, [this, block]() { NotifyObserverAdBlockStarted(block); });
    timers.push_back(timer);
    timer->start(static_cast<int>(milliseconds));
}

} // namespace Core::ContentPlaying

#pragma once

#include <QObject>

#include <cstdint>
#include <memory>
#include <vector>

class QTimer;

namespace Core::ContentPlaying {

class AdsBlock;
class AdsSchedulerObserver;

// One single-shot timer per advertising block still to come in the period. The
// intervals are taken from the local clock once, when the ads are scheduled.
class AdsScheduler : public QObject
{
    Q_OBJECT

public:
    explicit AdsScheduler(AdsSchedulerObserver* observer);
    ~AdsScheduler() override;

    AdsScheduler(const AdsScheduler&) = delete;
    AdsScheduler& operator=(const AdsScheduler&) = delete;

    // Blocks whose start is not after now are dropped.
    void ScheduleAds(const std::vector<std::shared_ptr<AdsBlock>>& blocks);
    // No block scheduled so far is reported after this, even if its time comes.
    void Cancel();
    void NotifyObserverAdBlockStarted(const std::shared_ptr<AdsBlock>& block);

private:
    void CreateTimer(std::int64_t milliseconds, const std::shared_ptr<AdsBlock>& block);

    AdsSchedulerObserver* observer;
    std::vector<QTimer*> timers;
};

} // namespace Core::ContentPlaying

#pragma once

#include <memory>

namespace Core::ContentPlaying {

class AdsBlock;

// Told when a scheduled advertising block is due.
class AdsSchedulerObserver
{
public:
    virtual ~AdsSchedulerObserver() = default;

    virtual void InterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) = 0;
    virtual void NoninterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) = 0;
};

} // namespace Core::ContentPlaying

#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"

#include <memory>

namespace Core::ContentPlaying {

class PlayablePeriod;

// What the periods of a chain tell the player.
class PlayablePeriodObserver
{
public:
    virtual ~PlayablePeriodObserver() = default;

    virtual void PeriodStarted(std::shared_ptr<PlayablePeriod> period) = 0;
    virtual void LastPeriodFinished(std::shared_ptr<PlayablePeriod> period) = 0;
    virtual void CurrentPeriodNotFound() = 0;
    virtual void PeriodStartedPlayingTrack(std::shared_ptr<PlayablePeriod> period,
                                           DataTypes::Playback::ContentType type, int volume,
                                           const DataTypes::Playback::Track& track, bool resumed) = 0;
    virtual void PeriodChangedProgress(std::shared_ptr<PlayablePeriod> period,
                                       DataTypes::Playback::ContentType type, double progress,
                                       double durationSeconds) = 0;
    virtual void PeriodFinishedPlayingAdBlock(std::shared_ptr<PlayablePeriod> period) = 0;
    // False when the player has taken over (a pending restart) and the period must
    // not go on with its content.
    virtual bool PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod> period) = 0;
};

} // namespace Core::ContentPlaying

#pragma once

#include "core/content_playing/playable_period_observer.h"

#include <cstdint>
#include <vector>

namespace Tests {

// Writes down what the periods of a chain report, in order; progress is left out.
class RecordingPeriodObserver : public Core::ContentPlaying::PlayablePeriodObserver
{
public:
    enum class Kind
    {
        PeriodStarted,
        LastPeriodFinished,
        CurrentPeriodNotFound,
        TrackStarted,
        AdBlockFinished,
        ShouldPlayNextTrack
    };
    struct Event
    {
        Kind kind;
        const Core::ContentPlaying::PlayablePeriod* period;
        Core::DataTypes::Playback::ContentType type = Core::DataTypes::Playback::ContentType::Clip;
        std::int32_t trackId = 0;
        bool resumed = false;
    };

    void PeriodStarted(std::shared_ptr<Core::ContentPlaying::PlayablePeriod> period) override;
    void LastPeriodFinished(std::shared_ptr<Core::ContentPlaying::PlayablePeriod> period) override;
    void CurrentPeriodNotFound() override;
    void PeriodStartedPlayingTrack(std::shared_ptr<Core::ContentPlaying::PlayablePeriod> period,
                                   Core::DataTypes::Playback::ContentType type, int volume,
                                   const Core::DataTypes::Playback::Track& track, bool resumed) override;
    void PeriodChangedProgress(std::shared_ptr<Core::ContentPlaying::PlayablePeriod> period,
                               Core::DataTypes::Playback::ContentType type, double progress,
                               double durationSeconds) override;
    void PeriodFinishedPlayingAdBlock(std::shared_ptr<Core::ContentPlaying::PlayablePeriod> period) override;
    // Always lets the period go on with its content.
    bool PeriodShouldPlayNextTrack(std::shared_ptr<Core::ContentPlaying::PlayablePeriod> period) override;

    int Count(Kind kind) const;
    // Ids of the tracks started for one kind of content, in order.
    std::vector<std::int32_t> StartedIds(Core::DataTypes::Playback::ContentType type) const;
    // The first event of the kind (and, for track starts, the id), or -1.
    int IndexOf(Kind kind, std::int32_t trackId = 0) const;

    std::vector<Event> events;
};

} // namespace Tests

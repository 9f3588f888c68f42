#pragma once

#include "core/content_playing/playable_block_observer.h"

#include <cstdint>
#include <vector>

namespace Tests {

// Writes down the tracks a content block starts and the progress it reports.
class RecordingBlockObserver : public Core::ContentPlaying::PlayableBlockObserver
{
public:
    struct Start
    {
        const Core::ContentPlaying::AbstractContentBlock* block;
        std::int32_t trackId;
        bool resumed;
    };
    struct Progress
    {
        double progress;
        double durationSeconds;
    };

    void BlockDidStartPlayingTrack(Core::ContentPlaying::AbstractContentBlock& block,
                                   const Core::DataTypes::Playback::Track& track, bool resumed) override;
    void BlockDidChangeProgress(Core::ContentPlaying::AbstractContentBlock& block, double progress,
                                double durationSeconds) override;
    void BlockDoesntPlayNextTrack(Core::ContentPlaying::AbstractContentBlock& block) override;

    std::vector<std::int32_t> StartedIds() const;
    int StartCount() const;

    std::vector<Start> starts;
    std::vector<Progress> progress;
};

} // namespace Tests

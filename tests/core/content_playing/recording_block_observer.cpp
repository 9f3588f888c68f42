#include "tests/core/content_playing/recording_block_observer.h"

namespace Tests {

void RecordingBlockObserver::BlockDidStartPlayingTrack(Core::ContentPlaying::AbstractContentBlock& block,
                                                       const Core::DataTypes::Playback::Track& track,
                                                       bool resumed)
{
    starts.push_back({&block, track.id, resumed});
}

void RecordingBlockObserver::BlockDidChangeProgress(Core::ContentPlaying::AbstractContentBlock&, double value,
                                                    double durationSeconds)
{
    progress.push_back({value, durationSeconds});
}

void RecordingBlockObserver::BlockDoesntPlayNextTrack(Core::ContentPlaying::AbstractContentBlock&) {}

std::vector<std::int32_t> RecordingBlockObserver::StartedIds() const
{
    std::vector<std::int32_t> ids;
    for (const auto& start : starts) {
        ids.push_back(start.trackId);
    }
    return ids;
}

int RecordingBlockObserver::StartCount() const
{
    return static_cast<int>(starts.size());
}

} // namespace Tests

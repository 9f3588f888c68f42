#include "tests/core/content_playing/recording_track_list_observer.h"

namespace Tests {

RecordingTrackListObserver::RecordingTrackListObserver()
{
    clock.start();
}

void RecordingTrackListObserver::TrackListPlayerDidStartPlayingTrack(
    const Core::DataTypes::Playback::Track& track, bool resumed)
{
    starts.push_back({track.id, resumed, clock.elapsed()});
}

void RecordingTrackListObserver::TrackListPlayerDidChangeProgress(double durationSeconds, double value)
{
    progress.push_back({durationSeconds, value, clock.elapsed()});
}

void RecordingTrackListObserver::TrackListPlayerDidFinishTrackList()
{
    ++finished;
}

void RecordingTrackListObserver::TrackListPlayerDidFailWithError()
{
    ++failed;
}

void RecordingTrackListObserver::TrackListPlayerDoesntPlayNextTrack()
{
    ++doesntPlayNext;
}

std::vector<std::int32_t> RecordingTrackListObserver::StartedIds() const
{
    std::vector<std::int32_t> ids;
    for (const auto& start : starts) {
        ids.push_back(start.trackId);
    }
    return ids;
}

int RecordingTrackListObserver::StartCount() const
{
    return static_cast<int>(starts.size());
}

} // namespace Tests

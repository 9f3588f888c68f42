#pragma once

#include "core/content_playing/track_list_player_observer.h"

namespace Bench {

// Ends the benchmark's playing process when its list has played through, or as soon
// as the player reports that it cannot go on.
class PlaybackBenchObserver : public Core::ContentPlaying::TrackListPlayerObserver
{
public:
    void TrackListPlayerDidStartPlayingTrack(const Core::DataTypes::Playback::Track& track,
                                             bool resumed) override;
    void TrackListPlayerDidChangeProgress(double durationSeconds, double progress) override;
    void TrackListPlayerDidFinishTrackList() override;
    void TrackListPlayerDidFailWithError() override;
    void TrackListPlayerDoesntPlayNextTrack() override;

    bool Failed() const;

private:
    bool failed = false;
};

} // namespace Bench

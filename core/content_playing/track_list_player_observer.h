#pragma once

#include "core/data_types/playback/track.h"

namespace Core::ContentPlaying {

// What a track list player tells the content block that owns it.
class TrackListPlayerObserver
{
public:
    virtual ~TrackListPlayerObserver() = default;

    // A track began (resumed: it went on from a pause rather than from its start).
    virtual void TrackListPlayerDidStartPlayingTrack(const DataTypes::Playback::Track& track,
                                                     bool resumed) = 0;
    virtual void TrackListPlayerDidChangeProgress(double durationSeconds, double progress) = 0;
    // The last playable track of a list that does not loop has ended.
    virtual void TrackListPlayerDidFinishTrackList() = 0;
    virtual void TrackListPlayerDidFailWithError() = 0;
    // A track ended while the player was told not to go on to the next one.
    virtual void TrackListPlayerDoesntPlayNextTrack() = 0;
};

} // namespace Core::ContentPlaying

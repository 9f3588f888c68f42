#pragma once

#include "core/data_types/playback/track.h"

namespace Core::ContentPlaying {

class AbstractContentBlock;

// What a content block tells the playable period that holds it.
class PlayableBlockObserver
{
public:
    virtual ~PlayableBlockObserver() = default;

    virtual void BlockDidStartPlayingTrack(AbstractContentBlock& block,
                                           const DataTypes::Playback::Track& track, bool resumed) = 0;
    virtual void BlockDidChangeProgress(AbstractContentBlock& block, double progress,
                                        double durationSeconds) = 0;
    virtual void BlockDoesntPlayNextTrack(AbstractContentBlock& block) = 0;
};

} // namespace Core::ContentPlaying

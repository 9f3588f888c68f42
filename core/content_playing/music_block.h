#pragma once

#include "core/content_playing/track_list_block.h"

namespace Core::ContentPlaying {

// The period's music: looping, with crossfades when the settings ask for them at
// the time the block is built.
class MusicBlock : public TrackListBlock
{
public:
    MusicBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume);

    DataTypes::Playback::ContentType GetContentType() const override;
};

} // namespace Core::ContentPlaying

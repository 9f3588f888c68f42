#pragma once

#include "core/content_playing/track_list_block.h"

namespace Core::ContentPlaying {

// The period's videos: looping, one after another without crossfades.
class VideoBlock : public TrackListBlock
{
public:
    VideoBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume);

    DataTypes::Playback::ContentType GetContentType() const override;
};

} // namespace Core::ContentPlaying

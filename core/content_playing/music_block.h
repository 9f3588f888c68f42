#pragma once

#include "core/content_playing/track_list_block.h"

namespace Core::ContentPlaying {

// The period's music: looping, with crossfades when the settings ask for them (read
// when the block is built and again whenever the settings are applied to it).
class MusicBlock : public TrackListBlock
{
public:
    MusicBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume);

    DataTypes::Playback::ContentType GetContentType() const override;
    void ApplySettings() override;
};

} // namespace Core::ContentPlaying

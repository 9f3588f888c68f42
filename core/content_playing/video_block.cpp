#include "core/content_playing/video_block.h"

namespace Core::ContentPlaying {

VideoBlock::VideoBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume)
    : TrackListBlock(tracks, volume, false, true)
{
}

DataTypes::Playback::ContentType VideoBlock::GetContentType() const
{
    return DataTypes::Playback::ContentType::Video;
}

} // namespace Core::ContentPlaying

#include "core/content_playing/music_block.h"

#include "core/settings.h"

namespace Core::ContentPlaying {

MusicBlock::MusicBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume)
    : TrackListBlock(tracks, volume, Settings::GetUseCrossfade(), true)
{
}

DataTypes::Playback::ContentType MusicBlock::GetContentType() const
{
    return DataTypes::Playback::ContentType::Music;
}

void MusicBlock::ApplySettings()
{
    TrackListBlock::ApplySettings();
    Player().SetCrossfade(Settings::GetUseCrossfade());
}

} // namespace Core::ContentPlaying

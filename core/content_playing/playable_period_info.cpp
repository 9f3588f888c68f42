#include "core/content_playing/playable_period_info.h"

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;

void PlayablePeriodInfo::SetPlaylistIdentifier(ContentType type, int identifier)
{
    playlistIdentifiers[type] = identifier;
}

void PlayablePeriodInfo::SetPlaylistName(ContentType type, const std::string& playlistName)
{
    playlistNames[type] = playlistName;
}

void PlayablePeriodInfo::SetPlaylistImage(ContentType type, const std::string& image)
{
    playlistImages[type] = image;
}

int PlayablePeriodInfo::GetPlaylistIdentifier(ContentType type)
{
    return playlistIdentifiers[type];
}

std::string PlayablePeriodInfo::GetPlaylistName(ContentType type)
{
    return playlistNames[type];
}

std::string PlayablePeriodInfo::GetPlaylistImage(ContentType type)
{
    return playlistImages[type];
}

} // namespace Core::ContentPlaying

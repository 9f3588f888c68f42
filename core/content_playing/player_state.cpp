#include "core/content_playing/player_state.h"

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;

PlayerState::PlayerState()
{
    ResetDownloadsInfo();
    ResetAllContentPlayingStates();
}

void PlayerState::ResetAll()
{
    playingNow = false;
    ResetDownloadsInfo();
    ResetAllContentPlayingStates();
}

void PlayerState::ResetAllContentPlayingStates()
{
    contentPlayingStates.clear();
    for (const ContentType type : DataTypes::Playback::AllContentTypes()) {
        contentPlayingStates[type] = PlaybackState();
    }
}

void PlayerState::ResetDownloadsInfo()
{
    downloadsInfo.clear();
    for (const ContentType type : DataTypes::Playback::AllContentTypes()) {
        downloadsInfo[type] = DownloadsInfo();
    }
}

void PlayerState::ResetMusicVideoPhotoContentPlayingStates()
{
    for (const ContentType type : {ContentType::Music, ContentType::Video, ContentType::Photo}) {
        contentPlayingStates[type] = PlaybackState();
    }
}

std::string PlayerState::ToString() const
{
    std::string text = "PlayerState playingNow: " + std::to_string(playingNow) + "\n";
    for (const auto& [type, state] : contentPlayingStates) {
        text += "    " + DataTypes::Playback::ContentTypeToString(type) + ": " + state.ToString() + "\n";
    }
    for (const auto& [type, info] : downloadsInfo) {
        text += "    " + DataTypes::Playback::ContentTypeToString(type) + ": " + info.ToString() + "\n";
    }
    return text;
}

} // namespace Core::ContentPlaying

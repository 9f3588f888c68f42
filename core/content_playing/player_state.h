#pragma once

#include "core/content_playing/downloads_info.h"
#include "core/content_playing/playback_state.h"
#include "core/data_types/playback/content_type.h"

#include <map>
#include <string>

namespace Core::ContentPlaying {

// The player's on/off flag with, per kind of content (clip, music, video, photo),
// what plays and what is downloaded. Observers receive copies.
struct PlayerState
{
    PlayerState();

    bool playingNow = false;
    std::map<DataTypes::Playback::ContentType, PlaybackState> contentPlayingStates;
    std::map<DataTypes::Playback::ContentType, DownloadsInfo> downloadsInfo;

    void ResetAll();
    void ResetAllContentPlayingStates();
    void ResetDownloadsInfo();
    void ResetMusicVideoPhotoContentPlayingStates();
    // Nine lines for the four kinds: the flag, the playback states, the downloads.
    std::string ToString() const;
};

} // namespace Core::ContentPlaying

#include "core/content_playing/playback_state.h"

namespace Core::ContentPlaying {

void PlaybackState::Reset()
{
    playing = false;
    progress = 0;
    durationSeconds = 0;
    trackTitle.clear();
    trackSubtitle.clear();
    isVideo = false;
}

std::string PlaybackState::ToString() const
{
    return "PlaybackState playing: " + std::to_string(playing) + " progress: " + std::to_string(progress) +
           " durationSeconds: " + std::to_string(durationSeconds) + " trackTitle: " + trackTitle +
           " trackSubtitle: " + trackSubtitle + " playlistName: " + playlistName +
           " playlistImage: " + playlistImage + " trackIdentifier: " + std::to_string(trackIdentifier) +
           " trackIsUploadedByUser: " + std::to_string(trackIsUploadedByUser) +
           " isVideo: " + std::to_string(isVideo);
}

} // namespace Core::ContentPlaying

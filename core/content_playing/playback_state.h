#pragma once

#include <cstdint>
#include <string>

namespace Core::ContentPlaying {

// What plays of one kind of content, and how far, as the screens show it.
struct PlaybackState
{
    bool playing = false;
    double progress = 0;
    double durationSeconds = 0;
    std::string trackTitle;
    std::string trackSubtitle;
    std::string playlistName;
    std::string playlistImage;
    std::int64_t trackIdentifier = 0;
    bool trackIsUploadedByUser = false;
    bool isVideo = false;

    // Clears what belongs to the track; the playlist stays on screen (after an ad
    // block, the music's playlist is still the one shown).
    void Reset();
    std::string ToString() const;
};

} // namespace Core::ContentPlaying

#pragma once

#include "core/data_types/playback/track.h"

#include <string>
#include <vector>

namespace Core::ContentPlaying {

// How much of one kind of content is in the media cache.
struct DownloadsInfo
{
    bool waitingDownload = false;
    // Left at 0 by the player: a display derives progress from downloaded/total.
    double progress = 0;
    int downloaded = 0;
    int total = 0;
    std::vector<DataTypes::Playback::Track> downloadedTracks;

    void Reset();
    std::string ToString() const;
};

} // namespace Core::ContentPlaying

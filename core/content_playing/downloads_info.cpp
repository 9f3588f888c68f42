#include "core/content_playing/downloads_info.h"

namespace Core::ContentPlaying {

void DownloadsInfo::Reset()
{
    waitingDownload = false;
    progress = 0;
    downloaded = 0;
    total = 0;
    downloadedTracks.clear();
}

std::string DownloadsInfo::ToString() const
{
    return "DownloadsInfo waitingDownload: " + std::to_string(waitingDownload) +
           " progress: " + std::to_string(progress) + " downloaded: " + std::to_string(downloaded) +
           " total: " + std::to_string(total) +
           " downloadedTracks size: " + std::to_string(downloadedTracks.size());
}

} // namespace Core::ContentPlaying

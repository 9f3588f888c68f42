#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/track.h"

namespace Core::Networking {

// Told about every file that has arrived in the media cache (the player, which
// may now play it).
class ContentDownloaderObserver
{
public:
    virtual ~ContentDownloaderObserver() = default;

    virtual void FileDownloaderDidFinishDownloadingTrack(const DataTypes::Playback::Track& track,
                                                         const DataTypes::Playback::ContentType& type) = 0;
};

} // namespace Core::Networking

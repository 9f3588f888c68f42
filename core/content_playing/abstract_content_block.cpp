#include "core/content_playing/abstract_content_block.h"

#include "core/content_playing/playable_block_observer.h"
#include "core/networking/content_files_helper.h"

#include <algorithm>

namespace Core::ContentPlaying {

AbstractContentBlock::~AbstractContentBlock() = default;

void AbstractContentBlock::SetObserver(PlayableBlockObserver* newObserver)
{
    observer = newObserver;
}

void AbstractContentBlock::RemoveObserver()
{
    observer = nullptr;
}

void AbstractContentBlock::SetWaitingForDownload(bool waiting)
{
    waitingForDownload = waiting;
}

bool AbstractContentBlock::IsWaitingForDownload() const
{
    return waitingForDownload;
}

int AbstractContentBlock::GetVolume() const
{
    return 0;
}

void AbstractContentBlock::SetVolume(int) {}

void AbstractContentBlock::RefreshPhoto() {}

void AbstractContentBlock::ApplySettings() {}

void AbstractContentBlock::NotifyObserverPlayingTrackStarted(const DataTypes::Playback::Track& track,
                                                             bool resumed)
{
    if (observer != nullptr) {
        observer->BlockDidStartPlayingTrack(*this, track, resumed);
    }
}

void AbstractContentBlock::NotifyObserverProgressChanged(double progress, double durationSeconds)
{
    if (observer != nullptr) {
        observer->BlockDidChangeProgress(*this, progress, durationSeconds);
    }
}

void AbstractContentBlock::NotifyObserverBlockDoesntPlayNextTrack()
{
    if (observer != nullptr) {
        observer->BlockDoesntPlayNextTrack(*this);
    }
}

bool AbstractContentBlock::AnyFileDownloaded(const std::vector<DataTypes::Playback::Track>& tracks)
{
    return tracks.empty() ||
           std::any_of(tracks.begin(), tracks.end(), &ContentFilesHelper::FileForTrackExists);
}

} // namespace Core::ContentPlaying

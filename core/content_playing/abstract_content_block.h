#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/like_status.h"
#include "core/data_types/playback/track.h"

#include <vector>

class QWidget;

namespace Core::ContentPlaying {

class PlayableBlockObserver;

// One playable unit of a period: its music, its video, its photo slideshow or one
// advertising block. The period drives every kind through this interface and hears
// back through PlayableBlockObserver.
class AbstractContentBlock
{
public:
    AbstractContentBlock() = default;
    virtual ~AbstractContentBlock();

    AbstractContentBlock(const AbstractContentBlock&) = delete;
    AbstractContentBlock& operator=(const AbstractContentBlock&) = delete;

    virtual void Start() = 0;
    virtual void Pause() = 0;
    virtual void Stop() = 0;
    virtual void GoToPreviousTrack() = 0;
    virtual void GoToNextTrack() = 0;
    virtual DataTypes::Playback::ContentType GetContentType() const = 0;
    // A copy of the tracks the block was built with.
    virtual std::vector<DataTypes::Playback::Track> TrackList() const = 0;
    // True for an empty block too: it has nothing to wait for.
    virtual bool HasAnyDownloadedFile() const = 0;
    virtual void SetVideoWidget(QWidget* widget) = 0;
    virtual void SetPhotoWidget(QWidget* widget) = 0;
    virtual void SetProgress(double progress) = 0;
    virtual void SetObserver(PlayableBlockObserver* newObserver);
    virtual void RemoveObserver();
    virtual void SetWaitingForDownload(bool waiting);
    virtual bool IsWaitingForDownload() const;
    virtual void SetDontPlayNextTrack(bool dontPlay) = 0;
    virtual int GetVolume() const;
    virtual void SetVolume(int volume);
    virtual void SetMuted(bool muted) = 0;
    virtual bool CurrentTrackIsVideo() const = 0;
    virtual void RefreshPhoto();
    // Takes the sound settings (equaliser, amplifier, output device, crossfade) for
    // what is playing now; without it they reach the next track only.
    virtual void ApplySettings();
    virtual void PlayTrack(long trackId) = 0;
    virtual void RefreshTrackLikeStatusById(long trackId, DataTypes::Playback::LikeStatus status) = 0;

protected:
    void NotifyObserverPlayingTrackStarted(const DataTypes::Playback::Track& track, bool resumed);
    void NotifyObserverProgressChanged(double progress, double durationSeconds);
    void NotifyObserverBlockDoesntPlayNextTrack();

    static bool AnyFileDownloaded(const std::vector<DataTypes::Playback::Track>& tracks);

private:
    PlayableBlockObserver* observer = nullptr;
    bool waitingForDownload = false;
};

} // namespace Core::ContentPlaying

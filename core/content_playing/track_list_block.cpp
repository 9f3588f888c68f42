#include "core/content_playing/track_list_block.h"

namespace Core::ContentPlaying {

using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::Track;

TrackListBlock::TrackListBlock(const std::vector<Track>& tracks, int volume, bool crossfade, bool loop)
    : volume(volume)
    , tracks(tracks)
    , player(tracks, volume, this, crossfade, loop)
{
}

TrackListBlock::~TrackListBlock() = default;

TrackListPlayer& TrackListBlock::Player()
{
    return player;
}

void TrackListBlock::Start()
{
    player.Start();
}

void TrackListBlock::Pause()
{
    player.Pause();
}

void TrackListBlock::Stop()
{
    player.Stop();
}

void TrackListBlock::GoToPreviousTrack()
{
    if (tracks.size() < 2) {
        return;
    }
    player.GoToPreviousTrack();
}

void TrackListBlock::GoToNextTrack()
{
    if (tracks.size() < 2) {
        return;
    }
    player.GoToNextTrack();
}

std::vector<Track> TrackListBlock::TrackList() const
{
    return tracks;
}

bool TrackListBlock::HasAnyDownloadedFile() const
{
    return AnyFileDownloaded(tracks);
}

void TrackListBlock::SetVideoWidget(QWidget* widget)
{
    player.SetVideoWidget(widget);
}

void TrackListBlock::SetPhotoWidget(QWidget*) {}

void TrackListBlock::SetProgress(double progress)
{
    player.SetProgress(progress);
}

void TrackListBlock::SetDontPlayNextTrack(bool dontPlay)
{
    player.SetDontPlayNextTrack(dontPlay);
}

int TrackListBlock::GetVolume() const
{
    return volume;
}

void TrackListBlock::SetVolume(int newVolume)
{
    player.SetVolume(newVolume);
}

void TrackListBlock::SetMuted(bool muted)
{
    player.SetMuted(muted);
}

bool TrackListBlock::CurrentTrackIsVideo() const
{
    return player.CurrentTrackIsVideo();
}

void TrackListBlock::PlayTrack(long trackId)
{
    player.PlayTrack(trackId);
}

void TrackListBlock::RefreshTrackLikeStatusById(long trackId, LikeStatus status)
{
    // The list the screens show is this copy, not the player's.
    for (auto& track : tracks) {
        if (track.id == trackId) {
            track.likeStatus = status;
        }
    }
    player.RefreshTrackLikeStatusById(trackId, status);
}

void TrackListBlock::ApplySettings()
{
    player.ApplyAudioSettings();
}

void TrackListBlock::TrackListPlayerDidStartPlayingTrack(const Track& track, bool resumed)
{
    NotifyObserverPlayingTrackStarted(track, resumed);
}

void TrackListBlock::TrackListPlayerDidChangeProgress(double durationSeconds, double progress)
{
    NotifyObserverProgressChanged(progress, durationSeconds);
}

void TrackListBlock::TrackListPlayerDidFinishTrackList() {}

void TrackListBlock::TrackListPlayerDidFailWithError() {}

void TrackListBlock::TrackListPlayerDoesntPlayNextTrack()
{
    NotifyObserverBlockDoesntPlayNextTrack();
}

} // namespace Core::ContentPlaying

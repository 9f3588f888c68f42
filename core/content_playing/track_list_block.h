#pragma once

#include "core/content_playing/abstract_content_block.h"
#include "core/content_playing/track_list_player.h"
#include "core/content_playing/track_list_player_observer.h"

#include <vector>

namespace Core::ContentPlaying {

// A block that plays its tracks through a TrackListPlayer: music, video and ads.
class TrackListBlock : public AbstractContentBlock, public TrackListPlayerObserver
{
public:
    TrackListBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume, bool crossfade,
                   bool loop);
    ~TrackListBlock() override;

    void Start() override;
    void Pause() override;
    void Stop() override;
    // Both do nothing in a block of fewer than two tracks.
    void GoToPreviousTrack() override;
    void GoToNextTrack() override;
    std::vector<DataTypes::Playback::Track> TrackList() const override;
    bool HasAnyDownloadedFile() const override;
    void SetVideoWidget(QWidget* widget) override;
    void SetPhotoWidget(QWidget* widget) override;
    void SetProgress(double progress) override;
    void SetDontPlayNextTrack(bool dontPlay) override;
    // The volume the block was built with; later SetVolume calls reach the player
    // only.
    int GetVolume() const override;
    void SetVolume(int newVolume) override;
    void SetMuted(bool muted) override;
    bool CurrentTrackIsVideo() const override;
    void PlayTrack(long trackId) override;
    void RefreshTrackLikeStatusById(long trackId, DataTypes::Playback::LikeStatus status) override;
    void ApplySettings() override;

    void TrackListPlayerDidStartPlayingTrack(const DataTypes::Playback::Track& track, bool resumed) override;
    void TrackListPlayerDidChangeProgress(double durationSeconds, double progress) override;
    void TrackListPlayerDidFinishTrackList() override;
    void TrackListPlayerDidFailWithError() override;
    void TrackListPlayerDoesntPlayNextTrack() override;

protected:
    TrackListPlayer& Player();

private:
    int volume;
    std::vector<DataTypes::Playback::Track> tracks;
    TrackListPlayer player;
};

} // namespace Core::ContentPlaying

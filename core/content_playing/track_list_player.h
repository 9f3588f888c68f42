#pragma once

#include "core/data_types/playback/like_status.h"
#include "core/data_types/playback/track.h"
#include "core/vendor/vlc_status.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace Core::Vendor {
class VlcWrapper;
}

namespace Core::ContentPlaying {

class TrackListPlayerObserver;
class VolumeFader;

// Plays a list of tracks from the content cache one after another: tracks whose
// file is not downloaded yet are passed over, the list may loop, and consecutive
// music tracks may crossfade through a second media player. The incoming track
// starts fading in I seconds before the end of the playing one and the playing one
// starts fading out 0.75 × I before its end (I being the crossfade interval of the
// settings); when the playing track ends the players swap.
//
// A file that libvlc cannot play ends without ever playing: that counts as a
// playback error, is logged for support staff and the next track is tried. When
// every track of a looping list has failed in a row, playback stops instead of
// spinning through broken files.
class TrackListPlayer : public QObject
{
    Q_OBJECT

public:
    TrackListPlayer(const std::vector<DataTypes::Playback::Track>& tracks, int volume,
                    TrackListPlayerObserver* observer, bool crossfade, bool loop);
    ~TrackListPlayer() override;

    TrackListPlayer(const TrackListPlayer&) = delete;
    TrackListPlayer& operator=(const TrackListPlayer&) = delete;

    // Starts the first playable track, or resumes after Pause().
    void Start();
    // A video (with a widget set) is stopped and resumed later from its position,
    // so that its window can go away meanwhile; anything else is paused.
    void Pause();
    // Releases the media players.
    void Stop();
    void GoToNextTrack();
    void GoToPreviousTrack();
    void PlayTrack(long trackId);
    void AddTracks(const std::vector<DataTypes::Playback::Track>& moreTracks);
    void SetVolume(int newVolume);
    void SetMuted(bool mute);
    void SetProgress(double progress);
    // With the flag on, the playing track is the last: its end is reported through
    // TrackListPlayerDoesntPlayNextTrack and no crossfade begins. Start() clears it.
    void SetDontPlayNextTrack(bool dontPlay);
    void SetVideoWidget(QWidget* widget);
    bool CurrentTrackIsVideo() const;
    bool DownloadedTrackExist() const;
    void RefreshTrackLikeStatusById(long id, DataTypes::Playback::LikeStatus status);
    // The stored output device and equaliser for the tracks playing now (both
    // players of a crossfade); every track takes them on its start anyway.
    void ApplyAudioSettings();
    // Whether the next track fades in over this one. A crossfade already under way
    // runs to its end.
    void SetCrossfade(bool enabled);
    int CalculatePlayerVolume() const;
    // The first index from `from` on (wrapping) whose file is downloaded, -1 for none.
    int FindNextIndex(int from) const;
    // The same walking backwards.
    int FindPreviousIndex(int from) const;

public slots:
    void MainPlayerMediaStatusChanded(Core::Vendor::VlcStatus status);
    void MainPlayerPositionChanged(float position);
    void CrossfadePlayerMediaStatusChanged(Core::Vendor::VlcStatus status);

private:
    Vendor::VlcWrapper* CreatePlayer();
    void ReleasePlayer(Vendor::VlcWrapper* player);
    void StartPlayingCurrentTrack();
    void SwitchToCurrentTrack();
    void HandleMainPlayerStateEnded();
    void HandleMainPlayerStateError();
    void SwapPlayers();
    void TryToStartFadeOut(double played, int durationSeconds);
    void TryToStartFadeIn(double played, int durationSeconds);
    void StartFadeIn();
    void StopFaders();
    void DropCrossfadePlayer();
    void ReattachVideo();
    bool IndexIsValid(int index) const;
    static void ApplyEqualizer(Vendor::VlcWrapper* player);
    static bool FileExists(const DataTypes::Playback::Track& track);

    std::vector<DataTypes::Playback::Track> tracks;
    int volume = 0;
    bool loop = false;
    bool crossfade = false;
    int currentIndex = -1;
    int crossfadeIndex = -1;
    bool muted = false;
    bool dontPlayNextTrack = false;
    // Where a video stopped by Pause() goes on from.
    std::int64_t savedPositionMs = 0;
    Vendor::VlcWrapper* mainPlayer = nullptr;
    Vendor::VlcWrapper* crossfadePlayer = nullptr;
    std::unique_ptr<VolumeFader> fadeOutFader;
    std::unique_ptr<VolumeFader> fadeInFader;
    // (fade-in seconds, fade-out seconds) of a crossfade interrupted by a pause.
    std::unique_ptr<std::pair<double, double>> pausedFades;
    QPointer<QWidget> videoWidget;
    TrackListPlayerObserver* observer = nullptr;

    // Whether the main player's track has been heard at all: a track that ends
    // without ever playing was not playable.
    bool mainPlayerReachedPlaying = false;
    int consecutiveFailures = 0;
    // A video given a new widget while playing moves to it once libvlc reports a
    // position to resume from.
    bool videoReattachPending = false;
    // Set while a video restarted from a position is still opening: libvlc reports
    // position 0 until it has reached that position, and the progress shown must
    // not jump back to the start and forward again.
    bool reopeningAtPosition = false;
};

} // namespace Core::ContentPlaying

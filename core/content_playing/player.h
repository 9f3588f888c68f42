#pragma once

#include "core/content_playing/playable_period_observer.h"
#include "core/content_playing/player_state.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/like_status.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/data_types/playback/track.h"
#include "core/networking/content_downloader.h"
#include "core/networking/content_downloader_observer.h"

#include <QTimer>

#include <functional>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace Core::ContentPlaying {

class PlayablePeriod;
class PlayerObserver;

// The top of the playback engine: builds the chain of periods from its copy of the
// configuration, starts the one that covers now, keeps the media cache filled for
// it first, and keeps the state the screens show. A configuration update waits for
// the playing track to end rather than cut it. Qt main thread only.
class Player : public Networking::ContentDownloaderObserver, public PlayablePeriodObserver
{
public:
    using TrackStartedHandler = std::function<void(const DataTypes::Playback::Track&, int, bool)>;
    using PlaybackStopHandler = std::function<void()>;

    explicit Player(const DataTypes::Playback::PlaybackConfiguration& configuration);
    ~Player() override;

    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;

    void Start();
    void Stop(bool notify);
    void TogglePlayback();
    // Carries out a deferred restart; true when it did.
    bool RestartIfNeeded();
    void UpdateConfiguration(const DataTypes::Playback::PlaybackConfiguration& newConfiguration,
                             bool restartNow);

    PlayerState CurrentState() const;
    std::string CurrentPeriodName() const;
    std::string CurrentPeriodStartTime() const;
    std::string CurrentPeriodEndTime() const;
    const DataTypes::Playback::PlaybackConfiguration& Configuration() const;

    void GoToPreviousTrack(DataTypes::Playback::ContentType type);
    void GoToNextTrack(DataTypes::Playback::ContentType type);
    void SetProgress(DataTypes::Playback::ContentType type, double progress);
    void PlayTrack(DataTypes::Playback::ContentType type, long index);
    void RefreshPhoto();
    // The settings screen changed the sound settings: the tracks playing now take
    // them at once instead of from their next track.
    void ApplySettings();
    void RefreshTrackLikeStatus(DataTypes::Playback::ContentType type, int trackId,
                                DataTypes::Playback::LikeStatus status);
    std::vector<DataTypes::Playback::Track> GetCurrentTracks(DataTypes::Playback::ContentType type) const;

    void SetVideoWidget(QWidget* widget);
    void SetPhotoWidget(QWidget* widget);
    void SetTrackStartedHandler(TrackStartedHandler handler);
    void SetPlaybackStopHandler(PlaybackStopHandler handler);
    // The playback object's code for download addresses.
    void SetObjectCode(const std::string& code);

    void AddObserver(PlayerObserver* observer);
    void RemoveObserver(PlayerObserver* observer);

    // ContentDownloaderObserver
    void FileDownloaderDidFinishDownloadingTrack(const DataTypes::Playback::Track& track,
                                                 const DataTypes::Playback::ContentType& type) override;

    // PlayablePeriodObserver
    void PeriodStarted(std::shared_ptr<PlayablePeriod> period) override;
    void LastPeriodFinished(std::shared_ptr<PlayablePeriod> period) override;
    void CurrentPeriodNotFound() override;
    void PeriodStartedPlayingTrack(std::shared_ptr<PlayablePeriod> period,
                                   DataTypes::Playback::ContentType type, int volume,
                                   const DataTypes::Playback::Track& track, bool resumed) override;
    void PeriodChangedProgress(std::shared_ptr<PlayablePeriod> period, DataTypes::Playback::ContentType type,
                               double progress, double durationSeconds) override;
    void PeriodFinishedPlayingAdBlock(std::shared_ptr<PlayablePeriod> period) override;
    bool PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod> period) override;

private:
    void StartPlayback();
    void CreatePeriods();
    // Stops the chain and lets go of it; the periods themselves are freed only
    // once control is back in the event loop, since this may run inside one of
    // their own callbacks.
    void RetireChain();
    // The block that DontPlayNextAudioTrack() holds back is playing, so its end
    // will come and carry a deferred restart out.
    bool CurrentPeriodPlaysHeldBackTrack() const;
    void UpdateWaitingDownloads();
    // The current period while its content may still play: user actions and
    // arriving files go there.
    std::shared_ptr<PlayablePeriod> PlayingPeriod() const;
    void StartCurrentPeriod(const std::shared_ptr<PlayablePeriod>& period);
    void UpdateStateWithCurrentPeriod();
    void CheckFiles();
    void HandleNoCurrentPeriod();
    void NotifyObserversLastPeriodFinished();
    void NotifyObserversCurrentPeriodNotFound();
    void NotifyObserversStateChanged();
    void NotifyObserversPeriodChanged(const PlayablePeriod& period);
    void NotifyObserversTrackStarted(DataTypes::Playback::ContentType type,
                                     const DataTypes::Playback::Track& track, bool resumed);
    // Calls every registered observer in list order; one removed by an earlier
    // call of the same round is skipped.
    void NotifyObservers(const std::function<void(PlayerObserver&)>& call);

    DataTypes::Playback::PlaybackConfiguration configuration;
    PlayerState state;
    bool restartPending = false;
    std::shared_ptr<PlayablePeriod> firstPeriod;
    std::shared_ptr<PlayablePeriod> currentPeriod;
    QWidget* videoWidget = nullptr;
    QWidget* photoWidget = nullptr;
    std::vector<PlayerObserver*> observers;
    Networking::ContentDownloader contentDownloader;
    TrackStartedHandler trackStartedHandler;
    PlaybackStopHandler playbackStopHandler;
    // The last period has ended: nothing plays until the next restart.
    bool chainFinished = false;
    std::vector<std::shared_ptr<PlayablePeriod>> retiredPeriods;
    QTimer retiredPeriodsTimer;
};

} // namespace Core::ContentPlaying

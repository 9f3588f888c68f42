#include "core/content_playing/player.h"

#include "core/content_playing/abstract_content_block.h"
#include "core/content_playing/playable_period.h"
#include "core/content_playing/playable_period_builder.h"
#include "core/content_playing/player_observer.h"
#include "core/networking/content_files_helper.h"
#include "core/utilities/awake_helper.h"
#include "core/utilities/logger.h"
#include "core/utilities/string_utils.h"

#include <algorithm>
#include <exception>

namespace Core::ContentPlaying {

using DataTypes::Playback::AllContentTypes;
using DataTypes::Playback::ContentType;
using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::PlaybackConfiguration;
using DataTypes::Playback::Track;
using Utilities::AwakeHelper;
using Utilities::Logger;

namespace {

// The kinds a period has blocks of; advertising reaches it as ad blocks.
const ContentType ContentKinds[] = {ContentType::Music, ContentType::Video, ContentType::Photo};

const std::vector<Track>& TracksOfType(const PlaybackConfiguration& configuration, ContentType type)
{
    static const std::vector<Track> none;
    // A configuration may lack a kind altogether; that is the builder's failure
    // to report, not a reason to fail here.
    const auto tracks = configuration.tracks.find(type);
    return tracks == configuration.tracks.end() ? none : tracks->second;
}

} // namespace

Player::Player(const PlaybackConfiguration& playbackConfiguration)
    : configuration(playbackConfiguration)
    , contentDownloader(this)
{
    contentDownloader.SetDomains(configuration.domains);
    retiredPeriodsTimer.setSingleShot(true);
    retiredPeriodsTimer.setInterval(0);
    QObject::connect(&retiredPeriodsTimer, &QTimer::timeout, &retiredPeriodsTimer, [this]() {
        const auto retired = std::move(retiredPeriods);
        retiredPeriods.clear();
    });
    CheckFiles();
}

Player::~Player()
{
    // No stop handler and no observers here: whoever destroys the player is
    // already past caring about them.
    if (state.playingNow) {
        AwakeHelper::KeepAwake(false);
    }
    RetireChain();
}

void Player::Start()
{
    if (state.playingNow) {
        return;
    }
    StartPlayback();
}

void Player::StartPlayback()
{
    AwakeHelper::KeepAwake(true);
    state.ResetAll();
    CheckFiles();
    state.playingNow = true;
    CreatePeriods();
}

void Player::Stop(bool notify)
{
    if (!state.playingNow) {
        return;
    }
    AwakeHelper::KeepAwake(false);
    if (playbackStopHandler) {
        playbackStopHandler();
    }
    RetireChain();
    // The next start builds from the newest configuration anyway.
    restartPending = false;
    contentDownloader.StopDownloading();
    state.ResetAll();
    if (notify) {
        NotifyObserversStateChanged();
    }
}

void Player::TogglePlayback()
{
    if (state.playingNow) {
        Stop(true);
    } else {
        StartPlayback();
    }
}

void Player::RetireChain()
{
    chainFinished = false;
    const std::shared_ptr<PlayablePeriod> first = std::move(firstPeriod);
    const std::shared_ptr<PlayablePeriod> current = std::move(currentPeriod);
    if (current) {
        current->FindAndStopCurrent();
        current->SetVideoWidgetForSequence(nullptr);
        current->SetPhotoWidgetForSequence(nullptr);
        current->SetObserverForSequence(nullptr);
    }
    if (first) {
        first->SetObserverForSequence(nullptr);
    }
    // Often we are inside a callback of a block of this very chain (the end of
    // a track carrying out a deferred restart): freeing it now would pull the
    // block out from under its own call.
    for (const auto& period : {first, current}) {
        if (period) {
            retiredPeriods.push_back(period);
            retiredPeriodsTimer.start();
        }
    }
}

void Player::CreatePeriods()
{
    chainFinished = false;
    std::vector<std::shared_ptr<PlayablePeriod>> periods;
    try {
        periods = PlayablePeriodBuilder::BuildPlayablePeriods(configuration);
    } catch (const std::exception& error) {
        // A schedule that names what it does not contain. The player stays on
        // with nothing to play until a corrected configuration arrives.
        Logger::Log("Ошибка построения периодов воспроизведения из конфигурации версии " +
                    std::to_string(configuration.version) + ": " + error.what());
        return;
    }
    Logger::LogDays(configuration.days);
    if (periods.empty()) {
        HandleNoCurrentPeriod();
        return;
    }
    firstPeriod = periods.front();
    // Held here: an observer may stop the player while the chain starts.
    const std::shared_ptr<PlayablePeriod> first = firstPeriod;
    first->SetVideoWidgetForSequence(videoWidget);
    first->SetPhotoWidgetForSequence(photoWidget);
    first->SetObserverForSequence(this);
    first->FindAndStartCurrent();
}

void Player::StartCurrentPeriod(const std::shared_ptr<PlayablePeriod>& period)
{
    currentPeriod = period;
    Logger::Log("Найден текущий период: " + period->ToString());
}

bool Player::RestartIfNeeded()
{
    if (!restartPending) {
        return false;
    }
    restartPending = false;
    Logger::Log("Перезапуск воспроизведения");
    Stop(false);
    StartPlayback();
    return true;
}

void Player::UpdateConfiguration(const PlaybackConfiguration& newConfiguration, bool restartNow)
{
    configuration = newConfiguration;
    contentDownloader.SetDomains(configuration.domains);
    if (!state.playingNow) {
        return;
    }
    if (!restartNow && CurrentPeriodPlaysHeldBackTrack()) {
        // The track on air is let finish; its end restarts everything.
        const std::shared_ptr<PlayablePeriod> period = currentPeriod;
        period->DontPlayNextAudioTrack();
        restartPending = true;
        Logger::Log("Перезапуск воспроизведения отложен до окончания текущего трека");
        return;
    }
    restartPending = false;
    Stop(false);
    StartPlayback();
}

bool Player::CurrentPeriodPlaysHeldBackTrack() const
{
    if (!currentPeriod || chainFinished) {
        return false;
    }
    const auto plays = [this](ContentType type) {
        const auto block = currentPeriod->GetBlock(type);
        return block && !block->TrackList().empty() && block->HasAnyDownloadedFile();
    };
    // DontPlayNextAudioTrack() holds back the music block whenever there is
    // one. A silent music block (still waiting for its files) with video on
    // air would hold the restart back indefinitely, so then it happens at once.
    if (currentPeriod->HasBlock(ContentType::Music)) {
        return plays(ContentType::Music);
    }
    return plays(ContentType::Video);
}

PlayerState Player::CurrentState() const
{
    return state;
}

std::string Player::CurrentPeriodName() const
{
    return currentPeriod ? currentPeriod->GetInfo().name : std::string();
}

std::string Player::CurrentPeriodStartTime() const
{
    return currentPeriod ? currentPeriod->GetInfo().startTime : std::string();
}

std::string Player::CurrentPeriodEndTime() const
{
    return currentPeriod ? currentPeriod->GetInfo().endTime : std::string();
}

const PlaybackConfiguration& Player::Configuration() const
{
    return configuration;
}

void Player::GoToPreviousTrack(ContentType type)
{
    if (RestartIfNeeded()) {
        return;
    }
    if (const auto period = PlayingPeriod()) {
        period->GoToPreviousTrack(type);
    }
}

void Player::GoToNextTrack(ContentType type)
{
    if (RestartIfNeeded()) {
        return;
    }
    if (const auto period = PlayingPeriod()) {
        period->GoToNextTrack(type);
    }
}

void Player::SetProgress(ContentType type, double progress)
{
    if (const auto period = PlayingPeriod()) {
        period->SetProgress(type, progress);
    }
}

void Player::PlayTrack(ContentType type, long index)
{
    if (const auto period = PlayingPeriod()) {
        period->PlayTrack(type, index);
    }
}

void Player::RefreshPhoto()
{
    if (const auto period = PlayingPeriod()) {
        period->RefreshPhoto();
    }
}

void Player::ApplySettings()
{
    if (currentPeriod) {
        currentPeriod->ApplySettings();
    }
}

void Player::RefreshTrackLikeStatus(ContentType type, int trackId, LikeStatus status)
{
    // The stored copy too, so that the next rebuild keeps what the user chose.
    const auto tracks = configuration.tracks.find(type);
    if (tracks != configuration.tracks.end()) {
        for (auto& track : tracks->second) {
            if (track.id == trackId) {
                track.likeStatus = status;
            }
        }
    }
    if (const auto period = PlayingPeriod()) {
        period->RefreshTrackLikeStatus(type, trackId, status);
    }
}

std::vector<Track> Player::GetCurrentTracks(ContentType type) const
{
    return currentPeriod ? currentPeriod->GetTracks(type) : std::vector<Track>();
}

void Player::SetVideoWidget(QWidget* widget)
{
    videoWidget = widget;
    if (firstPeriod) {
        firstPeriod->SetVideoWidgetForSequence(widget);
    }
}

void Player::SetPhotoWidget(QWidget* widget)
{
    photoWidget = widget;
    if (firstPeriod) {
        firstPeriod->SetPhotoWidgetForSequence(widget);
    }
}

void Player::SetTrackStartedHandler(TrackStartedHandler handler)
{
    trackStartedHandler = std::move(handler);
}

void Player::SetPlaybackStopHandler(PlaybackStopHandler handler)
{
    playbackStopHandler = std::move(handler);
}

void Player::SetObjectCode(const std::string& code)
{
    contentDownloader.SetObjectCode(code);
}

void Player::AddObserver(PlayerObserver* observer)
{
    if (!observer || std::find(observers.begin(), observers.end(), observer) != observers.end()) {
        return;
    }
    observers.push_back(observer);
}

void Player::RemoveObserver(PlayerObserver* observer)
{
    observers.erase(std::remove(observers.begin(), observers.end(), observer), observers.end());
}

void Player::FileDownloaderDidFinishDownloadingTrack(const Track& track, const ContentType& type)
{
    DownloadsInfo& downloads = state.downloadsInfo[type];
    ++downloads.downloaded;
    downloads.downloadedTracks.push_back(track);
    // Before the blocks start: their first track start already reports the
    // state without the wait.
    UpdateWaitingDownloads();
    if (const auto period = PlayingPeriod()) {
        period->TryStartWaitingForDownloadBlocks();
    }
    NotifyObserversStateChanged();
}

void Player::PeriodStarted(std::shared_ptr<PlayablePeriod> period)
{
    if (!period) {
        return;
    }
    currentPeriod = period;
    chainFinished = false;
    contentDownloader.StopDownloading();
    contentDownloader.DownloadFilesForPeriod(*period);
    for (const ContentType type : AllContentTypes()) {
        contentDownloader.DownloadTracks(TracksOfType(configuration, type), type);
    }
    UpdateStateWithCurrentPeriod();
    NotifyObserversPeriodChanged(*period);
}

void Player::LastPeriodFinished(std::shared_ptr<PlayablePeriod>)
{
    chainFinished = true;
    NotifyObserversLastPeriodFinished();
}

void Player::CurrentPeriodNotFound()
{
    NotifyObserversCurrentPeriodNotFound();
}

void Player::PeriodStartedPlayingTrack(std::shared_ptr<PlayablePeriod>, ContentType type, int volume,
                                       const Track& track, bool resumed)
{
    PlaybackState& playback = state.contentPlayingStates[type];
    playback.playing = true;
    playback.trackTitle = track.name;
    playback.trackSubtitle = track.author;
    playback.trackIdentifier = track.id;
    playback.trackIsUploadedByUser = track.uploadedByUser;
    playback.isVideo = Utilities::StringUtils::StringEndsWith(track.path, ".mp4");
    if (trackStartedHandler) {
        trackStartedHandler(track, volume, resumed);
    }
    NotifyObserversStateChanged();
    NotifyObserversTrackStarted(type, track, resumed);
}

void Player::PeriodChangedProgress(std::shared_ptr<PlayablePeriod>, ContentType type, double progress,
                                   double durationSeconds)
{
    PlaybackState& playback = state.contentPlayingStates[type];
    playback.progress = progress;
    playback.durationSeconds = durationSeconds;
    NotifyObserversStateChanged();
}

void Player::PeriodFinishedPlayingAdBlock(std::shared_ptr<PlayablePeriod>)
{
    // Only the clip's line clears: the music under the ad resumes where it was.
    state.contentPlayingStates[ContentType::Clip].Reset();
    NotifyObserversStateChanged();
}

bool Player::PeriodShouldPlayNextTrack(std::shared_ptr<PlayablePeriod>)
{
    return !RestartIfNeeded();
}

void Player::UpdateStateWithCurrentPeriod()
{
    if (!currentPeriod) {
        return;
    }
    PlayablePeriodInfo info = currentPeriod->GetInfo();
    for (const ContentType type : ContentKinds) {
        PlaybackState& playback = state.contentPlayingStates[type];
        playback.playlistName = info.GetPlaylistName(type);
        playback.playlistImage = info.GetPlaylistImage(type);
        playback.playing = currentPeriod->HasBlock(type);
    }
    UpdateWaitingDownloads();
    NotifyObserversStateChanged();
}

void Player::UpdateWaitingDownloads()
{
    for (const ContentType type : ContentKinds) {
        // Only a block that exists can wait: a kind the period does not play
        // has all the files it needs.
        state.downloadsInfo[type].waitingDownload =
            currentPeriod && currentPeriod->HasBlock(type) && !currentPeriod->HasAnyDownloadedFile(type);
    }
}

std::shared_ptr<PlayablePeriod> Player::PlayingPeriod() const
{
    // After the last period has ended its blocks are stopped for good; a user
    // action must not wake them.
    return chainFinished ? nullptr : currentPeriod;
}

void Player::CheckFiles()
{
    std::vector<Track> needed;
    for (const ContentType type : AllContentTypes()) {
        const auto& tracks = TracksOfType(configuration, type);
        needed.insert(needed.end(), tracks.begin(), tracks.end());
    }
    ContentFilesHelper::DropUnnecessaryContentFiles(needed);

    for (const ContentType type : AllContentTypes()) {
        const auto& tracks = TracksOfType(configuration, type);
        DownloadsInfo& downloads = state.downloadsInfo[type];
        downloads.downloadedTracks.clear();
        std::copy_if(tracks.begin(), tracks.end(), std::back_inserter(downloads.downloadedTracks),
                     [](const Track& track) { return ContentFilesHelper::FileForTrackExists(track); });
        downloads.downloaded = static_cast<int>(downloads.downloadedTracks.size());
        downloads.total = static_cast<int>(tracks.size());
    }
}

void Player::HandleNoCurrentPeriod()
{
    NotifyObservers([this](PlayerObserver& observer) { observer.PlayerDidFinishLastPeriod(*this); });
}

void Player::NotifyObserversLastPeriodFinished()
{
    NotifyObservers([this](PlayerObserver& observer) { observer.PlayerDidFinishLastPeriod(*this); });
}

void Player::NotifyObserversCurrentPeriodNotFound()
{
    NotifyObservers([this](PlayerObserver& observer) { observer.PlayerCantFindCurrentPeriod(*this); });
}

void Player::NotifyObserversStateChanged()
{
    NotifyObservers([this](PlayerObserver& observer) { observer.PlayerDidChangeState(*this, state); });
}

void Player::NotifyObserversPeriodChanged(const PlayablePeriod& period)
{
    NotifyObservers(
        [this, &period](PlayerObserver& observer) { observer.PlayerDidChangePeriod(*this, period); });
}

void Player::NotifyObserversTrackStarted(ContentType type, const Track& track, bool resumed)
{
    NotifyObservers([this, type, &track, resumed](PlayerObserver& observer) {
        observer.PlayerDidStartPlayingTrack(*this, type, track, resumed);
    });
}

void Player::NotifyObservers(const std::function<void(PlayerObserver&)>& call)
{
    const std::vector<PlayerObserver*> round = observers;
    for (PlayerObserver* observer : round) {
        if (std::find(observers.begin(), observers.end(), observer) != observers.end()) {
            call(*observer);
        }
    }
}

} // namespace Core::ContentPlaying

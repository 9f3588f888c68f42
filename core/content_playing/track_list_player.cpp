#include "core/content_playing/track_list_player.h"

#include "core/content_playing/track_list_player_observer.h"
#include "core/content_playing/volume_fader.h"
#include "core/networking/content_files_helper.h"
#include "core/settings.h"
#include "core/utilities/logger.h"
#include "core/utilities/math_utils.h"
#include "core/utilities/string_utils.h"
#include "core/vendor/vlc_wrapper.h"

#include <QString>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace Core::ContentPlaying {

using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::Track;
using Utilities::Logger;
using Vendor::VlcStatus;
using Vendor::VlcWrapper;

namespace {

QUrl UrlForTrack(const Track& track)
{
    return QUrl::fromLocalFile(QString::fromStdString(ContentFilesHelper::FilenameForTrack(track)));
}

// Share of the crossfade interval given to the fade-out: it starts later than the
// fade-in, so the incoming track is already heard when the outgoing one dips.
constexpr double FadeOutShare = 0.75;

} // namespace

TrackListPlayer::TrackListPlayer(const std::vector<Track>& tracks, int volume,
                                 TrackListPlayerObserver* observer, bool crossfade, bool loop)
    : tracks(tracks)
    , volume(volume)
    , loop(loop)
    , crossfade(crossfade)
    , observer(observer)
{
}

TrackListPlayer::~TrackListPlayer()
{
    StopFaders();
    DropCrossfadePlayer();
    if (mainPlayer != nullptr) {
        ReleasePlayer(mainPlayer);
        mainPlayer = nullptr;
    }
}

VlcWrapper* TrackListPlayer::CreatePlayer()
{
    // No parent: a player may be in the middle of reporting to this object when
    // this object goes away, so players are only ever let go through deleteLater.
    return new VlcWrapper();
}

void TrackListPlayer::ReleasePlayer(VlcWrapper* player)
{
    player->SetVideoOutput(nullptr);
    player->disconnect();
    player->Stop();
    player->deleteLater();
}

bool TrackListPlayer::FileExists(const Track& track)
{
    return ContentFilesHelper::FileForTrackExists(track);
}

bool TrackListPlayer::IndexIsValid(int index) const
{
    return index >= 0 && static_cast<std::size_t>(index) < tracks.size();
}

int TrackListPlayer::FindNextIndex(int from) const
{
    const int count = static_cast<int>(tracks.size());
    for (int step = 0; step < count; ++step) {
        const int index = Utilities::MathUtils::Mod(from + step, count);
        if (FileExists(tracks[static_cast<std::size_t>(index)])) {
            return index;
        }
    }
    return -1;
}

int TrackListPlayer::FindPreviousIndex(int from) const
{
    const int count = static_cast<int>(tracks.size());
    for (int step = 0; step < count; ++step) {
        const int index = Utilities::MathUtils::Mod(from - step, count);
        if (FileExists(tracks[static_cast<std::size_t>(index)])) {
            return index;
        }
    }
    return -1;
}

bool TrackListPlayer::DownloadedTrackExist() const
{
    return std::any_of(tracks.begin(), tracks.end(), &TrackListPlayer::FileExists);
}

bool TrackListPlayer::CurrentTrackIsVideo() const
{
    return IndexIsValid(currentIndex) && Utilities::StringUtils::StringEndsWith(
                                             tracks[static_cast<std::size_t>(currentIndex)].path, ".mp4");
}

int TrackListPlayer::CalculatePlayerVolume() const
{
    return volume;
}

void TrackListPlayer::AddTracks(const std::vector<Track>& moreTracks)
{
    tracks.insert(tracks.end(), moreTracks.begin(), moreTracks.end());
}

void TrackListPlayer::RefreshTrackLikeStatusById(long id, LikeStatus status)
{
    const auto track = std::find_if(tracks.begin(), tracks.end(),
                                    [id](const Track& candidate) { return candidate.id == id; });
    if (track != tracks.end()) {
        track->likeStatus = status;
    }
}

void TrackListPlayer::Start()
{
    dontPlayNextTrack = false;
    consecutiveFailures = 0;
    if (mainPlayer == nullptr) {
        if (!DownloadedTrackExist()) {
            return;
        }
        currentIndex = FindNextIndex(0);
        StartPlayingCurrentTrack();
        return;
    }

    const VlcStatus status = mainPlayer->GetStatus();
    if (status == VlcStatus::Stopped) {
        // A video stopped by Pause(): from its saved position.
        StartPlayingCurrentTrack();
    } else if (status == VlcStatus::Paused) {
        mainPlayer->Play();
        if (observer != nullptr && IndexIsValid(currentIndex)) {
            observer->TrackListPlayerDidStartPlayingTrack(tracks[static_cast<std::size_t>(currentIndex)],
                                                          true);
        }
        if (crossfadePlayer != nullptr && crossfadePlayer->GetStatus() == VlcStatus::Paused) {
            crossfadePlayer->Play();
            if (pausedFades) {
                fadeOutFader = std::make_unique<VolumeFader>();
                fadeOutFader->FadeOut(mainPlayer, pausedFades->second);
                fadeInFader = std::make_unique<VolumeFader>();
                fadeInFader->FadeIn(crossfadePlayer, volume, pausedFades->first);
            }
        }
    } else if (status == VlcStatus::Ended || status == VlcStatus::Error) {
        // Left behind by a track that could not be followed (the list was over,
        // or nothing playable was found): try again from the next one.
        GoToNextTrack();
    }
}

void TrackListPlayer::StartPlayingCurrentTrack()
{
    if (!IndexIsValid(currentIndex)) {
        return;
    }
    const Track track = tracks[static_cast<std::size_t>(currentIndex)];
    if (mainPlayer == nullptr) {
        mainPlayer = CreatePlayer();
    }
    mainPlayerReachedPlaying = false;
    videoReattachPending = false;
    reopeningAtPosition = savedPositionMs > 0;
    if (observer != nullptr) {
        observer->TrackListPlayerDidStartPlayingTrack(track, false);
    }
    Settings::SetAudioOutputToPlayer(mainPlayer);
    mainPlayer->SetMedia(UrlForTrack(track));
    if (CurrentTrackIsVideo()) {
        // Also when there is no widget: the player must not keep drawing into a
        // widget given for an earlier video.
        mainPlayer->SetVideoOutput(videoWidget);
    }
    mainPlayer->disconnect();
    connect(mainPlayer, &VlcWrapper::mediaStatusChanged, this,
            &TrackListPlayer::MainPlayerMediaStatusChanded);
    connect(mainPlayer, &VlcWrapper::positionChanged, this, &TrackListPlayer::MainPlayerPositionChanged);
    // Silent from its first sample when muted: a video under music must not be heard
    // until the first status report.
    mainPlayer->SetVolume(crossfade || muted ? 0 : volume);
    mainPlayer->SetMute(muted);
    mainPlayer->PlayFrom(savedPositionMs);
    savedPositionMs = 0;
    ApplyEqualizer(mainPlayer);
    Logger::LogTrackStarted(track);
}

void TrackListPlayer::ApplyEqualizer(VlcWrapper* player)
{
    if (Settings::GetUseEqualizer()) {
        player->SetAmplifier(Settings::GetAmplifierValue());
        player->SetEqualizerBands(Settings::GetBands());
    } else {
        player->RemoveEqualizer();
    }
}

void TrackListPlayer::MainPlayerMediaStatusChanded(VlcStatus status)
{
    if (mainPlayer == nullptr) {
        return;
    }
    switch (status) {
    case VlcStatus::Playing:
        mainPlayerReachedPlaying = true;
        reopeningAtPosition = false;
        consecutiveFailures = 0;
        mainPlayer->SetVolume(muted ? 0 : volume);
        mainPlayer->SetMute(muted);
        break;
    case VlcStatus::Error:
        HandleMainPlayerStateError();
        break;
    case VlcStatus::Ended:
        if (!mainPlayerReachedPlaying) {
            // libvlc reports a file it cannot read (noise, an empty or vanished
            // file) as ended rather than failed.
            HandleMainPlayerStateError();
        } else if (crossfadePlayer != nullptr && crossfadePlayer->GetStatus() == VlcStatus::Playing) {
            SwapPlayers();
        } else {
            HandleMainPlayerStateEnded();
        }
        break;
    default:
        break;
    }
}

void TrackListPlayer::MainPlayerPositionChanged(float position)
{
    if (mainPlayer == nullptr || reopeningAtPosition) {
        return;
    }
    const std::int64_t durationMs = mainPlayer->Duration();
    if (videoReattachPending && position > 0) {
        ReattachVideo();
    }
    if (durationMs > 0 && observer != nullptr) {
        observer->TrackListPlayerDidChangeProgress(static_cast<double>(durationMs) / 1000.0, position);
    }
    if (mainPlayer == nullptr) {
        return;
    }
    const int durationSeconds = static_cast<int>(durationMs / 1000);
    const double played = static_cast<double>(position) * durationSeconds;
    TryToStartFadeOut(played, durationSeconds);
    TryToStartFadeIn(played, durationSeconds);
}

void TrackListPlayer::TryToStartFadeOut(double played, int durationSeconds)
{
    if (mainPlayer == nullptr || !crossfade || tracks.empty() || !loop || std::isnan(played) ||
        dontPlayNextTrack || fadeOutFader || mainPlayer->GetStatus() == VlcStatus::Paused) {
        return;
    }
    const double fadeOutSeconds = FadeOutShare * Settings::GetCrossfadeIntervalSeconds();
    if (fadeOutSeconds > durationSeconds || durationSeconds - played > fadeOutSeconds) {
        return;
    }
    fadeOutFader = std::make_unique<VolumeFader>();
    fadeOutFader->FadeOut(mainPlayer, fadeOutSeconds);
}

void TrackListPlayer::TryToStartFadeIn(double played, int durationSeconds)
{
    // One incoming track per crossfade: a player still opening its file is not
    // replaced by another on the next position report.
    if (mainPlayer == nullptr || crossfadePlayer != nullptr || !crossfade || std::isnan(played) ||
        dontPlayNextTrack || mainPlayer->GetStatus() == VlcStatus::Paused) {
        return;
    }
    const int interval = Settings::GetCrossfadeIntervalSeconds();
    if (interval > durationSeconds || durationSeconds - played > interval) {
        return;
    }
    StartFadeIn();
}

void TrackListPlayer::StartFadeIn()
{
    crossfadeIndex = FindNextIndex(currentIndex + 1);
    if (!IndexIsValid(crossfadeIndex)) {
        return;
    }
    if (!loop && crossfadeIndex <= currentIndex) {
        // The last track of a list that does not loop fades into nothing: its end
        // must reach the end-of-list handling instead of a swap back to the start.
        return;
    }
    const Track next = tracks[static_cast<std::size_t>(crossfadeIndex)];
    crossfadePlayer = CreatePlayer();
    Settings::SetAudioOutputToPlayer(crossfadePlayer);
    crossfadePlayer->SetMedia(UrlForTrack(next));
    connect(crossfadePlayer, &VlcWrapper::mediaStatusChanged, this,
            &TrackListPlayer::CrossfadePlayerMediaStatusChanged);
    crossfadePlayer->SetVolume(0);
    crossfadePlayer->Play();
    Logger::LogTrackStarted(next);
    ApplyEqualizer(crossfadePlayer);
}

void TrackListPlayer::CrossfadePlayerMediaStatusChanged(VlcStatus status)
{
    if (status != VlcStatus::Playing || crossfadePlayer == nullptr) {
        return;
    }
    if (muted) {
        crossfadePlayer->SetMute(true);
        return;
    }
    if (pausedFades) {
        return;
    }
    fadeInFader = std::make_unique<VolumeFader>();
    crossfadePlayer->SetVolume(0);
    fadeInFader->FadeIn(crossfadePlayer, volume, Settings::GetCrossfadeIntervalSeconds());
}

void TrackListPlayer::SwapPlayers()
{
    currentIndex = crossfadeIndex;
    mainPlayer->disconnect();
    crossfadePlayer->disconnect();
    VlcWrapper* oldPlayer = mainPlayer;
    mainPlayer = crossfadePlayer;
    crossfadePlayer = nullptr;
    connect(mainPlayer, &VlcWrapper::mediaStatusChanged, this,
            &TrackListPlayer::MainPlayerMediaStatusChanded);
    connect(mainPlayer, &VlcWrapper::positionChanged, this, &TrackListPlayer::MainPlayerPositionChanged);
    mainPlayerReachedPlaying = true;
    StopFaders();
    ReleasePlayer(oldPlayer);
    mainPlayer->SetVolume(volume);

    // Reported last: the observer may act on the player in turn.
    const std::int64_t durationMs = mainPlayer->Duration();
    // Position over milliseconds: the unit mix of the progress sent at a swap is
    // what the screens have always received.
    const double progress = durationMs < 1 ? 0.0 : mainPlayer->Position() / static_cast<double>(durationMs);
    if (observer != nullptr) {
        observer->TrackListPlayerDidChangeProgress(static_cast<double>(durationMs) / 1000.0, progress);
    }
    if (observer != nullptr && IndexIsValid(currentIndex)) {
        observer->TrackListPlayerDidStartPlayingTrack(tracks[static_cast<std::size_t>(currentIndex)], false);
    }
}

void TrackListPlayer::HandleMainPlayerStateEnded()
{
    if (crossfadePlayer != nullptr && crossfadePlayer->GetStatus() != VlcStatus::Playing) {
        DropCrossfadePlayer();
    }
    if (dontPlayNextTrack) {
        if (observer != nullptr) {
            observer->TrackListPlayerDoesntPlayNextTrack();
        }
        return;
    }
    const int next = FindNextIndex(currentIndex + 1);
    if (next > currentIndex) {
        currentIndex = next;
        StartPlayingCurrentTrack();
        return;
    }
    if (!loop) {
        if (observer != nullptr) {
            observer->TrackListPlayerDidFinishTrackList();
        }
        return;
    }
    if (next < 0) {
        // Every file has gone from the cache meanwhile.
        Logger::Log("Невозможно найти следующий файл для воспроизведения, ОСТАНОВКА ВОСПРОИЗВЕДЕНИЯ");
        return;
    }
    currentIndex = next;
    StartPlayingCurrentTrack();
}

void TrackListPlayer::HandleMainPlayerStateError()
{
    const std::string title =
        IndexIsValid(currentIndex) ? tracks[static_cast<std::size_t>(currentIndex)].name : "";
    Logger::Log("Ошибка воспроизведения файла " + title);
    if (mainPlayer != nullptr) {
        const std::string error = mainPlayer->GetError();
        if (!error.empty()) {
            Logger::Log("Текст ошибки:" + error);
        }
    }
    ++consecutiveFailures;
    if (tracks.size() < 2) {
        Logger::Log("В списке воспроизведения не больше одного трека, невозможно перейти к следущему файлу");
        if (!loop && observer != nullptr) {
            observer->TrackListPlayerDidFinishTrackList();
        }
        return;
    }
    Logger::Log("В списке воспроизведения больше одного трека, попытка перейти к следующему файлу");
    const int next = FindNextIndex(currentIndex + 1);
    const bool wrapped = next >= 0 && next <= currentIndex;
    if (wrapped && !loop) {
        // The failed track was the last one of a list that does not loop: the
        // list is over, as if the track had played.
        if (observer != nullptr) {
            observer->TrackListPlayerDidFinishTrackList();
        }
        return;
    }
    const bool everyTrackFailed = consecutiveFailures >= static_cast<int>(tracks.size());
    if (next >= 0 && next != currentIndex && !everyTrackFailed) {
        Logger::Log("Переход к следующему файлу после ошибки");
        currentIndex = next;
        StartPlayingCurrentTrack();
        return;
    }
    Logger::Log("Невозможно найти следующий файл для воспроизведения, ОСТАНОВКА ВОСПРОИЗВЕДЕНИЯ");
}

void TrackListPlayer::GoToNextTrack()
{
    if (mainPlayer == nullptr) {
        return;
    }
    const int next = FindNextIndex(currentIndex + 1);
    if (next < 0) {
        return;
    }
    currentIndex = next;
    SwitchToCurrentTrack();
}

void TrackListPlayer::GoToPreviousTrack()
{
    if (mainPlayer == nullptr) {
        return;
    }
    const int previous = FindPreviousIndex(currentIndex - 1);
    if (previous < 0) {
        return;
    }
    currentIndex = previous;
    SwitchToCurrentTrack();
}

void TrackListPlayer::PlayTrack(long trackId)
{
    if (mainPlayer == nullptr) {
        return;
    }
    const auto track = std::find_if(tracks.begin(), tracks.end(),
                                    [trackId](const Track& candidate) { return candidate.id == trackId; });
    if (track == tracks.end() || !FileExists(*track)) {
        return;
    }
    const int index = static_cast<int>(track - tracks.begin());
    if (index == currentIndex) {
        return;
    }
    currentIndex = index;
    SwitchToCurrentTrack();
}

void TrackListPlayer::SwitchToCurrentTrack()
{
    mainPlayer->Pause();
    StopFaders();
    DropCrossfadePlayer();
    StartPlayingCurrentTrack();
}

void TrackListPlayer::Pause()
{
    if (mainPlayer != nullptr) {
        if (videoWidget) {
            savedPositionMs = std::max<std::int64_t>(0, mainPlayer->PositionMs());
            mainPlayer->SetVideoOutput(nullptr);
            mainPlayer->Stop();
        } else {
            mainPlayer->Pause();
        }
    }
    if (crossfadePlayer != nullptr) {
        crossfadePlayer->Pause();
    }
    if (fadeInFader && fadeOutFader) {
        pausedFades = std::make_unique<std::pair<double, double>>(fadeInFader->GetRemainingSeconds(),
                                                                  fadeOutFader->GetRemainingSeconds());
    }
    StopFaders();
}

void TrackListPlayer::Stop()
{
    if (mainPlayer != nullptr) {
        ReleasePlayer(mainPlayer);
        mainPlayer = nullptr;
    }
    StopFaders();
    DropCrossfadePlayer();
    savedPositionMs = 0;
    videoReattachPending = false;
    reopeningAtPosition = false;
}

void TrackListPlayer::StopFaders()
{
    if (fadeOutFader) {
        fadeOutFader->Stop();
        fadeOutFader.reset();
    }
    if (fadeInFader) {
        fadeInFader->Stop();
        fadeInFader.reset();
    }
    pausedFades.reset();
}

void TrackListPlayer::DropCrossfadePlayer()
{
    if (crossfadePlayer != nullptr) {
        ReleasePlayer(crossfadePlayer);
        crossfadePlayer = nullptr;
    }
}

void TrackListPlayer::SetVolume(int newVolume)
{
    volume = newVolume;
    if (mainPlayer != nullptr && mainPlayer->GetStatus() == VlcStatus::Playing && !muted) {
        mainPlayer->SetVolume(volume);
    }
}

void TrackListPlayer::ApplyAudioSettings()
{
    for (VlcWrapper* player : {mainPlayer, crossfadePlayer}) {
        if (player != nullptr) {
            Settings::SetAudioOutputToPlayer(player);
            ApplyEqualizer(player);
        }
    }
}

void TrackListPlayer::SetCrossfade(bool enabled)
{
    crossfade = enabled;
}

void TrackListPlayer::SetMuted(bool mute)
{
    muted = mute;
    if (mainPlayer == nullptr || mainPlayer->GetStatus() != VlcStatus::Playing) {
        return;
    }
    if (muted) {
        mainPlayer->SetVolume(0);
    } else {
        mainPlayer->SetVolume(volume);
        mainPlayer->SetMute(false);
    }
}

void TrackListPlayer::SetProgress(double progress)
{
    if (crossfadePlayer != nullptr && crossfadePlayer->GetStatus() == VlcStatus::Playing) {
        return;
    }
    if (mainPlayer != nullptr) {
        mainPlayer->SetPosition(static_cast<float>(progress));
    }
}

void TrackListPlayer::SetDontPlayNextTrack(bool dontPlay)
{
    dontPlayNextTrack = dontPlay;
}

void TrackListPlayer::SetVideoWidget(QWidget* widget)
{
    videoWidget = widget;
    videoReattachPending = false;
    if (mainPlayer == nullptr || !CurrentTrackIsVideo()) {
        return;
    }
    if (mainPlayer->GetStatus() != VlcStatus::Playing) {
        mainPlayer->SetVideoOutput(widget);
        return;
    }
    if (mainPlayer->Position() > 0) {
        ReattachVideo();
    } else {
        videoReattachPending = true;
    }
}

void TrackListPlayer::ReattachVideo()
{
    videoReattachPending = false;
    // libvlc cannot move a running video to another window: restart it there from
    // where it was.
    const std::int64_t positionMs = mainPlayer->PositionMs();
    reopeningAtPosition = positionMs > 0;
    mainPlayer->Stop();
    mainPlayer->SetVideoOutput(videoWidget);
    mainPlayer->PlayFrom(positionMs);
}

} // namespace Core::ContentPlaying

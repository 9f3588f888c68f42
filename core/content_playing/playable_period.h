#pragma once

#include "core/content_playing/abstract_content_block.h"
#include "core/content_playing/ads_scheduler.h"
#include "core/content_playing/ads_scheduler_observer.h"
#include "core/content_playing/noninterrupting_ads_holder.h"
#include "core/content_playing/playable_block_observer.h"
#include "core/content_playing/playable_period_info.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/like_status.h"
#include "core/data_types/playback/track.h"

#include <QTimer>

#include <map>
#include <memory>
#include <string>
#include <vector>

class QWidget;

namespace Core::ContentPlaying {

class AdsBlock;
class PlayablePeriodObserver;

// One scheduled period of one calendar day, made playable: its music, video and
// photo blocks, the advertising that falls inside it, and a timer for its end, at
// which it hands over to the next period of the chain. A period belongs to a day
// by its date text alone. Always owned by a shared pointer: it hands pointers to
// itself to its observer. Qt main thread only.
class PlayablePeriod : public AdsSchedulerObserver,
                       public PlayableBlockObserver,
                       public std::enable_shared_from_this<PlayablePeriod>
{
public:
    PlayablePeriod();
    ~PlayablePeriod() override;

    PlayablePeriod(const PlayablePeriod&) = delete;
    PlayablePeriod& operator=(const PlayablePeriod&) = delete;

    void SetInfo(const PlayablePeriodInfo& newInfo);
    PlayablePeriodInfo GetInfo() const;
    // Ignored for clip; an empty pointer leaves no block of that kind.
    void SetBlock(DataTypes::Playback::ContentType type, const std::shared_ptr<AbstractContentBlock>& block);
    std::shared_ptr<AbstractContentBlock> GetBlock(DataTypes::Playback::ContentType type) const;
    bool HasBlock(DataTypes::Playback::ContentType type) const;
    void SetNextPeriod(const std::shared_ptr<PlayablePeriod>& period);
    std::shared_ptr<PlayablePeriod> GetNextPeriod() const;
    // Keeps the blocks of this period's date: those at its start play when the
    // chain runs into it, those strictly inside are scheduled.
    void TryToAddAdvertisingBlocks(const std::vector<std::shared_ptr<AdsBlock>>& blocks);

    // These set the value here and on every later period of the chain.
    void SetObserverForSequence(PlayablePeriodObserver* newObserver);
    void SetVideoWidgetForSequence(QWidget* widget);
    void SetPhotoWidgetForSequence(QWidget* widget);

    void FindAndStartCurrent();
    void StartAsCurrent();
    void TryToStartNextPeriod();
    void StartFromPreviousPeriod(PlayablePeriod& previous);
    void FindAndStopCurrent();
    // Today's date text equals the period's, and start <= now < end.
    bool IsCurrent() const;

    void GoToPreviousTrack(DataTypes::Playback::ContentType type);
    void GoToNextTrack(DataTypes::Playback::ContentType type);
    void SetProgress(DataTypes::Playback::ContentType type, double progress);
    void PlayTrack(DataTypes::Playback::ContentType type, long index);
    void RefreshPhoto();
    // The sound settings for every block playing in this period, ads included.
    void ApplySettings();
    void RefreshTrackLikeStatus(DataTypes::Playback::ContentType type, long trackId,
                                DataTypes::Playback::LikeStatus status);
    std::vector<DataTypes::Playback::Track> GetTracks(DataTypes::Playback::ContentType type) const;
    std::vector<DataTypes::Playback::Track> GetAllTracksList() const;
    bool HasAnyDownloadedFile(DataTypes::Playback::ContentType type) const;
    // A file has arrived: blocks that waited for their first file start now.
    void TryStartWaitingForDownloadBlocks();
    // Lets the playing music (or, without music, video) track finish and start no
    // other.
    void DontPlayNextAudioTrack();
    void ClearCurrentAdBlock();

    bool IsStarted() const;
    // An advertising block is playing (content paused or muted beneath it).
    bool IsPlayingAdBlock() const;
    // Name, weekday, date and "start-end", as every log line shows a period.
    std::string ToString() const;

    // AdsSchedulerObserver
    void InterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) override;
    void NoninterruptAdBlockStarted(std::shared_ptr<AdsBlock> block) override;

    // PlayableBlockObserver
    void BlockDidStartPlayingTrack(AbstractContentBlock& block, const DataTypes::Playback::Track& track,
                                   bool resumed) override;
    void BlockDidChangeProgress(AbstractContentBlock& block, double progress,
                                double durationSeconds) override;
    void BlockDoesntPlayNextTrack(AbstractContentBlock& block) override;

private:
    void NotifyObserverPeriodStarted();
    void StartObservingContentBlocks();
    void StopObservingContentBlocks();
    void InitFinishTimer();
    void FinishTimerFired();
    void StartContentBlocks();
    void StopContentBlocks();
    void ScheduleOtherAds();
    void SetMuteToVideoIfNeeded();
    // Logs a due ad block; true when nothing more is to be done with it (no spot to
    // play, or queued behind the playing ad block).
    bool DueAdBlockIsHandled(const std::shared_ptr<AdsBlock>& block);
    void StartAdsBlock(const std::shared_ptr<AdsBlock>& block);
    void PauseOrMuteContentBlocksIfNeeded(const AdsBlock& block);
    void HandleCurrentAdBlockFinished();
    void HoldOrPlayNewNonInterruptAdBlock(const std::shared_ptr<AdsBlock>& block);
    bool BlockIsPlaying(DataTypes::Playback::ContentType type) const;
    void TryToPlayBlocksFromPreviousPeriod(PlayablePeriod& previous);
    void StartWithPlayingAdBlock(const std::shared_ptr<AdsBlock>& block);
    void StartWithoutPlayingAdBlock();
    // A content-kind user action must reach a block only while no ad plays.
    AbstractContentBlock* BlockForUserAction(DataTypes::Playback::ContentType type) const;

    int state = 0;
    PlayablePeriodInfo info;
    std::shared_ptr<PlayablePeriod> nextPeriod;
    PlayablePeriodObserver* observer = nullptr;
    QWidget* videoWidget = nullptr;
    QWidget* photoWidget = nullptr;
    std::vector<std::shared_ptr<AdsBlock>> startAds;
    std::vector<std::shared_ptr<AdsBlock>> otherAds;
    AdsScheduler adsScheduler;
    std::shared_ptr<AdsBlock> currentAdBlock;
    NoninterruptingAdsHolder heldPoliteAds;
    std::map<DataTypes::Playback::ContentType, std::shared_ptr<AbstractContentBlock>> blocks;
    QTimer finishTimer;
};

} // namespace Core::ContentPlaying

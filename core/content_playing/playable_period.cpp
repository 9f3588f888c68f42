#include "core/content_playing/playable_period.h"

#include "core/content_playing/ads_block.h"
#include "core/content_playing/playable_period_observer.h"
#include "core/utilities/local_time_helper.h"
#include "core/utilities/logger.h"
#include "core/utilities/string_utils.h"

#include <QTimer>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace Core::ContentPlaying {

using DataTypes::Playback::ContentType;
using DataTypes::Playback::LikeStatus;
using DataTypes::Playback::Track;
using Utilities::LocalTimeHelper;
using Utilities::Logger;
using Utilities::StringUtils;

namespace {

const ContentType contentTypes[] = {ContentType::Music, ContentType::Video, ContentType::Photo};

// A block may be dropped by the very callback it is making (an ad block's end, a
// restart asked for at a track's end); holding it until the event loop comes round
// again lets its own call stack unwind first.
template <typename T>
void KeepAliveUntilEventLoop(std::shared_ptr<T> object)
{
    if (object) {
        QTimer::singleShot(0, [object]() {});
    }
}

// An ad block left without spots (the server named none it delivered) would never
// end, and the content it paused would never come back: it counts as having no
// file to play.
bool HasSpotToPlay(const AdsBlock& block)
{
    return !block.TrackList().empty() && block.HasAnyDownloadedFile();
}

} // namespace

PlayablePeriod::PlayablePeriod()
    : adsScheduler(this)
{
    finishTimer.setSingleShot(true);
    // A coarse timer may fire a little early, which would hand over before the
    // boundary second.
    finishTimer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&finishTimer, &QTimer::timeout, [this]() { FinishTimerFired(); });
}

PlayablePeriod::~PlayablePeriod()
{
    finishTimer.stop();
    adsScheduler.Cancel();
}

void PlayablePeriod::SetInfo(const PlayablePeriodInfo& newInfo)
{
    info = newInfo;
}

PlayablePeriodInfo PlayablePeriod::GetInfo() const
{
    return info;
}

void PlayablePeriod::SetBlock(ContentType type, const std::shared_ptr<AbstractContentBlock>& block)
{
    if (type == ContentType::Clip) {
        return;
    }
    if (block) {
        blocks[type] = block;
    } else {
        blocks.erase(type);
    }
}

std::shared_ptr<AbstractContentBlock> PlayablePeriod::GetBlock(ContentType type) const
{
    const auto found = blocks.find(type);
    return found == blocks.end() ? nullptr : found->second;
}

bool PlayablePeriod::HasBlock(ContentType type) const
{
    return GetBlock(type) != nullptr;
}

void PlayablePeriod::SetNextPeriod(const std::shared_ptr<PlayablePeriod>& period)
{
    nextPeriod = period;
}

std::shared_ptr<PlayablePeriod> PlayablePeriod::GetNextPeriod() const
{
    return nextPeriod;
}

void PlayablePeriod::TryToAddAdvertisingBlocks(const std::vector<std::shared_ptr<AdsBlock>>& adBlocks)
{
    const int periodStart = LocalTimeHelper::StartTimeToSecondsFromDayStart(info.startTime);
    const int periodEnd = LocalTimeHelper::EndTimeToSecondsFromDayStart(info.endTime);
    for (const auto& block : adBlocks) {
        if (!block || block->GetDate() != info.date) {
            continue;
        }
        const int adStart = LocalTimeHelper::StartTimeToSecondsFromDayStart(block->GetStartTimeStr());
        if (adStart == periodStart) {
            startAds.push_back(block);
        } else if (periodStart < adStart && adStart < periodEnd) {
            otherAds.push_back(block);
        }
        // An ad at the end time is the next period's start ad.
    }
}

void PlayablePeriod::SetObserverForSequence(PlayablePeriodObserver* newObserver)
{
    for (PlayablePeriod* period = this; period != nullptr; period = period->nextPeriod.get()) {
        period->observer = newObserver;
    }
}

void PlayablePeriod::SetVideoWidgetForSequence(QWidget* widget)
{
    for (PlayablePeriod* period = this; period != nullptr; period = period->nextPeriod.get()) {
        period->videoWidget = widget;
        if (period->currentAdBlock) {
            period->currentAdBlock->SetVideoWidget(widget);
        }
        if (const auto video = period->GetBlock(ContentType::Video)) {
            video->SetVideoWidget(widget);
        }
    }
}

void PlayablePeriod::SetPhotoWidgetForSequence(QWidget* widget)
{
    for (PlayablePeriod* period = this; period != nullptr; period = period->nextPeriod.get()) {
        period->photoWidget = widget;
        if (const auto photo = period->GetBlock(ContentType::Photo)) {
            photo->SetPhotoWidget(widget);
        }
    }
}

void PlayablePeriod::FindAndStartCurrent()
{
    if (IsCurrent()) {
        StartAsCurrent();
    } else {
        TryToStartNextPeriod();
    }
}

void PlayablePeriod::StartAsCurrent()
{
    // Ads at the period's start are not played here: they belong to running into
    // the period from the one before, not to starting in the middle of it.
    state = 1;
    NotifyObserverPeriodStarted();
    StartObservingContentBlocks();
    InitFinishTimer();
    StartContentBlocks();
    ScheduleOtherAds();
}

void PlayablePeriod::TryToStartNextPeriod()
{
    PlayablePeriod* last = this;
    for (PlayablePeriod* period = nextPeriod.get(); period != nullptr; period = period->nextPeriod.get()) {
        if (period->IsCurrent()) {
            period->StartAsCurrent();
            return;
        }
        last = period;
    }
    Logger::Log("Период " + last->ToString() + " не является текущим и не имеет следующего");
    if (last->observer != nullptr) {
        last->observer->CurrentPeriodNotFound();
    }
}

void PlayablePeriod::StartFromPreviousPeriod(PlayablePeriod& previous)
{
    TryToPlayBlocksFromPreviousPeriod(previous);
    if (auto heldAds = previous.heldPoliteAds.GetAllTracksBlockAndClear()) {
        startAds.push_back(heldAds);
    }
    state = 1;
    NotifyObserverPeriodStarted();
    StartObservingContentBlocks();
    InitFinishTimer();
    ScheduleOtherAds();
    if (previous.currentAdBlock) {
        // The spots go on here; the finished period no longer plays them.
        const auto playing = std::move(previous.currentAdBlock);
        previous.currentAdBlock.reset();
        StartWithPlayingAdBlock(playing);
    } else {
        StartWithoutPlayingAdBlock();
    }
}

void PlayablePeriod::FindAndStopCurrent()
{
    PlayablePeriod* period = this;
    while (period != nullptr && period->state == 0) {
        period = period->nextPeriod.get();
    }
    if (period == nullptr) {
        return;
    }
    period->finishTimer.stop();
    period->adsScheduler.Cancel();
    period->heldPoliteAds.Clear();
    period->StopContentBlocks();
    period->ClearCurrentAdBlock();
    period->StopObservingContentBlocks();
}

bool PlayablePeriod::IsCurrent() const
{
    const std::string today = LocalTimeHelper::CurrentDateToString();
    const int now = LocalTimeHelper::LocalTimeToSecondsFromDayStart();
    const int start = LocalTimeHelper::StartTimeToSecondsFromDayStart(info.startTime);
    const int end = LocalTimeHelper::EndTimeToSecondsFromDayStart(info.endTime);
    return info.date == today && start <= now && now < end;
}

void PlayablePeriod::GoToPreviousTrack(ContentType type)
{
    if (auto* block = BlockForUserAction(type)) {
        block->GoToPreviousTrack();
    }
}

void PlayablePeriod::GoToNextTrack(ContentType type)
{
    if (auto* block = BlockForUserAction(type)) {
        block->GoToNextTrack();
    }
}

void PlayablePeriod::SetProgress(ContentType type, double progress)
{
    if (auto* block = BlockForUserAction(type)) {
        block->SetProgress(progress);
    }
}

void PlayablePeriod::PlayTrack(ContentType type, long index)
{
    if (auto* block = BlockForUserAction(type)) {
        block->PlayTrack(index);
    }
}

void PlayablePeriod::RefreshPhoto()
{
    if (const auto photo = GetBlock(ContentType::Photo)) {
        photo->RefreshPhoto();
    }
}

void PlayablePeriod::ApplySettings()
{
    for (const auto& [type, block] : blocks) {
        block->ApplySettings();
    }
    if (currentAdBlock) {
        currentAdBlock->ApplySettings();
    }
}

void PlayablePeriod::RefreshTrackLikeStatus(ContentType type, long trackId, LikeStatus status)
{
    if (const auto block = GetBlock(type)) {
        block->RefreshTrackLikeStatusById(trackId, status);
    }
}

std::vector<Track> PlayablePeriod::GetTracks(ContentType type) const
{
    const auto block = GetBlock(type);
    return block ? block->TrackList() : std::vector<Track>();
}

std::vector<Track> PlayablePeriod::GetAllTracksList() const
{
    std::vector<Track> all;
    for (const auto& [type, block] : blocks) {
        const auto tracks = block->TrackList();
        all.insert(all.end(), tracks.begin(), tracks.end());
    }
    return all;
}

bool PlayablePeriod::HasAnyDownloadedFile(ContentType type) const
{
    const auto block = GetBlock(type);
    return block && block->HasAnyDownloadedFile();
}

void PlayablePeriod::TryStartWaitingForDownloadBlocks()
{
    if (currentAdBlock || state != 1) {
        return;
    }
    for (const auto& [type, block] : blocks) {
        if (block->IsWaitingForDownload() && block->HasAnyDownloadedFile()) {
            block->SetWaitingForDownload(false);
            block->Start();
        }
    }
}

void PlayablePeriod::DontPlayNextAudioTrack()
{
    // The music decides when the sound pauses; video only when no music plays,
    // since it runs silent beneath music.
    auto block = BlockIsPlaying(ContentType::Music) ? GetBlock(ContentType::Music) : nullptr;
    if (!block) {
        block = GetBlock(ContentType::Video);
    }
    if (!block) {
        block = GetBlock(ContentType::Music);
    }
    if (block) {
        block->SetDontPlayNextTrack(true);
    }
}

void PlayablePeriod::ClearCurrentAdBlock()
{
    if (!currentAdBlock) {
        return;
    }
    currentAdBlock->RemoveObserver();
    currentAdBlock->SetVideoWidget(nullptr);
    currentAdBlock->Stop();
    currentAdBlock->SetFinishHandler(nullptr);
    currentAdBlock.reset();
}

bool PlayablePeriod::IsStarted() const
{
    return state != 0;
}

bool PlayablePeriod::IsPlayingAdBlock() const
{
    return currentAdBlock != nullptr;
}

std::string PlayablePeriod::ToString() const
{
    return info.name + " " + info.dayOfWeek + " " + info.date + " " + info.startTime + "-" + info.endTime;
}

void PlayablePeriod::InterruptAdBlockStarted(std::shared_ptr<AdsBlock> block)
{
    if (DueAdBlockIsHandled(block)) {
        return;
    }
    StartAdsBlock(block);
}

void PlayablePeriod::NoninterruptAdBlockStarted(std::shared_ptr<AdsBlock> block)
{
    if (DueAdBlockIsHandled(block)) {
        return;
    }
    HoldOrPlayNewNonInterruptAdBlock(block);
}

bool PlayablePeriod::DueAdBlockIsHandled(const std::shared_ptr<AdsBlock>& block)
{
    if (!block) {
        return true;
    }
    const bool hasFile = HasSpotToPlay(*block);
    Logger::LogAdBlockStarted(block->GetName(), block->InterruptsContent(), hasFile);
    if (!hasFile) {
        return true;
    }
    if (currentAdBlock) {
        // Queued behind the spots already playing, whatever its kind.
        Logger::LogAdBlockAdded(block->GetName(), currentAdBlock->GetName());
        currentAdBlock->AddTracksFromAnotherBlock(*block);
        return true;
    }
    return false;
}

void PlayablePeriod::BlockDidStartPlayingTrack(AbstractContentBlock& block, const Track& track, bool resumed)
{
    if (currentAdBlock && &block == currentAdBlock.get()) {
        // Each spot decides again: a video spot takes the picture, an audio one
        // only the sound.
        PauseOrMuteContentBlocksIfNeeded(*currentAdBlock);
        if (block.CurrentTrackIsVideo()) {
            currentAdBlock->SetVideoWidget(videoWidget);
        }
    }
    if (observer != nullptr) {
        observer->PeriodStartedPlayingTrack(shared_from_this(), block.GetContentType(), block.GetVolume(),
                                            track, resumed);
    }
}

void PlayablePeriod::BlockDidChangeProgress(AbstractContentBlock& block, double progress,
                                            double durationSeconds)
{
    if (observer != nullptr) {
        observer->PeriodChangedProgress(shared_from_this(), block.GetContentType(), progress,
                                        durationSeconds);
    }
}

void PlayablePeriod::BlockDoesntPlayNextTrack(AbstractContentBlock& block)
{
    Logger::Log("Блок контента остановил воспроизведение после окончания текущего трека");
    // The observer may restart playback from a new configuration and drop this
    // period with its blocks while the block is still inside this callback.
    const auto self = shared_from_this();
    KeepAliveUntilEventLoop(self);
    for (const auto& [type, own] : blocks) {
        if (own.get() == &block) {
            KeepAliveUntilEventLoop(own);
        }
    }
    if (observer != nullptr && !observer->PeriodShouldPlayNextTrack(self)) {
        return;
    }
    if (heldPoliteAds.IsEmpty()) {
        Logger::Log("В очереди нет 'вежливой' рекламы, продолжаем воспроизведение контента");
        block.Start();
        return;
    }
    if (const auto heldAds = heldPoliteAds.GetAllTracksBlockAndClear()) {
        Logger::Log("В очереди есть 'вежливая' реклама, начинаем воспроизведение");
        StartAdsBlock(heldAds);
    } else {
        block.Start();
    }
}

void PlayablePeriod::NotifyObserverPeriodStarted()
{
    if (observer != nullptr) {
        observer->PeriodStarted(shared_from_this());
    }
}

void PlayablePeriod::StartObservingContentBlocks()
{
    for (const auto& [type, block] : blocks) {
        block->SetObserver(this);
    }
}

void PlayablePeriod::StopObservingContentBlocks()
{
    for (const auto& [type, block] : blocks) {
        block->RemoveObserver();
    }
}

void PlayablePeriod::InitFinishTimer()
{
    // End and now are both counted from today's midnight, so the timer never runs
    // past the end of the day.
    const std::int64_t end = LocalTimeHelper::EndTimeToSecondsFromDayStart(info.endTime);
    const std::int64_t nowMs = LocalTimeHelper::LocalTimeToMSecsFromDayStart();
    const std::int64_t remaining = end - nowMs / 1000;
    const std::string duration = StringUtils::StringDurationFromSeconds(remaining);
    Logger::Log("Период " + ToString() + " закончится через " + duration);
    if (remaining < 1) {
        return;
    }
    Logger::Log("\tЗапуск таймера на окончание периода " + duration);
    finishTimer.setSingleShot(true);
    // Aimed at the end second itself: a period started part-way through a second
    // hands over on the boundary, not up to a second after it.
    finishTimer.setInterval(static_cast<int>(end * 1000 - nowMs));
    finishTimer.start();
}

void PlayablePeriod::FinishTimerFired()
{
    Logger::Log("Сработал таймер окончания периода " + ToString());
    StopObservingContentBlocks();
    adsScheduler.Cancel();
    if (nextPeriod) {
        // The blocks go on playing: the next period takes over those of the same
        // playlist and stops the others.
        nextPeriod->StartFromPreviousPeriod(*this);
        return;
    }
    Logger::Log("У периода " + ToString() + " нет следующего периода");
    StopContentBlocks();
    // The schedule is over: a spot still playing stops with the content.
    ClearCurrentAdBlock();
    if (observer != nullptr) {
        observer->LastPeriodFinished(shared_from_this());
    }
}

void PlayablePeriod::StartContentBlocks()
{
    SetMuteToVideoIfNeeded();
    for (const auto& [type, block] : blocks) {
        if (block->HasAnyDownloadedFile()) {
            block->Start();
        } else {
            block->SetWaitingForDownload(true);
        }
    }
}

void PlayablePeriod::StopContentBlocks()
{
    for (const auto& [type, block] : blocks) {
        block->Stop();
    }
}

void PlayablePeriod::ScheduleOtherAds()
{
    adsScheduler.ScheduleAds(otherAds);
}

void PlayablePeriod::SetMuteToVideoIfNeeded()
{
    const auto video = GetBlock(ContentType::Video);
    if (!video) {
        return;
    }
    const auto music = GetBlock(ContentType::Music);
    if (!music) {
        video->SetMuted(false);
    } else if (!music->TrackList().empty()) {
        // Video plays silent beneath music.
        video->SetMuted(true);
    }
}

void PlayablePeriod::StartAdsBlock(const std::shared_ptr<AdsBlock>& block)
{
    Logger::Log("Начинаем воспроизведение рекламного блока " + block->GetName());
    currentAdBlock = block;
    block->SetVolume(info.adsVolume);
    PauseOrMuteContentBlocksIfNeeded(*block);
    block->SetVideoWidget(videoWidget);
    block->SetObserver(this);
    // The handler goes in before Start(): a list that cannot play ends at once and
    // must still give the content back.
    block->SetFinishHandler([this]() { HandleCurrentAdBlockFinished(); });
    block->Start();
}

void PlayablePeriod::PauseOrMuteContentBlocksIfNeeded(const AdsBlock& block)
{
    if (const auto music = GetBlock(ContentType::Music)) {
        music->Pause();
    }
    if (const auto video = GetBlock(ContentType::Video)) {
        if (block.CurrentTrackIsVideo()) {
            video->Pause();
        } else {
            // The picture goes on, silent, under an audio spot.
            video->SetMuted(true);
            video->Start();
        }
    }
}

void PlayablePeriod::HandleCurrentAdBlockFinished()
{
    if (!currentAdBlock) {
        return;
    }
    const auto finished = currentAdBlock;
    // Called from the ad block's own end of list.
    KeepAliveUntilEventLoop(finished);
    Logger::Log("Завершено воспроизведение рекламного блока " + finished->GetName());
    if (observer != nullptr) {
        observer->PeriodFinishedPlayingAdBlock(shared_from_this());
    }
    finished->RemoveObserver();
    finished->SetVideoWidget(nullptr);
    currentAdBlock.reset();
    StartContentBlocks();
    // Resuming clears a track's stop-after-track flag; polite ads still held
    // must still get the next track end.
    if (!heldPoliteAds.IsEmpty()) {
        DontPlayNextAudioTrack();
    }
}

void PlayablePeriod::HoldOrPlayNewNonInterruptAdBlock(const std::shared_ptr<AdsBlock>& block)
{
    if (!BlockIsPlaying(ContentType::Music) && !BlockIsPlaying(ContentType::Video)) {
        StartAdsBlock(block);
        return;
    }
    DontPlayNextAudioTrack();
    heldPoliteAds.AddAdBlock(block);
}

bool PlayablePeriod::BlockIsPlaying(ContentType type) const
{
    const auto block = GetBlock(type);
    return block && !block->TrackList().empty() && block->HasAnyDownloadedFile();
}

void PlayablePeriod::TryToPlayBlocksFromPreviousPeriod(PlayablePeriod& previous)
{
    for (const ContentType type : contentTypes) {
        const auto previousBlock = previous.GetBlock(type);
        if (!previousBlock) {
            continue;
        }
        const int playlist = info.GetPlaylistIdentifier(type);
        const std::string typeText = DataTypes::Playback::ContentTypeToString(type);
        if (playlist != 0 && playlist == previous.info.GetPlaylistIdentifier(type)) {
            Logger::Log("Блок " + typeText + " передан в следующий период");
            previousBlock->SetVolume(info.contentVolume);
            blocks[type] = previousBlock;
        } else {
            Logger::Log("Блок " + typeText + " НЕ передан в следующий период");
            previousBlock->Stop();
        }
    }
}

void PlayablePeriod::StartWithPlayingAdBlock(const std::shared_ptr<AdsBlock>& block)
{
    Logger::Log("\tЕсть воспроизводящийся рекламный блок в начале периода");
    currentAdBlock = block;
    block->SetObserver(this);
    block->AddTracksFromAnotherBlocks(startAds);
    block->SetFinishHandler([this]() { HandleCurrentAdBlockFinished(); });
}

void PlayablePeriod::StartWithoutPlayingAdBlock()
{
    Logger::Log("\tНет воспроизводящегося рекламного блока в начале периода");
    if (startAds.empty()) {
        Logger::Log("У периода " + ToString() + " нет рекламы, совпадающей с началом периода");
        StartContentBlocks();
        return;
    }
    Logger::Log("У периода " + ToString() + " есть реклама, совпадающая с началом периода");
    const auto& first = startAds.front();
    for (std::size_t i = 1; i < startAds.size(); ++i) {
        first->AddTracksFromAnotherBlock(*startAds[i]);
    }
    // Merged spots sit in the first block's player only; an empty first block plays
    // the others'.
    const bool playable =
        HasSpotToPlay(*first) ||
        (first->TrackList().empty() && std::any_of(startAds.begin() + 1, startAds.end(),
                                                   [](const auto& ad) { return HasSpotToPlay(*ad); }));
    if (playable) {
        StartAdsBlock(first);
    } else {
        Logger::Log(
            "\tУ рекламного блока начала периода нет скачанных файлов - запуск воспроизведения контента");
        StartContentBlocks();
    }
}

AbstractContentBlock* PlayablePeriod::BlockForUserAction(ContentType type) const
{
    if (type == ContentType::Clip || currentAdBlock) {
        return nullptr;
    }
    const auto found = blocks.find(type);
    return found == blocks.end() ? nullptr : found->second.get();
}

} // namespace Core::ContentPlaying

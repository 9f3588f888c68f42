#include "core/content_playing/ads_block.h"

#include <utility>

namespace Core::ContentPlaying {

AdsBlock::AdsBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume, bool interruptsContent)
    : TrackListBlock(tracks, volume, false, false)
    , interruptsContent(interruptsContent)
{
}

DataTypes::Playback::ContentType AdsBlock::GetContentType() const
{
    return DataTypes::Playback::ContentType::Clip;
}

bool AdsBlock::InterruptsContent() const
{
    return interruptsContent;
}

void AdsBlock::SetName(const std::string& blockName)
{
    name = blockName;
}

std::string AdsBlock::GetName() const
{
    return name;
}

void AdsBlock::SetDate(const std::string& blockDate)
{
    date = blockDate;
}

std::string AdsBlock::GetDate() const
{
    return date;
}

void AdsBlock::SetStartTimeStr(const std::string& startTime)
{
    startTimeStr = startTime;
}

std::string AdsBlock::GetStartTimeStr() const
{
    return startTimeStr;
}

void AdsBlock::SetFinishHandler(std::function<void()> handler)
{
    finishHandler = std::move(handler);
}

void AdsBlock::AddTracksFromAnotherBlock(const AdsBlock& other)
{
    Player().AddTracks(other.TrackList());
}

void AdsBlock::AddTracksFromAnotherBlocks(const std::vector<std::shared_ptr<AdsBlock>>& others)
{
    for (const auto& other : others) {
        if (other) {
            AddTracksFromAnotherBlock(*other);
        }
    }
}

void AdsBlock::TrackListPlayerDidFinishTrackList()
{
    if (!finishHandler) {
        return;
    }
    // The handler usually lets go of this block: call a copy, so that the
    // function being run outlives the block.
    const std::function<void()> handler = finishHandler;
    handler();
}

} // namespace Core::ContentPlaying

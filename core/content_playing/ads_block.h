#pragma once

#include "core/content_playing/track_list_block.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Core::ContentPlaying {

// One advertising block: its clips once through, then the finish handler. Blocks
// due at the same moment are merged by appending the others' clips to the playing
// one; only the player's list grows, the block's own TrackList() stays as built.
class AdsBlock : public TrackListBlock
{
public:
    AdsBlock(const std::vector<DataTypes::Playback::Track>& tracks, int volume, bool interruptsContent);

    DataTypes::Playback::ContentType GetContentType() const override;

    bool InterruptsContent() const;
    void SetName(const std::string& blockName);
    std::string GetName() const;
    void SetDate(const std::string& blockDate);
    std::string GetDate() const;
    void SetStartTimeStr(const std::string& startTime);
    std::string GetStartTimeStr() const;
    void SetFinishHandler(std::function<void()> handler);

    void AddTracksFromAnotherBlock(const AdsBlock& other);
    void AddTracksFromAnotherBlocks(const std::vector<std::shared_ptr<AdsBlock>>& others);

    void TrackListPlayerDidFinishTrackList() override;

private:
    bool interruptsContent;
    std::string name;
    std::string date;
    std::string startTimeStr;
    std::function<void()> finishHandler;
};

} // namespace Core::ContentPlaying

#pragma once

#include <memory>
#include <vector>

namespace Core::ContentPlaying {

class AdsBlock;

// Polite advertising that came due while a track was playing, kept until the track
// ends and then played as one block.
class NoninterruptingAdsHolder
{
public:
    void AddAdBlock(const std::shared_ptr<AdsBlock>& block);
    bool IsEmpty() const;
    void Clear();
    // The first held block with the tracks of the others appended in place, or
    // nothing when none is held; the holder is empty afterwards.
    std::shared_ptr<AdsBlock> GetAllTracksBlockAndClear();

private:
    std::vector<std::shared_ptr<AdsBlock>> blocks;
};

} // namespace Core::ContentPlaying

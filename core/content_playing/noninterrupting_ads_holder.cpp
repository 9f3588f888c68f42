#include "core/content_playing/noninterrupting_ads_holder.h"

#include "core/content_playing/ads_block.h"

namespace Core::ContentPlaying {

void NoninterruptingAdsHolder::AddAdBlock(const std::shared_ptr<AdsBlock>& block)
{
    if (block) {
        blocks.push_back(block);
    }
}

bool NoninterruptingAdsHolder::IsEmpty() const
{
    return blocks.empty();
}

void NoninterruptingAdsHolder::Clear()
{
    blocks.clear();
}

std::shared_ptr<AdsBlock> NoninterruptingAdsHolder::GetAllTracksBlockAndClear()
{
    if (blocks.empty()) {
        return nullptr;
    }
    // The first block is extended in place: it is played once and dropped, so no
    // copy is needed.
    std::shared_ptr<AdsBlock> first = blocks.front();
    for (std::size_t i = 1; i < blocks.size(); ++i) {
        first->AddTracksFromAnotherBlock(*blocks[i]);
    }
    blocks.clear();
    return first;
}

} // namespace Core::ContentPlaying

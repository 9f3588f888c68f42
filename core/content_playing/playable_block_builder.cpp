#include "core/content_playing/playable_block_builder.h"

#include "core/content_playing/music_block.h"
#include "core/content_playing/photo_block.h"
#include "core/content_playing/video_block.h"
#include "core/settings.h"
#include "core/utilities/string_utils.h"

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <unordered_map>

namespace Core::ContentPlaying {

using DataTypes::Playback::AdBlock;
using DataTypes::Playback::ContentType;
using DataTypes::Playback::PlaybackPeriod;
using DataTypes::Playback::Playlist;
using DataTypes::Playback::Track;

namespace {

constexpr const char* missingKeyMessage = "map::at:  key not found";

// The first track of each identifier is the one a playlist or an ads block gets;
// an identifier the configuration does not carry is left out, so the block only
// gets shorter. One pass over the kind's tracks looks for the few identifiers a
// playlist names: a week of periods over a large library then neither searches the
// whole list once per entry nor indexes all of it once per block.
std::vector<Track> TracksByIdentifiers(const std::vector<Track>& tracks,
                                       const std::vector<std::int32_t>& identifiers)
{
    std::unordered_map<std::int32_t, const Track*> firstById;
    firstById.reserve(identifiers.size());
    for (const std::int32_t identifier : identifiers) {
        firstById.emplace(identifier, nullptr);
    }
    std::size_t missing = firstById.size();
    for (auto track = tracks.begin(); track != tracks.end() && missing > 0; ++track) {
        const auto wanted = firstById.find(track->id);
        if (wanted != firstById.end() && wanted->second == nullptr) {
            wanted->second = &*track;
            --missing;
        }
    }
    std::vector<Track> result;
    result.reserve(identifiers.size());
    for (const std::int32_t identifier : identifiers) {
        if (const Track* track = firstById.at(identifier)) {
            result.push_back(*track);
        }
    }
    return result;
}

} // namespace

std::shared_ptr<AbstractContentBlock> PlayableBlockBuilder::CreateContentBlock(ContentType type,
                                                                               const PlaybackPeriod& period,
                                                                               const TracksByType& tracks,
                                                                               const Playlists& playlists)
{
    // Advertising reaches a period as ads blocks, never as a content block.
    if (type == ContentType::Clip) {
        return nullptr;
    }
    const std::int32_t playlistId = PlaylistIdentifierOfType(period, type);
    if (playlistId == 0) {
        return nullptr;
    }
    const auto playlist = FindPlaylist(playlists, playlistId, type);
    if (playlist == playlists.end()) {
        return nullptr;
    }

    std::vector<Track> blockTracks = TracksOfPlaylist(*playlist, TracksOfType(tracks, type));
    ShuffleTracksIfNeeded(blockTracks, Settings::GetShuffle(type));

    switch (type) {
    case ContentType::Music:
        return std::make_shared<MusicBlock>(blockTracks, period.contentVolume);
    case ContentType::Video:
        return std::make_shared<VideoBlock>(blockTracks, period.contentVolume);
    case ContentType::Photo:
        return std::make_shared<PhotoBlock>(blockTracks);
    case ContentType::Clip:
        break;
    }
    return nullptr;
}

PlayableBlockBuilder::Playlists::const_iterator
PlayableBlockBuilder::FindPlaylist(const Playlists& playlists, long identifier, ContentType type)
{
    return std::find_if(playlists.begin(), playlists.end(), [identifier, type](const Playlist& playlist) {
        return playlist.id == identifier && playlist.contentType == type;
    });
}

std::vector<Track> PlayableBlockBuilder::TracksOfPlaylist(const Playlist& playlist,
                                                          const std::vector<Track>& tracks)
{
    return TracksByIdentifiers(tracks, playlist.trackIds);
}

void PlayableBlockBuilder::ShuffleTracksIfNeeded(std::vector<Track>& tracks, bool shuffle)
{
    if (!shuffle || tracks.size() < 2) {
        return;
    }
    static std::default_random_engine engine{std::random_device{}()};
    std::shuffle(tracks.begin(), tracks.end(), engine);
}

std::vector<std::shared_ptr<AdsBlock>>
PlayableBlockBuilder::CreateAdsBlock(const std::vector<AdBlock>& adBlocks,
                                     const std::vector<Track>& clipTracks)
{
    // Volume 99 is a placeholder: the period gives the block its own ads volume
    // when it starts it.
    constexpr int constructionVolume = 99;

    std::vector<std::shared_ptr<AdsBlock>> result;
    for (const AdBlock& adBlock : adBlocks) {
        // One configured block is scheduled on several dates; the player plays it
        // as one block per date, earliest date first.
        std::map<std::string, std::vector<std::int32_t>> identifiersByDate;
        for (const AdBlock::Entry& entry : adBlock.tracks) {
            identifiersByDate[entry.date].push_back(entry.trackId);
        }
        for (const auto& [date, identifiers] : identifiersByDate) {
            std::vector<Track> tracks = TracksOfAdsBlock(clipTracks, identifiers);
            SortAdsTracksByPathExtension(tracks);
            auto block = std::make_shared<AdsBlock>(tracks, constructionVolume, adBlock.interruptContent);
            block->SetName(adBlock.name);
            block->SetDate(date);
            block->SetStartTimeStr(adBlock.startTime);
            result.push_back(block);
        }
    }
    return result;
}

std::vector<Track> PlayableBlockBuilder::TracksOfAdsBlock(const std::vector<Track>& tracks,
                                                          const std::vector<std::int32_t>& identifiers)
{
    return TracksByIdentifiers(tracks, identifiers);
}

void PlayableBlockBuilder::SortAdsTracksByPathExtension(std::vector<Track>& tracks)
{
    // Only an audio spot before a video spot is ordered; every other pair counts as
    // equal, so spots of one kind may change places.
    std::sort(tracks.begin(), tracks.end(), [](const Track& a, const Track& b) {
        return Utilities::StringUtils::StringEndsWith(a.path, ".mp3") &&
               Utilities::StringUtils::StringEndsWith(b.path, ".mp4");
    });
}

const std::vector<Track>& PlayableBlockBuilder::TracksOfType(const TracksByType& tracks, ContentType type)
{
    const auto found = tracks.find(type);
    if (found == tracks.end()) {
        throw std::out_of_range(missingKeyMessage);
    }
    return found->second;
}

std::int32_t PlayableBlockBuilder::PlaylistIdentifierOfType(const PlaybackPeriod& period, ContentType type)
{
    const auto found = period.playlistIds.find(type);
    if (found == period.playlistIds.end()) {
        throw std::out_of_range(missingKeyMessage);
    }
    return found->second;
}

} // namespace Core::ContentPlaying

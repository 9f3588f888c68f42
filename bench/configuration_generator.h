#pragma once

#include "core/data_types/playback/playback_configuration.h"

#include <cstdint>
#include <random>
#include <string>

namespace Bench {

// Builds a playback configuration the size of a large chain's busiest point of sale:
// a week of hourly periods, tens of thousands of tracks with Russian titles and
// paths, hundreds of playlists and ad blocks. The same seed gives the same
// configuration, so runs can be compared.
class ConfigurationGenerator
{
public:
    struct Sizes
    {
        int days = 7;
        int periodsPerDay = 24;
        int clips = 2'000;
        int musicTracks = 12'000;
        int videoTracks = 3'000;
        int photoTracks = 3'000;
        int playlists = 300;
        int adBlocks = 200;
        int clipsPerAdBlockDate = 3;
    };

    explicit ConfigurationGenerator(std::uint32_t seed = 20240501);

    Core::DataTypes::Playback::PlaybackConfiguration Generate(const Sizes& sizes);

private:
    int Pick(int count);
    const char* PickWord(const char* const* words, int count);
    std::string Title();
    std::string Author();
    std::string Md5();
    std::string Date(int dayIndex) const;
    Core::DataTypes::Playback::Track MakeTrack(Core::DataTypes::Playback::ContentType type, std::int32_t id);

    std::mt19937 random_;
};

} // namespace Bench

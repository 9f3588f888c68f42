#pragma once

#include <cstdint>

namespace Core::DataTypes::Playback {

// The numeric values are what the JSON reader stores and what the screens pass
// back through SetLikeStatus(int).
enum class LikeStatus : std::int32_t
{
    None = -1,
    Disliked = 0,
    Liked = 1,
};

} // namespace Core::DataTypes::Playback

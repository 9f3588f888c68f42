#pragma once

#include <cstdint>

namespace Core {

// What the like and dislike buttons send to the server as "value"; the server
// answers with the track's new LikeStatus.
enum class LikeAction : std::int32_t
{
    Dislike = 0,
    Like = 1,
};

} // namespace Core

#pragma once

#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/like_status.h"

#include <cstdint>
#include <string>

namespace Core::DataTypes::Playback {

// One media file of the schedule, as the server describes it.
struct Track
{
    std::int32_t id = 0;
    std::string path;
    std::string name;
    std::string author;
    std::string image;
    std::string md5;
    ContentType contentType = ContentType::Clip;
    std::int32_t fileSize = 0;
    std::int32_t shopId = 0;
    bool uploadedByUser = false;
    LikeStatus likeStatus = LikeStatus::None;

    bool operator==(const Track& other) const;
    bool operator!=(const Track& other) const;
};

} // namespace Core::DataTypes::Playback

#include "core/data_types/playback/track.h"

#include <tuple>

namespace Core::DataTypes::Playback {

bool Track::operator==(const Track& other) const
{
    return std::tie(id, path, name, author, image, md5, contentType, fileSize, shopId, uploadedByUser,
                    likeStatus) == std::tie(other.id, other.path, other.name, other.author, other.image,
                                            other.md5, other.contentType, other.fileSize, other.shopId,
                                            other.uploadedByUser, other.likeStatus);
}

bool Track::operator!=(const Track& other) const
{
    return !(*this == other);
}

} // namespace Core::DataTypes::Playback

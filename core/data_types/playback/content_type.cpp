#include "core/data_types/playback/content_type.h"

namespace Core::DataTypes::Playback {

std::string ContentTypeToString(ContentType type)
{
    switch (type) {
    case ContentType::Clip:
        return "clip";
    case ContentType::Music:
        return "music";
    case ContentType::Video:
        return "video";
    case ContentType::Photo:
        break;
    }
    return "photo";
}

ContentType ContentTypeFromString(const std::string& text)
{
    if (text == "clip") {
        return ContentType::Clip;
    }
    if (text == "music") {
        return ContentType::Music;
    }
    if (text == "video") {
        return ContentType::Video;
    }
    return ContentType::Photo;
}

std::vector<ContentType> AllContentTypes()
{
    return {ContentType::Clip, ContentType::Music, ContentType::Video, ContentType::Photo};
}

} // namespace Core::DataTypes::Playback

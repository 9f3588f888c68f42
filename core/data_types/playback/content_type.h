#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Core::DataTypes::Playback {

// The kind of a scheduled file. A clip is an advertising track; music, video and
// photo are the background content a period names playlists for.
enum class ContentType : std::int32_t
{
    Clip = 0,
    Music = 1,
    Video = 2,
    Photo = 3,
};

std::string ContentTypeToString(ContentType type);

// Unknown kinds are treated as pictures: the server may add kinds the player does
// not know yet, and showing them as photos is the harmless choice.
ContentType ContentTypeFromString(const std::string& text);

// Every loop over all kinds (reading track lists, downloading, database rows) uses
// this order.
std::vector<ContentType> AllContentTypes();

} // namespace Core::DataTypes::Playback

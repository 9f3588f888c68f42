#pragma once

#include "core/data_types/playback/content_type.h"

#include <map>
#include <string>

namespace Core::ContentPlaying {

// What a playable period knows about itself: the scheduled period with the date and
// weekday of its day, and which playlist plays for each kind of content.
class PlayablePeriodInfo
{
public:
    int adsVolume = 0;
    int contentVolume = 0;
    std::string name;
    std::string startTime;
    std::string endTime;
    std::string date;
    std::string dayOfWeek;
    int scheduleId = 0;

    void SetPlaylistIdentifier(DataTypes::Playback::ContentType type, int identifier);
    void SetPlaylistName(DataTypes::Playback::ContentType type, const std::string& playlistName);
    void SetPlaylistImage(DataTypes::Playback::ContentType type, const std::string& image);
    // A kind never set reads as 0 or empty text (and from then on has that entry).
    int GetPlaylistIdentifier(DataTypes::Playback::ContentType type);
    std::string GetPlaylistName(DataTypes::Playback::ContentType type);
    std::string GetPlaylistImage(DataTypes::Playback::ContentType type);

private:
    std::map<DataTypes::Playback::ContentType, int> playlistIdentifiers;
    std::map<DataTypes::Playback::ContentType, std::string> playlistNames;
    std::map<DataTypes::Playback::ContentType, std::string> playlistImages;
};

} // namespace Core::ContentPlaying

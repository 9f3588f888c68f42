#pragma once

#include "core/data_types/playback/track.h"

#include <string>
#include <vector>

namespace Core::ContentPlaying {

// Where the media cache keeps each track's file: the data directory's "ads",
// "music", "video" and "photo" folders, under the last component of the track's
// server path. The server names files uniquely, so two tracks with the same file
// name share one cached file.
class ContentFilesHelper
{
public:
    ContentFilesHelper() = delete;

    static std::string FilenameForTrack(const DataTypes::Playback::Track& track);
    // The download goes here first ("song.mp3tmp") and is moved into place once its
    // size and digest are checked, so a final name never holds half a file.
    static std::string TemporaryFilenameForTrack(const DataTypes::Playback::Track& track);
    // True only for a regular file: a server path such as "" or ".." names a folder
    // and must not count as downloaded.
    static bool FileForTrackExists(const DataTypes::Playback::Track& track);
    static void DropContentFile(const DataTypes::Playback::Track& track);
    static void DropContentFiles();
    static std::vector<std::string> ContentDirectoryNames();
    // Removes every cached file no needed track maps to, temporary files included.
    static void DropUnnecessaryContentFiles(const std::vector<DataTypes::Playback::Track>& needed);
};

} // namespace Core::ContentPlaying

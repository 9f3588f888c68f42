#pragma once

#include "core/content_playing/playable_period_info.h"
#include "core/data_types/playback/day.h"
#include "core/data_types/playback/track.h"

#include <string>
#include <vector>

namespace Core::Utilities {

// The operator-facing event log, "log.txt" in the data directory. Support staff
// read it to learn what a point of sale played and when, so its texts (Russian,
// with their historical spellings) and layout stay exactly as they are. Each entry
// opens, appends and closes the file: nothing is lost if the process dies, and a
// log deleted while running comes back with the next entry. Logging never fails
// its caller.
class Logger
{
public:
    Logger() = delete;

    static std::string GetLogFileName();
    // "dd.mm.yyyy HH:MM:SS: ", the prefix of every entry.
    static std::string LocalTimeString();

    static void Log(const std::string& message);
    static void LogEmptyLine();
    static void LogAppRunned();
    static void LogDays(const std::vector<DataTypes::Playback::Day>& days);
    static void LogTrackStarted(const DataTypes::Playback::Track& track);
    static void LogPeriodStarted(const ContentPlaying::PlayablePeriodInfo& period);
    static void LogPeriodChanged(const ContentPlaying::PlayablePeriodInfo& oldPeriod,
                                 const ContentPlaying::PlayablePeriodInfo& newPeriod);
    static void LogLastPeriodFinished(const ContentPlaying::PlayablePeriodInfo& period);
    static void LogAdBlockStarted(const std::string& blockName, bool interruptsContent,
                                  bool hasDownloadedFiles);
    static void LogAdBlockAdded(const std::string& addedBlockName, const std::string& targetBlockName);
    static void LogHostsAvailabilityStarted(const std::vector<std::string>& hosts);
    static void LogHostAvailable(const std::string& host);
    static void LogNoHostAvailable();

private:
    static void Append(const std::string& text);
};

} // namespace Core::Utilities

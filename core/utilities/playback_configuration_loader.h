#pragma once

#include "core/data_types/error.h"
#include "core/networking/server_connection.h"

#include <functional>
#include <memory>
#include <string>

namespace Core::Utilities {

// Decides on each refresh whether the configuration in the local database is still
// the server's current one, fetches and stores a new one when it is not, and tells
// the caller whether it changed and when the check finished. Every step goes to
// the event log, so support can follow each refresh of a point of sale.
//
// A failed version check is not a failure: the point of sale keeps playing what
// it has stored. The configuration itself never travels to the caller, who reads
// it from the database after `success` (`changed` says whether it is new).
//
// No state between runs; one run ends with exactly one callback. The connection
// must outlive the run.
class PlaybackConfigurationLoader
{
public:
    struct Handlers
    {
        std::function<void(bool changed, std::string updateTime)> success;
        std::function<void(std::shared_ptr<DataTypes::Error>)> failure;
    };

    PlaybackConfigurationLoader() = delete;

    static void UpdatePlaybackConfiguration(Networking::ServerConnection& connection,
                                            std::function<void(bool, std::string)> success,
                                            std::function<void(std::shared_ptr<DataTypes::Error>)> failure);
    static void GetPlaybackConfigurationVersionFromApi(Networking::ServerConnection& connection,
                                                       Handlers handlers, long localVersion);
    static void LoadPlaybackConfigurationFromApi(Networking::ServerConnection& connection, Handlers handlers);
    // Local "HH:MM dd.mm.yyyy", as the player screen shows the last check.
    static std::string UserFacingUpdateTime();
};

} // namespace Core::Utilities

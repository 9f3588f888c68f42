#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Auth {

// A point of sale of the account, with its own schedule.
struct PlaybackObject
{
    std::int32_t id = 0;
    std::string name;
    std::string address;
    // A path segment of every authorised request and of every download URL.
    std::string code;
    std::string contractNumber;
    std::string image;
    std::string logo;
    bool disablePlayerControl = false;
    std::string organizationName;
};

} // namespace Core::DataTypes::Auth

#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Auth {

// A service server the player can work with.
struct Server
{
    std::int32_t id = 0;
    std::string name;
    // API base URL; request paths are appended to it, so it ends with "/".
    std::string url;
    std::string email;
    std::string phone;
    std::string privacyPolicyUrl;
    std::string landingUrl;
    bool isPrimary = false;
    // Put before the phone number the user types at sign-up.
    std::string phoneCountryCode;
    std::int32_t phoneSymbolLen = 0;
};

} // namespace Core::DataTypes::Auth

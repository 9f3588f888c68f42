#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Auth {

// A kind of business offered at sign-up (café, salon, ...).
struct BusinessType
{
    std::int32_t id = 0;
    std::string name;
    std::string image;
    std::string iconDarkTheme;
    std::string iconLightTheme;
};

} // namespace Core::DataTypes::Auth

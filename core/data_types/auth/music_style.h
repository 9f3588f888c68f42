#pragma once

#include <cstdint>
#include <string>

namespace Core::DataTypes::Auth {

// A music style offered at sign-up.
struct MusicStyle
{
    std::int32_t id = 0;
    std::string name;
    std::string image;
};

} // namespace Core::DataTypes::Auth

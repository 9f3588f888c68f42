#pragma once

#include <string>

namespace Core::Utilities {

// How the player describes its computer to the server with its version.
class DeviceInfoHelper
{
public:
    DeviceInfoHelper() = delete;

    // Seven "label: value\n" lines in a fixed order; the labels, "kernalVersion"
    // included, are what the server parses, so they never change.
    static std::string GetPlatformInfo();
    // "Linux", "macOS" or "Windows": the system the program was built for.
    static std::string GetOsInfo();
};

} // namespace Core::Utilities

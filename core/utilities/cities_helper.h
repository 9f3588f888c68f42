#pragma once

#include <QString>

#include <string>
#include <vector>

namespace Core::Utilities {

// The cities offered while the user types one at sign-up, from the list compiled
// into the program (":/raw/cities.txt", one UTF-8 name a line). Read once, on first
// use; the instance lives as long as the process.
class CitiesHelper
{
public:
    static CitiesHelper& GetInstance();

    CitiesHelper(const CitiesHelper&) = delete;
    CitiesHelper& operator=(const CitiesHelper&) = delete;

    // Cities whose name starts with `text` (UTF-8), ignoring case in any alphabet,
    // in the list's order. An empty text gives none.
    std::vector<std::string> SuitableCities(std::string text) const;

private:
    CitiesHelper();

    struct City
    {
        std::string name;
        // Lowered once here rather than on every key press.
        QString lowerCaseName;
    };
    std::vector<City> m_cities;
};

} // namespace Core::Utilities

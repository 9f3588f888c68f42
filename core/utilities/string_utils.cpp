#include "core/utilities/string_utils.h"

#include "core/utilities/clock.h"

#include <QRandomGenerator>
#include <QString>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iterator>
#include <locale>
#include <sstream>

namespace Core::Utilities {

namespace {

constexpr std::int64_t kilobyte = 1024;
constexpr std::int64_t megabyte = 1024 * kilobyte;
constexpr std::int64_t gigabyte = 1024 * megabyte;

std::string TwoDigitField(std::uint64_t value)
{
    return value < 10 ? "0" + std::to_string(value) : std::to_string(value);
}

} // namespace

std::string StringUtils::ContentSizeFromBytes(std::int64_t bytes)
{
    if (bytes < kilobyte) {
        return std::to_string(bytes) + " байт";
    }
    if (bytes < megabyte) {
        return std::to_string(bytes / kilobyte) + " Кб";
    }
    if (bytes < gigabyte) {
        return std::to_string(bytes / megabyte) + " Мб";
    }
    const double gigabytes = static_cast<double>(bytes) / static_cast<double>(gigabyte);
    return RemoveTrailingZeroes(ToStringWithPrecision(gigabytes, 2)) + " Гб";
}

std::string StringUtils::StringFrequency(double hertz)
{
    constexpr int fractionDigits = 6;
    const double magnitude = std::fabs(hertz);
    if (magnitude >= 1000000.0) {
        return RemoveTrailingZeroes(ToStringWithPrecision(hertz / 1000000.0, fractionDigits)) + " мГц";
    }
    if (magnitude >= 1000.0) {
        return RemoveTrailingZeroes(ToStringWithPrecision(hertz / 1000.0, fractionDigits)) + " кГц";
    }
    return RemoveTrailingZeroes(ToStringWithPrecision(hertz, fractionDigits));
}

std::string StringUtils::RemoveTrailingZeroes(const std::string& text)
{
    if (text.find('.') == std::string::npos) {
        return text;
    }
    std::string result = text;
    while (!result.empty() && result.back() == '0') {
        result.pop_back();
    }
    if (!result.empty() && result.back() == '.') {
        result.pop_back();
    }
    // ".0" and "-.0" still name a number.
    if (result.empty() || result == "-") {
        return "0";
    }
    return result;
}

std::string StringUtils::ToStringWithPrecision(double value, int digits)
{
    // The application object sets the C locale from the environment, where a
    // Russian desktop writes "1,5"; these texts always use a point.
    // More digits than a double holds only pads with zeroes; the cap keeps a wild
    // argument from building a huge text.
    constexpr int maximumDigits = 100;
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << std::fixed << std::setprecision(std::clamp(digits, 0, maximumDigits)) << value;
    return stream.str();
}

std::string StringUtils::StringDurationFromSeconds(std::int64_t seconds)
{
    // Unsigned magnitude: negating the most negative value would overflow.
    const std::uint64_t magnitude =
        seconds < 0 ? 0 - static_cast<std::uint64_t>(seconds) : static_cast<std::uint64_t>(seconds);
    const std::uint64_t hours = magnitude / 3600;
    const std::uint64_t minutes = magnitude / 60 % 60;
    const std::uint64_t secs = magnitude % 60;

    std::string result = seconds < 0 ? "-" : "";
    if (hours > 0) {
        result += TwoDigitField(hours) + ":";
    }
    result += TwoDigitField(minutes) + ":" + TwoDigitField(secs);
    return result;
}

std::string StringUtils::TrackDisplayString(const std::string& first, const std::string& second)
{
    if (first.empty()) {
        return second;
    }
    if (second.empty()) {
        return first;
    }
    return first + " - " + second;
}

std::string StringUtils::RandomLettersString(int length)
{
    static const char letters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    constexpr quint32 letterCount = sizeof(letters) - 1;
    if (length < 1) {
        return {};
    }
    // Seeded from the current time on every call, as the generator always was.
    const auto now = static_cast<quint64>(Clock::CurrentMSecsSinceEpoch());
    const quint32 seed[] = {static_cast<quint32>(now), static_cast<quint32>(now >> 32)};
    QRandomGenerator generator(std::begin(seed), std::end(seed));

    std::string result;
    result.reserve(static_cast<std::size_t>(length));
    for (int i = 0; i < length; ++i) {
        result += letters[generator.generate() % letterCount];
    }
    return result;
}

std::string StringUtils::MoveHttpsToHttp(const std::string& url)
{
    if (!StringStartsWith(url, "https:")) {
        return url;
    }
    return "http:" + url.substr(6);
}

bool StringUtils::StringStartsWith(const std::string& text, const std::string& prefix)
{
    return text.size() >= prefix.size() && text.compare(0, prefix.size(), prefix) == 0;
}

bool StringUtils::StringEndsWith(const std::string& text, const std::string& suffix)
{
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::string StringUtils::ReplaceAll(const std::string& text, const std::string& from, const std::string& to)
{
    if (from.empty()) {
        return text;
    }
    std::string result;
    result.reserve(text.size());
    std::size_t position = 0;
    while (true) {
        const std::size_t found = text.find(from, position);
        if (found == std::string::npos) {
            break;
        }
        result.append(text, position, found - position);
        result += to;
        position = found + from.size();
    }
    result.append(text, position, std::string::npos);
    return result;
}

std::string StringUtils::RemoveSpaces(const std::string& text)
{
    std::string result;
    result.reserve(text.size());
    for (const char character : text) {
        switch (character) {
        case ' ':
        case '\t':
        case '\n':
        case '\r':
        case '\v':
        case '\f':
            break;
        default:
            result += character;
        }
    }
    return result;
}

std::string StringUtils::ToLowerCase(const std::string& text)
{
    return QString::fromStdString(text).toLower().toStdString();
}

std::string StringUtils::SlashesToBackSlashes(const std::string& text)
{
    std::string result = text;
    for (char& character : result) {
        if (character == '/') {
            character = '\\';
        }
    }
    return result;
}

} // namespace Core::Utilities

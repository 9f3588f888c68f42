#pragma once

#include <cstdint>
#include <string>

namespace Core::Utilities {

// Display texts for the screens and the logs. Engine text is UTF-8 in std::string;
// the byte-wise operations below never split or reinterpret multi-byte characters,
// because they only look for ASCII bytes.
class StringUtils
{
public:
    StringUtils() = delete;

    // "512 байт", "3 Кб", "700 Мб", "1.5 Гб". Kilobytes and megabytes are truncated;
    // gigabytes keep two fraction digits without trailing zeroes.
    static std::string ContentSizeFromBytes(std::int64_t bytes);
    // An equaliser band: "60", "31.25", "1.5 кГц", "2 мГц" (the lower-case "м" is the
    // text the screens have always shown). No unit below 1000 Hz; up to six fraction
    // digits, trailing zeroes removed.
    static std::string StringFrequency(double hertz);
    // "1.50" -> "1.5", "2.000" -> "2"; a text without a decimal point is left alone.
    static std::string RemoveTrailingZeroes(const std::string& text);
    // Fixed notation with `digits` (0 to 100) fraction digits, always with a "."
    // whatever the process locale says.
    static std::string ToStringWithPrecision(double value, int digits);
    // "mm:ss" below an hour ("03:07"), "hh:mm:ss" from an hour on ("01:02:03",
    // "123:00:00"); every field below 10 gets a leading "0" and negative input a
    // leading "-".
    static std::string StringDurationFromSeconds(std::int64_t seconds);
    // "first - second"; when one of them is empty, the other one alone.
    static std::string TrackDisplayString(const std::string& first, const std::string& second);
    // `length` ASCII letters; empty for a length below 1.
    static std::string RandomLettersString(int length);
    // "https:..." -> "http:..."; any other url is returned unchanged.
    static std::string MoveHttpsToHttp(const std::string& url);
    static bool StringStartsWith(const std::string& text, const std::string& prefix);
    static bool StringEndsWith(const std::string& text, const std::string& suffix);
    // Non-overlapping, left to right; replaced text is not searched again. An empty
    // `from` changes nothing.
    static std::string ReplaceAll(const std::string& text, const std::string& from, const std::string& to);
    // Drops ASCII white space (space, tab, line breaks).
    static std::string RemoveSpaces(const std::string& text);
    // Unicode-aware, so Cyrillic is lowered too; an invalid UTF-8 sequence comes
    // back as U+FFFD.
    static std::string ToLowerCase(const std::string& text);
    static std::string SlashesToBackSlashes(const std::string& text);
};

} // namespace Core::Utilities

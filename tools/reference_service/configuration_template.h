#pragma once

#include <QJsonObject>
#include <QString>

#include <optional>

namespace ReferenceService {

// A playback configuration as a scenario writes it: the reply's "configuration"
// object, except that days and ad entries name a "day_offset" from today (0..6)
// instead of a date, ad entries may list several "day_offsets" at once, and tracks
// may leave out "md5" and "file_size_bytes", which are then taken from the file.
// Only what the service itself relies on is checked; every other member is passed
// to the player as written, so a scenario can still send odd values on purpose.
class ConfigurationTemplate
{
public:
    static std::optional<ConfigurationTemplate> FromJson(const QJsonObject& json, QString* error);

    // True for a track path the service may look up under its content folder:
    // relative, no "." or ".." segments, no empty segments, no '\'.
    static bool IsSafeRelativePath(const QString& path);
    static bool IsUrl(const QString& path);

    const QJsonObject& Json() const;
    std::optional<int> ExplicitVersion() const;

private:
    explicit ConfigurationTemplate(const QJsonObject& json);

    QJsonObject json;
};

} // namespace ReferenceService

#pragma once

#include <QByteArray>
#include <QStringList>

namespace ReferenceService {

// Decoding of request targets. Percent escapes are decoded, but a '+' stays a '+':
// the player builds its forms with QUrlQuery, which sends a phone number's leading
// '+' as it is, and reading it as a blank would turn "+79…" into " 79…".
class UrlText
{
public:
    UrlText() = delete;

    static QByteArray PercentDecode(const QByteArray& text);

    // Splits the path part of a target into decoded segments, without the leading
    // empty one ("/api/v1//x" gives "api", "v1", "", "x"). False when a segment
    // decodes to something that could step outside a folder or break a file name:
    // a '/', a '\', or a zero byte.
    static bool SplitPath(const QByteArray& path, QStringList* segments);
};

} // namespace ReferenceService

#include "tools/reference_service/url_text.h"

namespace ReferenceService {

namespace {

int HexValue(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

} // namespace

QByteArray UrlText::PercentDecode(const QByteArray& text)
{
    QByteArray decoded;
    decoded.reserve(text.size());
    for (int i = 0; i < text.size(); ++i) {
        const char c = text.at(i);
        if (c == '%' && i + 2 < text.size()) {
            const int high = HexValue(text.at(i + 1));
            const int low = HexValue(text.at(i + 2));
            if (high >= 0 && low >= 0) {
                decoded.append(static_cast<char>(high * 16 + low));
                i += 2;
                continue;
            }
        }
        // A broken escape is kept as it came rather than guessed at.
        decoded.append(c);
    }
    return decoded;
}

bool UrlText::SplitPath(const QByteArray& path, QStringList* segments)
{
    segments->clear();
    QList<QByteArray> parts = path.split('/');
    if (!parts.isEmpty() && parts.first().isEmpty()) {
        parts.removeFirst();
    }
    for (const QByteArray& part : parts) {
        const QByteArray decoded = PercentDecode(part);
        if (decoded.contains('/') || decoded.contains('\\') || decoded.contains('\0')) {
            return false;
        }
        segments->append(QString::fromUtf8(decoded));
    }
    return true;
}

} // namespace ReferenceService

#include "tools/reference_service/form_data.h"

#include "tools/reference_service/url_text.h"

namespace ReferenceService {

FormData::FormData(const QByteArray& text)
{
    for (const QByteArray& item : text.split('&')) {
        if (item.isEmpty()) {
            continue;
        }
        const int equals = item.indexOf('=');
        const QByteArray key = equals < 0 ? item : item.left(equals);
        const QByteArray value = equals < 0 ? QByteArray() : item.mid(equals + 1);
        items.emplace_back(QString::fromUtf8(UrlText::PercentDecode(key)),
                           QString::fromUtf8(UrlText::PercentDecode(value)));
    }
}

bool FormData::Has(const QString& key) const
{
    for (const auto& item : items) {
        if (item.first == key) {
            return true;
        }
    }
    return false;
}

QString FormData::Value(const QString& key) const
{
    for (const auto& item : items) {
        if (item.first == key) {
            return item.second;
        }
    }
    return QString();
}

const std::vector<std::pair<QString, QString>>& FormData::Items() const
{
    return items;
}

} // namespace ReferenceService

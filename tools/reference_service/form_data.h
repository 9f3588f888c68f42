#pragma once

#include <QByteArray>
#include <QString>

#include <utility>
#include <vector>

namespace ReferenceService {

// The items of a query string or of an "application/x-www-form-urlencoded" body,
// in the order sent. Decoding follows UrlText: escapes decoded, '+' kept.
class FormData
{
public:
    FormData() = default;
    explicit FormData(const QByteArray& text);

    bool Has(const QString& key) const;
    // The first value of the key; empty when absent.
    QString Value(const QString& key) const;
    const std::vector<std::pair<QString, QString>>& Items() const;

private:
    std::vector<std::pair<QString, QString>> items;
};

} // namespace ReferenceService

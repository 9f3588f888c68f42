#include "tools/reference_service/json_values.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <cmath>
#include <limits>

namespace ReferenceService {

std::optional<int> JsonValues::Integer(const QJsonValue& value)
{
    if (!value.isDouble()) {
        return std::nullopt;
    }
    const double number = value.toDouble();
    if (!std::isfinite(number) || std::floor(number) != number ||
        number < static_cast<double>(std::numeric_limits<int>::min()) ||
        number > static_cast<double>(std::numeric_limits<int>::max())) {
        return std::nullopt;
    }
    return static_cast<int>(number);
}

bool JsonValues::IsInteger(const QJsonValue& value)
{
    return Integer(value).has_value();
}

QByteArray JsonValues::Compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

std::optional<QJsonObject> JsonValues::ParseObject(const QByteArray& text, QString* error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = QStringLiteral("not valid JSON at offset %1: %2")
                     .arg(parseError.offset)
                     .arg(parseError.errorString());
        return std::nullopt;
    }
    if (!document.isObject()) {
        *error = QStringLiteral("a JSON object was expected");
        return std::nullopt;
    }
    return document.object();
}

} // namespace ReferenceService

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <optional>

namespace ReferenceService {

// Strict readings of JSON values for what the service accepts from scenario files,
// control requests and the player's bodies: a number that is not whole, or does
// not fit in 32 bits, is not an integer here.
class JsonValues
{
public:
    JsonValues() = delete;

    static std::optional<int> Integer(const QJsonValue& value);
    static bool IsInteger(const QJsonValue& value);
    static QByteArray Compact(const QJsonObject& object);
    // Parses an object; on failure says why in `error` (offset and Qt's reason).
    static std::optional<QJsonObject> ParseObject(const QByteArray& text, QString* error);
};

} // namespace ReferenceService

#include "ui/desktop/screen_error_text.h"

#include "core/data_types/api_error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/data_types/network_error.h"
#include "core/utilities/logger.h"

namespace UI::Desktop {

namespace {

// How the connection words a failure to reach the server at all.
const char* const ConnectionNoConnection = "Отсутствует связь с сервером";

bool IsRussian(const QString& text)
{
    for (const QChar character : text) {
        if (character.script() == QChar::Script_Cyrillic) {
            return true;
        }
    }
    return false;
}

} // namespace

QString ScreenErrorText::For(const std::shared_ptr<Core::DataTypes::Error>& error)
{
    if (error) {
        Core::Utilities::Logger::Log("Ошибка входа в аккаунт: " + error->ToString());
    }
    return Wording(error);
}

QString ScreenErrorText::Wording(const std::shared_ptr<Core::DataTypes::Error>& error)
{
    if (!error) {
        return QString::fromUtf8(BadAnswer);
    }
    if (std::dynamic_pointer_cast<Core::DataTypes::ApiError>(error)) {
        return QString::fromStdString(error->message);
    }
    if (std::dynamic_pointer_cast<Core::DataTypes::JsonDeserializationError>(error)) {
        return QString::fromUtf8(BadAnswer);
    }
    const QString message = QString::fromStdString(error->message);
    if (std::dynamic_pointer_cast<Core::DataTypes::NetworkError>(error)) {
        // A refused or unresolved address comes as the connection's "no connection";
        // what else it reports (an HTTP status, a broken transfer) is the network
        // library's English and means nothing to a shop owner.
        if (message == QString::fromUtf8(ConnectionNoConnection) || message.isEmpty()) {
            return QString::fromUtf8(NoConnection);
        }
        if (!IsRussian(message)) {
            return QString::fromUtf8(RequestFailed);
        }
        return message;
    }
    // The player's own failures (the database, a file) come in Russian already.
    return message.isEmpty() ? QString::fromUtf8(BadAnswer) : message;
}

} // namespace UI::Desktop

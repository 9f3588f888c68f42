#pragma once

#include "core/data_types/error.h"

#include <QString>

#include <memory>

namespace UI::Desktop {

// A failure put into the one or two Russian sentences a screen shows: the server's
// own message when it sent one, otherwise what went wrong and what to do about it.
// The technical detail stays in the event log, where support reads it.
class ScreenErrorText
{
public:
    ScreenErrorText() = delete;

    // Logs the failure as one of signing in, and words it.
    static QString For(const std::shared_ptr<Core::DataTypes::Error>& error);
    // Only the words, for a failure that has its own entry in the event log.
    static QString Wording(const std::shared_ptr<Core::DataTypes::Error>& error);

    static constexpr const char* NoConnection =
        "Нет связи с сервером. Проверьте подключение к интернету и адрес сервера, затем попробуйте ещё раз.";
    static constexpr const char* NoAnswer =
        "Сервер не отвечает. Проверьте подключение к интернету и попробуйте ещё раз.";
    static constexpr const char* RequestFailed = "Сервер не смог выполнить запрос. Попробуйте ещё раз позже; "
                                                 "если не получится, позвоните в поддержку.";
    static constexpr const char* BadAnswer = "Сервер ответил непонятно. Попробуйте ещё раз позже; если не "
                                             "получится, позвоните в поддержку.";
};

} // namespace UI::Desktop

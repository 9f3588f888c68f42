#include "core/data_types/api_error.h"

#include <utility>

namespace Core::DataTypes {

ApiError::ApiError(std::string message, std::int32_t code)
    : NetworkError(std::move(message))
    , code(code)
{
}

std::string ApiError::ToString() const
{
    // The code means nothing to a shop owner; the message already says it.
    return "Ошибка: " + message;
}

bool ApiError::IsWrongTokenError() const
{
    return code == WrongTokenCode;
}

bool ApiError::IsNoCertificateError() const
{
    return code == NoCertificateCode;
}

bool ApiError::IsAccountIsBlockedError() const
{
    return code == AccountIsBlockedCode;
}

bool ApiError::IsPlayerControlDisabledError() const
{
    return code == PlayerControlDisabledCode;
}

bool ApiError::IsCurrentIntervalNotFoundError() const
{
    return code == CurrentIntervalNotFoundCode;
}

bool ApiError::IsObjectExportedError() const
{
    return code == ObjectExportedCode;
}

} // namespace Core::DataTypes

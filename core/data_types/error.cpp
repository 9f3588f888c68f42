#include "core/data_types/error.h"

#include <utility>

namespace Core::DataTypes {

Error::Error(std::string message)
    : message(std::move(message))
{
}

std::string Error::ToString() const
{
    return "Error: " + message;
}

bool Error::IsWrongTokenError() const
{
    return false;
}

bool Error::IsNoCertificateError() const
{
    return false;
}

bool Error::IsAccountIsBlockedError() const
{
    return false;
}

bool Error::IsPlayerControlDisabledError() const
{
    return false;
}

bool Error::IsCurrentIntervalNotFoundError() const
{
    return false;
}

bool Error::IsObjectExportedError() const
{
    return false;
}

std::shared_ptr<Error> Error::CreateDataBaseError()
{
    return std::make_shared<Error>("Ошибка чтения/записи базы данных");
}

std::shared_ptr<Error> Error::CreateReadFileError()
{
    return std::make_shared<Error>("Ошибка чтения файла");
}

} // namespace Core::DataTypes

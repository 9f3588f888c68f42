#pragma once

#include <memory>
#include <string>

namespace Core::DataTypes {

// A failure that crosses a module boundary. Always made with std::make_shared of
// its concrete class and passed by shared pointer; callers ask the predicates
// instead of knowing the server's numeric codes.
class Error
{
public:
    Error() = default;
    explicit Error(std::string message);
    virtual ~Error() = default;

    Error(const Error&) = default;
    Error& operator=(const Error&) = default;

    virtual std::string ToString() const;
    virtual bool IsWrongTokenError() const;
    virtual bool IsNoCertificateError() const;
    virtual bool IsAccountIsBlockedError() const;
    virtual bool IsPlayerControlDisabledError() const;
    virtual bool IsCurrentIntervalNotFoundError() const;
    virtual bool IsObjectExportedError() const;

    static std::shared_ptr<Error> CreateDataBaseError();
    static std::shared_ptr<Error> CreateReadFileError();

    // Text for the user or the event log, UTF-8.
    std::string message;
};

} // namespace Core::DataTypes

#pragma once

#include "core/data_types/network_error.h"

#include <cstdint>

namespace Core::DataTypes {

// The server answered "success": false with a numeric code. Each predicate is the
// comparison of that code with the one constant the server uses for the condition.
class ApiError : public NetworkError
{
public:
    ApiError() = default;
    ApiError(std::string message, std::int32_t code);

    std::string ToString() const override;
    bool IsWrongTokenError() const override;
    bool IsNoCertificateError() const override;
    bool IsAccountIsBlockedError() const override;
    bool IsPlayerControlDisabledError() const override;
    bool IsCurrentIntervalNotFoundError() const override;
    bool IsObjectExportedError() const override;

    static constexpr std::int32_t WrongTokenCode = 403010;
    static constexpr std::int32_t NoCertificateCode = 403008;
    static constexpr std::int32_t AccountIsBlockedCode = 403003;
    static constexpr std::int32_t PlayerControlDisabledCode = 403001;
    static constexpr std::int32_t CurrentIntervalNotFoundCode = 404007;
    static constexpr std::int32_t ObjectExportedCode = 403013;

    std::int32_t code = 0;
};

} // namespace Core::DataTypes

#pragma once

#include "core/data_types/network_error.h"

namespace Core::DataTypes {

// The reply was not JSON, or lacked the "success" key every reply carries.
class JsonDeserializationError : public NetworkError
{
public:
    using NetworkError::NetworkError;

    std::string ToString() const override;
};

} // namespace Core::DataTypes

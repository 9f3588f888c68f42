#pragma once

#include "core/data_types/error.h"

namespace Core::DataTypes {

// A failure of a server request: no connection, a broken reply or an API error.
class NetworkError : public Error
{
public:
    using Error::Error;

    std::string ToString() const override;
};

} // namespace Core::DataTypes

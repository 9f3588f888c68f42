#include "core/data_types/network_error.h"

namespace Core::DataTypes {

std::string NetworkError::ToString() const
{
    return "Network error: " + message;
}

} // namespace Core::DataTypes

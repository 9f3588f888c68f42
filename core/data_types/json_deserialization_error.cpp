#include "core/data_types/json_deserialization_error.h"

namespace Core::DataTypes {

std::string JsonDeserializationError::ToString() const
{
    return "Json Deserialization error: " + message;
}

} // namespace Core::DataTypes

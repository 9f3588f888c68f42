#include "core/utilities/core_resources.h"

#include <QtGlobal>

#include <mutex>

// Q_INIT_RESOURCE must be used outside any namespace.
static void InitializeCoreDataResource()
{
    Q_INIT_RESOURCE(core_data);
    Q_INIT_RESOURCE(zelmar_sounds);
}

namespace Core::Utilities {

void CoreResources::Initialize()
{
    static std::once_flag once;
    std::call_once(once, InitializeCoreDataResource);
}

} // namespace Core::Utilities

#include "ui/ui_kit/ui_resources.h"

#include <QtGlobal>

#include <mutex>

// Q_INIT_RESOURCE must be used outside any namespace.
static void InitializeUiKitResources()
{
    Q_INIT_RESOURCE(ui_kit_resources);
}

namespace UI {

void UiResources::Initialize()
{
    static std::once_flag once;
    std::call_once(once, InitializeUiKitResources);
}

} // namespace UI

#include "ui/desktop/auth_navigation.h"

#include "ui/desktop/main_window_desktop.h"

#include <QStackedWidget>

namespace UI::Desktop {

void AuthNavigation::ShowPlayerInPlaceOfAuthScreens()
{
    MainWindowDesktop* window = MainWindowDesktop::sInstance;
    if (window == nullptr) {
        return;
    }
    // Each popped screen is destroyed on the next pass of the event loop, so the
    // screen whose callback this is may still finish its own code.
    while (window->Stack()->count() > 0) {
        MainWindowDesktop::PopCurrentWidget();
    }
    MainWindowDesktop::ShowPlayerWidget();
}

} // namespace UI::Desktop

#include "ui/desktop/sign_in_widget_desktop.h"

namespace UI::Desktop {

SignInWidgetDesktop::SignInWidgetDesktop(QWidget* parent)
    : QWidget(parent)
{
}

} // namespace UI::Desktop

#include "ui/desktop/player_widget_desktop.h"

namespace UI::Desktop {

PlayerWidgetDesktop::PlayerWidgetDesktop(QWidget* parent)
    : QWidget(parent)
{
}

} // namespace UI::Desktop

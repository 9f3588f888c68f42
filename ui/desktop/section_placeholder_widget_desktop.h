#pragma once

#include "ui/desktop/base_widget_desktop.h"

namespace UI::Desktop {

// Stands in the player frame for a section that is not built yet: its title and
// a line saying it is being prepared, so the side bar leads somewhere honest.
class SectionPlaceholderWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit SectionPlaceholderWidgetDesktop(const QString& title, QWidget* parent = nullptr);
};

} // namespace UI::Desktop

#include "ui/desktop/section_placeholder_widget_desktop.h"

namespace UI::Desktop {

SectionPlaceholderWidgetDesktop::SectionPlaceholderWidgetDesktop(const QString& title, QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    SetSource(QUrl(QStringLiteral("qrc:/ui_kit/screens/desktop/player/section_placeholder_widget.qml")));
    SetPropertyOfRoot("sectionTitle", title);
}

} // namespace UI::Desktop

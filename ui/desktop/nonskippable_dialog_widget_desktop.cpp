#include "ui/desktop/nonskippable_dialog_widget_desktop.h"

namespace UI::Desktop {

NonskippableDialogWidgetDesktop::NonskippableDialogWidgetDesktop(const QString& header, const QString& text,
                                                                 std::function<void()> onOk, QWidget* parent)
    : DialogWidgetDesktop(QUrl(QStringLiteral("qrc:/ui_kit/screens/desktop/nonskippable_dialog_widget.qml")),
                          header, text, std::move(onOk), {}, parent)
{
}

} // namespace UI::Desktop

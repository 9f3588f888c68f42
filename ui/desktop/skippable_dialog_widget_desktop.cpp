#include "ui/desktop/skippable_dialog_widget_desktop.h"

namespace UI::Desktop {

SkippableDialogWidgetDesktop::SkippableDialogWidgetDesktop(const QString& header, const QString& text,
                                                           std::function<void()> onOk,
                                                           std::function<void()> onCancel, QWidget* parent)
    : DialogWidgetDesktop(QUrl(QStringLiteral("qrc:/ui_kit/screens/desktop/skippable_dialog_widget.qml")),
                          header, text, std::move(onOk), std::move(onCancel), parent)
{
}

} // namespace UI::Desktop

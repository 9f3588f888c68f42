#pragma once

#include "ui/desktop/dialog_widget_desktop.h"

namespace UI::Desktop {

// A dialog with OK and Отмена; Escape is Отмена.
class SkippableDialogWidgetDesktop : public DialogWidgetDesktop
{
    Q_OBJECT

public:
    SkippableDialogWidgetDesktop(const QString& header, const QString& text, std::function<void()> onOk,
                                 std::function<void()> onCancel = {}, QWidget* parent = nullptr);
};

} // namespace UI::Desktop

#pragma once

#include "ui/desktop/dialog_widget_desktop.h"

namespace UI::Desktop {

// A dialog with OK only: the user must take note.
class NonskippableDialogWidgetDesktop : public DialogWidgetDesktop
{
    Q_OBJECT

public:
    NonskippableDialogWidgetDesktop(const QString& header, const QString& text,
                                    std::function<void()> onOk = {}, QWidget* parent = nullptr);
};

} // namespace UI::Desktop

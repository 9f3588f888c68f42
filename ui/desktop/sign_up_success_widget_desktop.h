#pragma once

#include "ui/desktop/base_widget_desktop.h"

namespace UI::Desktop {

// The end of sign-up: the account is ready; OK opens the player in place of the
// sign-up steps.
class SignUpSuccessWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit SignUpSuccessWidgetDesktop(QWidget* parent = nullptr);
    ~SignUpSuccessWidgetDesktop() override;

private slots:
    void OnOk();
};

} // namespace UI::Desktop

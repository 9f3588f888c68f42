#pragma once

#include "ui/desktop/base_widget_desktop.h"

namespace UI::Desktop {

// The full screen shown when the server has refused the sign-in itself (a sign-in
// on another device, a blocked account). Its OK forgets the sign-in here without
// asking the server, which has already ended it, and goes back to signing in.
class UnauthErrorWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    UnauthErrorWidgetDesktop(const QString& header, const QString& text, QWidget* parent = nullptr);

    // The variant for what only the service can resolve: the support phone and
    // e-mail shown large under the text (an empty one is left out).
    void ShowSupportContacts(const QString& phone, const QString& email);

private slots:
    void OnOk();

private:
    bool mDone = false;
};

} // namespace UI::Desktop

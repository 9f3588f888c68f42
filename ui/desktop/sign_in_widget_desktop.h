#pragma once

#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/desktop/server_choice.h"

#include <string>

namespace UI::Desktop {

// The first screen of a signed-out player: the server, the login and the password.
// Signing in asks the server for the account's points of sale and leads on to
// choosing one; the password is only sent once the user has been warned when it
// would travel unencrypted.
class SignInWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit SignInWidgetDesktop(QWidget* parent = nullptr);
    ~SignInWidgetDesktop() override;

private slots:
    void OnSignIn();
    void OnSignUp();
    void OnServerChanged();

private:
    void ShowError(const QString& text);
    void ShowSupportContacts();

    ServerChoice mServers;
    PendingRequest mRequest;
    // The address the user has been warned about: a second "Войти" for the same one
    // goes ahead.
    std::string mWarnedUrl;
};

} // namespace UI::Desktop

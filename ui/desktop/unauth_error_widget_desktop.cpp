#include "ui/desktop/unauth_error_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/main_window_desktop.h"

namespace UI::Desktop {

UnauthErrorWidgetDesktop::UnauthErrorWidgetDesktop(const QString& header, const QString& text,
                                                   QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    setObjectName(QStringLiteral("unauthErrorWidget"));
    SetSource(QUrl(QStringLiteral("qrc:/ui_kit/screens/desktop/unauth_error_widget.qml")));
    SetPropertyOfRoot("header", header);
    SetPropertyOfRoot("text", text);
    // The button's click and Enter both arrive as this one signal.
    ConnectQmlRoot("okClicked()", this, "OnOk()");
}

void UnauthErrorWidgetDesktop::ShowSupportContacts(const QString& phone, const QString& email)
{
    SetPropertyOfRoot("supportPhone", phone);
    SetPropertyOfRoot("supportEmail", email);
    SetPropertyOfRoot("contactVariant", true);
}

void UnauthErrorWidgetDesktop::OnOk()
{
    // Enter held down, or a click after Enter, must not clear twice or stack two
    // sign-in screens.
    if (mDone) {
        return;
    }
    mDone = true;
    Core::UserEnvironment::GetSignedInEnvironment([](std::shared_ptr<Core::UserEnvironment> environment) {
        if (environment) {
            environment->ClearStoredEnvironmentWithoutSigningOut();
        }
        MainWindowDesktop::PopAllWidgetsAndShowIntro();
    });
}

} // namespace UI::Desktop

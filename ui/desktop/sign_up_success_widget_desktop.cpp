#include "ui/desktop/sign_up_success_widget_desktop.h"

#include "ui/desktop/auth_navigation.h"

#include <QUrl>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/sign_up_success_widget.qml";

} // namespace

SignUpSuccessWidgetDesktop::SignUpSuccessWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    ConnectQmlChild(QStringLiteral("okButton"), "clicked()", this, "OnOk()");
}

SignUpSuccessWidgetDesktop::~SignUpSuccessWidgetDesktop() = default;

void SignUpSuccessWidgetDesktop::OnOk()
{
    AuthNavigation::ShowPlayerInPlaceOfAuthScreens();
}

} // namespace UI::Desktop

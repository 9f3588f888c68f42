#include "ui/desktop/sign_in_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/choose_object_widget_desktop.h"
#include "ui/desktop/enter_registration_data_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QCoreApplication>
#include <QPointer>
#include <QUrl>

#include <memory>
#include <vector>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/sign_in_widget.qml";

} // namespace

SignInWidgetDesktop::SignInWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mRequest([this](bool busy) { SetPropertyOfRoot("signingIn", busy); },
               [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("serversModel", QVariant::fromValue<QObject*>(mServers.Model()));
    SetPropertyOfRoot("versionText", QStringLiteral("Версия ") + QCoreApplication::applicationVersion());
    ConnectQmlChild(QStringLiteral("signInButton"), "clicked()", this, "OnSignIn()");
    ConnectQmlChild(QStringLiteral("signUpButton"), "clicked()", this, "OnSignUp()");
    ConnectQmlRoot("serverChanged()", this, "OnServerChanged()");

    QPointer<SignInWidgetDesktop> self(this);
    mServers.Load([self](int row) {
        if (self) {
            self->SetPropertyOfChild(QStringLiteral("serverChooser"), "currentIndex", row);
            self->ShowSupportContacts();
        }
    });
}

SignInWidgetDesktop::~SignInWidgetDesktop()
{
    // The document goes first: while it is torn down its items still signal this
    // screen, which reads the models and state that are destroyed after this body.
    setSource(QUrl());
}

void SignInWidgetDesktop::OnSignIn()
{
    if (mRequest.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfChild(QStringLiteral("serverChooser"), "addressError", QString());

    Core::DataTypes::Auth::Server server;
    QString addressError;
    const int row = GetPropertyOfChild(QStringLiteral("serverChooser"), "currentIndex").toInt();
    const QString address = GetPropertyOfChild(QStringLiteral("serverChooser"), "address").toString();
    if (!mServers.Resolve(row, address, &server, &addressError)) {
        SetPropertyOfChild(QStringLiteral("serverChooser"), "addressError", addressError);
        return;
    }
    const QString login = GetPropertyOfChild(QStringLiteral("loginField"), "text").toString().trimmed();
    const QString password = GetPropertyOfChild(QStringLiteral("passwordField"), "text").toString();
    if (login.isEmpty() || password.isEmpty()) {
        ShowError(login.isEmpty() && password.isEmpty() ? QStringLiteral("Введите логин и пароль.")
                  : login.isEmpty()                     ? QStringLiteral("Введите логин.")
                                                        : QStringLiteral("Введите пароль."));
        return;
    }
    if (ServerChoice::SendsInTheClear(server) && mWarnedUrl != server.url) {
        mWarnedUrl = server.url;
        SetPropertyOfChild(QStringLiteral("httpsWarning"), "text",
                           QStringLiteral("Этот сервер работает без шифрования: логин и пароль уйдут по сети "
                                          "открытым текстом. Если вы доверяете этой сети, нажмите «Войти» "
                                          "ещё раз."));
        return;
    }

    QPointer<SignInWidgetDesktop> self(this);
    const int ticket = mRequest.Start();
    const std::string loginText = login.toStdString();
    const std::string passwordText = password.toStdString();
    Core::UserEnvironment::PlaybackObjects(
        server, loginText, passwordText,
        [self, ticket, server, loginText,
         passwordText](std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>> objects) {
            if (!self || !self->mRequest.Finish(ticket)) {
                return;
            }
            if (objects.empty()) {
                self->ShowError(QStringLiteral("В этом аккаунте нет ни одной точки продаж. Добавьте точку в "
                                               "личном кабинете или позвоните в поддержку."));
                return;
            }
            MainWindowDesktop::PushWidget(
                new ChooseObjectWidgetDesktop(server, loginText, passwordText, objects));
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mRequest.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void SignInWidgetDesktop::OnSignUp()
{
    if (!mRequest.IsRunning()) {
        MainWindowDesktop::PushWidget(new EnterRegistrationDataWidgetDesktop());
    }
}

void SignInWidgetDesktop::OnServerChanged()
{
    // A warning holds for the address it was given about.
    mWarnedUrl.clear();
    SetPropertyOfChild(QStringLiteral("httpsWarning"), "text", QString());
    SetPropertyOfChild(QStringLiteral("serverChooser"), "addressError", QString());
    ShowSupportContacts();
}

void SignInWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

void SignInWidgetDesktop::ShowSupportContacts()
{
    Core::DataTypes::Auth::Server server;
    QString ignored;
    const int row = GetPropertyOfChild(QStringLiteral("serverChooser"), "currentIndex").toInt();
    const QString address = GetPropertyOfChild(QStringLiteral("serverChooser"), "address").toString();
    // A half-typed address still shows the contacts of the service it belongs to.
    if (!mServers.Resolve(row, address, &server, &ignored)) {
        mServers.Resolve(mServers.Model()->PreferredRow(), QString(), &server, &ignored);
    }
    SetPropertyOfRoot("supportPhone", QString::fromStdString(server.phone));
    SetPropertyOfRoot("supportEmail", QString::fromStdString(server.email));
    const QUrl privacy(QString::fromStdString(server.privacyPolicyUrl));
    const bool linkable = privacy.isValid() && (privacy.scheme() == QLatin1String("http") ||
                                                privacy.scheme() == QLatin1String("https"));
    SetPropertyOfRoot("privacyPolicyUrl",
                      linkable ? QString::fromLatin1(privacy.toEncoded(QUrl::FullyEncoded)) : QString());
}

} // namespace UI::Desktop

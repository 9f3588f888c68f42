#include "ui/desktop/confirm_phone_number_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/choose_business_type_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QPointer>
#include <QUrl>

#include <memory>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/sign_up_confirm_phone_widget.qml";

} // namespace

ConfirmPhoneNumberWidgetDesktop::ConfirmPhoneNumberWidgetDesktop(const Core::DataTypes::Auth::Server& server,
                                                                 const std::string& phone,
                                                                 const std::string& city,
                                                                 const std::string& code, QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mServer(server)
    , mPhone(phone)
    , mCity(city)
    , mCode(code)
    , mRequest([this](bool busy) { SetPropertyOfRoot("checking", busy); },
               [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
    , mResend([this](bool busy) { SetPropertyOfRoot("resending", busy); },
              [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("phone", QString::fromStdString(phone));
    ConnectQmlChild(QStringLiteral("nextButton"), "clicked()", this, "OnNext()");
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
    ConnectQmlChild(QStringLiteral("resendButton"), "clicked()", this, "OnResend()");
}

ConfirmPhoneNumberWidgetDesktop::~ConfirmPhoneNumberWidgetDesktop() = default;

void ConfirmPhoneNumberWidgetDesktop::OnNext()
{
    if (mRequest.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfChild(QStringLiteral("codeInput"), "errorText", QString());
    const QString typed = GetPropertyOfChild(QStringLiteral("codeField"), "text").toString().trimmed();
    if (typed.isEmpty()) {
        SetPropertyOfChild(QStringLiteral("codeInput"), "errorText", QStringLiteral("Введите код из SMS."));
        return;
    }
    if (typed.toStdString() != mCode) {
        SetPropertyOfChild(
            QStringLiteral("codeInput"), "errorText",
            QStringLiteral("Код не подходит. Проверьте его и введите ещё раз или запросите новый."));
        return;
    }

    QPointer<ConfirmPhoneNumberWidgetDesktop> self(this);
    const int ticket = mRequest.Start();
    const Core::DataTypes::Auth::Server server = mServer;
    Core::UserEnvironment::CreateAndStoreEnvironment(
        mServer, mPhone, mCity,
        [self, ticket, server](std::shared_ptr<Core::UserEnvironment> environment) {
            if (self) {
                self->mRequest.Finish(ticket);
            }
            // The account exists from here on, whether or not this screen still
            // waited: the questionnaire follows.
            MainWindowDesktop::PushWidget(new ChooseBusinessTypeWidgetDesktop(server, environment));
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::Error> error) {
            if (self && self->mRequest.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ConfirmPhoneNumberWidgetDesktop::OnBack()
{
    if (!mRequest.IsRunning()) {
        MainWindowDesktop::PopCurrentWidget();
    }
}

void ConfirmPhoneNumberWidgetDesktop::OnResend()
{
    if (mResend.IsRunning() || mRequest.IsRunning()) {
        return;
    }
    ShowError(QString());
    QPointer<ConfirmPhoneNumberWidgetDesktop> self(this);
    const int ticket = mResend.Start();
    Core::UserEnvironment::SendConfirmationCode(
        mServer, mPhone,
        [self, ticket](std::string code) {
            if (!self || !self->mResend.Finish(ticket)) {
                return;
            }
            if (code.empty()) {
                self->ShowError(QString::fromUtf8(ScreenErrorText::BadAnswer));
                return;
            }
            self->mCode = code;
            self->CallQmlFunction("restartCountdown");
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mResend.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ConfirmPhoneNumberWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

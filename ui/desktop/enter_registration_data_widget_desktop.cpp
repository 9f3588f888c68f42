#include "ui/desktop/enter_registration_data_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/confirm_phone_number_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"
#include "ui/ui_kit/ui_kit.h"

#include <QPointer>
#include <QStringList>
#include <QUrl>

#include <string>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/sign_up_phone_city_widget.qml";

// The digits of a number as people type it: spaces, dashes and brackets dropped.
QString PhoneDigits(const QString& typed)
{
    QString digits;
    for (const QChar character : typed) {
        if (character.isDigit()) {
            digits.append(character);
        } else if (!character.isSpace() && character != QLatin1Char('-') && character != QLatin1Char('(') &&
                   character != QLatin1Char(')')) {
            return {};
        }
    }
    return digits;
}

} // namespace

EnterRegistrationDataWidgetDesktop::EnterRegistrationDataWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mRequest([this](bool busy) { SetPropertyOfRoot("sending", busy); },
               [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("serversModel", QVariant::fromValue<QObject*>(mServers.Model()));
    ConnectQmlChild(QStringLiteral("nextButton"), "clicked()", this, "OnNext()");
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
    ConnectQmlRoot("serverChanged()", this, "OnServerChanged()");
    ConnectQmlRoot("cityEdited(QString)", this, "OnCityEdited(QString)");

    QPointer<EnterRegistrationDataWidgetDesktop> self(this);
    mServers.Load([self](int row) {
        if (self) {
            self->SetPropertyOfChild(QStringLiteral("serverChooser"), "currentIndex", row);
            self->OnServerChanged();
        }
    });
}

EnterRegistrationDataWidgetDesktop::~EnterRegistrationDataWidgetDesktop()
{
    // The document goes first: while it is torn down its items still signal this
    // screen, which reads the models and state that are destroyed after this body.
    setSource(QUrl());
}

void EnterRegistrationDataWidgetDesktop::OnNext()
{
    if (mRequest.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfChild(QStringLiteral("phoneInput"), "errorText", QString());
    SetPropertyOfChild(QStringLiteral("cityInput"), "errorText", QString());

    Core::DataTypes::Auth::Server server;
    if (!ChosenServer(&server)) {
        return;
    }
    const QString digits = PhoneDigits(GetPropertyOfChild(QStringLiteral("phoneField"), "text").toString());
    const int length = server.phoneSymbolLen;
    const QString city = GetPropertyOfChild(QStringLiteral("cityField"), "text").toString().simplified();
    bool valid = true;
    if (digits.size() != length) {
        SetPropertyOfChild(QStringLiteral("phoneInput"), "errorText",
                           QStringLiteral("Введите номер из %1 цифр, без кода страны.").arg(length));
        valid = false;
    }
    if (city.isEmpty()) {
        SetPropertyOfChild(QStringLiteral("cityInput"), "errorText", QStringLiteral("Введите город."));
        valid = false;
    }
    if (!valid) {
        return;
    }

    const std::string phone = server.phoneCountryCode + digits.toStdString();
    const std::string cityText = city.toStdString();
    QPointer<EnterRegistrationDataWidgetDesktop> self(this);
    const int ticket = mRequest.Start();
    Core::UserEnvironment::SendConfirmationCode(
        server, phone,
        [self, ticket, server, phone, cityText](std::string code) {
            if (!self || !self->mRequest.Finish(ticket)) {
                return;
            }
            if (code.empty()) {
                self->ShowError(QString::fromUtf8(ScreenErrorText::BadAnswer));
                return;
            }
            MainWindowDesktop::PushWidget(new ConfirmPhoneNumberWidgetDesktop(server, phone, cityText, code));
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mRequest.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void EnterRegistrationDataWidgetDesktop::OnBack()
{
    if (!mRequest.IsRunning()) {
        MainWindowDesktop::PopCurrentWidget();
    }
}

void EnterRegistrationDataWidgetDesktop::OnServerChanged()
{
    SetPropertyOfChild(QStringLiteral("serverChooser"), "addressError", QString());
    Core::DataTypes::Auth::Server server;
    QString ignored;
    const int row = GetPropertyOfChild(QStringLiteral("serverChooser"), "currentIndex").toInt();
    const QString address = GetPropertyOfChild(QStringLiteral("serverChooser"), "address").toString();
    if (!mServers.Resolve(row, address, &server, &ignored)) {
        mServers.Resolve(mServers.Model()->PreferredRow(), QString(), &server, &ignored);
    }
    SetPropertyOfRoot("phoneCountryCode", QString::fromStdString(server.phoneCountryCode));
}

void EnterRegistrationDataWidgetDesktop::OnCityEdited(const QString& text)
{
    QStringList cities;
    const int shown = UiKit::GetInstance().SuggestionCount();
    for (const std::string& city : Core::UserEnvironment::SuitableCities(text.trimmed().toStdString())) {
        const QString name = QString::fromStdString(city);
        // The city already typed in full needs no suggestion.
        if (name.compare(text.trimmed(), Qt::CaseInsensitive) == 0) {
            cities.clear();
            break;
        }
        if (cities.size() < shown) {
            cities.append(name);
        }
    }
    SetPropertyOfRoot("citySuggestionsModel", cities);
}

bool EnterRegistrationDataWidgetDesktop::ChosenServer(Core::DataTypes::Auth::Server* server)
{
    QString addressError;
    const int row = GetPropertyOfChild(QStringLiteral("serverChooser"), "currentIndex").toInt();
    const QString address = GetPropertyOfChild(QStringLiteral("serverChooser"), "address").toString();
    if (!mServers.Resolve(row, address, server, &addressError)) {
        SetPropertyOfChild(QStringLiteral("serverChooser"), "addressError", addressError);
        return false;
    }
    return true;
}

void EnterRegistrationDataWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

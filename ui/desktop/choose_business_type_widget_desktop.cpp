#include "ui/desktop/choose_business_type_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/choose_music_style_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QPointer>
#include <QUrl>

#include <utility>
#include <vector>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/sign_up_business_type_widget.qml";

} // namespace

ChooseBusinessTypeWidgetDesktop::ChooseBusinessTypeWidgetDesktop(
    const Core::DataTypes::Auth::Server& server, std::weak_ptr<Core::UserEnvironment> environment,
    QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mServer(server)
    , mEnvironment(std::move(environment))
    , mLoad([this](bool busy) { SetPropertyOfRoot("busy", busy); },
            [this]() {
                SetPropertyOfRoot("loadFailed", true);
                ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer));
            })
    , mSave([this](bool busy) { SetPropertyOfRoot("saving", busy); },
            [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("businessTypesModel", QVariant::fromValue<QObject*>(&mTypes));
    ConnectQmlChild(QStringLiteral("nextButton"), "clicked()", this, "OnNext()");
    ConnectQmlChild(QStringLiteral("retryButton"), "clicked()", this, "LoadTypes()");
    LoadTypes();
}

ChooseBusinessTypeWidgetDesktop::~ChooseBusinessTypeWidgetDesktop()
{
    // The document goes first: while it is torn down its items still signal this
    // screen, which reads the models and state that are destroyed after this body.
    setSource(QUrl());
}

void ChooseBusinessTypeWidgetDesktop::LoadTypes()
{
    if (mLoad.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfRoot("loadFailed", false);
    QPointer<ChooseBusinessTypeWidgetDesktop> self(this);
    const int ticket = mLoad.Start();
    Core::UserEnvironment::BusinessTypes(
        mServer,
        [self, ticket](std::vector<std::shared_ptr<Core::DataTypes::Auth::BusinessType>> types) {
            if (!self || !self->mLoad.Finish(ticket)) {
                return;
            }
            self->mTypes.SetTypes(types);
            if (self->mTypes.rowCount() == 0) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(
                    QStringLiteral("Сервер не прислал ни одного вида бизнеса. Попробуйте ещё раз."));
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoad.Finish(ticket)) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ChooseBusinessTypeWidgetDesktop::OnNext()
{
    if (mLoad.IsRunning() || mSave.IsRunning()) {
        return;
    }
    const int chosen = GetPropertyOfChild(QStringLiteral("signUpBusinessTypeScreen"), "chosenIndex").toInt();
    const Core::DataTypes::Auth::BusinessType* type = mTypes.TypeAt(chosen);
    if (type == nullptr) {
        ShowError(mTypes.rowCount() > 0
                      ? QStringLiteral("Выберите вид бизнеса.")
                      : QStringLiteral("Виды бизнеса не загрузились. Нажмите «Повторить»."));
        return;
    }
    const std::shared_ptr<Core::UserEnvironment> environment = mEnvironment.lock();
    if (!environment) {
        ShowError(
            QStringLiteral("Вход в аккаунт прерван. Перезапустите плеер и войдите по номеру телефона."));
        return;
    }
    ShowError(QString());
    QPointer<ChooseBusinessTypeWidgetDesktop> self(this);
    const int ticket = mSave.Start();
    environment->SetBusinessType(
        *type,
        [self, ticket]() {
            if (!self || !self->mSave.Finish(ticket)) {
                return;
            }
            MainWindowDesktop::PushWidget(
                new ChooseMusicStyleWidgetDesktop(self->mServer, self->mEnvironment));
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mSave.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ChooseBusinessTypeWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

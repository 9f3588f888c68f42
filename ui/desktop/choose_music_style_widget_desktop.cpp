#include "ui/desktop/choose_music_style_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"
#include "ui/desktop/sign_up_success_widget_desktop.h"

#include <QPointer>
#include <QUrl>

#include <utility>
#include <vector>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/sign_up_music_styles_widget.qml";

} // namespace

ChooseMusicStyleWidgetDesktop::ChooseMusicStyleWidgetDesktop(const Core::DataTypes::Auth::Server& server,
                                                             std::weak_ptr<Core::UserEnvironment> environment,
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
    SetPropertyOfRoot("musicStylesModel", QVariant::fromValue<QObject*>(&mStyles));
    ConnectQmlChild(QStringLiteral("nextButton"), "clicked()", this, "OnNext()");
    ConnectQmlChild(QStringLiteral("skipButton"), "clicked()", this, "OnSkip()");
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
    ConnectQmlChild(QStringLiteral("retryButton"), "clicked()", this, "LoadStyles()");
    LoadStyles();
}

ChooseMusicStyleWidgetDesktop::~ChooseMusicStyleWidgetDesktop()
{
    // The document goes first: while it is torn down its items still signal this
    // screen, which reads the models and state that are destroyed after this body.
    setSource(QUrl());
}

void ChooseMusicStyleWidgetDesktop::LoadStyles()
{
    if (mLoad.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfRoot("loadFailed", false);
    QPointer<ChooseMusicStyleWidgetDesktop> self(this);
    const int ticket = mLoad.Start();
    Core::UserEnvironment::MusicStyles(
        mServer,
        [self, ticket](std::vector<std::shared_ptr<Core::DataTypes::Auth::MusicStyle>> styles) {
            if (!self || !self->mLoad.Finish(ticket)) {
                return;
            }
            self->mStyles.SetStyles(styles);
            if (self->mStyles.rowCount() == 0) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(QStringLiteral("Сервер не прислал ни одного стиля. Попробуйте ещё раз или "
                                               "нажмите «Пропустить»."));
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoad.Finish(ticket)) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ChooseMusicStyleWidgetDesktop::OnNext()
{
    if (mLoad.IsRunning() || mSave.IsRunning()) {
        return;
    }
    const auto styles = mStyles.CheckedStyles();
    if (styles.empty()) {
        ShowError(QStringLiteral("Отметьте хотя бы один стиль или нажмите «Пропустить»."));
        return;
    }
    const std::shared_ptr<Core::UserEnvironment> environment = mEnvironment.lock();
    if (!environment) {
        ShowError(
            QStringLiteral("Вход в аккаунт прерван. Перезапустите плеер и войдите по номеру телефона."));
        return;
    }
    ShowError(QString());
    QPointer<ChooseMusicStyleWidgetDesktop> self(this);
    const int ticket = mSave.Start();
    environment->SetMusicStyles(
        styles,
        [self, ticket]() {
            if (self && self->mSave.Finish(ticket)) {
                MainWindowDesktop::PushWidget(new SignUpSuccessWidgetDesktop());
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mSave.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ChooseMusicStyleWidgetDesktop::OnSkip()
{
    if (!mSave.IsRunning()) {
        MainWindowDesktop::PushWidget(new SignUpSuccessWidgetDesktop());
    }
}

void ChooseMusicStyleWidgetDesktop::OnBack()
{
    if (!mSave.IsRunning()) {
        MainWindowDesktop::PopCurrentWidget();
    }
}

void ChooseMusicStyleWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

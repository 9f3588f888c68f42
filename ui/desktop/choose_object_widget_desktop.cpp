#include "ui/desktop/choose_object_widget_desktop.h"

#include "core/user_environment.h"
#include "ui/desktop/auth_navigation.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/nonskippable_dialog_widget_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QPointer>
#include <QUrl>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/auth/choose_object_widget.qml";

} // namespace

ChooseObjectWidgetDesktop::ChooseObjectWidgetDesktop(
    const Core::DataTypes::Auth::Server& server, const std::string& login, const std::string& password,
    const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects, QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mServer(server)
    , mLogin(login)
    , mPassword(password)
    , mRequest([this](bool busy) { SetPropertyOfRoot("busy", busy); },
               [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    mObjects.SetObjects(objects);
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("objectsModel", QVariant::fromValue<QObject*>(&mObjects));
    ConnectQmlRoot("objectChosen(int)", this, "OnObjectChosen(int)");
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
}

ChooseObjectWidgetDesktop::~ChooseObjectWidgetDesktop()
{
    // The document goes first: while it is torn down its items still signal this
    // screen, which reads the models and state that are destroyed after this body.
    setSource(QUrl());
}

void ChooseObjectWidgetDesktop::OnObjectChosen(int index)
{
    const Core::DataTypes::Auth::PlaybackObject* object = mObjects.ObjectAt(index);
    if (object == nullptr || mRequest.IsRunning()) {
        return;
    }
    ShowError(QString());
    QPointer<ChooseObjectWidgetDesktop> self(this);
    const int ticket = mRequest.Start();
    Core::UserEnvironment::CreateAndStoreEnvironment(
        mServer, *object, mLogin, mPassword,
        [self, ticket](std::shared_ptr<Core::UserEnvironment>) {
            // Signed in and stored even if the screen gave up waiting: the player is
            // where the user is going either way.
            if (self) {
                self->mRequest.Finish(ticket);
            }
            AuthNavigation::ShowPlayerInPlaceOfAuthScreens();
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::Error> error) {
            if (!self || !self->mRequest.Finish(ticket)) {
                return;
            }
            if (error && error->IsObjectExportedError()) {
                MainWindowDesktop::PushWidget(new NonskippableDialogWidgetDesktop(
                    QStringLiteral("Точка недоступна"),
                    QStringLiteral(
                        "Для этой точки включена выгрузка: плеер на ней сейчас не работает. Выберите "
                        "другую точку или позвоните в поддержку.")));
                return;
            }
            self->ShowError(ScreenErrorText::For(error));
        });
}

void ChooseObjectWidgetDesktop::OnBack()
{
    if (!mRequest.IsRunning()) {
        MainWindowDesktop::PopCurrentWidget();
    }
}

void ChooseObjectWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

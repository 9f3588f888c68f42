#include "ui/desktop/objects_widget_desktop.h"

#include "core/content_playing/player.h"
#include "core/user_environment.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"
#include "ui/desktop/skippable_dialog_widget_desktop.h"

#include <QPointer>
#include <QUrl>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/objects/objects_widget.qml";

} // namespace

ObjectsWidgetDesktop::ObjectsWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mLoad([this](bool busy) { SetPropertyOfRoot("loading", busy); },
            [this]() {
                SetPropertyOfRoot("loadFailed", true);
                ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer));
            })
    , mSwitch([this](bool busy) { SetPropertyOfRoot("busy", busy); },
              [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("objectsModel", QVariant::fromValue<QObject*>(&mObjects));
    ConnectQmlRoot("objectChosen(int)", this, "OnObjectChosen(int)");
    ConnectQmlChild(QStringLiteral("retryButton"), "clicked()", this, "OnRetry()");

    QPointer<ObjectsWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (!self || !environment) {
            return;
        }
        self->mEnvironment = environment;
        self->Load();
    });
}

ObjectsWidgetDesktop::~ObjectsWidgetDesktop()
{
    // The document goes first: its items signal this screen while they are torn down.
    setSource(QUrl());
}

void ObjectsWidgetDesktop::Load()
{
    const auto environment = mEnvironment.lock();
    if (!environment || mLoad.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfRoot("loadFailed", false);
    QPointer<ObjectsWidgetDesktop> self(this);
    const int ticket = mLoad.Start();
    environment->PlaybackObjects(
        [self, ticket](std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>> objects) {
            if (self && self->mLoad.Finish(ticket)) {
                self->ShowObjects(objects);
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoad.Finish(ticket)) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void ObjectsWidgetDesktop::ShowObjects(
    const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects)
{
    mObjects.SetObjects(objects);
    MarkCurrentObject();
}

void ObjectsWidgetDesktop::MarkCurrentObject()
{
    const auto environment = mEnvironment.lock();
    int current = -1;
    if (environment) {
        const int currentId = environment->CurrentPlaybackObject().id;
        for (int row = 0; row < mObjects.rowCount(); ++row) {
            if (mObjects.ObjectAt(row)->id == currentId) {
                current = row;
                break;
            }
        }
    }
    SetPropertyOfRoot("currentIndex", current);
}

void ObjectsWidgetDesktop::OnObjectChosen(int index)
{
    const Core::DataTypes::Auth::PlaybackObject* chosen = mObjects.ObjectAt(index);
    const auto environment = mEnvironment.lock();
    if (chosen == nullptr || !environment || mSwitch.IsRunning() ||
        chosen->id == environment->CurrentPlaybackObject().id) {
        return;
    }
    const Core::DataTypes::Auth::PlaybackObject object = *chosen;
    const QString name = mObjects.data(mObjects.index(index), PlaybackObjectsListModel::NameRole).toString();
    QPointer<ObjectsWidgetDesktop> self(this);
    MainWindowDesktop::PushWidget(new SkippableDialogWidgetDesktop(
        QStringLiteral("Смена объекта"),
        QStringLiteral("Переключиться на «%1»? Воспроизведение начнётся заново").arg(name), [self, object]() {
            if (self) {
                self->SwitchTo(object);
            }
        }));
}

void ObjectsWidgetDesktop::SwitchTo(const Core::DataTypes::Auth::PlaybackObject& object)
{
    const auto environment = mEnvironment.lock();
    if (!environment || mSwitch.IsRunning()) {
        return;
    }
    ShowError(QString());
    QPointer<ObjectsWidgetDesktop> self(this);
    const std::weak_ptr<Core::UserEnvironment> weakEnvironment = environment;
    const int ticket = mSwitch.Start();
    environment->ChoosePlaybackObject(
        object,
        [self, ticket, weakEnvironment]() {
            // The new schedule plays even if the owner has left this screen meanwhile:
            // the switch stopped the music, and only a start brings it back.
            if (const auto current = weakEnvironment.lock()) {
                const auto player = current->GetContentPlayer();
                if (player && !current->PlayerStartIsDelayed()) {
                    player->Start();
                }
            }
            if (self && self->mSwitch.Finish(ticket)) {
                self->MarkCurrentObject();
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::Error> error) {
            if (!self || !self->mSwitch.Finish(ticket)) {
                return;
            }
            // A failed sign-out keeps the old point of sale; a schedule that could not
            // be loaded leaves the new one chosen. Either way the mark tells the truth.
            self->MarkCurrentObject();
            self->ShowError(ScreenErrorText::For(error));
        });
}

void ObjectsWidgetDesktop::OnRetry()
{
    Load();
}

void ObjectsWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

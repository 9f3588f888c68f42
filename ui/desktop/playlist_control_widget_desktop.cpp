#include "ui/desktop/playlist_control_widget_desktop.h"

#include "core/user_environment.h"
#include "core/utilities/logger.h"
#include "ui/desktop/backdrop_image_provider.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QPointer>
#include <QQmlEngine>
#include <QQuickItem>
#include <QStackedWidget>
#include <QUrl>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/contents/set_playlist_widget.qml";

} // namespace

PlaylistControlWidgetDesktop::PlaylistControlWidgetDesktop(
    std::shared_ptr<Core::UserEnvironment> environment, Core::DataTypes::Playlists::PlaylistContentType type,
    const Core::DataTypes::Playlists::Playlist& playlist,
    const Core::DataTypes::Playlists::ContentPlaylistSettings& settings, bool deactivate,
    std::function<void()> onChanged, QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mType(type)
    , mPlaylist(playlist)
    , mDeactivate(deactivate)
    , mOnChanged(std::move(onChanged))
    , mEnvironment(environment)
    , mRequest([this](bool busy) { SetPropertyOfRoot("busy", busy); },
               [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    // The card sits over a picture of the screen it was opened from, as a dialog does.
    QImage backdrop;
    if (MainWindowDesktop::sInstance != nullptr) {
        if (QWidget* covered = MainWindowDesktop::sInstance->Stack()->currentWidget()) {
            backdrop = covered->grab().toImage();
        }
    }
    engine()->addImageProvider(QStringLiteral("backdrop"), new BackdropImageProvider(backdrop));
    SetSource(QUrl(QString::fromLatin1(Document)));
    if (!backdrop.isNull()) {
        SetPropertyOfRoot("backdropSource", QUrl(QStringLiteral("image://backdrop/screen")));
    }
    SetPropertyOfRoot("playlistName", QString::fromStdString(playlist.name));
    SetPropertyOfRoot("deactivate", deactivate);
    // Where the section already plays by parts of the day, that is what the owner is
    // most likely to adjust; the parts this playlist holds start switched on.
    SetPropertyOfRoot("byParts", settings.advanced);
    if (settings.advanced) {
        SetPropertyOfRoot("morning", settings.morningPlaylistId == playlist.id);
        SetPropertyOfRoot("day", settings.dayPlaylistId == playlist.id);
        SetPropertyOfRoot("evening", settings.eveningPlaylistId == playlist.id);
        SetPropertyOfRoot("night", settings.nightPlaylistId == playlist.id);
    }
    ConnectQmlRoot("okClicked()", this, "OnOk()");
    ConnectQmlRoot("cancelClicked()", this, "OnCancel()");
}

PlaylistControlWidgetDesktop::~PlaylistControlWidgetDesktop()
{
    setSource(QUrl());
}

bool PlaylistControlWidgetDesktop::RootFlag(const char* name) const
{
    return rootObject() != nullptr && rootObject()->property(name).toBool();
}

void PlaylistControlWidgetDesktop::OnOk()
{
    const auto environment = mEnvironment.lock();
    if (mClosed || mRequest.IsRunning()) {
        return;
    }
    if (!environment) {
        ShowError(QString::fromUtf8(ScreenErrorText::RequestFailed));
        return;
    }
    const bool byParts = RootFlag("byParts");
    const bool morning = RootFlag("morning");
    const bool day = RootFlag("day");
    const bool evening = RootFlag("evening");
    const bool night = RootFlag("night");
    if (!mDeactivate && byParts && !(morning || day || evening || night)) {
        ShowError(QStringLiteral("Выберите хотя бы одну часть дня."));
        return;
    }
    ShowError(QString());
    QPointer<PlaylistControlWidgetDesktop> self(this);
    const int ticket = mRequest.Start();
    const auto done = [self, ticket]() {
        if (self && self->mRequest.Finish(ticket)) {
            self->Changed();
        }
    };
    const auto failed = [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
        if (self && self->mRequest.Finish(ticket)) {
            self->ShowError(ScreenErrorText::For(error));
        }
    };
    if (mDeactivate) {
        environment->DeactivatePlaylist(mType, mPlaylist, done, failed);
    } else if (byParts) {
        environment->SetPlaylistAsActiveForPeriods(mType, mPlaylist, morning, day, evening, night, done,
                                                   failed);
    } else {
        environment->SetPlaylistAsActive(mType, mPlaylist, done, failed);
    }
}

void PlaylistControlWidgetDesktop::Changed()
{
    // The server builds the schedule from the playlist settings: the player learns
    // of the change only from a new configuration.
    if (const auto environment = mEnvironment.lock()) {
        environment->LoadPlaybackConfiguration(
            [](bool, const std::string&) {},
            [](std::shared_ptr<Core::DataTypes::Error> error) {
                Core::Utilities::Logger::Log("Не удалось загрузить конфигурацию после смены плейлиста: " +
                                             (error ? error->ToString() : std::string()));
            });
    }
    const std::function<void()> onChanged = mOnChanged;
    Close();
    if (onChanged) {
        onChanged();
    }
}

void PlaylistControlWidgetDesktop::OnCancel()
{
    if (!mRequest.IsRunning()) {
        Close();
    }
}

void PlaylistControlWidgetDesktop::Close()
{
    if (mClosed) {
        return;
    }
    mClosed = true;
    if (MainWindowDesktop::sInstance == nullptr) {
        return;
    }
    QStackedWidget* stack = MainWindowDesktop::sInstance->Stack();
    if (stack->currentWidget() == this) {
        MainWindowDesktop::PopCurrentWidget();
    } else if (stack->indexOf(this) >= 0) {
        // Something was shown over the card meanwhile (an account error): the card
        // goes without disturbing it.
        stack->removeWidget(this);
        setParent(nullptr);
        deleteLater();
    }
}

void PlaylistControlWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop

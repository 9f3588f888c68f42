#include "ui/desktop/playlists_widget_desktop.h"

#include "core/data_types/playlists/playlists_settings.h"
#include "core/user_environment.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/playlist_control_widget_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QPointer>
#include <QUrl>

namespace UI::Desktop {

using Core::DataTypes::Playlists::PlaylistContentType;

PlaylistsWidgetDesktop::PlaylistsWidgetDesktop(std::vector<PlaylistContentType> types,
                                               const QString& document, QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mTypes(std::move(types))
    , mLoad([this](bool busy) { SetPropertyOfRoot("loading", busy); },
            [this]() {
                SetPropertyOfRoot("loadFailed", true);
                ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer));
            })
    , mLoadTracks([this](bool busy) { SetPropertyOfRoot("tracksLoading", busy); },
                  [this]() { ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer)); })
{
    SetSource(QUrl(document));
    SetPropertyOfRoot("playlistsModel", QVariant::fromValue<QObject*>(&mPlaylists));
    SetPropertyOfRoot("tracksModel", QVariant::fromValue<QObject*>(&mTracks));
    ConnectQmlRoot("playlistChosen(int)", this, "OnPlaylistChosen(int)");
    ConnectQmlRoot("searchTextChanged(QString)", this, "OnSearchTextChanged(QString)");
    ConnectQmlRoot("tracksBackClicked()", this, "OnTracksBack()");
    ConnectQmlChild(QStringLiteral("activateButton"), "clicked()", this, "OnActivate()");
    ConnectQmlChild(QStringLiteral("deactivateButton"), "clicked()", this, "OnDeactivate()");
    ConnectQmlChild(QStringLiteral("retryButton"), "clicked()", this, "OnRetry()");

    QPointer<PlaylistsWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (!self || !environment) {
            return;
        }
        self->mEnvironment = environment;
        self->Reload();
    });
}

PlaylistsWidgetDesktop::~PlaylistsWidgetDesktop()
{
    // The document goes first: its items signal this screen while they are torn down.
    setSource(QUrl());
}

void PlaylistsWidgetDesktop::Reload()
{
    if (mEnvironment.expired() || mTypes.empty()) {
        return;
    }
    // A reload during a load starts over: the earlier answers are then late ones.
    ShowError(QString());
    SetPropertyOfRoot("loadFailed", false);
    mLoadTicket = mLoad.Start();
    LoadCatalogue(0, mLoadTicket, std::make_shared<Entries>());
}

bool PlaylistsWidgetDesktop::StillLoading(int ticket) const
{
    return mLoad.IsRunning() && ticket == mLoadTicket;
}

void PlaylistsWidgetDesktop::LoadCatalogue(std::size_t typeIndex, int ticket,
                                           std::shared_ptr<Entries> entries)
{
    if (typeIndex == mTypes.size()) {
        LoadSettings(ticket, entries);
        return;
    }
    const auto environment = mEnvironment.lock();
    if (!environment) {
        mLoad.Finish(ticket);
        return;
    }
    const PlaylistContentType type = mTypes[typeIndex];
    QPointer<PlaylistsWidgetDesktop> self(this);
    environment->Playlists(
        type,
        [self, ticket, type, typeIndex,
         entries](std::vector<std::shared_ptr<Core::DataTypes::Playlists::Playlist>> playlists) {
            if (!self || !self->StillLoading(ticket)) {
                return;
            }
            for (const auto& playlist : playlists) {
                if (playlist) {
                    entries->push_back({type, *playlist});
                }
            }
            self->LoadCatalogue(typeIndex + 1, ticket, entries);
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoad.Finish(ticket)) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void PlaylistsWidgetDesktop::LoadSettings(int ticket, std::shared_ptr<Entries> entries)
{
    const auto environment = mEnvironment.lock();
    if (!environment) {
        mLoad.Finish(ticket);
        return;
    }
    QPointer<PlaylistsWidgetDesktop> self(this);
    environment->LoadPlaylistsSettings(
        [self, ticket, entries](std::shared_ptr<Core::DataTypes::Playlists::PlaylistsSettings> settings) {
            if (!self || !self->mLoad.Finish(ticket)) {
                return;
            }
            if (settings) {
                switch (self->mTypes.front()) {
                case PlaylistContentType::Video:
                    self->mSettings = settings->video;
                    break;
                case PlaylistContentType::Photo:
                    self->mSettings = settings->photo;
                    break;
                default:
                    self->mSettings = settings->music;
                    break;
                }
            }
            self->ShowPlaylists(std::move(*entries));
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoad.Finish(ticket)) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void PlaylistsWidgetDesktop::ShowPlaylists(Entries entries)
{
    if (mOpened) {
        // The opened playlist takes what the server says now, its active mark above all.
        for (const auto& entry : entries) {
            if (entry.type == mOpened->type && entry.playlist.id == mOpened->playlist.id) {
                mOpened = entry;
                break;
            }
        }
    }
    mPlaylists.SetPlaylists(std::move(entries));
    SetPropertyOfRoot("loaded", true);
    ShowOpenedPlaylist();
}

void PlaylistsWidgetDesktop::OnPlaylistChosen(int row)
{
    const PlaylistsListModel::Entry* entry = mPlaylists.EntryAt(row);
    if (entry == nullptr) {
        return;
    }
    mOpened = *entry;
    mTracks.Clear();
    ShowError(QString());
    ShowOpenedPlaylist();
    LoadTracks();
}

void PlaylistsWidgetDesktop::ShowOpenedPlaylist()
{
    SetPropertyOfRoot("tracksShown", mOpened.has_value());
    if (!mOpened) {
        return;
    }
    SetPropertyOfRoot("openedName", QString::fromStdString(mOpened->playlist.name));
    SetPropertyOfRoot("openedImage", QString::fromStdString(mOpened->playlist.image));
    SetPropertyOfRoot("openedTracksCount", mOpened->playlist.tracksCount);
    SetPropertyOfRoot("openedSizeText", PlaylistsListModel::SizeText(mOpened->playlist.contentSizeBytes));
    SetPropertyOfRoot("openedActive", mOpened->playlist.active);
}

void PlaylistsWidgetDesktop::LoadTracks()
{
    const auto environment = mEnvironment.lock();
    if (!environment || !mOpened) {
        return;
    }
    QPointer<PlaylistsWidgetDesktop> self(this);
    // A playlist opened while another's tracks are on their way supersedes them:
    // a new ticket makes the earlier answer a late one.
    const int ticket = mLoadTracks.Start();
    environment->TracksOfPlaylist(
        mOpened->type, mOpened->playlist,
        [self, ticket](std::shared_ptr<std::vector<Core::DataTypes::Playlists::Track>> tracks) {
            if (self && self->mLoadTracks.Finish(ticket)) {
                self->mTracks.SetTracks(tracks);
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoadTracks.Finish(ticket)) {
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void PlaylistsWidgetDesktop::OnSearchTextChanged(const QString& text)
{
    mPlaylists.SetFilter(text);
}

void PlaylistsWidgetDesktop::OnTracksBack()
{
    mOpened.reset();
    mTracks.Clear();
    ShowError(QString());
    ShowOpenedPlaylist();
}

void PlaylistsWidgetDesktop::OnActivate()
{
    OpenControl(false);
}

void PlaylistsWidgetDesktop::OnDeactivate()
{
    OpenControl(true);
}

void PlaylistsWidgetDesktop::OpenControl(bool deactivate)
{
    const auto environment = mEnvironment.lock();
    if (!mOpened || !environment) {
        return;
    }
    QPointer<PlaylistsWidgetDesktop> self(this);
    MainWindowDesktop::PushWidget(new PlaylistControlWidgetDesktop(
        environment, mOpened->type, mOpened->playlist, mSettings, deactivate, [self]() {
            if (self) {
                self->Reload();
            }
        }));
}

void PlaylistsWidgetDesktop::OnRetry()
{
    Reload();
}

void PlaylistsWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfRoot("errorText", text);
}

} // namespace UI::Desktop

#pragma once

#include "core/data_types/playlists/content_playlist_settings.h"
#include "core/data_types/playlists/playlist_content_type.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/list_models/playlists_list_model.h"
#include "ui/list_models/tracks_list_model.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// One content section's catalogue: its playlists as cards with the active ones
// marked, a search over their names, and an opened playlist's tracks with the
// buttons that switch it on or off for this point of sale. The music, video and
// photo sections differ only in the catalogues they list and their document.
class PlaylistsWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    ~PlaylistsWidgetDesktop() override;

    // Asks the server again for the catalogue and which playlists are active; an
    // opened playlist stays open.
    void Reload();

protected:
    // `types`: the catalogues the section lists, in that order; the first names the
    // section's playlist settings.
    PlaylistsWidgetDesktop(std::vector<Core::DataTypes::Playlists::PlaylistContentType> types,
                           const QString& document, QWidget* parent);

private slots:
    void OnPlaylistChosen(int row);
    void OnSearchTextChanged(const QString& text);
    void OnTracksBack();
    void OnActivate();
    void OnDeactivate();
    void OnRetry();

private:
    using Entries = std::vector<PlaylistsListModel::Entry>;

    void LoadCatalogue(std::size_t typeIndex, int ticket, std::shared_ptr<Entries> entries);
    void LoadSettings(int ticket, std::shared_ptr<Entries> entries);
    bool StillLoading(int ticket) const;
    void ShowPlaylists(Entries entries);
    void ShowOpenedPlaylist();
    void LoadTracks();
    void OpenControl(bool deactivate);
    void ShowError(const QString& text);

    std::vector<Core::DataTypes::Playlists::PlaylistContentType> mTypes;
    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    PlaylistsListModel mPlaylists;
    TracksListModel mTracks;
    Core::DataTypes::Playlists::ContentPlaylistSettings mSettings;
    std::optional<PlaylistsListModel::Entry> mOpened;
    PendingRequest mLoad;
    PendingRequest mLoadTracks;
    int mLoadTicket = 0;
};

} // namespace UI::Desktop

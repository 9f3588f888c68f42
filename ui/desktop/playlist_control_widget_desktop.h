#pragma once

#include "core/data_types/playlists/content_playlist_settings.h"
#include "core/data_types/playlists/playlist.h"
#include "core/data_types/playlists/playlist_content_type.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"

#include <functional>
#include <memory>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// Switches a catalogue playlist on for the point of sale — all day, or only for the
// parts of the day the owner picks — or off again, as a card over the dimmed screen.
// Once the server has taken the change, the configuration is loaded again so the
// player plays what was chosen, and `onChanged` lets the catalogue show it.
class PlaylistControlWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    PlaylistControlWidgetDesktop(std::shared_ptr<Core::UserEnvironment> environment,
                                 Core::DataTypes::Playlists::PlaylistContentType type,
                                 const Core::DataTypes::Playlists::Playlist& playlist,
                                 const Core::DataTypes::Playlists::ContentPlaylistSettings& settings,
                                 bool deactivate, std::function<void()> onChanged, QWidget* parent = nullptr);
    ~PlaylistControlWidgetDesktop() override;

private slots:
    void OnOk();
    void OnCancel();

private:
    void Changed();
    void Close();
    void ShowError(const QString& text);
    bool RootFlag(const char* name) const;

    Core::DataTypes::Playlists::PlaylistContentType mType;
    Core::DataTypes::Playlists::Playlist mPlaylist;
    bool mDeactivate = false;
    std::function<void()> mOnChanged;
    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    PendingRequest mRequest;
    bool mClosed = false;
};

} // namespace UI::Desktop

#pragma once

#include "ui/desktop/playlists_widget_desktop.h"

namespace UI::Desktop {

// The music catalogue: the service's stock playlists first, then the account's own uploads; both share the
// section's playlist settings.
class MusicPlaylistsWidgetDesktop : public PlaylistsWidgetDesktop
{
    Q_OBJECT

public:
    explicit MusicPlaylistsWidgetDesktop(QWidget* parent = nullptr);
};

} // namespace UI::Desktop

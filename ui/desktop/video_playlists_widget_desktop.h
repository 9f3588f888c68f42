#pragma once

#include "ui/desktop/playlists_widget_desktop.h"

namespace UI::Desktop {

// The video catalogue.
class VideoPlaylistsWidgetDesktop : public PlaylistsWidgetDesktop
{
    Q_OBJECT

public:
    explicit VideoPlaylistsWidgetDesktop(QWidget* parent = nullptr);
};

} // namespace UI::Desktop

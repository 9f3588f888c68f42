#pragma once

#include "ui/desktop/playlists_widget_desktop.h"

namespace UI::Desktop {

// The photo catalogue.
class PhotoPlaylistsWidgetDesktop : public PlaylistsWidgetDesktop
{
    Q_OBJECT

public:
    explicit PhotoPlaylistsWidgetDesktop(QWidget* parent = nullptr);
};

} // namespace UI::Desktop

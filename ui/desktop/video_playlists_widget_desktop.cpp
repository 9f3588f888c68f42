#include "ui/desktop/video_playlists_widget_desktop.h"

namespace UI::Desktop {

using Core::DataTypes::Playlists::PlaylistContentType;

VideoPlaylistsWidgetDesktop::VideoPlaylistsWidgetDesktop(QWidget* parent)
    : PlaylistsWidgetDesktop(
          {PlaylistContentType::Video},
          QStringLiteral("qrc:/ui_kit/screens/desktop/player/contents/video/video_playlists_widget.qml"),
          parent)
{
}

} // namespace UI::Desktop

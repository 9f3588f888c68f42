#include "ui/desktop/photo_playlists_widget_desktop.h"

namespace UI::Desktop {

using Core::DataTypes::Playlists::PlaylistContentType;

PhotoPlaylistsWidgetDesktop::PhotoPlaylistsWidgetDesktop(QWidget* parent)
    : PlaylistsWidgetDesktop(
          {PlaylistContentType::Photo},
          QStringLiteral("qrc:/ui_kit/screens/desktop/player/contents/photo/photo_playlists_widget.qml"),
          parent)
{
}

} // namespace UI::Desktop

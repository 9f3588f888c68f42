#include "ui/desktop/music_playlists_widget_desktop.h"

namespace UI::Desktop {

using Core::DataTypes::Playlists::PlaylistContentType;

MusicPlaylistsWidgetDesktop::MusicPlaylistsWidgetDesktop(QWidget* parent)
    : PlaylistsWidgetDesktop(
          {PlaylistContentType::StockMusic, PlaylistContentType::Music},
          QStringLiteral("qrc:/ui_kit/screens/desktop/player/contents/music/music_playlists_widget.qml"),
          parent)
{
}

} // namespace UI::Desktop

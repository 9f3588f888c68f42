import QtQuick 2.15
import ".."

// The music section's catalogue.
PlaylistsPage {
    objectName: "musicPlaylistsScreen"
    coverPlaceholder: UiKit.PlaylistMusicCoverImage
    countForms: ["трек", "трека", "треков"]
}

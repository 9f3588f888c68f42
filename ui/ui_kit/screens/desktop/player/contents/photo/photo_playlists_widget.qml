import QtQuick 2.15
import ".."

// The photo section's catalogue.
PlaylistsPage {
    objectName: "photoPlaylistsScreen"
    coverPlaceholder: UiKit.PlaylistPhotoCoverImage
    countForms: ["фото", "фото", "фото"]
}

import QtQuick 2.15
import ".."

// The video section's catalogue.
PlaylistsPage {
    objectName: "videoPlaylistsScreen"
    coverPlaceholder: UiKit.PlaylistVideoCoverImage
    countForms: ["ролик", "ролика", "роликов"]
}

import QtQuick 2.15
import QtQuick.Controls 2.15

// The scroll bar of the pages and lists that scroll: on show whenever there is more
// than fits, so that a person sees from across the room that the page goes on
// below, and hidden when everything fits. A long list keeps a handle big enough to
// see and to take hold of.
ScrollBar {
    policy: size < 1 ? ScrollBar.AlwaysOn : ScrollBar.AlwaysOff
    minimumSize: UiKit.IconButtonSize / Math.max(height, 1)
    contentItem: Rectangle {
        implicitWidth: UiKit.SpacingSmall
        radius: width / 2
        color: UiKit.ScrollBarColor
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15

// The frame of the sign-in and sign-up screens: their content in one column in the
// middle of the background, scrolling when the window is too short for it, and the
// full-screen activity indicator over everything while `busy`.
Rectangle {
    id: page

    default property alias content: column.data
    property bool busy: false
    // Where the content begins in the window, for what opens over the page (a
    // drop-down) and has to stop at the window's edge.
    readonly property real contentTop: column.y - flickable.contentY

    color: UiKit.ScreenBackgroundColor

    Flickable {
        id: flickable
        anchors.fill: parent
        contentWidth: width
        contentHeight: Math.max(height, column.height + 2 * UiKit.SpacingLarge)
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ZScrollBar {}

        Column {
            id: column
            width: Math.min(UiKit.AuthCardWidth, flickable.width - 2 * UiKit.ScreenMargin)
            x: (flickable.width - width) / 2
            y: Math.max(UiKit.SpacingLarge, (flickable.height - height) / 2)
            spacing: UiKit.SpacingMedium
        }
    }

    ZThrobber {
        objectName: "fullScreenThrobber"
        anchors.fill: parent
        visible: page.busy
    }
}

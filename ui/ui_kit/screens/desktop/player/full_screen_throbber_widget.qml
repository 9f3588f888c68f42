import QtQuick 2.15
import "../components"

// The activity indicator over the whole player frame while a long request runs:
// the frame's picture behind it, dimmed, and nothing of it reachable until the
// answer comes.
Item {
    id: overlay

    property url backdropSource: ""

    Rectangle {
        anchors.fill: parent
        color: UiKit.ScreenBackgroundColor
    }
    Image {
        anchors.fill: parent
        source: overlay.backdropSource
        fillMode: Image.Stretch
        cache: false
    }
    ZThrobber {
        objectName: "fullScreenThrobber"
        anchors.fill: parent
    }
}

import QtQuick 2.15
import "../components"

// A section of the player that is not built yet: its title, and one line saying
// so, rather than an empty area or made-up content.
Rectangle {
    id: placeholder
    objectName: "sectionPlaceholder"

    property string sectionTitle: ""

    color: UiKit.ScreenBackgroundColor

    Column {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.top: parent.top
        anchors.margins: UiKit.ScreenMargin
        spacing: UiKit.SpacingSmall

        ZScreenTitle {
            objectName: "sectionTitleText"
            width: parent.width
            text: placeholder.sectionTitle
        }
        ZBodyText {
            objectName: "sectionNoticeText"
            width: parent.width
            secondary: true
            text: "Этот раздел готовится и скоро появится здесь."
        }
    }
}

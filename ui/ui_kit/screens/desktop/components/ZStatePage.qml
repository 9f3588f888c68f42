import QtQuick 2.15
import QtQuick.Controls 2.15

// A page that stands in for the music when the player cannot play: a picture, a
// heading and a sentence or two on a card in the middle, read from across the shop,
// and under them what the state offers (clocks, a button), which is placed inside.
// The card scrolls when the window is too short for it.
Rectangle {
    id: page

    default property alias content: extra.data
    property url imageSource
    property color imageBackground: UiKit.AccentSoftBackground
    property string title: ""
    property string text: ""

    color: UiKit.ScreenBackgroundColor

    Flickable {
        id: flickable
        anchors.fill: parent
        contentWidth: width
        contentHeight: Math.max(height, card.height + 2 * UiKit.SpacingLarge)
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ZScrollBar {}

        ZCard {
            id: card
            width: Math.min(UiKit.AuthCardWidth, flickable.width - 2 * UiKit.ScreenMargin)
            height: column.implicitHeight + 2 * UiKit.CardPadding
            x: (flickable.width - width) / 2
            y: Math.max(UiKit.SpacingLarge, (flickable.height - height) / 2)
            Accessible.role: Accessible.AlertMessage
            Accessible.name: page.title

            Column {
                id: column
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.top: parent.top
                anchors.margins: UiKit.CardPadding
                spacing: UiKit.SpacingMedium

                Rectangle {
                    anchors.horizontalCenter: parent.horizontalCenter
                    width: UiKit.LargeIconSize + UiKit.SpacingLarge
                    height: width
                    radius: width / 2
                    color: page.imageBackground
                    Image {
                        cache: false
                        anchors.centerIn: parent
                        width: UiKit.LargeIconSize
                        height: UiKit.LargeIconSize
                        sourceSize.width: UiKit.LargeIconSize
                        sourceSize.height: UiKit.LargeIconSize
                        source: page.imageSource
                        Accessible.ignored: true
                    }
                }
                ZScreenTitle {
                    objectName: "titleText"
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    text: page.title
                }
                ZBodyText {
                    objectName: "bodyText"
                    width: parent.width
                    horizontalAlignment: Text.AlignHCenter
                    visible: text.length > 0
                    text: page.text
                }
                Column {
                    id: extra
                    width: parent.width
                    spacing: UiKit.SpacingMedium
                }
            }
        }
    }
}

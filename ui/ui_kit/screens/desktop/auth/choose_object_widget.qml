import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// The account's points of sale, one card each: the owner picks where this player
// plays. Shown even for a single point, so the owner sees where they sign in.
ZAuthPage {
    id: root
    objectName: "chooseObjectScreen"

    // The screen's list model, handed over once the document has loaded.
    property var objectsModel: null

    signal objectChosen(int index)

    Keys.onEscapePressed: backButton.clicked()

    Component.onCompleted: objectList.forceActiveFocus()

    ZAuthCard {
        ZScreenTitle {
            width: parent.width
            text: "Выберите точку"
        }
        ZBodyText {
            width: parent.width
            secondary: true
            text: "Плеер будет играть музыку и рекламу по расписанию выбранной точки."
        }
        ListView {
            id: objectList
            objectName: "listView"
            width: parent.width
            height: Math.min(contentHeight, 4 * UiKit.ObjectCardHeight + 3 * spacing)
            spacing: UiKit.SpacingSmall
            clip: true
            model: root.objectsModel
            activeFocusOnTab: true
            keyNavigationEnabled: true
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: "Точки"
            Keys.onReturnPressed: if (currentItem) currentItem.clicked()
            Keys.onEnterPressed: if (currentItem) currentItem.clicked()

            delegate: Rectangle {
                id: card
                objectName: "objectCard" + index

                // What the card says, for the screen's tests and for automation.
                readonly property string title: model.name
                signal clicked()

                width: ListView.view.width
                height: UiKit.ObjectCardHeight
                radius: UiKit.CardRadius
                color: card.ListView.isCurrentItem && objectList.activeFocus ? UiKit.CardSelectedBackground
                     : mouse.containsMouse ? UiKit.CardHoverBackground
                     : UiKit.CardBackground
                border.width: UiKit.BorderWidth
                border.color: card.ListView.isCurrentItem && objectList.activeFocus ? UiKit.CardSelectedBorderColor
                            : UiKit.CardBorderColor
                Accessible.role: Accessible.Button
                Accessible.name: model.name
                Accessible.description: model.address
                Accessible.onPressAction: card.clicked()
                onClicked: {
                    objectList.currentIndex = index;
                    root.objectChosen(index);
                }

                Rectangle {
                    id: iconBox
                    x: UiKit.SpacingMedium
                    anchors.verticalCenter: parent.verticalCenter
                    height: parent.height - 2 * UiKit.SpacingMedium
                    width: height
                    radius: UiKit.ControlRadius
                    color: UiKit.ObjectCardIconBackground

                    Image {
                        cache: false
                        anchors.centerIn: parent
                        width: UiKit.IconSize
                        height: UiKit.IconSize
                        sourceSize.width: UiKit.IconSize
                        sourceSize.height: UiKit.IconSize
                        source: card.ListView.isCurrentItem && objectList.activeFocus ? UiKit.ObjectIconSelected : UiKit.ObjectIcon
                    }
                }
                Column {
                    anchors.left: iconBox.right
                    anchors.leftMargin: UiKit.SpacingMedium
                    anchors.right: parent.right
                    anchors.rightMargin: UiKit.SpacingMedium
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: UiKit.SpacingUnit

                    Text {
                        width: parent.width
                        text: model.name
                        elide: Text.ElideRight
                        font.family: UiKit.CardTitleFont.family
                        font.weight: UiKit.CardTitleFont.weight
                        font.pointSize: UiKit.CardTitlePointSize
                        color: UiKit.TextPrimaryColor
                    }
                    Text {
                        width: parent.width
                        visible: text.length > 0
                        text: model.address
                        elide: Text.ElideRight
                        font.family: UiKit.CaptionFont.family
                        font.weight: UiKit.CaptionFont.weight
                        font.pointSize: UiKit.CaptionPointSize
                        color: UiKit.TextSecondaryColor
                    }
                }
                MouseArea {
                    id: mouse
                    anchors.fill: parent
                    hoverEnabled: true
                    cursorShape: Qt.PointingHandCursor
                    onClicked: card.clicked()
                }
            }
        }
        ZMessage {
            objectName: "errorMessage"
            width: parent.width
        }
        ZButton {
            id: backButton
            objectName: "backButton"
            width: parent.width
            variant: "secondary"
            text: "Назад"
            enabled: !root.busy
        }
    }
}

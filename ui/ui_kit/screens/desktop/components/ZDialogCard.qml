import QtQuick 2.15

// A dialog as a card over the dimmed screen it interrupts: the screen's picture
// behind, the blackout over it, the card in the middle. Never a window of its own,
// so nothing else on the desktop can hide it from the shop owner.
Item {
    id: dialog

    property string header: ""
    property string text: ""
    property bool skippable: false
    property string okText: "ОК"
    property string cancelText: "Отмена"
    property url backdropSource: ""

    signal okClicked()
    signal cancelClicked()

    Keys.onReturnPressed: okClicked()
    Keys.onEnterPressed: okClicked()
    Keys.onEscapePressed: if (skippable) cancelClicked()

    Rectangle {
        anchors.fill: parent
        color: UiKit.ScreenBackgroundColor
    }
    Image {
        anchors.fill: parent
        source: dialog.backdropSource
        fillMode: Image.Stretch
        cache: false
    }
    Rectangle {
        objectName: "blackout"
        anchors.fill: parent
        color: UiKit.BlackoutColor
        opacity: UiKit.BlackoutOpacity
    }
    // Clicks outside the card go nowhere: the screen behind is only a picture.
    MouseArea { anchors.fill: parent }

    ZCard {
        id: card
        anchors.centerIn: parent
        width: UiKit.DialogWidth
        height: content.implicitHeight + 2 * UiKit.CardPadding
        color: UiKit.DialogBackground
        border.color: UiKit.DialogBorderColor
        Accessible.role: Accessible.Dialog
        Accessible.name: dialog.header

        Column {
            id: content
            anchors.fill: parent
            anchors.margins: UiKit.CardPadding
            spacing: UiKit.SpacingMedium

            Text {
                objectName: "headerText"
                width: parent.width
                text: dialog.header
                wrapMode: Text.WordWrap
                font.family: UiKit.DialogHeaderFont.family
                font.weight: UiKit.DialogHeaderFont.weight
                font.pointSize: UiKit.DialogHeaderPointSize
                color: UiKit.DialogHeaderColor
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
            Text {
                objectName: "bodyText"
                width: parent.width
                text: dialog.text
                visible: text.length > 0
                wrapMode: Text.WordWrap
                font.family: UiKit.DialogTextFont.family
                font.weight: UiKit.DialogTextFont.weight
                font.pointSize: UiKit.DialogTextPointSize
                color: UiKit.DialogTextColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Item { width: 1; height: UiKit.SpacingSmall }
            Row {
                anchors.right: parent.right
                spacing: UiKit.SpacingSmall
                layoutDirection: Qt.RightToLeft

                ZButton {
                    id: okButton
                    objectName: "okButton"
                    text: dialog.okText
                    focus: true
                    onClicked: dialog.okClicked()
                }
                ZButton {
                    objectName: "cancelButton"
                    visible: dialog.skippable
                    variant: "secondary"
                    text: dialog.cancelText
                    onClicked: dialog.cancelClicked()
                }
            }
        }
    }

    Component.onCompleted: okButton.forceActiveFocus()
}

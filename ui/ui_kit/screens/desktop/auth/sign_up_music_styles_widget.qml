import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// Sign-up, last step: the music styles the owner likes, any number of chips, or
// none at all with "Пропустить".
ZAuthPage {
    id: root
    objectName: "signUpMusicStylesScreen"

    // The screen's list model, handed over once the document has loaded.
    property var musicStylesModel: null

    property bool saving: false
    property bool loadFailed: false

    Keys.onReturnPressed: buttons.nextButton.clicked()
    Keys.onEnterPressed: buttons.nextButton.clicked()
    Keys.onEscapePressed: if (!root.saving) buttons.backButton.clicked()

    ZAuthCard {
        ZStepIndicator {
            width: parent.width
            step: 4
        }
        ZScreenTitle {
            width: parent.width
            text: "Музыкальные стили"
        }
        ZBodyText {
            width: parent.width
            secondary: true
            text: "Отметьте стили, которые подходят вашей точке. Можно несколько."
        }
        Flow {
            objectName: "musicStyleChips"
            width: parent.width
            spacing: UiKit.SpacingSmall

            Repeater {
                model: root.musicStylesModel

                Rectangle {
                    id: chip
                    objectName: "musicStyleChip" + index

                    readonly property bool checked: model.checked
                    signal clicked()

                    width: chipText.implicitWidth + 2 * UiKit.SpacingMedium
                    height: UiKit.ChipHeight
                    radius: height / 2
                    color: checked ? UiKit.ChipBackgroundSelected : UiKit.ChipBackground
                    border.width: UiKit.BorderWidth
                    border.color: UiKit.ChipBorderColor
                    activeFocusOnTab: true
                    Accessible.role: Accessible.CheckBox
                    Accessible.name: model.name
                    Accessible.checkable: true
                    Accessible.checked: checked
                    Accessible.onPressAction: chip.clicked()
                    Keys.onSpacePressed: chip.clicked()
                    onClicked: model.checked = !model.checked

                    Text {
                        id: chipText
                        anchors.centerIn: parent
                        text: model.name
                        font.family: UiKit.ChipFont.family
                        font.weight: UiKit.ChipFont.weight
                        font.pointSize: UiKit.ChipPointSize
                        color: chip.checked ? UiKit.ChipTextColorSelected : UiKit.ChipTextColor
                    }
                    ZFocusRing {
                        visible: chip.activeFocus
                    }
                    MouseArea {
                        anchors.fill: parent
                        cursorShape: Qt.PointingHandCursor
                        onClicked: chip.clicked()
                    }
                }
            }
        }
        ZMessage {
            objectName: "errorMessage"
            width: parent.width
        }
        ZButton {
            objectName: "retryButton"
            width: parent.width
            visible: root.loadFailed
            variant: "secondary"
            text: "Повторить"
        }
        ZSignUpButtons {
            id: buttons
            busy: root.saving
        }
        ZButton {
            objectName: "skipButton"
            width: parent.width
            variant: "secondary"
            text: "Пропустить"
            enabled: !root.saving
        }
    }
}

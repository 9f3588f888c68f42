import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// Sign-up, third step: what kind of business the point of sale is, one tile of a
// grid. The account exists by now, so there is no way back into creating it.
ZAuthPage {
    id: root
    objectName: "signUpBusinessTypeScreen"

    // The screen's list model, handed over once the document has loaded.
    property var businessTypesModel: null

    property int chosenIndex: -1
    property bool saving: false
    property bool loadFailed: false

    Keys.onReturnPressed: buttons.nextButton.clicked()
    Keys.onEnterPressed: buttons.nextButton.clicked()

    ZAuthCard {
        ZStepIndicator {
            width: parent.width
            step: 3
        }
        ZScreenTitle {
            width: parent.width
            text: "Вид бизнеса"
        }
        ZBodyText {
            width: parent.width
            secondary: true
            text: "Выберите, что подходит вашей точке: под это подберём музыку."
        }
        Flow {
            objectName: "businessTypeGrid"
            width: parent.width
            spacing: UiKit.SpacingSmall

            Repeater {
                model: root.businessTypesModel

                Rectangle {
                    id: tile
                    objectName: "businessTypeTile" + index

                    readonly property bool checked: root.chosenIndex === index
                    signal clicked()

                    width: (parent.width - UiKit.SpacingSmall) / 2
                    height: UiKit.BusinessTypeTileHeight
                    radius: UiKit.ControlRadius
                    color: checked ? UiKit.BusinessTypeTileBackgroundSelected
                         : mouse.containsMouse ? UiKit.CardHoverBackground
                         : UiKit.BusinessTypeTileBackground
                    border.width: checked ? UiKit.FocusRingWidth : UiKit.BorderWidth
                    border.color: checked ? UiKit.CardSelectedBorderColor : UiKit.CardBorderColor
                    activeFocusOnTab: true
                    Accessible.role: Accessible.RadioButton
                    Accessible.name: model.name
                    Accessible.checkable: true
                    Accessible.checked: checked
                    Accessible.onPressAction: tile.clicked()
                    Keys.onSpacePressed: tile.clicked()
                    onClicked: root.chosenIndex = index

                    Image {
                        cache: false
                        id: icon
                        x: UiKit.SpacingSmall + UiKit.SpacingUnit
                        anchors.verticalCenter: parent.verticalCenter
                        width: UiKit.IconSize
                        height: UiKit.IconSize
                        sourceSize.width: UiKit.IconSize
                        sourceSize.height: UiKit.IconSize
                        source: tile.checked ? UiKit.CheckIcon : UiKit.BusinessTypeIcon
                    }
                    Text {
                        anchors.left: icon.right
                        anchors.leftMargin: UiKit.SpacingSmall
                        anchors.right: parent.right
                        anchors.rightMargin: UiKit.SpacingSmall
                        anchors.verticalCenter: parent.verticalCenter
                        text: model.name
                        wrapMode: Text.WordWrap
                        maximumLineCount: 2
                        elide: Text.ElideRight
                        font.family: UiKit.CardTextFont.family
                        font.weight: UiKit.CardTextFont.weight
                        font.pointSize: UiKit.CardTextPointSize
                        color: UiKit.TextPrimaryColor
                    }
                    ZFocusRing {
                        visible: tile.activeFocus
                    }
                    MouseArea {
                        id: mouse
                        anchors.fill: parent
                        hoverEnabled: true
                        cursorShape: Qt.PointingHandCursor
                        onClicked: tile.clicked()
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
            backShown: false
        }
    }
}

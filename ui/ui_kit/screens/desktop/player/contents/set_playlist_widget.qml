import QtQuick 2.15
import QtQuick.Controls 2.15
import "../../components"

// Switching a playlist on for the point of sale, all day or for chosen parts of the
// day, or off again: a card over the dimmed screen it was opened from.
Item {
    id: root
    objectName: "setPlaylistScreen"

    // Set by the screen.
    property string playlistName: ""
    property bool deactivate: false
    property bool busy: false
    property url backdropSource: ""
    // What the owner chooses; the screen reads them on ОК.
    property bool byParts: false
    property bool morning: false
    property bool day: false
    property bool evening: false
    property bool night: false

    readonly property bool choiceComplete: deactivate || !byParts || morning || day || evening || night

    signal okClicked()
    signal cancelClicked()

    Keys.onReturnPressed: if (okButton.enabled && !root.busy) root.okClicked()
    Keys.onEnterPressed: if (okButton.enabled && !root.busy) root.okClicked()
    Keys.onEscapePressed: root.cancelClicked()

    Rectangle {
        anchors.fill: parent
        color: UiKit.ScreenBackgroundColor
    }
    Image {
        anchors.fill: parent
        source: root.backdropSource
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
        anchors.centerIn: parent
        width: UiKit.DialogWidth
        height: content.implicitHeight + 2 * UiKit.CardPadding
        color: UiKit.DialogBackground
        border.color: UiKit.DialogBorderColor
        Accessible.role: Accessible.Dialog
        Accessible.name: headerText.text

        Column {
            id: content
            anchors.fill: parent
            anchors.margins: UiKit.CardPadding
            spacing: UiKit.SpacingMedium

            Text {
                id: headerText
                objectName: "headerText"
                width: parent.width
                text: root.deactivate ? "Отключить «" + root.playlistName + "»?"
                                      : "Сделать активным «" + root.playlistName + "»"
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
                text: root.deactivate ? "Плейлист перестанет играть на этом объекте. Расписание обновится сразу."
                                      : "Когда играть этот плейлист:"
                wrapMode: Text.WordWrap
                font.family: UiKit.DialogTextFont.family
                font.weight: UiKit.DialogTextFont.weight
                font.pointSize: UiKit.DialogTextPointSize
                color: UiKit.DialogTextColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }

            // All day, or only in the parts of the day switched on below.
            Row {
                visible: !root.deactivate
                spacing: UiKit.SpacingSmall

                ZButton {
                    id: allDayButton
                    objectName: "allDayButton"
                    variant: root.byParts ? "secondary" : "primary"
                    text: "Весь день"
                    Accessible.role: Accessible.RadioButton
                    Accessible.checkable: true
                    Accessible.checked: !root.byParts
                    onClicked: root.byParts = false
                }
                ZButton {
                    objectName: "partsOfDayButton"
                    variant: root.byParts ? "primary" : "secondary"
                    text: "Части дня"
                    Accessible.role: Accessible.RadioButton
                    Accessible.checkable: true
                    Accessible.checked: root.byParts
                    onClicked: root.byParts = true
                }
            }

            Column {
                visible: !root.deactivate
                width: parent.width
                spacing: UiKit.SpacingUnit

                Repeater {
                    model: [
                        { name: "morning", label: "Утро" },
                        { name: "day", label: "День" },
                        { name: "evening", label: "Вечер" },
                        { name: "night", label: "Ночь" }
                    ]

                    delegate: Item {
                        id: part
                        width: parent ? parent.width : 0
                        height: UiKit.ListRowHeight
                        enabled: root.byParts

                        Text {
                            anchors.left: parent.left
                            anchors.verticalCenter: parent.verticalCenter
                            text: modelData.label
                            font.family: UiKit.BodyFont.family
                            font.weight: UiKit.BodyFont.weight
                            font.pointSize: UiKit.CardTextPointSize
                            color: part.enabled ? UiKit.TextPrimaryColor : UiKit.TextDisabledColor
                        }
                        Switch {
                            id: partSwitch
                            objectName: modelData.name + "Switch"
                            anchors.right: parent.right
                            anchors.verticalCenter: parent.verticalCenter
                            activeFocusOnTab: true
                            checked: root[modelData.name]
                            onCheckedChanged: root[modelData.name] = checked
                            Accessible.name: modelData.label
                            padding: 0
                            spacing: 0
                            // Only the track and its knob: the label is the row's own text.
                            implicitWidth: indicator.implicitWidth
                            implicitHeight: indicator.implicitHeight
                            indicator: Rectangle {
                                implicitWidth: 2 * UiKit.IconSize + UiKit.SpacingSmall
                                implicitHeight: UiKit.IconSize + UiKit.SpacingUnit
                                x: partSwitch.leftPadding
                                y: (partSwitch.height - height) / 2
                                radius: height / 2
                                // Parts of the day mean nothing while the playlist plays all day.
                                color: partSwitch.checked && partSwitch.enabled ? UiKit.SwitchTrackColorSelected
                                                                                : UiKit.SwitchTrackColor
                                border.width: partSwitch.visualFocus ? UiKit.FocusRingWidth : 0
                                border.color: UiKit.FocusRingColor

                                Rectangle {
                                    width: parent.height - UiKit.SpacingUnit
                                    height: width
                                    radius: width / 2
                                    anchors.verticalCenter: parent.verticalCenter
                                    x: partSwitch.checked ? parent.width - width - UiKit.SpacingUnit / 2
                                                          : UiKit.SpacingUnit / 2
                                    color: UiKit.SwitchKnobColor
                                }
                            }
                            contentItem: Item {}
                        }
                    }
                }
            }

            ZMessage {
                objectName: "errorMessage"
                width: parent.width
            }

            Row {
                anchors.right: parent.right
                spacing: UiKit.SpacingSmall
                layoutDirection: Qt.RightToLeft

                ZButton {
                    id: okButton
                    objectName: "okButton"
                    text: root.deactivate ? "Отключить" : "ОК"
                    variant: root.deactivate ? "danger" : "primary"
                    enabled: root.choiceComplete
                    busy: root.busy
                    onClicked: root.okClicked()
                }
                ZButton {
                    objectName: "cancelButton"
                    variant: "secondary"
                    text: "Отмена"
                    enabled: !root.busy
                    onClicked: root.cancelClicked()
                }
            }
        }
    }

    Component.onCompleted: okButton.forceActiveFocus()
}

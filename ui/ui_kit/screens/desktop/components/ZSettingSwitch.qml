import QtQuick 2.15
import QtQuick.Controls 2.15

// A yes-or-no setting: its label on the left, the switch on the right. The switch
// shows `on`, the stored value; a click only asks for the other value
// (`changeRequested`), so it never shows a choice that did not reach the settings.
Switch {
    id: control

    property bool on: false

    signal changeRequested(bool value)

    checkable: false
    checked: on
    implicitHeight: UiKit.ListRowHeight
    implicitWidth: label.implicitWidth + track.width + UiKit.SpacingLarge
    width: parent ? parent.width : implicitWidth
    padding: 0
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: on
    Accessible.onPressAction: clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()
    onClicked: changeRequested(!on)

    indicator: Rectangle {
        id: track
        x: control.width - width - UiKit.SpacingSmall
        y: (control.height - height) / 2
        width: UiKit.IconSize * 2 + UiKit.SpacingSmall
        height: UiKit.IconSize + UiKit.SpacingUnit
        radius: height / 2
        color: control.on ? UiKit.SwitchTrackColorSelected : UiKit.SwitchTrackColor
        opacity: control.enabled ? 1 : UiKit.BlackoutOpacity

        Rectangle {
            width: parent.height - UiKit.SpacingUnit
            height: width
            radius: width / 2
            y: UiKit.SpacingUnit / 2
            x: control.on ? parent.width - width - UiKit.SpacingUnit / 2 : UiKit.SpacingUnit / 2
            color: UiKit.SwitchKnobColor
            Behavior on x { NumberAnimation { duration: UiKit.AnimationDuration } }
        }
        ZFocusRing { visible: control.activeFocus && control.focusReason === Qt.TabFocusReason }
    }

    contentItem: Text {
        id: label
        leftPadding: UiKit.SpacingSmall
        rightPadding: track.width + UiKit.SpacingMedium
        text: control.text
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        font.family: UiKit.CardTextFont.family
        font.weight: UiKit.CardTextFont.weight
        font.pointSize: UiKit.CardTextPointSize
        color: control.enabled ? UiKit.TextPrimaryColor : UiKit.TextDisabledColor
    }

    background: Rectangle {
        radius: UiKit.ControlRadius
        color: control.hovered ? UiKit.CardHoverBackground : "transparent"
    }
}

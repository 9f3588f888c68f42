import QtQuick 2.15
import QtQuick.Controls 2.15

// The screens' push button: "primary" for the one main action of a screen,
// "secondary" for the others, "danger" for what cannot be undone. While `busy`
// it shows its own activity and ignores clicks, so a slow request is never sent
// twice.
Button {
    id: control

    property string variant: "primary"
    property bool busy: false

    implicitHeight: UiKit.ButtonHeight
    implicitWidth: Math.max(UiKit.ButtonMinimumWidth, label.implicitWidth + 2 * UiKit.SpacingLarge)
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: if (enabled && !busy) clicked()

    Keys.onReturnPressed: if (enabled && !busy) clicked()
    Keys.onEnterPressed: if (enabled && !busy) clicked()

    // A busy button keeps its look but does not take a second click.
    onPressed: if (busy) control.focus = true

    contentItem: Item {
        implicitWidth: label.implicitWidth
        implicitHeight: label.implicitHeight
        Text {
            id: label
            anchors.centerIn: parent
            visible: !control.busy
            text: control.text
            font.family: control.variant === "primary" ? UiKit.PrimaryButtonFont.family : UiKit.SecondaryButtonFont.family
            font.weight: UiKit.PrimaryButtonFont.weight
            font.pointSize: UiKit.ButtonPointSize
            color: !control.enabled ? UiKit.PrimaryButtonDisabledTextColor
                 : control.variant === "primary" ? UiKit.PrimaryButtonTextColor
                 : control.variant === "danger" ? UiKit.DangerButtonTextColor
                 : UiKit.SecondaryButtonTextColor
            elide: Text.ElideRight
        }
        ZBusyDots {
            anchors.centerIn: parent
            visible: control.busy
            running: control.busy
            dotColor: label.color
        }
    }

    background: Rectangle {
        radius: UiKit.ControlRadius
        color: !control.enabled ? UiKit.PrimaryButtonDisabledBackground
             : control.variant === "primary" ? (control.down ? UiKit.PrimaryButtonPressedBackground
                                               : control.hovered ? UiKit.PrimaryButtonHoverBackground
                                               : UiKit.PrimaryButtonBackground)
             : control.variant === "danger" ? (control.hovered ? UiKit.DangerButtonHoverBackground
                                               : UiKit.DangerButtonBackground)
             : (control.down ? UiKit.SecondaryButtonPressedBackground
                : control.hovered ? UiKit.SecondaryButtonHoverBackground
                : UiKit.SecondaryButtonBackground)
        border.width: control.variant === "secondary" ? UiKit.BorderWidth : 0
        border.color: UiKit.SecondaryButtonBorderColor

        ZFocusRing { visible: control.visualFocus || control.activeFocus && control.focusReason === Qt.TabFocusReason }
    }
}

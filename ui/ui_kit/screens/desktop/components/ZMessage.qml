import QtQuick 2.15

// A one- or two-sentence notice under a form: "error" for what failed, "warning"
// for what the user should know before going on. Hidden while empty.
Rectangle {
    id: message

    property string text: ""
    property string kind: "error"

    visible: text.length > 0
    implicitHeight: visible ? body.implicitHeight + 2 * UiKit.SpacingSmall + 4 : 0
    radius: UiKit.ControlRadius
    color: kind === "warning" ? UiKit.WarningSoftBackground : UiKit.ErrorSoftBackground
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Image {
        cache: false
        id: icon
        anchors.left: parent.left
        anchors.leftMargin: UiKit.SpacingSmall + 4
        anchors.top: parent.top
        anchors.topMargin: UiKit.SpacingSmall + 4
        width: UiKit.IconSize
        height: UiKit.IconSize
        sourceSize.width: UiKit.IconSize
        sourceSize.height: UiKit.IconSize
        source: message.kind === "warning" ? UiKit.WarningIcon : UiKit.ErrorIcon
    }
    Text {
        id: body
        anchors.left: icon.right
        anchors.leftMargin: UiKit.SpacingSmall
        anchors.right: parent.right
        anchors.rightMargin: UiKit.SpacingSmall + 4
        anchors.verticalCenter: parent.verticalCenter
        text: message.text
        wrapMode: Text.WordWrap
        font.family: UiKit.AuthMessageFont.family
        font.weight: UiKit.AuthMessageFont.weight
        font.pointSize: UiKit.AuthMessagePointSize
        color: message.kind === "warning" ? UiKit.AuthMessageWarningColor : UiKit.AuthMessageErrorColor
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15

// A round button with an icon only; its accessible name says what it does
// ("Следующий трек", "Нравится"). `checked` marks a state such as a like given.
AbstractButton {
    id: control

    property url iconSource: ""
    property string accessibleName: ""

    implicitWidth: UiKit.IconButtonSize
    implicitHeight: UiKit.IconButtonSize
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: accessibleName
    Accessible.onPressAction: clicked()
    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: width / 2
        color: control.down ? UiKit.IconButtonPressedBackground
             : control.hovered || control.checked ? UiKit.IconButtonHoverBackground : "transparent"
        ZFocusRing { visible: control.activeFocus && control.focusReason === Qt.TabFocusReason }
    }
    contentItem: Item {
        Image {
            anchors.centerIn: parent
            width: UiKit.IconSize
            height: UiKit.IconSize
            sourceSize.width: UiKit.IconSize
            sourceSize.height: UiKit.IconSize
            cache: false
            source: control.iconSource
        }
    }
}

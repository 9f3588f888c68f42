import QtQuick 2.15
import QtQuick.Controls 2.15

// One line of the side bar: an icon and a label, the current section marked with
// the accent. Enter and Space open it as a click does.
AbstractButton {
    id: item

    property url iconSource: ""
    property url selectedIconSource: ""
    property bool selected: false

    implicitHeight: UiKit.SideBarItemHeight
    activeFocusOnTab: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: UiKit.ControlRadius
        color: item.selected ? UiKit.SideBarItemBackgroundSelected
             : item.hovered ? UiKit.SideBarItemHoverBackground
             : "transparent"

        ZFocusRing { visible: item.activeFocus && item.focusReason === Qt.TabFocusReason }
    }

    contentItem: Row {
        leftPadding: UiKit.SpacingSmall + UiKit.SpacingUnit
        spacing: UiKit.SpacingSmall + UiKit.SpacingUnit

        Image {
            cache: false
            anchors.verticalCenter: parent.verticalCenter
            width: UiKit.SideBarIconSize
            height: UiKit.SideBarIconSize
            sourceSize.width: UiKit.SideBarIconSize
            sourceSize.height: UiKit.SideBarIconSize
            source: item.selected && item.selectedIconSource != "" ? item.selectedIconSource : item.iconSource
        }
        Text {
            anchors.verticalCenter: parent.verticalCenter
            width: item.width - UiKit.SideBarIconSize - 3 * (UiKit.SpacingSmall + UiKit.SpacingUnit)
            text: item.text
            elide: Text.ElideRight
            font.family: item.selected ? UiKit.SideBarFontSelected.family : UiKit.SideBarFont.family
            font.weight: item.selected ? UiKit.SideBarFontSelected.weight : UiKit.SideBarFont.weight
            font.pointSize: UiKit.SideBarPointSize
            color: item.selected ? UiKit.SideBarFontColorSelected : UiKit.SideBarFontColor
        }
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import "../../components"

// The content section's tabs, one per kind of catalogue. The numbers are the
// catalogue's content types: 1 music, 2 video, 3 photo.
Rectangle {
    id: root
    objectName: "contentTopFrame"

    // Set by the screen: the tab on show.
    property int currentType: 1

    signal tabChosen(int type)

    color: UiKit.TabBarBackground

    function choose(type) {
        if (type >= 1 && type <= 3 && type !== root.currentType) {
            root.tabChosen(type);
        }
    }

    Row {
        id: tabs
        anchors.left: parent.left
        anchors.leftMargin: UiKit.ScreenMargin - UiKit.SpacingMedium
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        spacing: UiKit.SpacingSmall
        Accessible.role: Accessible.PageTabList
        Accessible.name: "Разделы контента"

        Repeater {
            model: [
                { name: "musicTab", label: "Музыка", type: 1 },
                { name: "videoTab", label: "Видео", type: 2 },
                { name: "photoTab", label: "Фото", type: 3 }
            ]

            delegate: Item {
                id: tab
                objectName: modelData.name

                readonly property bool selected: root.currentType === modelData.type
                readonly property string text: modelData.label
                signal clicked()

                width: label.implicitWidth + 2 * UiKit.SpacingMedium
                height: tabs.height
                activeFocusOnTab: true
                Accessible.role: Accessible.PageTab
                Accessible.name: modelData.label
                Accessible.selected: tab.selected
                Accessible.onPressAction: tab.clicked()
                Keys.onReturnPressed: tab.clicked()
                Keys.onEnterPressed: tab.clicked()
                Keys.onSpacePressed: tab.clicked()
                Keys.onRightPressed: root.choose(modelData.type + 1)
                Keys.onLeftPressed: root.choose(modelData.type - 1)
                onClicked: root.choose(modelData.type)

                Text {
                    id: label
                    anchors.centerIn: parent
                    text: modelData.label
                    font.family: UiKit.TabBarFont.family
                    font.weight: UiKit.TabBarFont.weight
                    font.pointSize: UiKit.TabBarPointSize
                    color: tab.selected ? UiKit.TabBarTextColorSelected
                         : mouse.containsMouse ? UiKit.TextPrimaryColor
                         : UiKit.TabBarTextColor
                }
                Rectangle {
                    anchors.left: parent.left
                    anchors.right: parent.right
                    anchors.bottom: parent.bottom
                    height: UiKit.SpacingUnit
                    radius: height / 2
                    visible: tab.selected
                    color: UiKit.TabBarIndicatorColor
                }
                ZFocusRing { visible: tab.activeFocus }
                MouseArea {
                    id: mouse
                    anchors.fill: parent
                    hoverEnabled: true
                    cursorShape: Qt.PointingHandCursor
                    onClicked: tab.clicked()
                }
            }
        }
    }
    Rectangle {
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: UiKit.BorderWidth
        color: UiKit.DividerColor
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../../components"

// The account's points of sale. The one this player plays for is marked; a click
// on another asks first, since switching starts its schedule from the beginning.
Rectangle {
    id: root
    objectName: "objectsScreen"

    // Set by the screen: its list model, the marked row, and the request states.
    property var objectsModel: null
    property int currentIndex: -1
    property bool loading: false
    property bool loadFailed: false
    property bool busy: false

    signal objectChosen(int index)

    color: UiKit.ScreenBackgroundColor

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: UiKit.ScreenMargin
        spacing: UiKit.SpacingMedium

        ZScreenTitle {
            objectName: "titleText"
            Layout.fillWidth: true
            text: "Объекты"
        }
        ZBodyText {
            Layout.fillWidth: true
            secondary: true
            text: "Плеер играет расписание отмеченного объекта. Выберите другой, чтобы играть его расписание."
        }
        ZBodyText {
            objectName: "loadingText"
            Layout.fillWidth: true
            visible: root.loading
            secondary: true
            text: "Загружаем объекты…"
        }
        ZMessage {
            objectName: "errorMessage"
            Layout.fillWidth: true
        }
        ZButton {
            objectName: "retryButton"
            visible: root.loadFailed
            variant: "secondary"
            text: "Повторить"
        }

        ListView {
            id: objectList
            objectName: "objectsList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            spacing: UiKit.SpacingSmall
            clip: true
            model: root.objectsModel
            activeFocusOnTab: true
            keyNavigationEnabled: true
            boundsBehavior: Flickable.StopAtBounds
            enabled: !root.busy
            Accessible.role: Accessible.List
            Accessible.name: "Объекты"
            Keys.onReturnPressed: if (currentItem) currentItem.clicked()
            Keys.onEnterPressed: if (currentItem) currentItem.clicked()
            ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

            delegate: Rectangle {
                id: row
                objectName: "objectRow" + index

                // What the row says and whether the player plays for it, for the
                // screen's tests and for automation.
                readonly property string title: model.name
                readonly property bool current: index === root.currentIndex
                readonly property bool focused: row.ListView.isCurrentItem && objectList.activeFocus
                signal clicked()

                width: ListView.view ? ListView.view.width : 0
                height: UiKit.ObjectCardHeight
                radius: UiKit.CardRadius
                color: row.current ? UiKit.CardSelectedBackground
                     : mouse.containsMouse || row.focused ? UiKit.CardHoverBackground
                     : UiKit.CardBackground
                border.width: row.focused ? UiKit.FocusRingWidth : UiKit.BorderWidth
                border.color: row.focused ? UiKit.FocusRingColor
                            : row.current ? UiKit.CardSelectedBorderColor
                            : UiKit.CardBorderColor
                Accessible.role: Accessible.Button
                Accessible.name: model.name
                Accessible.description: row.current ? "Текущий объект" : model.address
                Accessible.onPressAction: row.clicked()
                onClicked: {
                    objectList.currentIndex = index;
                    if (!row.current) {
                        root.objectChosen(index);
                    }
                }

                Rectangle {
                    id: iconBox
                    x: UiKit.SpacingMedium
                    anchors.verticalCenter: parent.verticalCenter
                    height: parent.height - 2 * UiKit.SpacingMedium
                    width: height
                    radius: UiKit.ControlRadius
                    color: UiKit.ObjectCardIconBackground

                    Image {
                        cache: false
                        anchors.centerIn: parent
                        width: UiKit.IconSize
                        height: UiKit.IconSize
                        sourceSize.width: UiKit.IconSize
                        sourceSize.height: UiKit.IconSize
                        source: row.current ? UiKit.ObjectIconSelected : UiKit.ObjectIcon
                    }
                }
                Column {
                    anchors.left: iconBox.right
                    anchors.leftMargin: UiKit.SpacingMedium
                    anchors.right: badge.visible ? badge.left : parent.right
                    anchors.rightMargin: UiKit.SpacingMedium
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: UiKit.SpacingUnit

                    Text {
                        width: parent.width
                        text: model.name
                        elide: Text.ElideRight
                        font.family: UiKit.CardTitleFont.family
                        font.weight: UiKit.CardTitleFont.weight
                        font.pointSize: UiKit.CardTitlePointSize
                        color: UiKit.TextPrimaryColor
                    }
                    Text {
                        width: parent.width
                        visible: text.length > 0
                        text: model.address
                        elide: Text.ElideRight
                        font.family: UiKit.CaptionFont.family
                        font.weight: UiKit.CaptionFont.weight
                        font.pointSize: UiKit.CaptionPointSize
                        color: UiKit.TextSecondaryColor
                    }
                }
                Rectangle {
                    id: badge
                    objectName: "currentBadge" + index
                    visible: row.current
                    anchors.right: parent.right
                    anchors.rightMargin: UiKit.SpacingMedium
                    anchors.verticalCenter: parent.verticalCenter
                    width: badgeRow.implicitWidth + 2 * UiKit.SpacingSmall
                    height: badgeRow.implicitHeight + 2 * UiKit.SpacingUnit
                    radius: height / 2
                    color: UiKit.AccentSoftBackground

                    Row {
                        id: badgeRow
                        anchors.centerIn: parent
                        spacing: UiKit.SpacingUnit

                        Image {
                            cache: false
                            anchors.verticalCenter: parent.verticalCenter
                            width: UiKit.IconSize
                            height: UiKit.IconSize
                            sourceSize.width: UiKit.IconSize
                            sourceSize.height: UiKit.IconSize
                            source: UiKit.CheckIcon
                        }
                        Text {
                            anchors.verticalCenter: parent.verticalCenter
                            text: "Играет здесь"
                            font.family: UiKit.CaptionFont.family
                            font.weight: UiKit.BodyStrongFont.weight
                            font.pointSize: UiKit.CaptionPointSize
                            color: UiKit.AccentColor
                        }
                    }
                }
                MouseArea {
                    id: mouse
                    anchors.fill: parent
                    hoverEnabled: true
                    cursorShape: row.current ? Qt.ArrowCursor : Qt.PointingHandCursor
                    onClicked: row.clicked()
                }
            }
        }
    }

    ZThrobber {
        objectName: "objectsThrobber"
        anchors.fill: parent
        visible: root.busy
        message: "Переключаем объект"
    }

    Component.onCompleted: objectList.forceActiveFocus()
}

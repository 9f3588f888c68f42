import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../../components"

// The event log: the file's lines in a monospaced list, the newest at the bottom,
// with a search above and the copy and re-read buttons beside it.
Rectangle {
    id: logView
    objectName: "viewAppLog"

    property var logModel: null
    property bool empty: false
    property string messageText: ""
    property bool messageIsError: false
    readonly property bool loading: logModel ? logModel.loading : false

    signal backRequested()
    signal searchChanged()

    function scrollToEnd() {
        listView.positionViewAtEnd()
    }

    color: UiKit.ScreenBackgroundColor
    focus: true
    Keys.onEscapePressed: backRequested()

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: UiKit.ScreenMargin
        spacing: UiKit.SpacingMedium

        RowLayout {
            Layout.fillWidth: true
            spacing: UiKit.SpacingMedium

            ZButton {
                objectName: "backButton"
                variant: "secondary"
                text: "Назад"
            }
            ZScreenTitle {
                Layout.fillWidth: true
                text: "Журнал событий"
                elide: Text.ElideRight
            }
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: UiKit.SpacingMedium

            Item {
                Layout.fillWidth: true
                Layout.alignment: Qt.AlignBottom
                implicitHeight: search.implicitHeight

                ZTextField {
                    id: search
                    label: "Поиск по журналу"
                    inputObjectName: "searchField"
                    placeholderText: "Например, «Начато воспроизведение»"
                    onTextChanged: logView.searchChanged()
                }
            }
            ZButton {
                objectName: "refreshButton"
                Layout.alignment: Qt.AlignBottom
                variant: "secondary"
                text: "Обновить"
                busy: logView.loading
            }
            ZButton {
                objectName: "saveCopyButton"
                Layout.alignment: Qt.AlignBottom
                variant: "primary"
                text: "Сохранить копию…"
            }
        }

        ZMessage {
            Layout.fillWidth: true
            objectName: "errorMessage"
            kind: "error"
            text: logView.messageIsError ? logView.messageText : ""
        }
        ZBodyText {
            Layout.fillWidth: true
            objectName: "statusText"
            secondary: true
            visible: text.length > 0
            text: !logView.messageIsError ? logView.messageText : ""
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.fillHeight: true
            radius: UiKit.CardRadius
            color: UiKit.LogViewBackground
            border.width: UiKit.BorderWidth
            border.color: UiKit.CardBorderColor
            clip: true

            ListView {
                id: listView
                objectName: "listView"
                anchors.fill: parent
                anchors.margins: UiKit.SpacingSmall
                model: logView.logModel
                boundsBehavior: Flickable.StopAtBounds
                activeFocusOnTab: true
                keyNavigationEnabled: true
                Accessible.role: Accessible.List
                Accessible.name: "Журнал событий"
                // A day's log runs to thousands of lines: the handle stays big
                // enough to see and to take hold of.
                ScrollBar.vertical: ZScrollBar {}
                delegate: Text {
                    objectName: "logLine" + index
                    width: ListView.view ? ListView.view.width - UiKit.SpacingMedium : 0
                    text: model.line
                    textFormat: Text.PlainText
                    wrapMode: Text.WrapAnywhere
                    font.family: UiKit.LogViewFont.family
                    font.weight: UiKit.LogViewFont.weight
                    font.pointSize: UiKit.LogViewPointSize
                    color: UiKit.LogViewTextColor
                    Accessible.role: Accessible.ListItem
                    Accessible.name: text
                }
            }

            ZBodyText {
                anchors.centerIn: parent
                objectName: "emptyText"
                visible: logView.empty && !logView.loading
                secondary: true
                text: "Журнал пока пуст."
            }
            ZBusyDots {
                anchors.centerIn: parent
                visible: logView.loading && listView.count === 0
                running: visible
            }
        }
    }
}

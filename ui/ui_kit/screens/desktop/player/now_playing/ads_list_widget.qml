import QtQml 2.15
import QtQuick 2.15
import QtQuick.Controls 2.15
import "../../components"

// The period's advertising in time order: what interrupts the music and what waits
// for the track to end, the spots and whether they are on this computer. Blocks
// already played are dimmed; the list opens at the next block to come.
Rectangle {
    id: root
    objectName: "adsListScreen"

    property var blocksModel: null

    // The first block not played yet; the last one when every block has played.
    function nextBlockRow() {
        var row = 0;
        while (row < playedFlags.count - 1 && playedFlags.objectAt(row) && playedFlags.objectAt(row).played)
            ++row;
        return row;
    }
    function showNextBlock() {
        if (list.count > 0)
            list.positionViewAtIndex(nextBlockRow(), ListView.Beginning);
    }

    color: UiKit.ScreenBackgroundColor
    focus: true
    Keys.onEscapePressed: backButton.clicked()
    Component.onCompleted: forceActiveFocus()

    // Whether each block has played, without a delegate in view: late in the day the
    // played blocks fill the first screens of the list.
    Instantiator {
        id: playedFlags
        model: root.blocksModel
        delegate: QtObject {
            readonly property bool played: model.played
        }
    }
    // The screen hands in the blocks again every few seconds, which puts a list view
    // back at its top.
    Connections {
        target: root.blocksModel
        function onModelReset() { Qt.callLater(root.showNextBlock); }
    }
    onBlocksModelChanged: Qt.callLater(root.showNextBlock)

    Row {
        id: header
        x: UiKit.ScreenMargin
        y: UiKit.SpacingLarge
        spacing: UiKit.SpacingMedium

        ZButton {
            id: backButton
            objectName: "backButton"
            variant: "secondary"
            text: "Назад"
        }
        ZScreenTitle {
            anchors.verticalCenter: parent.verticalCenter
            text: "Реклама"
        }
    }

    ZBodyText {
        objectName: "emptyText"
        anchors.centerIn: parent
        visible: list.count === 0
        secondary: true
        text: "В этом периоде рекламы нет."
        width: Math.min(parent.width - 2 * UiKit.ScreenMargin, UiKit.AuthCardWidth)
        horizontalAlignment: Text.AlignHCenter
    }

    ListView {
        id: list
        objectName: "listView"
        anchors.top: header.bottom
        anchors.topMargin: UiKit.SpacingLarge
        anchors.left: parent.left
        anchors.leftMargin: UiKit.ScreenMargin
        anchors.right: parent.right
        anchors.rightMargin: UiKit.ScreenMargin
        anchors.bottom: parent.bottom
        clip: true
        spacing: UiKit.SpacingSmall
        model: root.blocksModel
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: "Рекламные блоки периода"
        ScrollBar.vertical: ScrollBar {}

        delegate: ZCard {
            id: block
            objectName: "adBlock" + index

            property bool played: model.played
            property string interruptsText: model.interrupts ? "прерывает" : "ждёт конца трека"
            property string downloadsText: model.downloadedCount === model.spotCount
                                           ? "все ролики загружены"
                                           : "загружено " + model.downloadedCount + " из " + model.spotCount

            width: ListView.view.width
            height: content.implicitHeight + 2 * UiKit.SpacingMedium
            color: UiKit.AdsListItemBackground
            opacity: played ? UiKit.AdsListItemPlayedOpacity : 1
            Accessible.role: Accessible.ListItem
            Accessible.name: "Блок " + model.time + ", " + interruptsText + (played ? ", уже прошёл" : "")

            Column {
                id: content
                x: UiKit.SpacingMedium
                y: UiKit.SpacingMedium
                width: parent.width - 2 * UiKit.SpacingMedium
                spacing: UiKit.SpacingUnit

                Row {
                    spacing: UiKit.SpacingMedium
                    Text {
                        objectName: "timeText"
                        text: model.time
                        font.family: UiKit.ClockFont.family
                        font.weight: UiKit.ClockFont.weight
                        font.pointSize: UiKit.CardTitlePointSize
                        color: block.played ? UiKit.AdsListItemPlayedTextColor : UiKit.TextPrimaryColor
                    }
                    Rectangle {
                        anchors.verticalCenter: parent.verticalCenter
                        width: interrupts.implicitWidth + 2 * UiKit.SpacingSmall
                        height: interrupts.implicitHeight + UiKit.SpacingUnit
                        radius: height / 2
                        color: model.interrupts ? UiKit.WarningSoftBackground : UiKit.AccentSoftBackground
                        Text {
                            id: interrupts
                            objectName: "interruptsText"
                            anchors.centerIn: parent
                            text: block.interruptsText
                            font.family: UiKit.ChipFont.family
                            font.weight: UiKit.ChipFont.weight
                            font.pointSize: UiKit.CaptionPointSize
                            color: UiKit.TextPrimaryColor
                        }
                    }
                }
                Text {
                    objectName: "spotsText"
                    width: parent.width
                    text: model.spots.join(" · ")
                    wrapMode: Text.WordWrap
                    font.family: UiKit.CardTextFont.family
                    font.weight: UiKit.CardTextFont.weight
                    font.pointSize: UiKit.CardTextPointSize
                    color: block.played ? UiKit.AdsListItemPlayedTextColor : UiKit.TextPrimaryColor
                }
                Text {
                    objectName: "downloadsText"
                    width: parent.width
                    text: block.downloadsText
                    font.family: UiKit.CaptionFont.family
                    font.weight: UiKit.CaptionFont.weight
                    font.pointSize: UiKit.CaptionPointSize
                    color: model.downloadedCount === model.spotCount ? UiKit.TextSecondaryColor : UiKit.WarningColor
                }
            }
        }
    }
}

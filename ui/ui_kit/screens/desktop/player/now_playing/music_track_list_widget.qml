import QtQuick 2.15
import QtQuick.Controls 2.15
import "../../components"

// The music playlist playing now: a row per track, the playing one marked in the
// accent; a click or Enter plays the track.
Rectangle {
    id: root
    objectName: "trackListScreen"

    property var tracksModel: null
    property int playingRow: -1

    signal trackClicked(int row)

    color: UiKit.ScreenBackgroundColor
    focus: true
    Keys.onEscapePressed: backButton.clicked()
    Component.onCompleted: forceActiveFocus()

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
            text: "Треки"
        }
    }

    ZBodyText {
        objectName: "emptyText"
        anchors.centerIn: parent
        visible: list.count === 0
        secondary: true
        text: "Сейчас музыка не играет: в этом периоде нет музыкального плейлиста или он ещё загружается."
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
        model: root.tracksModel
        currentIndex: root.playingRow
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: "Треки плейлиста"
        ScrollBar.vertical: ScrollBar {}
        Keys.onReturnPressed: if (currentIndex >= 0) root.trackClicked(currentIndex)
        Keys.onEnterPressed: if (currentIndex >= 0) root.trackClicked(currentIndex)

        delegate: Rectangle {
            id: row
            objectName: "trackRow" + index

            property bool playing: model.playing
            signal clicked()

            width: ListView.view.width
            height: UiKit.ListRowHeight + UiKit.SpacingMedium
            radius: UiKit.ControlRadius
            color: playing ? UiKit.TrackListItemBackgroundSelected
                 : mouse.containsMouse ? UiKit.TrackListItemHoverBackground : "transparent"
            Accessible.role: Accessible.Button
            Accessible.name: "Трек «" + model.title + "»"
                             + (model.artist.length > 0 ? ", " + model.artist : "")
                             + (playing ? ", играет" : "")
            Accessible.onPressAction: clicked()
            onClicked: root.trackClicked(index)

            Image {
                id: mark
                x: UiKit.SpacingMedium
                anchors.verticalCenter: parent.verticalCenter
                width: UiKit.IconSize
                height: UiKit.IconSize
                sourceSize.width: UiKit.IconSize
                sourceSize.height: UiKit.IconSize
                cache: false
                source: row.playing ? UiKit.SideBarPlayerIconSelected : UiKit.TrackCoverPlaceholderImage
            }
            Column {
                anchors.left: mark.right
                anchors.leftMargin: UiKit.SpacingMedium
                anchors.right: like.left
                anchors.rightMargin: UiKit.SpacingSmall
                anchors.verticalCenter: parent.verticalCenter
                Text {
                    width: parent.width
                    text: model.title
                    elide: Text.ElideRight
                    font.family: UiKit.CardTitleFont.family
                    font.weight: UiKit.CardTitleFont.weight
                    font.pointSize: UiKit.CardTextPointSize
                    color: row.playing ? UiKit.SideBarFontColorSelected : UiKit.TextPrimaryColor
                }
                Text {
                    width: parent.width
                    visible: text.length > 0
                    text: model.artist
                    elide: Text.ElideRight
                    font.family: UiKit.CaptionFont.family
                    font.weight: UiKit.CaptionFont.weight
                    font.pointSize: UiKit.CaptionPointSize
                    color: UiKit.TextSecondaryColor
                }
            }
            Image {
                id: like
                anchors.right: parent.right
                anchors.rightMargin: UiKit.SpacingMedium
                anchors.verticalCenter: parent.verticalCenter
                width: UiKit.IconSize
                height: UiKit.IconSize
                sourceSize.width: UiKit.IconSize
                sourceSize.height: UiKit.IconSize
                cache: false
                visible: model.likeStatus !== UiKit.LikeStatusValueNone
                source: model.likeStatus === UiKit.LikeStatusValueLiked ? UiKit.LikeIconSelected
                                                                         : UiKit.DislikeIconSelected
                Accessible.role: Accessible.StaticText
                Accessible.name: model.likeStatus === UiKit.LikeStatusValueLiked ? "Нравится" : "Не нравится"
            }
            MouseArea {
                id: mouse
                anchors.fill: parent
                hoverEnabled: true
                onClicked: row.clicked()
            }
        }
    }
}

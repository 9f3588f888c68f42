import QtQuick 2.15
import QtQuick.Controls 2.15
import "../../components"

// The week's schedules: a card per period under its schedule's name, with the time
// large enough to read from across the room, the volumes and the playlists.
Rectangle {
    id: root
    objectName: "scheduleScreen"

    property var periodsModel: null

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
            text: "Расписание"
        }
    }

    ZBodyText {
        objectName: "emptyText"
        anchors.centerIn: parent
        visible: list.count === 0
        secondary: true
        text: "Расписание ещё не получено с сервера. Оно появится здесь, как только плеер его загрузит."
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
        model: root.periodsModel
        activeFocusOnTab: true
        keyNavigationEnabled: true
        Accessible.role: Accessible.List
        Accessible.name: "Периоды расписания"
        ScrollBar.vertical: ScrollBar {}

        section.property: "scheduleName"
        section.delegate: Text {
            width: ListView.view ? ListView.view.width : 0
            topPadding: UiKit.SpacingMedium
            bottomPadding: UiKit.SpacingSmall
            text: section
            font.family: UiKit.ScheduleTitleFont.family
            font.weight: UiKit.ScheduleTitleFont.weight
            font.pointSize: UiKit.CardTitlePointSize
            color: UiKit.TextSecondaryColor
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        delegate: ZCard {
            id: card
            objectName: "periodCard" + index
            width: ListView.view.width
            height: Math.max(times.implicitHeight, playlists.implicitHeight) + 2 * UiKit.SpacingMedium
            color: UiKit.SchedulePeriodBackground
            Accessible.role: Accessible.ListItem
            Accessible.name: model.timeInterval + ", " + model.name

            Column {
                id: times
                x: UiKit.SpacingMedium
                y: UiKit.SpacingMedium
                width: parent.width * 0.38
                spacing: UiKit.SpacingUnit

                Text {
                    objectName: "timeText"
                    width: parent.width
                    text: model.timeInterval
                    font.family: UiKit.ClockFont.family
                    font.weight: UiKit.ClockFont.weight
                    font.pointSize: UiKit.CardTitlePointSize
                    color: UiKit.PeriodTitleColor
                }
                Text {
                    objectName: "periodNameText"
                    width: parent.width
                    text: model.name
                    elide: Text.ElideRight
                    font.family: UiKit.CardTitleFont.family
                    font.weight: UiKit.CardTitleFont.weight
                    font.pointSize: UiKit.CardTextPointSize
                    color: UiKit.TextPrimaryColor
                }
                Text {
                    objectName: "volumeText"
                    width: parent.width
                    text: model.volume
                    font.family: UiKit.CaptionFont.family
                    font.weight: UiKit.CaptionFont.weight
                    font.pointSize: UiKit.CaptionPointSize
                    color: UiKit.TextSecondaryColor
                }
            }

            Column {
                id: playlists
                anchors.left: times.right
                anchors.leftMargin: UiKit.SpacingMedium
                anchors.right: parent.right
                anchors.rightMargin: UiKit.SpacingMedium
                y: UiKit.SpacingMedium
                spacing: UiKit.SpacingSmall

                Repeater {
                    model: [
                        { kind: "Музыка", name: card.playlistName("music"), cover: card.playlistCover("music"), count: card.trackCount("music"), icon: UiKit.PlaylistMusicCoverImage },
                        { kind: "Видео", name: card.playlistName("video"), cover: card.playlistCover("video"), count: card.trackCount("video"), icon: UiKit.PlaylistVideoCoverImage },
                        { kind: "Фото", name: card.playlistName("photo"), cover: card.playlistCover("photo"), count: card.trackCount("photo"), icon: UiKit.PlaylistPhotoCoverImage }
                    ]
                    delegate: Row {
                        visible: modelData.name.length > 0
                        height: visible ? UiKit.IconButtonSize : 0
                        spacing: UiKit.SpacingSmall

                        Rectangle {
                            width: UiKit.IconButtonSize
                            height: UiKit.IconButtonSize
                            radius: UiKit.ControlRadius
                            color: UiKit.PlaylistViewCoverPlaceholderBackground
                            clip: true
                            Image {
                                anchors.centerIn: parent
                                width: UiKit.IconSize
                                height: UiKit.IconSize
                                sourceSize.width: UiKit.IconSize
                                sourceSize.height: UiKit.IconSize
                                cache: false
                                source: modelData.icon
                                visible: cover.status !== Image.Ready
                            }
                            Image {
                                id: cover
                                anchors.fill: parent
                                fillMode: Image.PreserveAspectCrop
                                asynchronous: true
                                cache: false
                                source: modelData.cover
                            }
                        }
                        Text {
                            anchors.verticalCenter: parent.verticalCenter
                            text: modelData.kind + ": " + modelData.name
                                  + (modelData.count > 0 ? " (" + modelData.count + ")" : "")
                            elide: Text.ElideRight
                            width: playlists.width - UiKit.IconButtonSize - UiKit.SpacingSmall
                            font.family: UiKit.CardTextFont.family
                            font.weight: UiKit.CardTextFont.weight
                            font.pointSize: UiKit.CardTextPointSize
                            color: UiKit.TextPrimaryColor
                        }
                    }
                }
            }

            function playlistName(kind) {
                var value = model[kind + "PlaylistName"];
                return value ? value : "";
            }
            function playlistCover(kind) {
                var value = model[kind + "PlaylistsCover"];
                return value ? value : "";
            }
            function trackCount(kind) {
                var value = model[kind + "PlaylisttrackCount"];
                return value ? value : 0;
            }
        }
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import "../../components"

// Now playing, read from two metres: the period and the clock on top, the track in
// large type in the middle, the advertising band when a block plays, and the next
// block and the downloads at the bottom. When the player is not playing music, the
// middle says why and what happens next.
Rectangle {
    id: root
    objectName: "nowPlayingScreen"

    // Set by the screen class from the player's state.
    property string situation: "stopped"
    property string stateText: "Загружаем расписание…"
    property string periodText: ""
    property string clockText: ""
    property string objectText: ""
    property string trackTitle: ""
    property string trackArtist: ""
    property string playlistName: ""
    property int likeStatus: UiKit.LikeStatusValueNone
    property real progress: 0
    property string elapsedText: "0:00"
    property string totalText: "0:00"
    property bool playing: false
    property string adText: ""
    property string nextAdText: ""
    property string downloadsText: ""
    property real downloadsProgress: 1
    property string noticeText: ""
    // When the schedule was last checked with the server.
    property string checkedText: ""
    // The video and photo areas: the screen class lays native widgets over the two
    // placeholders while they are shown here.
    property bool videoShown: false
    property bool photoShown: false
    property string videoName: ""
    property string photoName: ""
    // Not empty while video and photo play full-screen on another screen.
    property string externalOutputText: ""

    signal seekRequested(real progress)

    color: UiKit.ScreenBackgroundColor
    focus: true
    Component.onCompleted: forceActiveFocus()

    // ---- top row: period, clock, point of sale ----
    Item {
        id: top
        x: UiKit.ScreenMargin
        y: UiKit.SpacingLarge
        width: parent.width - 2 * UiKit.ScreenMargin
        height: Math.max(period.implicitHeight, clock.implicitHeight) + object.implicitHeight

        Text {
            id: period
            objectName: "periodText"
            anchors.left: parent.left
            anchors.right: clock.left
            anchors.rightMargin: UiKit.SpacingMedium
            text: root.periodText.length > 0 ? root.periodText : "Период не идёт"
            elide: Text.ElideRight
            font.family: UiKit.PeriodTitleFont.family
            font.weight: UiKit.PeriodTitleFont.weight
            font.pointSize: UiKit.PeriodTitlePointSize
            color: root.periodText.length > 0 ? UiKit.PeriodTitleColor : UiKit.TextSecondaryColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            id: clock
            objectName: "clockText"
            anchors.right: parent.right
            text: root.clockText
            font.family: UiKit.ClockFont.family
            font.weight: UiKit.ClockFont.weight
            font.pointSize: UiKit.ClockPointSize
            color: UiKit.ClockTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: "Время " + text
        }
        Text {
            id: object
            objectName: "objectText"
            anchors.top: period.bottom
            anchors.left: parent.left
            anchors.right: checked.left
            anchors.rightMargin: UiKit.SpacingMedium
            text: root.objectText
            elide: Text.ElideRight
            font.family: UiKit.CaptionFont.family
            font.weight: UiKit.CaptionFont.weight
            font.pointSize: UiKit.CardTextPointSize
            color: UiKit.TextSecondaryColor
        }
        Text {
            id: checked
            objectName: "checkedText"
            anchors.top: object.top
            anchors.right: parent.right
            text: root.checkedText
            font.family: UiKit.CaptionFont.family
            font.weight: UiKit.CaptionFont.weight
            font.pointSize: UiKit.CardTextPointSize
            color: UiKit.TextSecondaryColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    // ---- the advertising band ----
    Rectangle {
        id: adBand
        objectName: "adBand"
        x: UiKit.ScreenMargin
        anchors.top: top.bottom
        anchors.topMargin: UiKit.SpacingMedium
        width: parent.width - 2 * UiKit.ScreenMargin
        height: visible ? adLabel.implicitHeight + 2 * UiKit.SpacingSmall : 0
        visible: root.adText.length > 0
        radius: UiKit.ControlRadius
        color: UiKit.AdBandBackground
        Accessible.role: Accessible.AlertMessage
        Accessible.name: adLabel.text

        Text {
            id: adLabel
            objectName: "adLabel"
            anchors.centerIn: parent
            width: parent.width - 2 * UiKit.SpacingMedium
            horizontalAlignment: Text.AlignHCenter
            text: root.adText + " — музыка на паузе"
            elide: Text.ElideRight
            font.family: UiKit.AdBandFont.family
            font.weight: UiKit.AdBandFont.weight
            font.pointSize: UiKit.AdBandPointSize
            color: UiKit.AdBandTextColor
        }
    }

    // ---- the middle: the track, or why there is none ----
    Item {
        id: middle
        anchors.top: adBand.bottom
        anchors.topMargin: UiKit.SpacingLarge
        anchors.bottom: bottom.top
        anchors.bottomMargin: UiKit.SpacingLarge
        x: UiKit.ScreenMargin
        width: parent.width - 2 * UiKit.ScreenMargin

        Text {
            objectName: "stateText"
            anchors.centerIn: parent
            width: Math.min(parent.width, UiKit.AuthCardWidth * 1.5)
            visible: root.situation !== "playing"
            text: root.stateText
            wrapMode: Text.WordWrap
            horizontalAlignment: Text.AlignHCenter
            font.family: UiKit.StateMessageFont.family
            font.weight: UiKit.StateMessageFont.weight
            font.pointSize: UiKit.StateMessagePointSize
            color: UiKit.StateMessageTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }

        // Video above photo, each 16:9 with the file's name under it; or, with both on
        // another screen, a note saying which.
        Column {
            id: media
            objectName: "mediaColumn"
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: root.situation === "playing" &&
                     (root.videoShown || root.photoShown || root.externalOutputText.length > 0)
            width: Math.min(parent.width * 0.36,
                            (parent.height - 2 * nameHeight - UiKit.SpacingLarge) * 16 / 9 /
                            Math.max(1, (root.videoShown ? 1 : 0) + (root.photoShown ? 1 : 0)))
            spacing: UiKit.SpacingSmall
            readonly property real nameHeight: videoNameLabel.implicitHeight + UiKit.SpacingSmall

            Rectangle {
                objectName: "videoArea"
                visible: root.videoShown && root.externalOutputText.length === 0
                width: media.width
                height: width * 9 / 16
                color: UiKit.VideoAreaBackground
                Accessible.role: Accessible.Graphic
                Accessible.name: "Видео"
            }
            Text {
                id: videoNameLabel
                objectName: "videoNameText"
                visible: root.videoShown && root.externalOutputText.length === 0
                width: media.width
                text: root.videoName
                elide: Text.ElideMiddle
                font.family: UiKit.CaptionFont.family
                font.pointSize: UiKit.CaptionPointSize
                color: UiKit.TextSecondaryColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Rectangle {
                objectName: "photoArea"
                visible: root.photoShown && root.externalOutputText.length === 0
                width: media.width
                height: width * 9 / 16
                color: UiKit.VideoAreaBackground
                Accessible.role: Accessible.Graphic
                Accessible.name: "Фото"
            }
            Text {
                objectName: "photoNameText"
                visible: root.photoShown && root.externalOutputText.length === 0
                width: media.width
                text: root.photoName
                elide: Text.ElideMiddle
                font.family: UiKit.CaptionFont.family
                font.pointSize: UiKit.CaptionPointSize
                color: UiKit.TextSecondaryColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
            Text {
                objectName: "videoOutputNote"
                visible: root.externalOutputText.length > 0
                width: media.width
                text: root.externalOutputText
                wrapMode: Text.WordWrap
                font.family: UiKit.CaptionFont.family
                font.pointSize: UiKit.CaptionPointSize
                color: UiKit.TextSecondaryColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }

        Row {
            id: track
            anchors.verticalCenter: parent.verticalCenter
            visible: root.situation === "playing"
            spacing: UiKit.SpacingLarge

            Rectangle {
                id: cover
                // The screen lays the cover itself over this card when it arrives;
                // the note icon stands in until then and where there is none.
                objectName: "coverArea"
                // Beside the video and photo areas the cover gives way, so that the
                // title, the progress and the buttons keep a readable width.
                width: Math.min(UiKit.TrackCoverSize, middle.height,
                                media.visible ? middle.width * 0.2 : UiKit.TrackCoverSize)
                height: width
                radius: UiKit.CardRadius
                color: UiKit.TrackInfoViewCoverBackground
                Image {
                    anchors.centerIn: parent
                    width: UiKit.LargeIconSize
                    height: UiKit.LargeIconSize
                    sourceSize.width: UiKit.LargeIconSize
                    sourceSize.height: UiKit.LargeIconSize
                    cache: false
                    source: UiKit.TrackCoverPlaceholderImage
                }
            }

            Column {
                width: middle.width - cover.width - UiKit.SpacingLarge -
                       (media.visible ? media.width + UiKit.SpacingLarge : 0)
                anchors.verticalCenter: parent.verticalCenter
                spacing: UiKit.SpacingSmall

                Text {
                    objectName: "trackTitleText"
                    width: parent.width
                    text: root.trackTitle
                    elide: Text.ElideRight
                    maximumLineCount: 2
                    wrapMode: Text.WordWrap
                    font.family: UiKit.TrackInfoViewTrackTitleFont.family
                    font.weight: UiKit.TrackInfoViewTrackTitleFont.weight
                    font.pointSize: UiKit.TrackInfoViewTrackTitleTextPointSize
                    color: UiKit.TrackInfoViewTrackTitleColor
                    Accessible.role: Accessible.StaticText
                    Accessible.name: text
                }
                Text {
                    objectName: "trackArtistText"
                    width: parent.width
                    text: root.trackArtist.length > 0 ? root.trackArtist : root.playlistName
                    elide: Text.ElideRight
                    font.family: UiKit.TrackInfoViewArtistFont.family
                    font.weight: UiKit.TrackInfoViewArtistFont.weight
                    font.pointSize: UiKit.TrackInfoViewArtistTextPointSize
                    color: UiKit.TrackInfoViewArtistColor
                }

                // Progress: a click sets the position.
                Item {
                    width: parent.width
                    height: UiKit.IconButtonSize
                    Rectangle {
                        id: progressBar
                        objectName: "progressBar"
                        anchors.verticalCenter: parent.verticalCenter
                        width: parent.width
                        height: UiKit.ProgressBarHeight
                        radius: height / 2
                        color: UiKit.ProgressBarBackground
                        Accessible.role: Accessible.ProgressBar
                        Accessible.name: "Прогресс трека"
                        Rectangle {
                            width: parent.width * Math.max(0, Math.min(1, root.progress))
                            height: parent.height
                            radius: parent.radius
                            color: UiKit.ProgressBarColor
                        }
                    }
                    MouseArea {
                        anchors.fill: parent
                        onClicked: root.seekRequested(mouse.x / width)
                    }
                }
                Item {
                    width: parent.width
                    height: elapsed.implicitHeight
                    Text {
                        id: elapsed
                        objectName: "elapsedText"
                        text: root.elapsedText
                        font.family: UiKit.TimeTextFont.family
                        font.weight: UiKit.TimeTextFont.weight
                        font.pointSize: UiKit.TimeTextPointSize
                        color: UiKit.TextSecondaryColor
                    }
                    Text {
                        objectName: "totalText"
                        anchors.right: parent.right
                        text: root.totalText
                        font.family: UiKit.TimeTextFont.family
                        font.weight: UiKit.TimeTextFont.weight
                        font.pointSize: UiKit.TimeTextPointSize
                        color: UiKit.TextSecondaryColor
                    }
                }

                // The likes wrap under the controls, as a pair, when the column is
                // narrow.
                Flow {
                    width: parent.width
                    spacing: UiKit.SpacingMedium
                    Row {
                        spacing: UiKit.SpacingSmall
                        ZIconButton {
                            objectName: "previousButton"
                            iconSource: UiKit.PreviousTrackIcon
                            accessibleName: "Предыдущий трек"
                        }
                        ZIconButton {
                            objectName: "playPauseButton"
                            iconSource: root.playing ? UiKit.PauseIcon : UiKit.PlayIcon
                            accessibleName: root.playing ? "Пауза" : "Играть"
                        }
                        ZIconButton {
                            objectName: "nextButton"
                            iconSource: UiKit.NextTrackIcon
                            accessibleName: "Следующий трек"
                        }
                    }
                    Row {
                        spacing: UiKit.SpacingSmall
                        ZIconButton {
                            objectName: "likeButton"
                            iconSource: root.likeStatus === UiKit.LikeStatusValueLiked ? UiKit.LikeIconSelected : UiKit.LikeIcon
                            accessibleName: "Нравится"
                            checked: root.likeStatus === UiKit.LikeStatusValueLiked
                        }
                        ZIconButton {
                            objectName: "dislikeButton"
                            iconSource: root.likeStatus === UiKit.LikeStatusValueDisliked ? UiKit.DislikeIconSelected : UiKit.DislikeIcon
                            accessibleName: "Не нравится"
                            checked: root.likeStatus === UiKit.LikeStatusValueDisliked
                        }
                    }
                }
                Text {
                    objectName: "noticeText"
                    width: parent.width
                    visible: text.length > 0
                    text: root.noticeText
                    wrapMode: Text.WordWrap
                    font.family: UiKit.CaptionFont.family
                    font.weight: UiKit.CaptionFont.weight
                    font.pointSize: UiKit.CaptionPointSize
                    color: UiKit.WarningColor
                }
            }
        }
    }

    // ---- bottom row: next advert, downloads, the lists ----
    Item {
        id: bottom
        x: UiKit.ScreenMargin
        anchors.bottom: parent.bottom
        anchors.bottomMargin: UiKit.SpacingLarge
        width: parent.width - 2 * UiKit.ScreenMargin
        height: buttons.height + (downloads.visible ? downloads.height + UiKit.SpacingSmall : 0)

        Column {
            id: downloads
            visible: root.downloadsText.length > 0
            width: parent.width
            spacing: UiKit.SpacingUnit
            Text {
                objectName: "downloadsText"
                text: root.downloadsText
                font.family: UiKit.CaptionFont.family
                font.weight: UiKit.CaptionFont.weight
                font.pointSize: UiKit.CaptionPointSize
                color: UiKit.TextSecondaryColor
            }
            Rectangle {
                width: parent.width
                height: UiKit.ThinProgressBarHeight
                color: UiKit.ProgressBarBackground
                Rectangle {
                    width: parent.width * root.downloadsProgress
                    height: parent.height
                    color: UiKit.DownloadProgressColor
                }
            }
        }

        Item {
            id: buttons
            anchors.bottom: parent.bottom
            width: parent.width
            height: UiKit.ButtonHeight
            Text {
                objectName: "nextAdText"
                anchors.verticalCenter: parent.verticalCenter
                anchors.left: parent.left
                anchors.right: lists.left
                anchors.rightMargin: UiKit.SpacingMedium
                text: root.nextAdText
                elide: Text.ElideRight
                font.family: UiKit.CardTextFont.family
                font.weight: UiKit.CardTextFont.weight
                font.pointSize: UiKit.CardTextPointSize
                color: UiKit.TextSecondaryColor
            }
            Row {
                id: lists
                anchors.right: parent.right
                spacing: UiKit.SpacingSmall
                ZButton { objectName: "scheduleButton"; variant: "secondary"; text: "Расписание" }
                ZButton { objectName: "adsButton"; variant: "secondary"; text: "Реклама" }
                ZButton { objectName: "tracksButton"; variant: "secondary"; text: "Треки" }
            }
        }
    }
}

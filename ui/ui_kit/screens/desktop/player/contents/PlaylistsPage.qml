import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../../components"

// One content section's catalogue: the playlists as cards, the active ones marked,
// a search over their names; a card opens the playlist's tracks with the buttons
// that switch it on or off. The music, video and photo documents only name their
// section and its words.
Rectangle {
    id: root

    // Set by the document: the words of its section.
    property url coverPlaceholder: ""
    // "1 трек", "2 трека", "5 треков" — the three Russian plural forms.
    property var countForms: ["трек", "трека", "треков"]

    // Set by the screen.
    property var playlistsModel: null
    property var tracksModel: null
    property bool loading: false
    property bool loaded: false
    property bool loadFailed: false
    property bool tracksShown: false
    property bool tracksLoading: false
    property string openedName: ""
    property string openedImage: ""
    property int openedTracksCount: 0
    property string openedSizeText: ""
    property bool openedActive: false
    // What failed, shown where the owner is looking: over the catalogue or the tracks.
    property string errorText: ""

    signal playlistChosen(int row)
    signal searchTextChanged(string text)
    signal tracksBackClicked()

    function countText(count) {
        var tens = count % 100;
        var ones = count % 10;
        var form = (tens >= 11 && tens <= 14) ? 2 : ones === 1 ? 0 : (ones >= 2 && ones <= 4) ? 1 : 2;
        return count + " " + countForms[form];
    }
    function detailsText(count, size) {
        return size.length > 0 ? countText(count) + " · " + size : countText(count);
    }

    color: UiKit.ScreenBackgroundColor
    Keys.onEscapePressed: if (root.tracksShown) root.tracksBackClicked()
    Keys.onReturnPressed: if (root.tracksShown) activateButton.clicked()
    Keys.onEnterPressed: if (root.tracksShown) activateButton.clicked()

    // ---- the catalogue ----
    ColumnLayout {
        anchors.fill: parent
        anchors.margins: UiKit.ScreenMargin
        spacing: UiKit.SpacingMedium
        visible: !root.tracksShown

        ZTextField {
            id: search
            Layout.fillWidth: true
            label: "Поиск плейлиста"
            inputObjectName: "searchField"
            placeholderText: "Название плейлиста"
            onTextChanged: root.searchTextChanged(text)
        }
        ZBodyText {
            objectName: "loadingText"
            Layout.fillWidth: true
            visible: root.loading
            secondary: true
            text: "Загружаем плейлисты…"
        }
        ZMessage {
            objectName: "errorMessage"
            Layout.fillWidth: true
            text: root.tracksShown ? "" : root.errorText
        }
        ZButton {
            objectName: "retryButton"
            visible: root.loadFailed
            variant: "secondary"
            text: "Повторить"
        }
        ZBodyText {
            objectName: "emptyText"
            Layout.fillWidth: true
            visible: root.loaded && !root.loading && grid.count === 0
            secondary: true
            text: search.text.length > 0 ? "Ничего не нашлось. Попробуйте другое название."
                                         : "В каталоге пока нет плейлистов этого раздела."
        }

        GridView {
            id: grid
            objectName: "playlistsGrid"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            cellWidth: UiKit.PlaylistCardWidth + UiKit.SpacingMedium
            cellHeight: UiKit.PlaylistCardHeight + UiKit.SpacingMedium
            model: root.playlistsModel
            activeFocusOnTab: true
            keyNavigationEnabled: true
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: "Плейлисты"
            Keys.onReturnPressed: if (currentItem) currentItem.clicked()
            Keys.onEnterPressed: if (currentItem) currentItem.clicked()
            ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

            delegate: Item {
                id: cell
                objectName: "playlistCard" + index

                // What the card says, for the screen's tests and for automation.
                readonly property string title: model.name
                readonly property bool active: model.active
                readonly property string details: root.detailsText(model.tracksCount, model.sizeText)
                readonly property bool focused: cell.GridView.isCurrentItem && grid.activeFocus
                signal clicked()

                width: grid.cellWidth
                height: grid.cellHeight
                Accessible.role: Accessible.Button
                Accessible.name: model.name
                Accessible.description: (cell.active ? "Активен, " : "") + cell.details
                Accessible.onPressAction: cell.clicked()
                onClicked: {
                    grid.currentIndex = index;
                    root.playlistChosen(index);
                }

                Rectangle {
                    width: UiKit.PlaylistCardWidth
                    height: UiKit.PlaylistCardHeight
                    radius: UiKit.CardRadius
                    color: mouse.containsMouse || cell.focused ? UiKit.CardHoverBackground : UiKit.PlaylistViewCardBackground
                    border.width: cell.focused ? UiKit.FocusRingWidth : UiKit.BorderWidth
                    border.color: cell.focused ? UiKit.FocusRingColor : UiKit.CardBorderColor

                    Rectangle {
                        id: cover
                        x: UiKit.SpacingSmall
                        y: UiKit.SpacingSmall
                        width: parent.width - 2 * UiKit.SpacingSmall
                        height: width
                        radius: UiKit.ControlRadius
                        color: UiKit.PlaylistViewCoverPlaceholderBackground
                        clip: true

                        Image {
                            id: coverPlaceholderImage
                            anchors.centerIn: parent
                            width: UiKit.LargeIconSize
                            height: UiKit.LargeIconSize
                            sourceSize.width: UiKit.LargeIconSize
                            sourceSize.height: UiKit.LargeIconSize
                            visible: coverImage.status !== Image.Ready
                            source: root.coverPlaceholder
                            cache: false
                        }
                        Image {
                            id: coverImage
                            anchors.fill: parent
                            source: model.image
                            fillMode: Image.PreserveAspectCrop
                            sourceSize.width: width
                            sourceSize.height: height
                            asynchronous: true
                            cache: false
                        }
                        Rectangle {
                            objectName: "activeBadge" + index
                            visible: model.active
                            x: UiKit.SpacingSmall
                            y: UiKit.SpacingSmall
                            width: badgeText.implicitWidth + 2 * UiKit.SpacingSmall
                            height: badgeText.implicitHeight + UiKit.SpacingUnit
                            radius: height / 2
                            color: UiKit.PlaylistViewActiveBadgeBackground

                            Text {
                                id: badgeText
                                anchors.centerIn: parent
                                text: "Активен"
                                font.family: UiKit.CaptionFont.family
                                font.weight: UiKit.BodyStrongFont.weight
                                font.pointSize: UiKit.CaptionPointSize
                                color: UiKit.PlaylistViewActiveBadgeTextColor
                            }
                        }
                    }
                    Column {
                        anchors.left: cover.left
                        anchors.right: cover.right
                        anchors.top: cover.bottom
                        anchors.topMargin: UiKit.SpacingSmall
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
                            text: cell.details
                            elide: Text.ElideRight
                            font.family: UiKit.CaptionFont.family
                            font.weight: UiKit.CaptionFont.weight
                            font.pointSize: UiKit.CaptionPointSize
                            color: UiKit.TextSecondaryColor
                        }
                    }
                    MouseArea {
                        id: mouse
                        anchors.fill: parent
                        hoverEnabled: true
                        cursorShape: Qt.PointingHandCursor
                        onClicked: cell.clicked()
                    }
                }
            }
        }
    }

    // ---- an opened playlist ----
    ColumnLayout {
        anchors.fill: parent
        anchors.margins: UiKit.ScreenMargin
        spacing: UiKit.SpacingMedium
        visible: root.tracksShown

        RowLayout {
            Layout.fillWidth: true
            spacing: UiKit.SpacingMedium

            ZButton {
                id: backButton
                objectName: "backButton"
                variant: "secondary"
                text: "Назад"
                onClicked: root.tracksBackClicked()
            }
            ZScreenTitle {
                objectName: "openedNameText"
                Layout.fillWidth: true
                text: root.openedName
                elide: Text.ElideRight
                wrapMode: Text.NoWrap
            }
            Rectangle {
                objectName: "openedActiveBadge"
                visible: root.openedActive
                implicitWidth: openedBadgeText.implicitWidth + 2 * UiKit.SpacingSmall
                implicitHeight: openedBadgeText.implicitHeight + UiKit.SpacingUnit
                radius: height / 2
                color: UiKit.PlaylistViewActiveBadgeBackground

                Text {
                    id: openedBadgeText
                    anchors.centerIn: parent
                    text: "Активен"
                    font.family: UiKit.CaptionFont.family
                    font.weight: UiKit.BodyStrongFont.weight
                    font.pointSize: UiKit.CaptionPointSize
                    color: UiKit.PlaylistViewActiveBadgeTextColor
                }
            }
        }
        ZBodyText {
            objectName: "openedDetailsText"
            Layout.fillWidth: true
            secondary: true
            text: root.detailsText(root.openedTracksCount, root.openedSizeText)
        }
        Row {
            spacing: UiKit.SpacingSmall

            ZButton {
                id: activateButton
                objectName: "activateButton"
                text: "Сделать активным"
            }
            ZButton {
                objectName: "deactivateButton"
                visible: root.openedActive
                variant: "secondary"
                text: "Отключить"
            }
        }
        ZMessage {
            objectName: "tracksErrorMessage"
            Layout.fillWidth: true
            text: root.tracksShown ? root.errorText : ""
        }
        ZBodyText {
            objectName: "tracksLoadingText"
            Layout.fillWidth: true
            visible: root.tracksLoading
            secondary: true
            text: "Загружаем треки…"
        }
        ZBodyText {
            objectName: "noTracksText"
            Layout.fillWidth: true
            visible: !root.tracksLoading && tracksList.count === 0
            secondary: true
            text: "Список треков пуст."
        }

        ListView {
            id: tracksList
            objectName: "tracksList"
            Layout.fillWidth: true
            Layout.fillHeight: true
            clip: true
            model: root.tracksShown ? root.tracksModel : null
            boundsBehavior: Flickable.StopAtBounds
            Accessible.role: Accessible.List
            Accessible.name: "Треки"
            ScrollBar.vertical: ScrollBar { policy: ScrollBar.AsNeeded }

            delegate: Rectangle {
                objectName: "trackRow" + index
                readonly property string title: model.name

                width: ListView.view ? ListView.view.width : 0
                height: UiKit.ListRowHeight
                color: index % 2 === 0 ? UiKit.CardBackground : UiKit.ScreenBackgroundColor
                radius: UiKit.ControlRadius
                Accessible.role: Accessible.ListItem
                Accessible.name: model.author.length > 0 ? model.name + ", " + model.author : model.name

                Row {
                    anchors.left: parent.left
                    anchors.leftMargin: UiKit.SpacingMedium
                    anchors.right: parent.right
                    anchors.rightMargin: UiKit.SpacingMedium
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: UiKit.SpacingSmall

                    Text {
                        width: Math.min(implicitWidth, parent.width * 2 / 3)
                        text: model.name
                        elide: Text.ElideRight
                        font.family: UiKit.BodyStrongFont.family
                        font.weight: UiKit.BodyStrongFont.weight
                        font.pointSize: UiKit.CardTextPointSize
                        color: UiKit.TextPrimaryColor
                    }
                    Text {
                        width: parent.width - x
                        visible: text.length > 0
                        text: model.author
                        elide: Text.ElideRight
                        font.family: UiKit.CaptionFont.family
                        font.weight: UiKit.CaptionFont.weight
                        font.pointSize: UiKit.CardTextPointSize
                        color: UiKit.TextSecondaryColor
                    }
                }
            }
        }
    }
}

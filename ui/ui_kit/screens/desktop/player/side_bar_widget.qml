import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../components"

// The navigation column of the signed-in application. From top to bottom: the
// product mark, the sections, then what the shop owner glances at — is it
// playing, does the server answer — and the rarely used theme, sign-out and
// version at the foot.
Rectangle {
    id: sideBar
    objectName: "sideBar"

    property string currentSection: "player"
    // "playing", "paused" or "stopped", as the player reports it.
    property string playbackState: "stopped"
    // "online" or "offline" after the first check of the server; "unknown" before.
    property string serverState: "unknown"
    property bool isDarkTheme: UiKit.IsDark
    property bool blackoutShown: false

    signal themeChanged(bool dark)
    signal hideBlackout()

    color: UiKit.SideBarBackground

    Rectangle {
        anchors.top: parent.top
        anchors.bottom: parent.bottom
        anchors.right: parent.right
        width: UiKit.BorderWidth
        color: UiKit.SideBarBorderColor
    }

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: UiKit.SpacingMedium
        spacing: UiKit.SpacingUnit

        Row {
            Layout.fillWidth: true
            Layout.bottomMargin: UiKit.SpacingLarge
            spacing: UiKit.SpacingSmall

            Image {
                cache: false
                anchors.verticalCenter: parent.verticalCenter
                width: UiKit.IconButtonSize
                height: UiKit.IconButtonSize
                sourceSize.width: UiKit.IconButtonSize
                sourceSize.height: UiKit.IconButtonSize
                source: UiKit.LogoMarkImage
                Accessible.ignored: true
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: "ЗЕЛМАР"
                font.family: UiKit.SideBarProductFont.family
                font.weight: UiKit.SideBarProductFont.weight
                font.pointSize: UiKit.SideBarProductPointSize
                color: UiKit.TextPrimaryColor
                Accessible.role: Accessible.Heading
                Accessible.name: text
            }
        }

        ZSideBarItem {
            objectName: "playerButton"
            Layout.fillWidth: true
            text: "Плеер"
            iconSource: UiKit.SideBarPlayerIcon
            selectedIconSource: UiKit.SideBarPlayerIconSelected
            selected: sideBar.currentSection === "player"
            focus: true
        }
        ZSideBarItem {
            objectName: "musicButton"
            Layout.fillWidth: true
            text: "Музыка"
            iconSource: UiKit.SideBarMusicIcon
            selectedIconSource: UiKit.SideBarMusicIconSelected
            selected: sideBar.currentSection === "music"
        }
        ZSideBarItem {
            objectName: "videoButton"
            Layout.fillWidth: true
            text: "Видео"
            iconSource: UiKit.SideBarVideoIcon
            selectedIconSource: UiKit.SideBarVideoIconSelected
            selected: sideBar.currentSection === "video"
        }
        ZSideBarItem {
            objectName: "photoButton"
            Layout.fillWidth: true
            text: "Фото"
            iconSource: UiKit.SideBarPhotoIcon
            selectedIconSource: UiKit.SideBarPhotoIconSelected
            selected: sideBar.currentSection === "photo"
        }
        ZSideBarItem {
            objectName: "licenseButton"
            Layout.fillWidth: true
            text: "Сертификат"
            iconSource: UiKit.SideBarLicenseIcon
            selectedIconSource: UiKit.SideBarLicenseIconSelected
            selected: sideBar.currentSection === "license"
        }
        ZSideBarItem {
            objectName: "objectsButton"
            Layout.fillWidth: true
            text: "Объекты"
            iconSource: UiKit.SideBarObjectsIcon
            selectedIconSource: UiKit.SideBarObjectsIconSelected
            selected: sideBar.currentSection === "objects"
        }
        ZSideBarItem {
            objectName: "settingsButton"
            Layout.fillWidth: true
            text: "Настройки"
            iconSource: UiKit.SideBarSettingsIcon
            selectedIconSource: UiKit.SideBarSettingsIconSelected
            selected: sideBar.currentSection === "settings"
        }

        Item { Layout.fillWidth: true; Layout.fillHeight: true }

        // The two statuses, each a dot or icon in its colour and one short line.
        Row {
            Layout.fillWidth: true
            Layout.leftMargin: UiKit.SpacingSmall + UiKit.SpacingUnit
            spacing: UiKit.SpacingSmall

            Rectangle {
                objectName: "playbackStatusDot"
                anchors.verticalCenter: parent.verticalCenter
                width: UiKit.StatusDotSize
                height: UiKit.StatusDotSize
                radius: UiKit.StatusDotSize / 2
                color: sideBar.playbackState === "playing" ? UiKit.StatusPlayingColor
                     : sideBar.playbackState === "paused" ? UiKit.StatusPausedColor
                     : UiKit.StatusStoppedColor
            }
            Text {
                objectName: "playbackStatusText"
                width: parent.width - UiKit.StatusDotSize - parent.spacing
                text: sideBar.playbackState === "playing" ? "Играет"
                    : sideBar.playbackState === "paused" ? "Пауза"
                    : "Остановлено"
                wrapMode: Text.WordWrap
                font.family: UiKit.SideBarStatusFont.family
                font.weight: UiKit.SideBarStatusFont.weight
                font.pointSize: UiKit.SideBarStatusPointSize
                color: UiKit.TextPrimaryColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }
        Row {
            Layout.fillWidth: true
            Layout.leftMargin: UiKit.SpacingSmall + UiKit.SpacingUnit
            Layout.topMargin: UiKit.SpacingUnit
            spacing: UiKit.SpacingSmall

            Image {
                cache: false
                id: serverIcon
                width: UiKit.StatusDotSize + UiKit.SpacingUnit
                height: width
                sourceSize.width: width
                sourceSize.height: height
                source: sideBar.serverState === "offline" ? UiKit.ServerOfflineIcon : UiKit.ServerOnlineIcon
                opacity: sideBar.serverState === "unknown" ? 0.5 : 1.0
                Accessible.ignored: true
            }
            Text {
                objectName: "serverStatusText"
                width: parent.width - serverIcon.width - parent.spacing
                text: sideBar.serverState === "online" ? "Сервер доступен"
                    : sideBar.serverState === "offline" ? "Нет связи с сервером — играем из памяти"
                    : "Проверяем связь с сервером…"
                wrapMode: Text.WordWrap
                font.family: UiKit.SideBarStatusFont.family
                font.weight: UiKit.SideBarStatusFont.weight
                font.pointSize: UiKit.SideBarStatusPointSize
                color: sideBar.serverState === "offline" ? UiKit.ServerOfflineColor : UiKit.TextSecondaryColor
                Accessible.role: Accessible.StaticText
                Accessible.name: text
            }
        }

        Rectangle {
            Layout.fillWidth: true
            Layout.topMargin: UiKit.SpacingSmall
            Layout.bottomMargin: UiKit.SpacingUnit
            Layout.preferredHeight: UiKit.BorderWidth
            color: UiKit.DividerColor
        }

        // A switch that does not flip itself: it shows the theme in force and asks
        // for the other one, so that what it shows is always what the screens show.
        AbstractButton {
            id: themeSwitch
            objectName: "themeSwitch"
            Layout.fillWidth: true
            implicitHeight: UiKit.SideBarItemHeight
            text: "Тёмная тема"
            checkable: false
            activeFocusOnTab: true
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            Accessible.role: Accessible.CheckBox
            Accessible.name: text
            Accessible.checkable: true
            Accessible.checked: sideBar.isDarkTheme
            Accessible.onPressAction: clicked()
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            onClicked: sideBar.themeChanged(!sideBar.isDarkTheme)

            background: Rectangle {
                radius: UiKit.ControlRadius
                color: themeSwitch.hovered ? UiKit.SideBarItemHoverBackground : "transparent"
                ZFocusRing { visible: themeSwitch.activeFocus && themeSwitch.focusReason === Qt.TabFocusReason }
            }
            contentItem: Item {
                Image {
                    cache: false
                    id: themeIcon
                    anchors.left: parent.left
                    anchors.leftMargin: UiKit.SpacingSmall + UiKit.SpacingUnit
                    anchors.verticalCenter: parent.verticalCenter
                    width: UiKit.SideBarIconSize
                    height: UiKit.SideBarIconSize
                    sourceSize.width: UiKit.SideBarIconSize
                    sourceSize.height: UiKit.SideBarIconSize
                    source: sideBar.isDarkTheme ? UiKit.ThemeDarkIcon : UiKit.ThemeLightIcon
                }
                Text {
                    anchors.left: themeIcon.right
                    anchors.leftMargin: UiKit.SpacingSmall + UiKit.SpacingUnit
                    anchors.right: track.left
                    anchors.rightMargin: UiKit.SpacingSmall
                    anchors.verticalCenter: parent.verticalCenter
                    text: themeSwitch.text
                    elide: Text.ElideRight
                    font.family: UiKit.SideBarFont.family
                    font.weight: UiKit.SideBarFont.weight
                    font.pointSize: UiKit.SideBarPointSize
                    color: UiKit.SideBarFontColor
                }
                Rectangle {
                    id: track
                    anchors.right: parent.right
                    anchors.rightMargin: UiKit.SpacingSmall
                    anchors.verticalCenter: parent.verticalCenter
                    width: UiKit.SideBarIconSize * 2
                    height: UiKit.SideBarIconSize
                    radius: height / 2
                    color: sideBar.isDarkTheme ? UiKit.SwitchTrackColorSelected : UiKit.SwitchTrackColor
                    Rectangle {
                        width: parent.height - UiKit.SpacingUnit
                        height: width
                        radius: width / 2
                        anchors.verticalCenter: parent.verticalCenter
                        x: sideBar.isDarkTheme ? parent.width - width - UiKit.SpacingUnit / 2 : UiKit.SpacingUnit / 2
                        color: UiKit.SwitchKnobColor
                    }
                }
            }
        }

        ZSideBarItem {
            objectName: "logoutButton"
            Layout.fillWidth: true
            text: "Выход"
            iconSource: UiKit.SideBarLogoutIcon
        }

        Text {
            objectName: "appVersionText"
            Layout.fillWidth: true
            Layout.topMargin: UiKit.SpacingSmall
            Layout.leftMargin: UiKit.SpacingSmall + UiKit.SpacingUnit
            font.family: UiKit.SideBarVersionFont.family
            font.weight: UiKit.SideBarVersionFont.weight
            font.pointSize: UiKit.SideBarVersionPointSize
            color: UiKit.SideBarVersionTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }

    // Dims the column while a pop-up covers the section beside it; a click on it
    // closes the pop-up, as a click beside a pop-up does anywhere.
    Rectangle {
        objectName: "blackout"
        anchors.fill: parent
        visible: sideBar.blackoutShown
        color: UiKit.BlackoutColor
        opacity: UiKit.BlackoutOpacity

        MouseArea {
            anchors.fill: parent
            acceptedButtons: Qt.AllButtons
            onClicked: sideBar.hideBlackout()
        }
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Window 2.15
import "../../components"

// The settings page: one card per group, scrolled as a whole. Every control shows
// the stored value the screen hands in and asks for a change with
// settingChanged(name, value); the screen stores it, applies it and hands the
// stored value back, so what is shown is always what is in effect.
Rectangle {
    id: settings
    objectName: "settingsPage"

    // Звук
    property var audioOutputs: []
    property int audioOutputIndex: -1
    property bool useEqualizer: false
    property var presetNames: []
    property int presetIndex: -1
    property var bandLabels: []
    property var bands: []
    property real bandMin: -20
    property real bandMax: 20
    property real amplifier: 0
    property real amplifierMin: -20
    property real amplifierMax: 20
    property bool useCrossfade: false
    property int crossfadeSeconds: 0
    property int crossfadeMin: 0
    property int crossfadeMax: 1
    // Воспроизведение
    property bool shuffleMusic: false
    property bool shuffleVideo: false
    property bool shufflePhoto: false
    property int photoSeconds: 0
    property int photoMin: 0
    property int photoMax: 1
    property bool showVideoPhoto: false
    property var videoOutputs: []
    property int videoOutputIndex: -1
    // Запуск
    property bool autorun: false
    property var autorunDelays: []
    property int autorunDelayIndex: -1
    property bool minimizeOnAutorun: false
    property bool minimizeToTray: false
    property bool autoPlay: false
    // Обновление
    property var updateIntervals: []
    property int updateIntervalIndex: -1
    property bool checking: false
    // Signed in: there is a server to ask.
    property bool canCheck: false
    property string checkMessage: ""
    property bool checkFailed: false

    signal settingChanged(string name, var value)

    function decibels(value) {
        return (value > 0 ? "+" : "") + value.toFixed(1).replace(".", ",") + " дБ"
    }

    // Tab moves through the page in reading order; the page follows it so the
    // control with the focus is always in view.
    function ensureVisible(item) {
        if (!item || !content.contains(content.mapFromItem(item, 0, 0)))
            return
        var top = item.mapToItem(content, 0, 0).y + content.y
        var bottom = top + item.height
        if (top - UiKit.SpacingLarge < page.contentY)
            page.contentY = Math.max(0, top - UiKit.SpacingLarge)
        else if (bottom + UiKit.SpacingLarge > page.contentY + page.height)
            page.contentY = Math.min(page.contentHeight - page.height, bottom + UiKit.SpacingLarge - page.height)
    }

    color: UiKit.ScreenBackgroundColor
    Window.onActiveFocusItemChanged: ensureVisible(Window.activeFocusItem)

    Flickable {
        id: page
        anchors.fill: parent
        contentWidth: width
        contentHeight: content.implicitHeight + 2 * UiKit.ScreenMargin
        boundsBehavior: Flickable.StopAtBounds
        clip: true
        ScrollBar.vertical: ZScrollBar {}

        Column {
            id: content
            x: UiKit.ScreenMargin
            y: UiKit.ScreenMargin
            width: page.width - 2 * UiKit.ScreenMargin
            spacing: UiKit.SpacingLarge

            ZScreenTitle {
                width: parent.width
                text: "Настройки"
            }

            ZSettingsGroup {
                objectName: "soundGroup"
                title: "Звук"

                Item {
                    width: parent.width
                    implicitHeight: Math.max(outputChooser.implicitHeight, testSound.implicitHeight)
                    height: implicitHeight

                    ZSettingComboBox {
                        id: outputChooser
                        anchors.left: parent.left
                        anchors.right: testSound.left
                        anchors.rightMargin: UiKit.SpacingSmall
                        label: "Устройство вывода звука"
                        comboObjectName: "audioOutputComboBox"
                        choices: settings.audioOutputs
                        index: settings.audioOutputIndex
                        onChangeRequested: settings.settingChanged("audioOutput", index)
                    }
                    ZButton {
                        id: testSound
                        objectName: "testSoundButton"
                        anchors.right: parent.right
                        anchors.rightMargin: UiKit.SpacingSmall
                        anchors.verticalCenter: parent.verticalCenter
                        variant: "secondary"
                        text: "Проверить"
                        enabled: settings.audioOutputs.length > 0
                    }
                }
                ZSettingSwitch {
                    objectName: "equalizerSwitch"
                    text: "Эквалайзер"
                    on: settings.useEqualizer
                    onChangeRequested: settings.settingChanged("useEqualizer", value)
                }
                ZSettingComboBox {
                    label: "Предустановка"
                    comboObjectName: "presetComboBox"
                    enabled: settings.useEqualizer
                    choices: settings.presetNames
                    index: settings.presetIndex
                    noneText: "Своя настройка"
                    onChangeRequested: settings.settingChanged("preset", index)
                }
                Row {
                    id: bandRow
                    objectName: "equalizerBands"
                    width: parent.width
                    enabled: settings.useEqualizer

                    Repeater {
                        model: settings.bandLabels.length

                        Column {
                            width: bandRow.width / Math.max(1, settings.bandLabels.length)
                            spacing: UiKit.SpacingUnit

                            Text {
                                width: parent.width
                                horizontalAlignment: Text.AlignHCenter
                                text: index < settings.bands.length ? settings.decibels(settings.bands[index]).replace(" дБ", "") : ""
                                font.family: UiKit.MonoFont.family
                                font.weight: UiKit.MonoFont.weight
                                font.pointSize: UiKit.CaptionPointSize
                                color: UiKit.TextSecondaryColor
                            }
                            Slider {
                                id: band
                                objectName: "band" + index + "Slider"
                                anchors.horizontalCenter: parent.horizontalCenter
                                height: UiKit.ButtonHeight * 3
                                orientation: Qt.Vertical
                                from: settings.bandMin
                                to: settings.bandMax
                                stepSize: 1
                                snapMode: Slider.SnapAlways
                                value: index < settings.bands.length ? settings.bands[index] : 0
                                activeFocusOnTab: true
                                focusPolicy: Qt.StrongFocus
                                Accessible.name: settings.bandLabels[index]
                                onValueChanged: if (index < settings.bands.length && Math.abs(value - settings.bands[index]) > 1e-6)
                                                    settings.settingChanged("band" + index, value)

                                background: Rectangle {
                                    x: band.leftPadding + band.availableWidth / 2 - width / 2
                                    y: band.topPadding
                                    width: UiKit.SpacingUnit
                                    height: band.availableHeight
                                    radius: width / 2
                                    color: UiKit.SliderTrackColor

                                    Rectangle {
                                        y: band.visualPosition * parent.height
                                        width: parent.width
                                        height: parent.height - y
                                        radius: parent.radius
                                        color: band.enabled ? UiKit.SliderTrackColorSelected
                                                            : UiKit.SliderTrackColorSelectedDisabled
                                    }
                                }
                                handle: Rectangle {
                                    x: band.leftPadding + band.availableWidth / 2 - width / 2
                                    y: band.topPadding + band.visualPosition * (band.availableHeight - height)
                                    width: UiKit.IconSize
                                    height: width
                                    radius: width / 2
                                    color: band.enabled ? UiKit.SliderHandleColor : UiKit.SliderTrackColor
                                    border.width: UiKit.BorderWidth
                                    border.color: UiKit.CardBorderColor
                                    ZFocusRing { visible: band.activeFocus && band.focusReason === Qt.TabFocusReason }
                                }
                            }
                            Text {
                                width: parent.width
                                horizontalAlignment: Text.AlignHCenter
                                text: settings.bandLabels[index]
                                elide: Text.ElideRight
                                font.family: UiKit.CaptionFont.family
                                font.weight: UiKit.CaptionFont.weight
                                font.pointSize: UiKit.CaptionPointSize
                                color: band.enabled ? UiKit.TextPrimaryColor : UiKit.TextDisabledColor
                            }
                        }
                    }
                }
                ZSettingSlider {
                    label: "Усиление"
                    sliderObjectName: "amplifierSlider"
                    enabled: settings.useEqualizer
                    from: settings.amplifierMin
                    to: settings.amplifierMax
                    stepSize: 0.5
                    value: settings.amplifier
                    valueText: settings.decibels(settings.amplifier)
                    onChangeRequested: settings.settingChanged("amplifier", value)
                }
                ZSettingSwitch {
                    objectName: "crossfadeSwitch"
                    text: "Плавный переход между треками"
                    on: settings.useCrossfade
                    onChangeRequested: settings.settingChanged("useCrossfade", value)
                }
                ZSettingSlider {
                    label: "Длительность перехода"
                    sliderObjectName: "crossfadeSlider"
                    enabled: settings.useCrossfade
                    from: settings.crossfadeMin
                    to: settings.crossfadeMax
                    stepSize: 1
                    value: settings.crossfadeSeconds
                    valueText: settings.crossfadeSeconds + " с"
                    onChangeRequested: settings.settingChanged("crossfadeSeconds", value)
                }
            }

            ZSettingsGroup {
                objectName: "playbackGroup"
                title: "Воспроизведение"

                ZSettingSwitch {
                    objectName: "shuffleMusicSwitch"
                    text: "Перемешивать музыку"
                    on: settings.shuffleMusic
                    onChangeRequested: settings.settingChanged("shuffleMusic", value)
                }
                ZSettingSwitch {
                    objectName: "shuffleVideoSwitch"
                    text: "Перемешивать видео"
                    on: settings.shuffleVideo
                    onChangeRequested: settings.settingChanged("shuffleVideo", value)
                }
                ZSettingSwitch {
                    objectName: "shufflePhotoSwitch"
                    text: "Перемешивать фото"
                    on: settings.shufflePhoto
                    onChangeRequested: settings.settingChanged("shufflePhoto", value)
                }
                ZSettingSlider {
                    label: "Показ одного фото"
                    sliderObjectName: "photoDurationSlider"
                    from: settings.photoMin
                    to: settings.photoMax
                    stepSize: 1
                    value: settings.photoSeconds
                    valueText: settings.photoSeconds + " с"
                    onChangeRequested: settings.settingChanged("photoSeconds", value)
                }
                ZSettingSwitch {
                    objectName: "showVideoPhotoSwitch"
                    text: "Показывать видео и фото"
                    on: settings.showVideoPhoto
                    onChangeRequested: settings.settingChanged("showVideoPhoto", value)
                }
                ZSettingComboBox {
                    label: "Экран для видео и фото"
                    comboObjectName: "videoOutputComboBox"
                    choices: settings.videoOutputs
                    index: settings.videoOutputIndex
                    noneText: "Основной экран"
                    onChangeRequested: settings.settingChanged("videoOutput", index)
                }
            }

            ZSettingsGroup {
                objectName: "startGroup"
                title: "Запуск"

                ZSettingSwitch {
                    objectName: "autorunSwitch"
                    text: "Запускать вместе с системой"
                    on: settings.autorun
                    onChangeRequested: settings.settingChanged("autorun", value)
                }
                ZSettingComboBox {
                    label: "Задержка запуска"
                    comboObjectName: "autorunDelayComboBox"
                    enabled: settings.autorun
                    choices: settings.autorunDelays
                    index: settings.autorunDelayIndex
                    onChangeRequested: settings.settingChanged("autorunDelay", index)
                }
                ZSettingSwitch {
                    objectName: "minimizeOnAutorunSwitch"
                    text: "Сворачивать окно при автозапуске"
                    enabled: settings.autorun
                    on: settings.minimizeOnAutorun
                    onChangeRequested: settings.settingChanged("minimizeOnAutorun", value)
                }
                ZSettingSwitch {
                    objectName: "minimizeToTraySwitch"
                    text: "Сворачивать в трей при запуске"
                    on: settings.minimizeToTray
                    onChangeRequested: settings.settingChanged("minimizeToTray", value)
                }
                ZSettingSwitch {
                    objectName: "autoPlaySwitch"
                    text: "Начинать воспроизведение при запуске"
                    on: settings.autoPlay
                    onChangeRequested: settings.settingChanged("autoPlay", value)
                }
            }

            ZSettingsGroup {
                objectName: "updateGroup"
                title: "Обновление"

                ZSettingComboBox {
                    label: "Проверять расписание"
                    comboObjectName: "updateIntervalComboBox"
                    choices: settings.updateIntervals
                    index: settings.updateIntervalIndex
                    onChangeRequested: settings.settingChanged("updateInterval", index)
                }
                Item {
                    width: parent.width
                    implicitHeight: Math.max(checkNow.implicitHeight, checkResult.implicitHeight)
                    height: implicitHeight

                    ZButton {
                        id: checkNow
                        objectName: "checkNowButton"
                        x: UiKit.SpacingSmall
                        variant: "secondary"
                        text: "Проверить сейчас"
                        enabled: settings.canCheck
                        busy: settings.checking
                    }
                    ZBodyText {
                        id: checkResult
                        objectName: "checkResultText"
                        anchors.left: checkNow.right
                        anchors.leftMargin: UiKit.SpacingMedium
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        secondary: !settings.checkFailed
                        color: settings.checkFailed ? UiKit.ErrorColor : UiKit.TextSecondaryColor
                        text: settings.checkMessage
                    }
                }
            }

            ZSettingsGroup {
                objectName: "appearanceGroup"
                title: "Оформление"

                ZSettingSwitch {
                    objectName: "darkThemeSwitch"
                    text: "Тёмная тема"
                    on: UiKit.IsDark
                    onChangeRequested: settings.settingChanged("darkTheme", value)
                }
            }

            ZButton {
                objectName: "logButton"
                variant: "secondary"
                text: "Журнал событий"
            }
        }
    }
}

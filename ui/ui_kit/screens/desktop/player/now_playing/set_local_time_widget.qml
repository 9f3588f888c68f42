import QtQuick 2.15
import "../../components"

// The computer's clock is more than a minute off the server's. The schedule runs on
// the computer's clock and the server refuses the play reports, so the owner sees
// both clocks side by side, how to set the time right on this desktop, and
// "Проверить снова" (or Enter) to ask the server again.
ZStatePage {
    id: screen
    objectName: "setLocalTimeScreen"

    // "HH:mm", kept ticking by the screen class; the dates only while the two
    // clocks are on different days.
    property string serverTime: ""
    property string serverDate: ""
    property string localTime: ""
    property string localDate: ""
    property bool busy: false

    signal checkAgainClicked()

    focus: true
    imageSource: UiKit.WrongClockImage
    imageBackground: UiKit.WarningSoftBackground
    title: "Неверное время на компьютере"
    text: "Часы компьютера расходятся со временем сервера больше чем на минуту. Расписание идёт "
          + "по часам компьютера, а отчёты о воспроизведении сервер не примет, пока время не исправлено."
    Keys.onReturnPressed: if (!screen.busy) screen.checkAgainClicked()
    Keys.onEnterPressed: if (!screen.busy) screen.checkAgainClicked()

    // One clock: what it is, its time large, and its date under it when shown.
    component ClockColumn: Column {
        id: clock
        property string name: ""
        property string label: ""
        property string time: ""
        property string date: ""

        spacing: UiKit.SpacingUnit
        Text {
            anchors.horizontalCenter: parent.horizontalCenter
            text: clock.label
            font.family: UiKit.CaptionFont.family
            font.weight: UiKit.CaptionFont.weight
            font.pointSize: UiKit.CaptionPointSize
            color: UiKit.TextSecondaryColor
        }
        Text {
            objectName: clock.name + "TimeText"
            anchors.horizontalCenter: parent.horizontalCenter
            text: clock.time.length > 0 ? clock.time : "—"
            font.family: UiKit.ClockFont.family
            font.weight: UiKit.ClockFont.weight
            font.pointSize: UiKit.ClockPointSize
            color: UiKit.ClockTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: clock.label + " " + text
        }
        Text {
            objectName: clock.name + "DateText"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: text.length > 0
            text: clock.date
            font.family: UiKit.TimeTextFont.family
            font.weight: UiKit.TimeTextFont.weight
            font.pointSize: UiKit.TimeTextPointSize
            color: UiKit.TextSecondaryColor
        }
    }

    Row {
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: UiKit.SpacingHuge

        ClockColumn {
            name: "server"
            label: "Время сервера"
            time: screen.serverTime
            date: screen.serverDate
        }
        ClockColumn {
            name: "local"
            label: "На компьютере"
            time: screen.localTime
            date: screen.localDate
        }
    }

    ZBodyText {
        objectName: "howToText"
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: "Как исправить: откройте системные настройки, раздел «Дата и время», и включите "
              + "автоматическую установку времени по сети. Или выполните в терминале:"
    }
    Text {
        objectName: "commandText"
        anchors.horizontalCenter: parent.horizontalCenter
        text: "timedatectl set-ntp true"
        font.family: UiKit.MonoFont.family
        font.weight: UiKit.MonoFont.weight
        font.pointSize: UiKit.CardTextPointSize
        color: UiKit.TextPrimaryColor
        Accessible.role: Accessible.StaticText
        Accessible.name: text
    }
    ZButton {
        id: checkAgainButton
        objectName: "checkAgainButton"
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Проверить снова"
        busy: screen.busy
        onClicked: if (!screen.busy) screen.checkAgainClicked()
    }

    Component.onCompleted: checkAgainButton.forceActiveFocus()
}

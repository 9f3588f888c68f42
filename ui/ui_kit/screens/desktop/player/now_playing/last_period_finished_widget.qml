import QtQuick 2.15
import "../../components"

// Today's schedule has played out. Nothing is wrong and nobody has to do anything:
// the music comes back by itself with the next period, and the page says when,
// large enough to read from behind the counter.
ZStatePage {
    id: screen
    objectName: "lastPeriodFinishedScreen"

    // When the next period starts, in words ("завтра в 09:00"); empty when the
    // schedule does not say.
    property string nextStart: ""

    focus: true
    imageSource: UiKit.PeriodFinishedImage
    imageBackground: UiKit.AccentSoftBackground
    title: "На сегодня расписание закончилось"
    text: "Последний период сегодняшнего расписания завершён, поэтому музыка не играет."

    Column {
        width: parent.width
        visible: screen.nextStart.length > 0
        spacing: UiKit.SpacingUnit

        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: "Следующий период начнётся"
            font.family: UiKit.StateMessageFont.family
            font.weight: UiKit.StateMessageFont.weight
            font.pointSize: UiKit.StateMessagePointSize
            color: UiKit.StateMessageTextColor
        }
        Text {
            objectName: "nextStartText"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: screen.nextStart
            font.family: UiKit.PeriodTitleFont.family
            font.weight: UiKit.PeriodTitleFont.weight
            font.pointSize: UiKit.PeriodTitlePointSize
            color: UiKit.PeriodTitleColor
            Accessible.role: Accessible.StaticText
            Accessible.name: "Следующий период начнётся " + text
        }
    }
    ZBodyText {
        objectName: "hintText"
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        secondary: true
        text: screen.nextStart.length > 0 ? "Ничего делать не нужно: плеер включит музыку сам."
                                          : "Музыка заиграет сама со следующим периодом расписания, ничего делать не нужно."
    }
}

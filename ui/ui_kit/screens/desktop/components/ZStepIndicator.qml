import QtQuick 2.15

// "Шаг 2 из 4" with one bar per sign-up step, the done ones in the accent.
Column {
    id: indicator

    property int step: 1
    property int count: UiKit.SignUpStepCount

    spacing: UiKit.SpacingSmall
    Accessible.role: Accessible.ProgressBar
    Accessible.name: caption.text

    Text {
        id: caption
        text: "Шаг " + indicator.step + " из " + indicator.count
        font.family: UiKit.StepIndicatorFont.family
        font.weight: UiKit.StepIndicatorFont.weight
        font.pointSize: UiKit.StepIndicatorPointSize
        color: UiKit.StepIndicatorTextColor
    }
    Row {
        spacing: UiKit.SpacingUnit
        Repeater {
            model: indicator.count
            Rectangle {
                width: (indicator.width - (indicator.count - 1) * UiKit.SpacingUnit) / indicator.count
                height: 4
                radius: 2
                color: index < indicator.step ? UiKit.StepIndicatorColorSelected : UiKit.StepIndicatorColor
            }
        }
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// Sign-up, second step: the code the server sent to the phone. A new code can be
// asked for once the countdown has run out.
ZAuthPage {
    id: root
    objectName: "signUpConfirmPhoneScreen"

    property string phone: ""
    property int secondsLeft: UiKit.ConfirmationCodeResendSeconds
    property bool checking: false
    property bool resending: false

    function restartCountdown() {
        secondsLeft = UiKit.ConfirmationCodeResendSeconds;
    }

    Keys.onReturnPressed: buttons.nextButton.clicked()
    Keys.onEnterPressed: buttons.nextButton.clicked()
    Keys.onEscapePressed: if (!root.checking) buttons.backButton.clicked()

    Component.onCompleted: codeInput.input.forceActiveFocus()

    Timer {
        interval: 1000
        repeat: true
        running: root.secondsLeft > 0
        onTriggered: root.secondsLeft = Math.max(0, root.secondsLeft - 1)
    }

    ZAuthCard {
        ZStepIndicator {
            width: parent.width
            step: 2
        }
        ZScreenTitle {
            width: parent.width
            text: "Подтверждение номера"
        }
        ZBodyText {
            width: parent.width
            secondary: true
            text: "Мы отправили код на номер " + root.phone + ". Введите его ниже."
        }
        ZTextField {
            id: codeInput
            objectName: "codeInput"
            label: "Код подтверждения"
            inputObjectName: "codeField"
            inputMethodHints: Qt.ImhDigitsOnly
            input.font.family: UiKit.ConfirmationCodeFont.family
            input.font.weight: UiKit.ConfirmationCodeFont.weight
            input.font.pointSize: UiKit.ConfirmationCodePointSize
        }
        ZMessage {
            objectName: "errorMessage"
            width: parent.width
        }
        ZSignUpButtons {
            id: buttons
            busy: root.checking
        }
        ZButton {
            objectName: "resendButton"
            width: parent.width
            variant: "secondary"
            text: "Отправить код ещё раз"
            enabled: root.secondsLeft === 0 && !root.checking
            busy: root.resending
        }
        Text {
            objectName: "resendCountdownText"
            width: parent.width
            visible: root.secondsLeft > 0
            horizontalAlignment: Text.AlignHCenter
            text: "Новый код можно запросить через " + root.secondsLeft + " с"
            font.family: UiKit.CaptionFont.family
            font.weight: UiKit.CaptionFont.weight
            font.pointSize: UiKit.CaptionPointSize
            color: UiKit.TextSecondaryColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}

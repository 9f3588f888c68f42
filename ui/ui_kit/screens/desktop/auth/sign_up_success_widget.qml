import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// The end of sign-up: the account is ready and OK opens the player.
ZAuthPage {
    id: root
    objectName: "signUpSuccessScreen"

    Keys.onReturnPressed: okButton.clicked()
    Keys.onEnterPressed: okButton.clicked()

    Component.onCompleted: okButton.forceActiveFocus()

    ZAuthCard {
        Image {
            cache: false
            anchors.horizontalCenter: parent.horizontalCenter
            width: UiKit.ThrobberSize
            height: UiKit.ThrobberSize
            sourceSize.width: UiKit.ThrobberSize
            sourceSize.height: UiKit.ThrobberSize
            source: UiKit.SignUpSuccessImage
        }
        ZScreenTitle {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: "Готово!"
        }
        ZBodyText {
            objectName: "successText"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: "Аккаунт создан. Плеер загрузит расписание вашей точки и начнёт играть."
        }
        ZButton {
            id: okButton
            objectName: "okButton"
            width: parent.width
            text: "ОК"
        }
    }
}

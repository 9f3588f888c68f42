import QtQuick 2.15

// The buttons under a sign-up step: "Далее" and, where going back makes sense,
// "Назад".
Column {
    id: buttons

    property bool busy: false
    property bool backShown: true
    property alias nextText: nextButton.text
    readonly property alias nextButton: nextButton
    readonly property alias backButton: backButton

    width: parent ? parent.width : implicitWidth
    spacing: UiKit.SpacingSmall

    ZButton {
        id: nextButton
        objectName: "nextButton"
        width: parent.width
        text: "Далее"
        busy: buttons.busy
    }
    ZButton {
        id: backButton
        objectName: "backButton"
        width: parent.width
        visible: buttons.backShown
        variant: "secondary"
        text: "Назад"
        enabled: !buttons.busy
    }
}

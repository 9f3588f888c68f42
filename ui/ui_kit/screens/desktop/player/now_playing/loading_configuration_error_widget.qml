import QtQuick 2.15
import "../../components"

// There is no schedule to play: none is stored yet and the server could not give
// one. What to check, what failed in the server's or the network's words, and one
// way on, "Повторить" (or Enter), which shows its busy state while the retry runs.
ZStatePage {
    id: screen
    objectName: "loadingConfigurationErrorScreen"

    property string errorText: ""
    property bool busy: false

    signal retryClicked()

    focus: true
    imageSource: UiKit.ConfigurationErrorImage
    imageBackground: UiKit.ErrorSoftBackground
    title: "Не удалось загрузить расписание"
    text: "В плеере ещё нет сохранённого расписания, а получить его с сервера не удалось. "
          + "Проверьте подключение к интернету и нажмите «Повторить»."
    Keys.onReturnPressed: if (!screen.busy) screen.retryClicked()
    Keys.onEnterPressed: if (!screen.busy) screen.retryClicked()

    ZMessage {
        objectName: "errorMessage"
        width: parent.width
        text: screen.errorText
    }
    ZButton {
        id: retryButton
        objectName: "retryButton"
        anchors.horizontalCenter: parent.horizontalCenter
        text: "Повторить"
        busy: screen.busy
        onClicked: if (!screen.busy) screen.retryClicked()
    }

    Component.onCompleted: retryButton.forceActiveFocus()
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// Sign-up, first step: the server, the phone number the code goes to, and the
// city, suggested from the list as the user types.
ZAuthPage {
    id: root
    objectName: "signUpPhoneCityScreen"

    // The screen's list model, handed over once the document has loaded.
    property var serversModel: null

    property string phoneCountryCode: ""
    property var citySuggestionsModel: []
    property bool sending: false

    signal serverChanged()
    signal cityEdited(string text)

    Keys.onReturnPressed: buttons.nextButton.clicked()
    Keys.onEnterPressed: buttons.nextButton.clicked()
    Keys.onEscapePressed: if (!root.sending) buttons.backButton.clicked()

    Component.onCompleted: phoneInput.input.forceActiveFocus()

    ZAuthCard {
        ZStepIndicator {
            width: parent.width
            step: 1
        }
        ZScreenTitle {
            width: parent.width
            text: "Регистрация"
        }
        ZServerChooser {
            id: serverChooser
            objectName: "serverChooser"
            model: root.serversModel
            onChanged: root.serverChanged()
        }
        ZTextField {
            id: phoneInput
            objectName: "phoneInput"
            label: "Телефон"
            inputObjectName: "phoneField"
            inputMethodHints: Qt.ImhDialableCharactersOnly
        }
        Text {
            id: countryCode
            parent: phoneInput.input
            x: UiKit.SpacingMedium - UiKit.SpacingUnit
            anchors.verticalCenter: parent.verticalCenter
            visible: text.length > 0
            text: root.phoneCountryCode
            font: phoneInput.input.font
            color: UiKit.TextSecondaryColor
            Accessible.ignored: true
        }
        Binding {
            target: phoneInput.input
            property: "leftPadding"
            value: countryCode.text.length > 0 ? countryCode.x + countryCode.width + UiKit.SpacingUnit
                                               : UiKit.SpacingMedium - UiKit.SpacingUnit
        }
        ZTextField {
            id: cityInput
            objectName: "cityInput"
            label: "Город"
            inputObjectName: "cityField"
            onTextChanged: root.cityEdited(text)
        }
        // The suggestions open over the fields below, as a drop-down does, so the
        // form keeps its place and "Далее" stays in view. One pixel high: a column
        // does not place an item without a size.
        Item {
            width: parent.width
            height: 1
            z: 10
            Rectangle {
                y: UiKit.SpacingUnit
                width: parent.width
                height: suggestions.height + UiKit.SpacingUnit * 2
                visible: suggestions.visible
                radius: UiKit.ControlRadius
                color: UiKit.SuggestionListBackground
                border.width: UiKit.BorderWidth
                border.color: UiKit.CardBorderColor
            }
            ListView {
                id: suggestions
                objectName: "citySuggestions"
                // Inside the frame's hairline, which the rows would otherwise cover.
                x: UiKit.BorderWidth
                width: parent.width - 2 * UiKit.BorderWidth
                y: UiKit.SpacingUnit * 2
                // No lower than the window's edge: in a short window, with the server's
                // address open above, fewer rows show and the list scrolls. Counted
                // again whenever the list moves: the card on the page, the field in
                // the card.
                readonly property int rowsThatFit: {
                    var moved = root.contentTop + parent.y;
                    if (count === 0) {
                        return 0;
                    }
                    var below = root.height - mapToItem(root, 0, 0).y - UiKit.SpacingUnit * 2;
                    return Math.max(1, Math.floor(below / UiKit.ListRowHeight));
                }
                readonly property int rowsShown: Math.min(count, UiKit.SuggestionCount, rowsThatFit)
                height: rowsShown * UiKit.ListRowHeight
                clip: true
                visible: count > 0
                interactive: count > rowsShown
                model: root.citySuggestionsModel
                activeFocusOnTab: true
                keyNavigationEnabled: true
                Accessible.role: Accessible.List
                Accessible.name: "Подходящие города"
                Keys.onReturnPressed: if (currentItem) currentItem.clicked()
                Keys.onEnterPressed: if (currentItem) currentItem.clicked()

                delegate: Rectangle {
                    id: row
                    objectName: "citySuggestion" + index

                    signal clicked()

                    width: ListView.view.width
                    height: UiKit.ListRowHeight
                    radius: UiKit.ControlRadius
                    color: mouse.containsMouse || (row.ListView.isCurrentItem && suggestions.activeFocus)
                           ? UiKit.SuggestionListItemHoverBackground : UiKit.SuggestionListBackground
                    Accessible.role: Accessible.ListItem
                    Accessible.name: modelData
                    Accessible.onPressAction: row.clicked()
                    onClicked: {
                        // Setting the text empties the suggestions and destroys this row,
                        // so it is the handler's last step.
                        var city = modelData;
                        cityInput.input.forceActiveFocus();
                        cityInput.text = city;
                    }

                    Text {
                        anchors.left: parent.left
                        anchors.leftMargin: UiKit.SpacingMedium - UiKit.SpacingUnit
                        anchors.right: parent.right
                        anchors.verticalCenter: parent.verticalCenter
                        text: modelData
                        elide: Text.ElideRight
                        font.family: UiKit.TextFieldFont.family
                        font.weight: UiKit.TextFieldFont.weight
                        font.pointSize: UiKit.TextFieldPointSize
                        color: UiKit.TextPrimaryColor
                    }
                    MouseArea {
                        id: mouse
                        anchors.fill: parent
                        hoverEnabled: true
                        cursorShape: Qt.PointingHandCursor
                        onClicked: row.clicked()
                    }
                }
            }
        }
        ZMessage {
            objectName: "errorMessage"
            width: parent.width
        }
        ZSignUpButtons {
            id: buttons
            busy: root.sending
        }
    }
}

import QtQuick 2.15
import QtQuick.Controls 2.15

// A labelled text field: the label above names what it asks for and is also its
// accessible name; `errorText` under it says what is wrong with the value.
Column {
    id: field

    property alias label: caption.text
    property alias text: input.text
    property alias placeholderText: input.placeholderText
    property alias echoMode: input.echoMode
    property alias inputMethodHints: input.inputMethodHints
    property alias validator: input.validator
    property alias maximumLength: input.maximumLength
    property alias input: input
    property string errorText: ""
    property string inputObjectName: ""

    signal accepted()

    spacing: UiKit.SpacingUnit
    width: parent ? parent.width : implicitWidth

    Text {
        id: caption
        width: parent.width
        font.family: UiKit.TextFieldLabelFont.family
        font.weight: UiKit.TextFieldLabelFont.weight
        font.pointSize: UiKit.TextFieldLabelPointSize
        color: UiKit.TextSecondaryColor
        elide: Text.ElideRight
    }

    TextField {
        id: input
        objectName: field.inputObjectName
        width: parent.width
        implicitHeight: UiKit.TextFieldHeight
        activeFocusOnTab: true
        selectByMouse: true
        leftPadding: UiKit.SpacingMedium - UiKit.SpacingUnit
        rightPadding: leftPadding
        font.family: UiKit.TextFieldFont.family
        font.weight: UiKit.TextFieldFont.weight
        font.pointSize: UiKit.TextFieldPointSize
        color: UiKit.TextFieldTextColor
        placeholderTextColor: UiKit.TextFieldPlaceholderColor
        selectionColor: UiKit.TextFieldSelectionBackground
        selectedTextColor: UiKit.TextFieldTextColor
        Accessible.name: caption.text
        Accessible.description: field.errorText
        onAccepted: field.accepted()
        background: Rectangle {
            radius: UiKit.ControlRadius
            color: UiKit.TextFieldBackground
            border.width: input.activeFocus ? UiKit.FocusRingWidth : UiKit.BorderWidth
            border.color: field.errorText.length > 0 ? UiKit.TextFieldBorderColorError
                        : input.activeFocus ? UiKit.TextFieldBorderColorSelected
                        : UiKit.TextFieldBorderColor
        }
    }

    Text {
        width: parent.width
        visible: field.errorText.length > 0
        text: field.errorText
        wrapMode: Text.WordWrap
        font.family: UiKit.AuthMessageFont.family
        font.weight: UiKit.AuthMessageFont.weight
        font.pointSize: UiKit.AuthMessagePointSize
        color: UiKit.AuthMessageErrorColor
    }
}

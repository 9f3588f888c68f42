import QtQuick 2.15
import QtQuick.Controls 2.15

// "Сервер": the built-in servers and, as the last entry, "Другой сервер…", which
// opens a field for an address typed by hand.
Column {
    id: chooser

    property alias model: combo.model
    property alias currentIndex: combo.currentIndex
    property alias address: addressField.text
    property alias addressError: addressField.errorText
    readonly property bool customChosen: combo.count > 0 && combo.currentIndex === combo.count - 1

    // The choice or the typed address changed.
    signal changed()

    width: parent ? parent.width : implicitWidth
    spacing: UiKit.SpacingMedium

    Column {
        width: parent.width
        spacing: UiKit.SpacingUnit

        Text {
            id: caption
            width: parent.width
            text: "Сервер"
            font.family: UiKit.TextFieldLabelFont.family
            font.weight: UiKit.TextFieldLabelFont.weight
            font.pointSize: UiKit.TextFieldLabelPointSize
            color: UiKit.TextSecondaryColor
        }

        ComboBox {
            id: combo
            objectName: "serverComboBox"
            width: parent.width
            implicitHeight: UiKit.TextFieldHeight
            textRole: "name"
            activeFocusOnTab: true
            Accessible.name: caption.text
            font.family: UiKit.TextFieldFont.family
            font.weight: UiKit.TextFieldFont.weight
            font.pointSize: UiKit.TextFieldPointSize
            onCurrentIndexChanged: chooser.changed()

            contentItem: Text {
                leftPadding: UiKit.SpacingMedium - UiKit.SpacingUnit
                rightPadding: combo.indicator.width + UiKit.SpacingMedium
                text: combo.displayText
                font: combo.font
                color: UiKit.TextFieldTextColor
                verticalAlignment: Text.AlignVCenter
                elide: Text.ElideRight
            }
            indicator: Image {
                cache: false
                x: combo.width - width - UiKit.SpacingMedium + UiKit.SpacingUnit
                y: (combo.height - height) / 2
                width: UiKit.IconSize
                height: UiKit.IconSize
                sourceSize.width: UiKit.IconSize
                sourceSize.height: UiKit.IconSize
                source: UiKit.ChevronDownIcon
            }
            background: Rectangle {
                radius: UiKit.ControlRadius
                color: UiKit.TextFieldBackground
                border.width: combo.activeFocus ? UiKit.FocusRingWidth : UiKit.BorderWidth
                border.color: combo.activeFocus ? UiKit.TextFieldBorderColorSelected : UiKit.TextFieldBorderColor
            }
            delegate: ItemDelegate {
                width: combo.width
                height: UiKit.ListRowHeight
                highlighted: combo.highlightedIndex === index
                text: model.name
                Accessible.name: model.name
                contentItem: Text {
                    text: model.name
                    font: combo.font
                    color: UiKit.TextPrimaryColor
                    verticalAlignment: Text.AlignVCenter
                    elide: Text.ElideRight
                }
                background: Rectangle {
                    color: highlighted ? UiKit.ComboBoxItemHoverBackground : UiKit.ComboBoxPopupBackground
                }
            }
            popup: Popup {
                y: combo.height + UiKit.SpacingUnit
                width: combo.width
                padding: UiKit.SpacingUnit
                implicitHeight: contentItem.implicitHeight + 2 * UiKit.SpacingUnit
                contentItem: ListView {
                    clip: true
                    implicitHeight: contentHeight
                    model: combo.popup.visible ? combo.delegateModel : null
                    currentIndex: combo.highlightedIndex
                }
                background: Rectangle {
                    radius: UiKit.ControlRadius
                    color: UiKit.ComboBoxPopupBackground
                    border.width: UiKit.BorderWidth
                    border.color: UiKit.CardBorderColor
                }
            }
        }
    }

    ZTextField {
        id: addressField
        visible: chooser.customChosen
        label: "Адрес сервера"
        inputObjectName: "serverAddressField"
        placeholderText: "http://127.0.0.1:8091/api/v1/"
        inputMethodHints: Qt.ImhUrlCharactersOnly | Qt.ImhNoAutoUppercase
        onTextChanged: chooser.changed()
    }
}

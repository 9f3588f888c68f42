import QtQuick 2.15
import QtQuick.Controls 2.15

// A setting chosen from a list of texts: its label on the left, the list on the
// right. `index` is the stored choice (-1 shows `noneText`); choosing another row
// asks for it with `changeRequested`.
Item {
    id: setting

    property alias label: caption.text
    property alias comboBox: combo
    property string comboObjectName: ""
    property var choices: []
    property int index: -1
    property string noneText: ""

    signal changeRequested(int index)

    width: parent ? parent.width : implicitWidth
    implicitWidth: caption.implicitWidth + combo.implicitWidth + UiKit.SpacingLarge
    implicitHeight: Math.max(UiKit.ListRowHeight, combo.implicitHeight)

    Text {
        id: caption
        anchors.left: parent.left
        anchors.leftMargin: UiKit.SpacingSmall
        anchors.right: combo.left
        anchors.rightMargin: UiKit.SpacingMedium
        anchors.verticalCenter: parent.verticalCenter
        elide: Text.ElideRight
        font.family: UiKit.CardTextFont.family
        font.weight: UiKit.CardTextFont.weight
        font.pointSize: UiKit.CardTextPointSize
        color: setting.enabled ? UiKit.TextPrimaryColor : UiKit.TextDisabledColor
    }

    ComboBox {
        id: combo
        objectName: setting.comboObjectName
        // In line with the switches and the values of the sliders, which keep the
        // rows' inner margin for their hover background.
        anchors.right: parent.right
        anchors.rightMargin: UiKit.SpacingSmall
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(setting.width / 2, UiKit.AuthCardWidth * 3 / 4)
        implicitHeight: UiKit.TextFieldHeight
        model: setting.choices
        currentIndex: setting.index
        displayText: currentIndex < 0 ? setting.noneText : currentText
        activeFocusOnTab: true
        Accessible.name: caption.text
        font.family: UiKit.TextFieldFont.family
        font.weight: UiKit.TextFieldFont.weight
        font.pointSize: UiKit.TextFieldPointSize
        onCurrentIndexChanged: if (currentIndex >= 0 && currentIndex !== setting.index) setting.changeRequested(currentIndex)

        contentItem: Text {
            leftPadding: UiKit.SpacingMedium - UiKit.SpacingUnit
            rightPadding: combo.indicator.width + UiKit.SpacingMedium
            text: combo.displayText
            font: combo.font
            color: combo.enabled ? UiKit.TextFieldTextColor : UiKit.TextDisabledColor
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
            text: modelData
            Accessible.name: modelData
            contentItem: Text {
                text: modelData
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
            implicitHeight: Math.min(contentItem.implicitHeight, UiKit.ListRowHeight * 8) + 2 * UiKit.SpacingUnit
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

import QtQuick 2.15
import QtQuick.Controls 2.15

// A number setting within bounds: its label and the value as text above a slider.
// `value` is the stored value; a slider moved away from it (by hand, by keys or by
// an assistive tool setting it) asks for the new one with `changeRequested`. The
// slider itself keeps every value within `from`..`to`.
Column {
    id: setting

    property alias label: caption.text
    property alias from: slider.from
    property alias to: slider.to
    property alias stepSize: slider.stepSize
    property alias slider: slider
    property string sliderObjectName: ""
    property real value: 0
    property string valueText: ""

    signal changeRequested(real value)

    width: parent ? parent.width : implicitWidth
    spacing: UiKit.SpacingUnit

    Item {
        width: parent.width
        implicitHeight: Math.max(caption.implicitHeight, valueLabel.implicitHeight)
        height: implicitHeight

        Text {
            id: caption
            anchors.left: parent.left
            anchors.leftMargin: UiKit.SpacingSmall
            anchors.right: valueLabel.left
            anchors.rightMargin: UiKit.SpacingSmall
            elide: Text.ElideRight
            font.family: UiKit.CardTextFont.family
            font.weight: UiKit.CardTextFont.weight
            font.pointSize: UiKit.CardTextPointSize
            color: setting.enabled ? UiKit.TextPrimaryColor : UiKit.TextDisabledColor
        }
        Text {
            id: valueLabel
            objectName: setting.sliderObjectName.length > 0 ? setting.sliderObjectName + "Value" : ""
            anchors.right: parent.right
            anchors.rightMargin: UiKit.SpacingSmall
            text: setting.valueText
            font.family: UiKit.MonoFont.family
            font.weight: UiKit.MonoFont.weight
            font.pointSize: UiKit.CardTextPointSize
            color: UiKit.TextSecondaryColor
        }
    }

    Slider {
        id: slider
        objectName: setting.sliderObjectName
        width: parent.width
        value: setting.value
        snapMode: Slider.SnapAlways
        activeFocusOnTab: true
        focusPolicy: Qt.StrongFocus
        Accessible.name: caption.text
        onValueChanged: if (Math.abs(value - setting.value) > 1e-6) setting.changeRequested(value)

        background: Rectangle {
            x: slider.leftPadding
            y: slider.topPadding + slider.availableHeight / 2 - height / 2
            width: slider.availableWidth
            height: UiKit.SpacingUnit
            radius: height / 2
            color: UiKit.SliderTrackColor

            // Switched off, the value stays in view in grey: the accent would say
            // the slider can be moved.
            Rectangle {
                width: slider.visualPosition * parent.width
                height: parent.height
                radius: parent.radius
                color: slider.enabled ? UiKit.SliderTrackColorSelected : UiKit.SliderTrackColorSelectedDisabled
            }
        }
        handle: Rectangle {
            x: slider.leftPadding + slider.visualPosition * (slider.availableWidth - width)
            y: slider.topPadding + slider.availableHeight / 2 - height / 2
            width: UiKit.IconSize
            height: width
            radius: width / 2
            color: slider.enabled ? UiKit.SliderHandleColor : UiKit.SliderTrackColor
            border.width: UiKit.BorderWidth
            border.color: UiKit.CardBorderColor
            ZFocusRing { visible: slider.activeFocus && slider.focusReason === Qt.TabFocusReason }
        }
    }
}

import QtQuick 2.15

// The keyboard focus mark around a control: drawn outside its parent's edge so it
// never covers the control's own content.
Rectangle {
    anchors.fill: parent
    anchors.margins: -UiKit.FocusRingWidth - 1
    radius: parent && parent.radius !== undefined ? parent.radius + UiKit.FocusRingWidth : UiKit.ControlRadius
    color: "transparent"
    border.width: UiKit.FocusRingWidth
    border.color: UiKit.FocusRingColor
}

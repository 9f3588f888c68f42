import QtQuick 2.15

// A screen's or card's heading in the display face.
Text {
    font.family: UiKit.ScreenTitleFont.family
    font.weight: UiKit.ScreenTitleFont.weight
    font.pointSize: UiKit.ScreenTitlePointSize
    color: UiKit.TextPrimaryColor
    wrapMode: Text.WordWrap
    Accessible.role: Accessible.Heading
    Accessible.name: text
}

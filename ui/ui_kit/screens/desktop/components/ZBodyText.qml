import QtQuick 2.15

// Running text at the body size; `secondary` for details.
Text {
    property bool secondary: false

    font.family: UiKit.CardTextFont.family
    font.weight: UiKit.CardTextFont.weight
    font.pointSize: UiKit.CardTextPointSize
    color: secondary ? UiKit.TextSecondaryColor : UiKit.TextPrimaryColor
    wrapMode: Text.WordWrap
    linkColor: UiKit.LinkColor
    onLinkActivated: Qt.openUrlExternally(link)
    Accessible.role: Accessible.StaticText
    Accessible.name: text
}

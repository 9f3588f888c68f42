import QtQuick 2.15

// One group of the settings page: a card with its heading and its rows one under
// another. Rows go straight inside, as into a Column.
ZCard {
    id: group

    property alias title: heading.text
    default property alias rows: body.data

    width: parent ? parent.width : implicitWidth
    implicitWidth: UiKit.AuthCardWidth
    implicitHeight: heading.implicitHeight + body.implicitHeight + 2 * UiKit.CardPadding + UiKit.SpacingSmall
    color: UiKit.SettingsGroupBackground

    Text {
        id: heading
        x: UiKit.CardPadding
        y: UiKit.CardPadding
        width: group.width - 2 * UiKit.CardPadding
        elide: Text.ElideRight
        font.family: UiKit.CardTitleFont.family
        font.weight: UiKit.CardTitleFont.weight
        font.pointSize: UiKit.CardTitlePointSize
        color: UiKit.SettingsGroupTitleColor
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Column {
        id: body
        x: UiKit.CardPadding - UiKit.SpacingSmall
        y: heading.y + heading.implicitHeight + UiKit.SpacingSmall
        width: group.width - 2 * (UiKit.CardPadding - UiKit.SpacingSmall)
        spacing: UiKit.SpacingSmall
    }
}

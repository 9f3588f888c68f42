import QtQuick 2.15

// The card that holds a sign-in or sign-up form: its parts one under another,
// inside the card's padding.
ZCard {
    default property alias content: inner.data

    width: parent ? parent.width : implicitWidth
    height: inner.height + 2 * UiKit.CardPadding
    color: UiKit.AuthCardBackground

    Column {
        id: inner
        x: UiKit.CardPadding
        y: UiKit.CardPadding
        width: parent.width - 2 * UiKit.CardPadding
        spacing: UiKit.SpacingMedium
    }
}

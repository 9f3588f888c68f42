import QtQuick 2.15

// A card on the screen background: a surface with a hairline border.
Rectangle {
    radius: UiKit.CardRadius
    color: UiKit.CardBackground
    border.width: UiKit.BorderWidth
    border.color: UiKit.CardBorderColor
}

import QtQuick 2.15
import "components"

// The account can no longer be used here: what happened, and — when only the
// service can help — how to reach it, large enough to read out over the phone.
// OK (or Enter) is the only way on, back to signing in.
Rectangle {
    id: screen
    objectName: "unauthErrorScreen"

    property string header: ""
    property string text: ""
    property bool contactVariant: false
    property string supportPhone: ""
    property string supportEmail: ""

    signal okClicked()

    color: UiKit.ScreenBackgroundColor
    focus: true
    Keys.onReturnPressed: okClicked()
    Keys.onEnterPressed: okClicked()

    ZCard {
        anchors.centerIn: parent
        width: Math.min(UiKit.AuthCardWidth, parent.width - 2 * UiKit.ScreenMargin)
        height: content.implicitHeight + 2 * UiKit.CardPadding
        Accessible.role: Accessible.AlertMessage
        Accessible.name: screen.header

        Column {
            id: content
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.top: parent.top
            anchors.margins: UiKit.CardPadding
            spacing: UiKit.SpacingMedium

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: UiKit.LargeIconSize + UiKit.SpacingLarge
                height: width
                radius: width / 2
                color: UiKit.ErrorScreenIconBackground
                Image {
                    cache: false
                    anchors.centerIn: parent
                    width: UiKit.LargeIconSize
                    height: UiKit.LargeIconSize
                    sourceSize.width: UiKit.LargeIconSize
                    sourceSize.height: UiKit.LargeIconSize
                    source: UiKit.AccountErrorImage
                    Accessible.ignored: true
                }
            }
            ZScreenTitle {
                objectName: "headerText"
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: screen.header
            }
            ZBodyText {
                objectName: "bodyText"
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: screen.text
            }

            Column {
                objectName: "supportContacts"
                width: parent.width
                visible: screen.contactVariant && (screen.supportPhone.length > 0 || screen.supportEmail.length > 0)
                spacing: UiKit.SpacingSmall

                Row {
                    anchors.horizontalCenter: parent.horizontalCenter
                    visible: screen.supportPhone.length > 0
                    spacing: UiKit.SpacingSmall
                    Image {
                        cache: false
                        anchors.verticalCenter: parent.verticalCenter
                        width: UiKit.IconSize
                        height: UiKit.IconSize
                        sourceSize.width: UiKit.IconSize
                        sourceSize.height: UiKit.IconSize
                        source: UiKit.PhoneIcon
                        Accessible.ignored: true
                    }
                    Text {
                        objectName: "supportPhoneText"
                        text: screen.supportPhone
                        font.family: UiKit.CardTitleFont.family
                        font.weight: UiKit.CardTitleFont.weight
                        font.pointSize: UiKit.CardTitlePointSize
                        color: UiKit.TextPrimaryColor
                        Accessible.role: Accessible.StaticText
                        Accessible.name: "Телефон поддержки: " + text
                    }
                }
                Row {
                    anchors.horizontalCenter: parent.horizontalCenter
                    visible: screen.supportEmail.length > 0
                    spacing: UiKit.SpacingSmall
                    Image {
                        cache: false
                        anchors.verticalCenter: parent.verticalCenter
                        width: UiKit.IconSize
                        height: UiKit.IconSize
                        sourceSize.width: UiKit.IconSize
                        sourceSize.height: UiKit.IconSize
                        source: UiKit.EmailIcon
                        Accessible.ignored: true
                    }
                    Text {
                        objectName: "supportEmailText"
                        text: screen.supportEmail
                        font.family: UiKit.CardTitleFont.family
                        font.weight: UiKit.CardTitleFont.weight
                        font.pointSize: UiKit.CardTitlePointSize
                        color: UiKit.TextPrimaryColor
                        Accessible.role: Accessible.StaticText
                        Accessible.name: "Электронная почта поддержки: " + text
                    }
                }
            }

            Item { width: 1; height: UiKit.SpacingUnit }
            ZButton {
                id: okButton
                objectName: "okButton"
                anchors.horizontalCenter: parent.horizontalCenter
                text: "ОК"
                focus: true
                onClicked: screen.okClicked()
            }
        }
    }

    Component.onCompleted: okButton.forceActiveFocus()
}

import QtQuick 2.15
import QtQuick.Controls 2.15
import "../components"

// Sign-in: the server, the login and the password on one card; under it what the
// owner needs when it does not work (the server's support contacts), the agreement
// and the version support will ask for.
ZAuthPage {
    id: root
    objectName: "signInScreen"

    // The screen's list model, handed over once the document has loaded.
    property var serversModel: null

    property string supportPhone: ""
    property string supportEmail: ""
    // Already percent-encoded by the screen, so it can sit inside the link's quotes.
    property string privacyPolicyUrl: ""
    property string versionText: ""
    property bool signingIn: false

    signal serverChanged()

    // Enter in any field signs in; the fields pass it on rather than handle it.
    Keys.onReturnPressed: signInButton.clicked()
    Keys.onEnterPressed: signInButton.clicked()

    Component.onCompleted: loginField.input.forceActiveFocus()

    Row {
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: UiKit.SpacingSmall

        Image {
            cache: false
            anchors.verticalCenter: parent.verticalCenter
            width: UiKit.LargeIconSize
            height: UiKit.LargeIconSize
            sourceSize.width: UiKit.LargeIconSize
            sourceSize.height: UiKit.LargeIconSize
            source: UiKit.LogoMarkImage
        }
        Text {
            objectName: "productNameText"
            anchors.verticalCenter: parent.verticalCenter
            text: "ЗЕЛМАР"
            font.family: UiKit.AuthProductNameFont.family
            font.weight: UiKit.AuthProductNameFont.weight
            font.pointSize: UiKit.AuthProductNamePointSize
            color: UiKit.AuthProductNameColor
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }
    }

    ZAuthCard {
        ZServerChooser {
            id: serverChooser
            objectName: "serverChooser"
            model: root.serversModel
            onChanged: root.serverChanged()
        }
        ZTextField {
            id: loginField
            label: "Логин"
            inputObjectName: "loginField"
            inputMethodHints: Qt.ImhNoAutoUppercase
        }
        ZTextField {
            id: passwordField
            label: "Пароль"
            inputObjectName: "passwordField"
            echoMode: TextInput.Password
        }
        ZMessage {
            objectName: "httpsWarning"
            width: parent.width
            kind: "warning"
        }
        ZMessage {
            objectName: "errorMessage"
            width: parent.width
        }
        ZButton {
            id: signInButton
            objectName: "signInButton"
            width: parent.width
            text: "Войти"
            busy: root.signingIn
        }
        ZButton {
            objectName: "signUpButton"
            width: parent.width
            variant: "secondary"
            text: "Регистрация"
            enabled: !root.signingIn
        }
    }

    Column {
        width: parent.width
        spacing: UiKit.SpacingUnit

        Text {
            objectName: "supportPhoneText"
            width: parent.width
            visible: root.supportPhone.length > 0
            horizontalAlignment: Text.AlignHCenter
            text: "Поддержка: " + root.supportPhone
            font.family: UiKit.AuthFooterFont.family
            font.weight: UiKit.AuthFooterFont.weight
            font.pointSize: UiKit.AuthFooterPointSize
            color: UiKit.AuthFooterTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            objectName: "supportEmailText"
            width: parent.width
            visible: root.supportEmail.length > 0
            horizontalAlignment: Text.AlignHCenter
            text: root.supportEmail
            font.family: UiKit.AuthFooterFont.family
            font.weight: UiKit.AuthFooterFont.weight
            font.pointSize: UiKit.AuthFooterPointSize
            color: UiKit.AuthFooterTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
        Text {
            id: agreement
            objectName: "agreementText"
            readonly property string plainText: "Нажимая «Войти», вы соглашаетесь с политикой конфиденциальности сервиса."
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            textFormat: Text.StyledText
            text: root.privacyPolicyUrl.length > 0
                  ? "Нажимая «Войти», вы соглашаетесь с <a href=\"" + root.privacyPolicyUrl + "\">политикой конфиденциальности</a> сервиса."
                  : plainText
            font.family: UiKit.AuthFooterFont.family
            font.weight: UiKit.AuthFooterFont.weight
            font.pointSize: UiKit.AuthFooterPointSize
            color: UiKit.AuthFooterTextColor
            linkColor: UiKit.LinkColor
            onLinkActivated: Qt.openUrlExternally(link)
            Accessible.role: Accessible.StaticText
            Accessible.name: plainText
            MouseArea {
                anchors.fill: parent
                acceptedButtons: Qt.NoButton
                cursorShape: agreement.hoveredLink.length > 0 ? Qt.PointingHandCursor : Qt.ArrowCursor
            }
        }
        Text {
            objectName: "versionText"
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: root.versionText
            font.family: UiKit.AuthFooterFont.family
            font.weight: UiKit.AuthFooterFont.weight
            font.pointSize: UiKit.AuthFooterPointSize
            color: UiKit.AuthFooterTextColor
            Accessible.role: Accessible.StaticText
            Accessible.name: text
        }
    }
}

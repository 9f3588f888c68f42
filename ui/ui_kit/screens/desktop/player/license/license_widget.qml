import QtQuick 2.15
import QtQuick.Controls 2.15
import QtQuick.Layouts 1.15
import "../../components"

// The point of sale's music-rights certificate: a picture as it is, any other
// document as a card with its name; either opens in the browser.
Rectangle {
    id: root
    objectName: "licenseScreen"

    // Set by the screen once the server has named the certificate.
    property url certificateUrl: ""
    property string documentName: ""
    property bool isImage: false
    property bool loading: false
    property bool loadFailed: false

    readonly property bool hasCertificate: certificateUrl.toString().length > 0
    // A picture that does not load is still a document that may open in the browser.
    readonly property bool showsImage: isImage && hasCertificate && certificateImage.status !== Image.Error

    color: UiKit.ScreenBackgroundColor

    ColumnLayout {
        anchors.fill: parent
        anchors.margins: UiKit.ScreenMargin
        spacing: UiKit.SpacingMedium

        ZScreenTitle {
            objectName: "titleText"
            Layout.fillWidth: true
            text: "Сертификат"
        }
        ZBodyText {
            Layout.fillWidth: true
            secondary: true
            text: "Документ о праве объекта на воспроизведение музыки. Покажите его, если об этом попросят."
        }
        ZBodyText {
            objectName: "loadingText"
            Layout.fillWidth: true
            visible: root.loading
            secondary: true
            text: "Загружаем сертификат…"
        }
        ZMessage {
            objectName: "errorMessage"
            Layout.fillWidth: true
        }
        ZButton {
            objectName: "retryButton"
            visible: root.loadFailed
            variant: "secondary"
            text: "Повторить"
        }

        Rectangle {
            objectName: "certificateFrame"
            Layout.fillWidth: true
            Layout.fillHeight: true
            visible: root.hasCertificate
            radius: UiKit.CardRadius
            color: UiKit.CertificateFrameBackground
            border.width: UiKit.BorderWidth
            border.color: UiKit.CardBorderColor

            Image {
                id: certificateImage
                objectName: "certificateImage"
                anchors.fill: parent
                anchors.margins: UiKit.SpacingMedium
                visible: root.showsImage && status === Image.Ready
                source: root.isImage ? root.certificateUrl : ""
                fillMode: Image.PreserveAspectFit
                asynchronous: true
                cache: false
                Accessible.role: Accessible.Graphic
                Accessible.name: "Сертификат"
            }
            ZBodyText {
                objectName: "imageLoadingText"
                anchors.centerIn: parent
                visible: root.showsImage && certificateImage.status === Image.Loading
                secondary: true
                text: "Загружаем изображение…"
            }

            ZCard {
                objectName: "certificateDocumentCard"
                anchors.centerIn: parent
                visible: !root.showsImage
                width: Math.min(parent.width - 2 * UiKit.SpacingLarge, UiKit.DialogWidth)
                height: documentColumn.implicitHeight + 2 * UiKit.CardPadding

                Column {
                    id: documentColumn
                    anchors.fill: parent
                    anchors.margins: UiKit.CardPadding
                    spacing: UiKit.SpacingMedium

                    Image {
                        cache: false
                        anchors.horizontalCenter: parent.horizontalCenter
                        width: UiKit.LargeIconSize
                        height: UiKit.LargeIconSize
                        sourceSize.width: UiKit.LargeIconSize
                        sourceSize.height: UiKit.LargeIconSize
                        source: UiKit.CertificateImage
                    }
                    Text {
                        objectName: "documentNameText"
                        width: parent.width
                        horizontalAlignment: Text.AlignHCenter
                        text: root.documentName
                        elide: Text.ElideMiddle
                        font.family: UiKit.CardTitleFont.family
                        font.weight: UiKit.CardTitleFont.weight
                        font.pointSize: UiKit.CardTitlePointSize
                        color: UiKit.TextPrimaryColor
                        Accessible.role: Accessible.StaticText
                        Accessible.name: text
                    }
                    ZBodyText {
                        width: parent.width
                        horizontalAlignment: Text.AlignHCenter
                        secondary: true
                        text: "Документ откроется в браузере, там его можно распечатать."
                    }
                }
            }
        }

        ZButton {
            id: openButton
            objectName: "openInBrowserButton"
            visible: root.hasCertificate
            text: "Открыть в браузере"
        }
    }

    Keys.onReturnPressed: if (openButton.visible) openButton.clicked()
    Keys.onEnterPressed: if (openButton.visible) openButton.clicked()
    Component.onCompleted: forceActiveFocus()
}

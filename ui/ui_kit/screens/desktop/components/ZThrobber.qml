import QtQuick 2.15

// The full-screen activity indicator shown while a long request runs: a dimmed
// cover that swallows clicks, with a turning arc in the middle.
Item {
    id: throbber

    property bool running: visible
    property string message: ""

    Accessible.role: Accessible.Animation
    Accessible.name: message.length > 0 ? message : "Загрузка"

    Rectangle {
        anchors.fill: parent
        color: UiKit.BlackoutColor
        opacity: UiKit.BlackoutOpacity
    }
    MouseArea { anchors.fill: parent; hoverEnabled: true; acceptedButtons: Qt.AllButtons }

    Rectangle {
        anchors.centerIn: parent
        width: UiKit.ThrobberSize + 2 * UiKit.SpacingLarge
        height: width
        radius: UiKit.CardRadius
        color: UiKit.CardBackground

        Canvas {
            id: arc
            anchors.centerIn: parent
            width: UiKit.ThrobberSize
            height: UiKit.ThrobberSize
            property color trackColor: UiKit.ThrobberTrackColor
            property color arcColor: UiKit.ThrobberColor
            onTrackColorChanged: requestPaint()
            onArcColorChanged: requestPaint()
            onPaint: {
                var ctx = getContext("2d");
                ctx.reset();
                ctx.lineWidth = 5;
                ctx.lineCap = "round";
                var r = width / 2 - 4;
                ctx.strokeStyle = trackColor;
                ctx.beginPath(); ctx.arc(width / 2, height / 2, r, 0, 2 * Math.PI); ctx.stroke();
                ctx.strokeStyle = arcColor;
                ctx.beginPath(); ctx.arc(width / 2, height / 2, r, 0, Math.PI / 2); ctx.stroke();
            }
            RotationAnimation on rotation {
                running: throbber.running
                loops: Animation.Infinite
                from: 0; to: 360; duration: 900
            }
        }
    }
}

import QtQuick 2.15

// Three dots that pulse in turn: a busy state small enough for a button, drawn
// with plain rectangles so the software renderer shows it.
Row {
    id: dots

    property bool running: false
    property color dotColor: UiKit.ThrobberColor
    property int dotSize: 8

    spacing: dotSize / 2
    Accessible.role: Accessible.Animation
    Accessible.name: "Загрузка"

    Repeater {
        model: 3
        Rectangle {
            width: dots.dotSize
            height: dots.dotSize
            radius: dots.dotSize / 2
            color: dots.dotColor
            opacity: 0.3
            SequentialAnimation on opacity {
                running: dots.running
                loops: Animation.Infinite
                PauseAnimation { duration: index * 160 }
                NumberAnimation { to: 1.0; duration: 240 }
                NumberAnimation { to: 0.3; duration: 240 }
                PauseAnimation { duration: (2 - index) * 160 }
            }
        }
    }
}

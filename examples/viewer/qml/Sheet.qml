// Something that has to be settled first, over everything else.
import QtQuick

Rectangle {
    id: sheet

    required property string title
    default property alias content: column.data

    color: "#c0000000"

    MouseArea {
        anchors.fill: parent // nothing below is to be clicked
        onWheel: wheel => wheel.accepted = true
    }
    Rectangle {
        anchors { left: parent.left; right: parent.right; bottom: parent.bottom }
        height: column.height + 48
        radius: 16
        color: "#22252b"
        Column {
            id: column
            x: 24
            y: 24
            width: parent.width - 48
            spacing: 14
            Text {
                width: parent.width
                color: "#e8eaee"
                font { pixelSize: 20; bold: true }
                text: sheet.title
                wrapMode: Text.Wrap
            }
        }
    }
}

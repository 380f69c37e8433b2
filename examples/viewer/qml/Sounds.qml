// The soundboard.
import QtQuick
import KeloViewer

ListView {
    id: view

    readonly property string title: "Soundboard"
    signal opened(string link)

    objectName: "sounds"
    clip: true
    model: SoundModel {}
    delegate: Rectangle {
        required property var record
        width: view.width
        height: 56
        color: "#16181d"
        objectName: "sound-" + record.soundId
        Text {
            anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
            color: "#e8eaee"
            font.pixelSize: 16
            text: parent.record.name
        }
        Pill {
            anchors { right: parent.right; rightMargin: 16; verticalCenter: parent.verticalCenter }
            text: "Featured"
            on: true
            visible: parent.record.featured
        }
    }
}

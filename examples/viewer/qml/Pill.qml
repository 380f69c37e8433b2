// A button with a text, which can be on.
import QtQuick

Rectangle {
    id: pill

    property alias text: label.text
    /// What the button switches, if it does.
    property var toggle: null
    property bool on: toggle?.on ?? false
    property color tint: "#19c3a6"
    signal clicked

    implicitWidth: label.implicitWidth + 22
    implicitHeight: 32
    radius: 16
    color: on ? tint : "#2a2d34"
    opacity: enabled ? 1 : 0.4

    Text {
        id: label
        anchors.centerIn: parent
        color: pill.on ? "#101216" : "#e8eaee"
        font.pixelSize: 14
    }
    MouseArea {
        anchors.fill: parent
        onClicked: pill.toggle ? pill.toggle.press() : pill.clicked()
    }
}

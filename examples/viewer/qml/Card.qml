// A card between the posts.
import QtQuick

Rectangle {
    id: card

    required property int index
    required property var record
    signal closed
    signal opened(string link)

    objectName: "card-" + record.key
    implicitHeight: column.height + 32
    color: "#1f2a2c"

    Column {
        id: column
        x: 12
        y: 16
        width: parent.width - 24
        spacing: 10

        Text {
            width: parent.width - 40
            color: "#e8eaee"
            font { pixelSize: 18; bold: true }
            text: card.record.title
            wrapMode: Text.Wrap
        }
        Text {
            width: parent.width
            color: "#9aa0aa"
            font.pixelSize: 14
            text: card.record.details
            wrapMode: Text.Wrap
            visible: text !== ""
        }
        Row {
            spacing: 6
            visible: card.record.pictures.length > 0
            Repeater {
                model: card.record.pictures
                Picture {
                    required property var modelData
                    width: 60
                    height: 60
                    url: modelData.url
                    MouseArea {
                        anchors.fill: parent
                        onClicked: card.opened(parent.modelData.link)
                    }
                }
            }
        }
        Pill {
            objectName: "open-" + card.record.key
            text: card.record.linkTitle
            on: true
            visible: text !== ""
            onClicked: card.opened(card.record.link)
        }
    }
    Pill {
        anchors { right: parent.right; top: parent.top; margins: 10 }
        objectName: "close-" + card.record.key
        text: "✕"
        visible: card.record.closePath !== ""
        onClicked: card.closed()
    }
}

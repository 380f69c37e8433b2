// Uploads a video, with a bar that can be stopped.
import QtQuick
import QtQuick.Controls
import QtQuick.Dialogs
import KeloViewer

Item {
    id: page

    readonly property string title: "Upload"
    readonly property bool isRunning: upload.state === "uploading" || upload.state === "processing"
    signal opened(string link)

    Uploader { id: upload }
    FileDialog {
        id: dialog
        nameFilters: ["Videos (*.mp4)"]
        onAccepted: file.text = selectedFile
    }
    Column {
        x: 24
        y: 32
        width: parent.width - 48
        spacing: 16

        TextField {
            id: file
            width: parent.width
            objectName: "file"
            color: "#e8eaee"
            placeholderText: "A video in MP4"
            placeholderTextColor: "#9aa0aa"
            background: Rectangle {
                color: "#16181d"
                radius: 8
            }
        }
        Row {
            spacing: 10
            Pill {
                text: "Choose …"
                onClicked: dialog.open()
            }
            Pill {
                objectName: "uploadNow"
                text: "Upload"
                on: true
                enabled: file.text !== "" && !page.isRunning
                onClicked: upload.start(file.text)
            }
            Pill {
                objectName: "uploadCancel"
                text: "Cancel"
                enabled: page.isRunning
                onClicked: upload.cancel()
            }
        }
        Rectangle {
            width: parent.width
            height: 10
            radius: 5
            color: "#2a2d34"
            Rectangle {
                objectName: "bar"
                width: parent.width * Math.min(1, upload.progress)
                height: parent.height
                radius: 5
                color: "#19c3a6"
            }
        }
        Text {
            width: parent.width
            objectName: "uploadState"
            color: "#e8eaee"
            wrapMode: Text.Wrap
            text: ({ idle: "", uploading: "Uploading …", processing: "The service prepares it …",
                     done: "It is there.", cancelled: "Cancelled." })[upload.state] ?? upload.state
        }
    }
}

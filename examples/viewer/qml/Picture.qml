// A picture of the service, as large as it is shown.
import QtQuick
import KeloViewer

Image {
    property alias url: remote.url

    source: remote.file
    sourceSize: Qt.size(width, height)
    asynchronous: true
    cache: false // the file is at hand

    RemoteFile { id: remote }
}

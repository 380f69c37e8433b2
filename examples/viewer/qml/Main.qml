// The window: tabs, the page that is open, and what lies over it.
import QtQuick
import QtQuick.Controls
import KeloViewer

ApplicationWindow {
    id: window

    width: 420
    height: 780
    visible: true
    color: "#101216"
    title: "Kelo viewer"

    function openFeed(path) {
        pages.push("Feed.qml", { path: path });
    }
    /// Goes where a link of a caption, a card or a post leads.
    function open(link) {
        const [, kind, id] = /^kelo:\/\/([a-z-]+)\/?(.*)$/.exec(link) ?? [];
        const feeds = { "tag": "timelines/tags/", "channel-id": "timelines/channels/",
                        "user-id": "timelines/users/", "timelines": "" };
        if (kind in feeds) {
            openFeed(feeds[kind] + id);
        } else if (kind === "upload-longform") {
            tabs.show("Upload.qml", {});
        }
    }

    header: Rectangle {
        height: 48
        color: "#101216"
        Row {
            id: tabs
            property string shown: "home"
            x: 8
            anchors.verticalCenter: parent.verticalCenter
            spacing: 5

            function show(page, properties) {
                shown = properties.path ?? page;
                pages.clear();
                pages.push(page, properties);
            }
            Pill {
                objectName: "back"
                text: "‹"
                visible: pages.depth > 1
                onClicked: pages.pop()
            }
            Repeater {
                model: ["home", "popular", "latest"]
                Pill {
                    required property string modelData
                    objectName: "tab-" + modelData
                    text: modelData[0].toUpperCase() + modelData.slice(1)
                    on: tabs.shown === modelData
                    onClicked: tabs.show("Feed.qml", { path: modelData })
                }
            }
            Pill {
                objectName: "tab-sounds"
                text: "Sounds"
                on: tabs.shown === "Sounds.qml"
                onClicked: tabs.show("Sounds.qml", {})
            }
            Pill {
                objectName: "tab-upload"
                text: "Upload"
                on: tabs.shown === "Upload.qml"
                onClicked: tabs.show("Upload.qml", {})
            }
        }
    }
    StackView {
        id: pages
        objectName: "pages"
        anchors { fill: parent; topMargin: banner.height }
        initialItem: Feed { path: "home" }
        pushEnter: null
        pushExit: null
        popEnter: null
        popExit: null
    }
    Connections {
        target: pages.currentItem
        function onOpened(link) { window.open(link) }
    }
    Timer {
        interval: 5000
        repeat: true
        running: Host.offline
        onTriggered: Host.retry(true)
    }
    Rectangle {
        id: banner
        objectName: "banner"
        width: parent.width
        height: visible ? 44 : 0
        visible: Host.offline
        color: "#5c2630"
        Text {
            anchors { left: parent.left; leftMargin: 16; verticalCenter: parent.verticalCenter }
            color: "#e8eaee"
            text: "The service cannot be reached."
        }
        Pill {
            anchors { right: parent.right; rightMargin: 10; verticalCenter: parent.verticalCenter }
            objectName: "retry"
            text: "Try again"
            onClicked: Host.retry()
        }
    }
    Rectangle {
        id: toast
        anchors { bottom: parent.bottom; bottomMargin: 20; horizontalCenter: parent.horizontalCenter }
        width: Math.min(said.implicitWidth + 32, parent.width - 24)
        height: 40
        radius: 20
        color: "#2a2d34"
        visible: gone.running
        Text {
            id: said
            objectName: "said"
            anchors { fill: parent; leftMargin: 16; rightMargin: 16 }
            color: "#e8eaee"
            elide: Text.ElideRight
            verticalAlignment: Text.AlignVCenter
        }
        Timer {
            id: gone
            interval: 4000
        }
        Connections {
            target: Host
            function onSaid(text) {
                said.text = text;
                gone.restart();
            }
        }
    }
    Loader {
        anchors.fill: parent
        source: Host.sheet ? Host.sheet + ".qml" : ""
    }
}

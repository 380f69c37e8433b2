// A feed, as a column of posts and cards. The post in the middle plays once the column rests.
import QtQuick
import QtQuick.Controls
import Qt.labs.qmlmodels
import KeloViewer

Item {
    id: page

    required property string path
    readonly property string title: feed.channel.name ?? path.split("/").pop()
    property bool isRefreshing: false
    property real keptOffset: 0
    signal opened(string link)

    /// Finds the row that is shown, and has it play soon.
    function look() {
        const row = view.indexAt(view.width / 2, view.contentY + view.height * 0.35);
        if (row >= 0) {
            keptOffset = view.contentY - view.itemAtIndex(row).y;
            feed.passed(row);
        }
        rest.restart();
    }

    Timer {
        id: rest
        interval: 120
        onTriggered: feed.settled(feed.shown)
    }
    FeedModel {
        id: feed
        path: page.path
        onPrepended: {
            if (page.isRefreshing) {
                view.positionViewAtBeginning();
            } else {
                view.positionViewAtIndex(feed.shown, ListView.Beginning);
                view.contentY += page.keptOffset;
            }
        }
        onChanged: page.isRefreshing = page.isRefreshing && loading
    }
    ListView {
        id: view
        objectName: "feed"
        anchors.fill: parent
        clip: true
        model: feed
        cacheBuffer: 800
        maximumFlickVelocity: 6000
        onContentYChanged: page.look()
        onCountChanged: Qt.callLater(page.look)
        onDragEnded: {
            if (verticalOvershoot < -80) {
                page.isRefreshing = true;
                feed.refresh();
            }
        }
        header: Rectangle {
            width: view.width
            height: feed.channel.name ? 96 : 0
            visible: height > 0
            color: feed.channel.background ?? "black"
            objectName: "channelHeader"
            // It may come later than the posts.
            onHeightChanged: if (feed.shown === 0) Qt.callLater(view.positionViewAtBeginning)
            Row {
                x: 16
                spacing: 16
                anchors.verticalCenter: parent.verticalCenter
                Picture {
                    width: 60
                    height: 60
                    url: feed.channel.icon ?? ""
                }
                Column {
                    anchors.verticalCenter: parent.verticalCenter
                    Text {
                        color: feed.channel.color ?? "white"
                        font { pixelSize: 22; bold: true }
                        text: feed.channel.name ?? ""
                    }
                    Text {
                        width: view.width - 110
                        color: feed.channel.color ?? "white"
                        wrapMode: Text.Wrap
                        text: feed.channel.details ?? ""
                    }
                }
            }
        }
        footer: Text {
            width: view.width
            height: 60
            objectName: "footer"
            color: "#9aa0aa"
            horizontalAlignment: Text.AlignHCenter
            verticalAlignment: Text.AlignVCenter
            text: feed.loading ? "Loading …" : feed.failed ? "This could not be read." : "That is all."
        }
        delegate: DelegateChooser {
            role: "isCard"
            DelegateChoice {
                roleValue: false
                Post {
                    width: view.width
                    playing: index === feed.atRest && page.StackView.status === StackView.Active
                    onLooped: feed.looped(index)
                    onOpened: link => page.opened(link)
                }
            }
            DelegateChoice {
                roleValue: true
                Card {
                    width: view.width
                    onClosed: feed.closeCard(index)
                    onOpened: link => page.opened(link)
                }
            }
        }
    }
    Text {
        anchors { top: parent.top; topMargin: 16; horizontalCenter: parent.horizontalCenter }
        objectName: "pull"
        color: "#9aa0aa"
        visible: view.verticalOvershoot < -30 || page.isRefreshing
        text: page.isRefreshing ? "Looking for newer posts …"
              : view.verticalOvershoot < -80 ? "Let go for newer posts" : "Pull for newer posts"
    }
}

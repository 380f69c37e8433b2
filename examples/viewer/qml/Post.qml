// One post: its author, its loop, what it says and what can be done with it.
import QtQuick
import KeloViewer

Rectangle {
    id: post

    required property int index
    required property var record
    property bool playing: false
    signal looped
    signal opened(string link)

    objectName: "post-" + record.key
    implicitHeight: column.height + 20
    color: "#16181d"

    component Words: Text {
        width: parent.width
        color: "#e8eaee"
        linkColor: "#19c3a6"
        font.pixelSize: 15
        wrapMode: Text.Wrap
        textFormat: Text.StyledText
        visible: text !== ""
        onLinkActivated: link => post.opened(link)
    }
    component Line: Row {
        property alias icon: picture.url
        property alias text: words.text
        spacing: 8
        visible: text !== ""
        Picture {
            id: picture
            width: 20
            height: 20
            visible: url !== ""
        }
        Words {
            id: words
            width: column.width - 52
            color: "#9aa0aa"
            font.pixelSize: 13
        }
    }

    Column {
        id: column
        width: parent.width
        spacing: 8

        Item {
            width: parent.width
            height: 56
            Picture {
                id: face
                x: 12
                y: 8
                width: 40
                height: 40
                url: post.record.avatar
            }
            Text {
                anchors { left: face.right; leftMargin: 10; verticalCenter: face.verticalCenter }
                objectName: "author-" + post.record.key
                color: "#e8eaee"
                font { pixelSize: 16; bold: true }
                text: post.record.author
                MouseArea {
                    anchors.fill: parent
                    onClicked: post.opened("kelo://user-id/" + post.record.authorId)
                }
            }
            Pill {
                anchors { right: parent.right; rightMargin: 12; verticalCenter: face.verticalCenter }
                objectName: "follow-" + post.record.key
                text: on ? "Following" : "Follow"
                toggle: post.record.follow
            }
        }
        Item {
            width: parent.width
            height: width
            Picture {
                anchors.fill: parent
                objectName: "thumbnail-" + post.record.key
                url: post.record.thumbnail
                visible: !loop.hasPicture
            }
            LoopItem {
                id: loop
                objectName: "loop-" + post.record.key
                anchors.fill: parent
                source: video.file
                playing: post.playing
                onLooped: post.looped()
            }
            RemoteFile {
                id: video
                url: post.playing ? post.record.video : ""
            }
            Rectangle {
                anchors.fill: parent
                color: "#c0101216"
                visible: post.record.less.on
                Text {
                    anchors.centerIn: parent
                    color: "#e8eaee"
                    text: "You will see less of this."
                }
            }
        }
        Column {
            x: 12
            width: parent.width - 24
            spacing: 8

            Words {
                objectName: "caption-" + post.record.key
                text: post.record.caption
            }
            Line { icon: post.record.bylineIcon; text: post.record.byline }
            Line { text: post.record.venue }
            Line { icon: post.record.albumArt; text: post.record.music }
            Row {
                spacing: 8
                Pill {
                    objectName: "like-" + post.record.key
                    text: "♥ " + (post.record.likes + on)
                    toggle: post.record.like
                    tint: "#ff5c7a"
                }
                Pill {
                    objectName: "rekelo-" + post.record.key
                    text: "⟲ " + (post.record.rekelos + on)
                    toggle: post.record.rekelo
                }
                Pill {
                    objectName: "less-" + post.record.key
                    text: "Less"
                    toggle: post.record.less
                }
                Pill {
                    objectName: "channel-" + post.record.key
                    text: post.record.channel
                    visible: text !== ""
                    onClicked: post.opened("kelo://channel-id/" + post.record.channelId)
                }
            }
            Words {
                objectName: "loops-" + post.record.key
                color: "#9aa0aa"
                font.pixelSize: 13
                text: Number(post.record.loops).toLocaleString(Qt.locale("en"), "f", 0) + " loops"
            }
        }
    }
}

// Signs in again. What waits for it goes on behind the sheet, or is given up.
import QtQuick
import QtQuick.Controls
import KeloViewer

Sheet {
    title: "Please sign in again"
    objectName: "signIn"

    component Field: TextField {
        width: parent.width
        color: "#e8eaee"
        placeholderTextColor: "#9aa0aa"
        background: Rectangle {
            color: "#16181d"
            radius: 8
        }
        onAccepted: go.clicked()
    }

    Field {
        id: user
        objectName: "user"
        placeholderText: "User name"
    }
    Field {
        id: password
        objectName: "password"
        placeholderText: "Password"
        echoMode: TextInput.Password
    }
    Text {
        id: problem
        objectName: "problem"
        color: "#ff5c7a"
        visible: text !== ""
    }
    Connections {
        target: Host
        function onSaid(text) { problem.text = text }
    }
    Row {
        spacing: 10
        Pill {
            id: go
            objectName: "signInNow"
            text: "Sign in"
            on: true
            enabled: user.text !== "" && password.text !== ""
            onClicked: Host.signIn(user.text, password.text)
        }
        Pill {
            objectName: "signInLater"
            text: "Not now"
            onClicked: Host.closeSheet(false)
        }
    }
}

// Has a captcha solved in the browser.
import QtQuick
import KeloViewer

Sheet {
    title: "The service asks whether you are a person"
    objectName: "captcha"

    Text {
        width: parent.width
        objectName: "captchaUrl"
        color: "#19c3a6"
        text: Host.captchaUrl
        wrapMode: Text.WrapAnywhere
    }
    Row {
        spacing: 10
        Pill {
            text: "Open the page"
            on: true
            onClicked: Qt.openUrlExternally(Host.captchaUrl)
        }
        Pill {
            objectName: "captchaSolved"
            text: "Solved"
            onClicked: Host.closeSheet(true)
        }
        Pill {
            objectName: "captchaLater"
            text: "Not now"
            onClicked: Host.closeSheet(false)
        }
    }
}

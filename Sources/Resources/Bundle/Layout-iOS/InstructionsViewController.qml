import QtQuick
import LumoraSDK

// The first-use instructions over the paused player: a frosted backdrop, a heading, the four
// gestures and a start button. The look declared here is the light one; the controller restyles
// it for the row's style.
Item {
    id: root

    // Asks the controller to close the overlay, as its buttons do.
    signal closeRequested()

    // While the overlay has the keyboard no key reaches the paused player below; Escape and
    // Return close it.
    Keys.onPressed: (event) => {
        event.accepted = true
        if (event.key === Qt.Key_Escape || event.key === Qt.Key_Return
                || event.key === Qt.Key_Enter) {
            root.closeRequested()
        }
    }

    // On tall phone screens the content sits lower, clear of the status area.
    readonly property real topInset: height > width * 16 / 9 + 1 ? 44 : 0
    readonly property real sideMargin: width < 360 ? 24 : 32

    // The frosted backdrop: a translucent tint that carries the style. The paused page shows
    // through faintly; a blurred copy would need a live layer of the screen below, which
    // not every renderer draws, for little gain under this much tint.
    Rectangle {
        objectName: "backgroundBlurView"
        anchors.fill: parent
        color: dark ? Qt.rgba(0.07, 0.07, 0.08, 0.93) : Qt.rgba(0.98, 0.98, 0.98, 0.95)

        // Numbered like the platform's blur styles: 0 extra light, 2 dark.
        property int effectStyle: 0
        readonly property bool dark: effectStyle === 2
    }

    // Right over the player's own close button, which would otherwise show through as a second one.
    FrameButtonView {
        objectName: "closeButton"
        x: root.width - width - 10
        y: 19
        width: 40
        height: 40
        imageName: "icon-close-black"
    }

    component InstructionRow: Item {
        id: row
        required property int number
        required property string iconName
        required property string title
        required property string description
        width: parent.width
        height: Math.max(icon.height, texts.height)

        ImageView {
            id: icon
            objectName: "icon" + row.number
            width: 52
            height: 52
            anchors.verticalCenter: parent.verticalCenter
            imageName: row.iconName
        }

        Column {
            id: texts
            x: icon.width + 18
            width: row.width - x
            anchors.verticalCenter: parent.verticalCenter
            spacing: 3

            Text {
                objectName: "title" + row.number
                width: parent.width
                text: row.title
                color: "#111111"
                font.family: "Inter"
                font.weight: Font.DemiBold
                font.pixelSize: 17
                elide: Text.ElideRight
            }

            Text {
                objectName: "description" + row.number
                width: parent.width
                text: row.description
                color: "#6D6D6D"
                font.family: "Inter"
                font.pixelSize: 14
                lineHeight: 1.15
                wrapMode: Text.WordWrap
            }
        }
    }

    Column {
        id: content
        width: Math.min(root.width - 2 * root.sideMargin, 400)
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.verticalCenter: parent.verticalCenter
        anchors.verticalCenterOffset: root.topInset / 2
        // Shrunk to fit a short card (a low, wide window's).
        scale: Math.min(1, (root.height - root.topInset - 32) / Math.max(1, height))

        Text {
            objectName: "mainTitle"
            width: parent.width
            text: "Welcome to Stories"
            color: "#494949"
            font.family: "Inter"
            font.weight: Font.DemiBold
            font.pixelSize: 28
            wrapMode: Text.WordWrap
        }

        Item { width: 1; height: 8 }

        Text {
            objectName: "subTitle"
            width: parent.width
            text: "A few gestures get you around."
            color: "#8A8A8E"
            font.family: "Inter"
            font.pixelSize: 16
            wrapMode: Text.WordWrap
        }

        Item { width: 1; height: 36 }

        Column {
            width: parent.width
            spacing: 26

            InstructionRow {
                number: 1
                iconName: "icon-instruction-forward-black"
                title: "Tap right"
                description: "Skip ahead to the next page."
            }
            InstructionRow {
                number: 2
                iconName: "icon-instruction-pause-black"
                title: "Hold"
                description: "Press and hold anywhere to pause."
            }
            InstructionRow {
                number: 3
                iconName: "icon-instruction-back-black"
                title: "Tap left"
                description: "Go back to the previous page."
            }
            InstructionRow {
                number: 4
                iconName: "icon-instruction-swipe-black"
                title: "Swipe up"
                description: "Open the page's link for more."
            }
        }

        Item { width: 1; height: 44 }

        FrameButtonView {
            objectName: "startButton"
            width: parent.width
            height: 52
            cornerRadius: height / 2
            leftRounding: true
            rightRounding: true
            backgroundColor: "#111111"

            Text {
                objectName: "startButtonTitle"
                anchors.centerIn: parent
                text: "Start watching"
                color: "#ffffff"
                font.family: "Inter"
                font.weight: Font.DemiBold
                font.pixelSize: 16
            }
        }
    }
}

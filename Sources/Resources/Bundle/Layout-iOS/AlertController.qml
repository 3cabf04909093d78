import QtQuick

// A dialog over the screen below: title, message and a row of actions on a rounded card over a
// dimmed backdrop. Actions are drawn in the order given; destructive ones in the brand's red.
Item {
    id: root

    property string title
    property string message
    // [{title, style}], style numbered 0 default, 1 cancel, 2 destructive.
    property var actions: []

    signal actionTriggered(int index)

    // No key reaches the screen below while the alert is up.
    Keys.onPressed: (event) => { event.accepted = true }

    Rectangle {
        anchors.fill: parent
        color: "#73000000"

        // Presses beside the card do nothing, as on a platform alert.
        MouseArea { anchors.fill: parent }
    }

    Rectangle {
        id: card
        objectName: "alertCard"
        anchors.centerIn: parent
        width: Math.min(root.width - 64, 300)
        height: texts.height + 48 + buttons.height
        radius: 16
        color: "#ffffff"

        Column {
            id: texts
            x: 20
            y: 22
            width: card.width - 40
            spacing: 8

            Text {
                objectName: "alertTitle"
                width: parent.width
                text: root.title
                color: "#111111"
                font.family: "Inter"
                font.weight: Font.DemiBold
                font.pixelSize: 17
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }

            Text {
                objectName: "alertMessage"
                width: parent.width
                text: root.message
                color: "#494949"
                font.family: "Inter"
                font.pixelSize: 14
                lineHeight: 1.15
                horizontalAlignment: Text.AlignHCenter
                wrapMode: Text.WordWrap
            }
        }

        Rectangle {
            y: buttons.y - 1
            width: card.width
            height: 1
            color: "#e3e3e3"
        }

        Row {
            id: buttons
            y: texts.y + texts.height + 24
            width: card.width
            height: 50

            Repeater {
                model: root.actions

                Item {
                    required property var modelData
                    required property int index
                    objectName: "alertAction" + index
                    width: buttons.width / Math.max(1, root.actions.length)
                    height: buttons.height

                    Rectangle {
                        anchors.fill: parent
                        color: press.pressed ? "#f0f0f0" : "transparent"
                        radius: 16
                    }

                    Rectangle {
                        visible: index > 0
                        width: 1
                        height: parent.height
                        color: "#e3e3e3"
                    }

                    Text {
                        anchors.centerIn: parent
                        text: modelData.title
                        color: modelData.style === 2 ? "#E21219" : "#111111"
                        font.family: "Inter"
                        font.weight: modelData.style === 1 ? Font.DemiBold : Font.Normal
                        font.pixelSize: 16
                    }

                    MouseArea {
                        id: press
                        anchors.fill: parent
                        onClicked: root.actionTriggered(index)
                    }
                }
            }
        }
    }
}

import QtQuick
import LumoraSDK

// The share sheet over the paused player: a card at the bottom with what is shared (its picture,
// or a film tile for a video, with its name and size), the activities, and a Cancel button below.
Item {
    id: root

    property string itemName
    property string itemDetail
    // [{title, icon}] in the order offered.
    property var activities: []

    // -1: closed without an activity.
    signal activityChosen(int index)

    Keys.onPressed: (event) => {
        event.accepted = true
        if (event.key === Qt.Key_Escape) {
            root.activityChosen(-1)
        }
    }

    Rectangle {
        anchors.fill: parent
        color: "#80000000"

        MouseArea {
            objectName: "backdrop"
            anchors.fill: parent
            onClicked: root.activityChosen(-1)
        }
    }

    Column {
        id: sheet
        width: Math.min(root.width - 16, 420)
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 10
        spacing: 8

        Rectangle {
            objectName: "sheetCard"
            width: parent.width
            height: header.height + list.height + 1
            radius: 16
            color: "#ffffff"

            // Presses on the card stay on the card.
            MouseArea { anchors.fill: parent }

            Item {
                id: header
                width: parent.width
                height: 84

                Rectangle {
                    id: previewTile
                    x: 16
                    anchors.verticalCenter: parent.verticalCenter
                    width: 56
                    height: 56
                    radius: 10
                    color: "#1f1f22"

                    // A video is shown as a film tile: a play mark in the brand's yellow.
                    Text {
                        anchors.centerIn: parent
                        visible: !preview.hasImage
                        text: "\u25b6"
                        color: "#F5C92C"
                        font.pixelSize: 22
                    }

                    ImageView {
                        id: preview
                        objectName: "previewImage"
                        anchors.fill: parent
                        contentMode: ImageView.AspectFill
                    }
                }

                Column {
                    x: previewTile.x + previewTile.width + 14
                    width: parent.width - x - 16
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 4

                    Text {
                        objectName: "itemName"
                        width: parent.width
                        text: root.itemName
                        color: "#111111"
                        font.family: "Inter"
                        font.weight: Font.DemiBold
                        font.pixelSize: 16
                        elide: Text.ElideMiddle
                    }

                    Text {
                        width: parent.width
                        text: root.itemDetail
                        color: "#6D6D6D"
                        font.family: "Inter"
                        font.pixelSize: 13
                    }
                }

                Rectangle {
                    anchors.bottom: parent.bottom
                    width: parent.width
                    height: 1
                    color: "#ececec"
                }
            }

            Column {
                id: list
                y: header.height + 1
                width: parent.width

                Repeater {
                    model: root.activities

                    Item {
                        required property var modelData
                        required property int index
                        objectName: "activity" + index
                        width: list.width
                        height: 54

                        Rectangle {
                            anchors.fill: parent
                            anchors.margins: 4
                            radius: 10
                            color: activityPress.pressed ? "#f2f2f2" : "transparent"
                        }

                        // The glyph on a soft tint of the brand's yellow.
                        Rectangle {
                            id: iconTile
                            x: 16
                            anchors.verticalCenter: parent.verticalCenter
                            width: 34
                            height: 34
                            radius: 17
                            color: "#FDF1C7"

                            ImageView {
                                anchors.centerIn: parent
                                width: 20
                                height: 20
                                imageName: modelData.icon
                            }
                        }

                        Text {
                            x: iconTile.x + iconTile.width + 14
                            anchors.verticalCenter: parent.verticalCenter
                            text: modelData.title
                            color: "#111111"
                            font.family: "Inter"
                            font.pixelSize: 16
                        }

                        MouseArea {
                            id: activityPress
                            anchors.fill: parent
                            onClicked: root.activityChosen(index)
                        }
                    }
                }
            }
        }

        Rectangle {
            objectName: "cancelButton"
            width: parent.width
            height: 54
            radius: 16
            color: cancelPress.pressed ? "#f2f2f2" : "#ffffff"

            Text {
                anchors.centerIn: parent
                text: "Cancel"
                color: "#111111"
                font.family: "Inter"
                font.weight: Font.DemiBold
                font.pixelSize: 16
            }

            MouseArea {
                id: cancelPress
                anchors.fill: parent
                onClicked: root.activityChosen(-1)
            }
        }
    }
}

import QtQuick
import LumoraSDK

// A web page over the player: the branded top bar (grab handle, title, address, close button and
// the load-progress bar along its bottom edge) with the page under it. Dragging the bar moves
// both down; the background fades with the drag.
Rectangle {
    id: root
    color: "#000000"

    property QtObject controller
    // Text and icons on the bar; the controller picks what reads on the bar's colour.
    property color barContentColor: "#1a1a1a"

    Item {
        id: topBar
        objectName: "topBarView"
        anchors.top: parent.top
        anchors.left: parent.left
        anchors.right: parent.right
        height: 64

        Rectangle {
            objectName: "grabHandle"
            anchors.horizontalCenter: parent.horizontalCenter
            y: 6
            width: 36
            height: 4
            radius: 2
            color: root.barContentColor
            opacity: 0.3
        }

        Text {
            objectName: "pageTitle"
            x: 52
            y: 15
            width: parent.width - 104
            horizontalAlignment: Text.AlignHCenter
            color: root.barContentColor
            font.family: "Inter"
            font.pixelSize: 15
            font.weight: Font.DemiBold
            elide: Text.ElideRight
        }

        Text {
            objectName: "pageUrl"
            x: 52
            y: 36
            width: parent.width - 104
            horizontalAlignment: Text.AlignHCenter
            color: root.barContentColor
            opacity: 0.7
            font.family: "Inter"
            font.pixelSize: 12
            elide: Text.ElideMiddle
        }

        FrameButtonView {
            objectName: "closeButton"
            x: parent.width - 48
            y: 14
            width: 36
            height: 36
            cornerRadius: 18
            leftRounding: true
            rightRounding: true

            Text {
                anchors.centerIn: parent
                text: "\u2715"
                color: root.barContentColor
                font.pixelSize: 18
            }
        }

        Rectangle {
            objectName: "progressBar"
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            height: 3
            opacity: 0
        }

        // Mouse and touch alike; the translation is in the window's terms, so moving the bar
        // under the pointer does not feed back into the drag.
        DragHandler {
            id: pan
            target: null
            xAxis.enabled: false
            property bool panning: false
            property real lastDy: 0

            onActiveChanged: {
                if (active) {
                    panning = true
                    lastDy = 0
                    root.controller.forwardPan(1, 0)
                }
            }
            onTranslationChanged: {
                if (active) {
                    lastDy = translation.y
                    root.controller.forwardPan(2, lastDy)
                }
            }
            onGrabChanged: (transition, point) => {
                if (!panning)
                    return
                if (transition === PointerDevice.UngrabExclusive) {
                    panning = false
                    root.controller.forwardPan(3, lastDy)
                } else if (transition === PointerDevice.CancelGrabExclusive) {
                    panning = false
                    root.controller.forwardPan(4, lastDy)
                }
            }
        }
    }

    // Hosts the web view; white until the page paints.
    Rectangle {
        objectName: "containerView"
        anchors.top: topBar.bottom
        width: root.width
        height: root.height - topBar.height
        color: "#ffffff"
        clip: true
    }
}

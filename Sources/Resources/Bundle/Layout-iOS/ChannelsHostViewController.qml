import QtQuick
import LumoraSDK

// The full-screen player: the channels pager in a container that grows out of the row cell, over
// a dark background whose opacity follows the container. Touches are watched from a layer above
// the pager that leaves them to the pager and the page's controls as well; the host interprets
// them (hold, click, pan, swipe up).
Rectangle {
    id: root
    color: "#000000"
    focus: true

    signal touchBegan(point scenePosition)
    signal touchMoved(point translation)
    signal touchEnded(bool cancelled)
    signal closeHitAreaPressed()
    signal learnMoreHitAreaPressed()

    Item {
        objectName: "channelsCollectionContainerView"
        width: root.width
        height: root.height

        CollectionView {
            objectName: "channelsCollectionView"
            anchors.fill: parent
        }
    }

    Item {
        anchors.fill: parent

        PointHandler {
            id: touch
            onActiveChanged: active ? root.touchBegan(point.scenePressPosition)
                                    : root.touchEnded(false)
            onTranslationChanged: if (active) root.touchMoved(Qt.point(translation.x, translation.y))
            onCanceled: root.touchEnded(true)
        }
    }

    // Left-hand area for the previous page, with the shade shown while it is held.
    Item {
        objectName: "previousButton"
        width: root.width * 0.25
        height: root.height

        Rectangle {
            objectName: "previousButtonGradient"
            anchors.fill: parent
            visible: false
            gradient: Gradient {
                orientation: Gradient.Horizontal
                GradientStop { position: 0.0; color: "#66000000" }
                GradientStop { position: 1.0; color: "#00000000" }
            }
        }
    }

    // Enlarged touch targets over the page player's controls; they take their touches, so a press
    // on them is neither a hold nor a page change.
    MouseArea {
        objectName: "closeButtonHitArea"
        x: root.width - 56
        width: 56
        height: 56
        onClicked: root.closeHitAreaPressed()
    }
    MouseArea {
        objectName: "learnMoreButtonHitArea"
        x: root.width / 2 - 100
        y: root.height - 96
        width: 200
        height: 96
        enabled: false
        onClicked: root.learnMoreHitAreaPressed()
    }

    Rectangle {
        objectName: "progressLoadingViewContainer"
        anchors.fill: parent
        color: "#99000000"
        visible: false

        Text {
            objectName: "progressLoadingViewText"
            anchors.centerIn: parent
            color: "#ffffff"
            font.pixelSize: 15
            text: "Loading\u2026"
        }
    }
}

import QtQuick
import LumoraSDK

// The full-screen player: the channels pager in a container that grows out of the row cell, over
// a dark background whose opacity follows the container.
Rectangle {
    id: root
    color: "#000000"

    Item {
        objectName: "channelsCollectionContainerView"
        width: root.width
        height: root.height

        CollectionView {
            objectName: "channelsCollectionView"
            anchors.fill: parent
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

    // Enlarged touch targets over the page player's controls.
    Item { objectName: "closeButtonHitArea"; x: root.width - 56; y: 8; width: 56; height: 56 }
    Item { objectName: "shareButtonHitArea"; x: root.width - 100; y: 8; width: 44; height: 56 }
    Item {
        objectName: "learnMoreButtonHitArea"
        x: root.width / 2 - 100
        y: root.height - 96
        width: 200
        height: 96
        enabled: false
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

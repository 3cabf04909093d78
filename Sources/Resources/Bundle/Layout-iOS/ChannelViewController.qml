import QtQuick
import LumoraSDK

// One channel of the full-screen player: the pages full screen, the progress bar and the
// channel's header on top, the learn-more pill at the bottom.
Rectangle {
    id: root
    color: "#000000"
    clip: true

    // The pages' stills; a video page shows its play card here until its video plays above.
    CollectionView {
        objectName: "mediaCollectionView"
        width: root.width
        height: root.height
    }

    // Video pages play here, over their play card; image pages hide it.
    Item {
        objectName: "videoContainerView"
        width: root.width
        height: root.height
        visible: false
    }

    Rectangle {
        objectName: "topGradient"
        width: root.width
        height: 140
        gradient: Gradient {
            GradientStop { position: 0.0; color: "#99000000" }
            GradientStop { position: 1.0; color: "#00000000" }
        }
    }

    // The header only draws: presses on it, the channel's picture included, count as presses on
    // the page. Its close button takes its own.
    PassthroughTouchView {
        objectName: "interactiveLayoutViewContainer"
        width: root.width
        height: 96
        passthroughTouchEvents: true

        CollectionView {
            objectName: "progressCollectionView"
            x: 8
            y: 8
            width: parent.width - 16
            height: 3
        }

        PassthroughTouchButton {
            objectName: "channelProfileImage"
            passthroughTouchEvents: true
            x: 12
            y: 22
            width: 36
            height: 36
            cornerRadius: width / 2
            leftRounding: true
            rightRounding: true
            borderWidth: 1
            borderColor: "#ffffff"
            backgroundColor: "#444444"
        }

        Text {
            objectName: "channelTitle"
            x: 58
            y: 30
            width: parent.width - 58 - 56
            color: "#ffffff"
            font.pixelSize: 15
            font.bold: true
            elide: Text.ElideRight
        }

        Text {
            objectName: "channelSubtitle"
            x: 58
            y: 48
            width: parent.width - 58 - 56
            color: "#ffffff"
            font.pixelSize: 12
            elide: Text.ElideRight
        }

        // Shown on pages with media.
        FrameButtonView {
            objectName: "shareButton"
            x: parent.width - 84
            y: 26
            width: 28
            height: 28
            visible: false
            imageName: "icon-share-white"
        }

        FrameButtonView {
            objectName: "closeButton"
            x: parent.width - 44
            y: 26
            width: 28
            height: 28

            Text {
                anchors.centerIn: parent
                text: "\u2715"
                color: "#ffffff"
                font.pixelSize: 20
                style: Text.Raised
                styleColor: "#40000000"
            }
        }
    }

    FrameButtonView {
        objectName: "learnMoreContainerView"
        anchors.horizontalCenter: parent.horizontalCenter
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 28
        width: Math.max(120, learnMoreText.implicitWidth + 36)
        height: 36
        cornerRadius: height / 2
        leftRounding: true
        rightRounding: true
        backgroundColor: "#e6ffffff"
        visible: false
        opacity: 0

        Text {
            id: learnMoreText
            objectName: "learnMoreButtonText"
            anchors.centerIn: parent
            text: "LEARN MORE"
            color: "#1a1a1a"
            font.pixelSize: 13
            font.bold: true
        }
    }
}

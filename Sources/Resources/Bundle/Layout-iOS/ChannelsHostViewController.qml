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
    signal shareHitAreaPressed()

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
        id: closeHitArea
        objectName: "closeButtonHitArea"
        x: root.width - 56
        width: 56
        height: 56
        onClicked: root.closeHitAreaPressed()
    }
    // Left of the close area, over the page's share button; hidden on pages without media.
    MouseArea {
        objectName: "shareButtonHitArea"
        x: root.width - 96
        y: closeHitArea.y
        width: 40
        height: 56
        visible: false
        onClicked: root.shareHitAreaPressed()
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

    // While a shared page's media downloads: the page dimmed under a card with a ring that fills
    // with the percentage, or turns while the size is unknown (no percentage shown).
    Rectangle {
        objectName: "progressLoadingViewContainer"
        anchors.fill: parent
        color: "#80000000"
        visible: false

        // Takes the presses that would otherwise reach the paused page.
        MouseArea { anchors.fill: parent }

        Rectangle {
            id: loadingCard
            anchors.centerIn: parent
            width: 148
            height: 148
            radius: 22
            color: "#f2202124"

            readonly property real fraction: {
                const percent = parseInt(loadingText.text)
                return isNaN(percent) ? -1 : Math.max(0, Math.min(percent, 100)) / 100
            }
            readonly property bool indeterminate: fraction < 0

            Canvas {
                id: ring
                width: 76
                height: 76
                anchors.horizontalCenter: parent.horizontalCenter
                y: 22
                antialiasing: true
                onPaint: {
                    const ctx = getContext("2d")
                    const r = width / 2 - 4
                    ctx.reset()
                    ctx.lineWidth = 6
                    ctx.lineCap = "round"
                    ctx.strokeStyle = "#33ffffff"
                    ctx.beginPath()
                    ctx.arc(width / 2, height / 2, r, 0, 2 * Math.PI)
                    ctx.stroke()
                    const sweep = loadingCard.indeterminate ? 0.28 : loadingCard.fraction
                    if (sweep > 0) {
                        ctx.strokeStyle = "#ffffff"
                        ctx.beginPath()
                        ctx.arc(width / 2, height / 2, r, -Math.PI / 2,
                                -Math.PI / 2 + sweep * 2 * Math.PI)
                        ctx.stroke()
                    }
                }
                Connections {
                    target: loadingCard
                    function onFractionChanged() { ring.requestPaint() }
                }
                RotationAnimator on rotation {
                    from: 0
                    to: 360
                    duration: 1000
                    loops: Animation.Infinite
                    running: loadingCard.indeterminate && loadingCard.visible
                }
            }

            Text {
                objectName: "progressLoadingViewText"
                id: loadingText
                anchors.centerIn: ring
                color: "#ffffff"
                font.family: "Inter"
                font.weight: Font.DemiBold
                font.pixelSize: 17
                text: "0%"
            }

            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                y: ring.y + ring.height + 14
                color: "#b3ffffff"
                font.family: "Inter"
                font.pixelSize: 13
                text: "Preparing to share"
            }
        }
    }
}

import QtQuick
import QtQuick.Shapes
import LumoraSDK

// The full-screen player: the channels pager in a container that grows out of the row cell, over
// a dark background whose opacity follows the container. Touches are watched from a layer above
// the pager that leaves them to the pager and the page's controls as well; the host interprets
// them (hold, click, pan, swipe up).
//
// The pager plays in a card, the phone-sized screen the pages are made for: the whole window when
// the window has a phone's shape, otherwise a 9:16 card over a dimmed, blurred copy of the page,
// with the neighbouring channels and the pointer controls around it. The host places the card
// and the controls (ChannelsHostStage); a click beside the card closes the player.
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
    signal stageControlClicked(string control)

    // A round button for a pointer: lighter under the pointer, darker while pressed, ringed while
    // it has the keyboard focus; Space or Return presses it.
    component StageButton: Item {
        id: button
        required property string control
        property string name
        property string iconFill
        property string iconStroke
        visible: false
        activeFocusOnTab: visible
        Accessible.role: Accessible.Button
        Accessible.name: name
        Accessible.onPressAction: root.stageControlClicked(control)
        Keys.onSpacePressed: root.stageControlClicked(control)
        Keys.onReturnPressed: root.stageControlClicked(control)
        // The release is the button's too: the player holds the page while Space is down.
        Keys.onReleased: (event) => event.accepted = event.key === Qt.Key_Space
                                                   || event.key === Qt.Key_Return

        Rectangle {
            anchors.fill: parent
            radius: width / 2
            color: pointer.pressed ? "#b3000000" : pointer.containsMouse ? "#80ffffff" : "#66000000"
            border.width: button.activeFocus ? 2 : 0
            border.color: "#ffffff"
        }
        // The glyph, drawn on a 24-point grid.
        Shape {
            anchors.centerIn: parent
            width: 24
            height: 24
            scale: button.width / 44
            ShapePath {
                fillColor: "#ffffff"
                strokeColor: "transparent"
                PathSvg { path: button.iconFill }
            }
            ShapePath {
                fillColor: "transparent"
                strokeColor: "#ffffff"
                strokeWidth: 2.2
                capStyle: ShapePath.RoundCap
                joinStyle: ShapePath.RoundJoin
                PathSvg { path: button.iconStroke }
            }
        }
        MouseArea {
            id: pointer
            anchors.fill: parent
            hoverEnabled: true
            onClicked: root.stageControlClicked(button.control)
        }
    }

    // The previous or next channel beside the card: its page, its picture and its title.
    component NeighbourCard: FrameButtonView {
        id: neighbour
        property string title
        cornerRadius: 10
        leftRounding: true
        rightRounding: true
        backgroundColor: "#262626"
        contentMode: ImageView.AspectFill
        visible: false
        Accessible.role: Accessible.Button
        Accessible.name: title

        HoverHandler { id: hover }
        Rectangle {
            anchors.fill: parent
            radius: neighbour.cornerRadius
            color: "#000000"
            opacity: hover.hovered ? 0.25 : 0.5
        }
        // At the top, clear of the page's own title and text.
        Column {
            anchors.horizontalCenter: parent.horizontalCenter
            anchors.top: parent.top
            anchors.topMargin: 16
            width: parent.width - 16
            spacing: 8

            FrameButtonView {
                objectName: "neighbourPicture"
                anchors.horizontalCenter: parent.horizontalCenter
                width: 40
                height: 40
                cornerRadius: width / 2
                leftRounding: true
                rightRounding: true
                borderWidth: 1.5
                borderColor: "#ffffff"
                backgroundColor: "#444444"
                enabled: false
            }
            Text {
                width: parent.width
                horizontalAlignment: Text.AlignHCenter
                text: neighbour.title
                color: "#ffffff"
                font.pixelSize: 14
                font.bold: true
                elide: Text.ElideRight
                style: Text.Raised
                styleColor: "#40000000"
            }
        }
    }

    // Around the card: fades in and out with the background.
    Item {
        objectName: "stageChrome"
        anchors.fill: parent
        opacity: root.color.a
        visible: false

        // The page's picture, much reduced and stretched back up: blurred. Any renderer draws it.
        ImageView {
            objectName: "stageBackdrop"
            anchors.fill: parent
            contentMode: ImageView.AspectFill
        }
        Rectangle {
            anchors.fill: parent
            color: "#000000"
            opacity: 0.6
        }
        // Only beside the card: a press on the card that nothing there takes is the card's hold.
        MouseArea {
            objectName: "stageBackdropArea"
            anchors.fill: parent
            onPressed: (mouse) => mouse.accepted = !card.contains(mapToItem(card, mouse.x, mouse.y))
            onClicked: root.stageControlClicked("backdrop")
        }

        NeighbourCard { objectName: "previousNeighbour"; onClicked: root.stageControlClicked("previousNeighbour") }
        NeighbourCard { objectName: "nextNeighbour"; onClicked: root.stageControlClicked("nextNeighbour") }

        StageButton {
            objectName: "previousArrowButton"
            control: "previousArrow"
            name: qsTr("Previous page")
            iconStroke: "M 14.5 5 L 7.5 12 L 14.5 19"
        }
        StageButton {
            objectName: "nextArrowButton"
            control: "nextArrow"
            name: qsTr("Next page")
            iconStroke: "M 9.5 5 L 16.5 12 L 9.5 19"
        }
        StageButton {
            objectName: "stageCloseButton"
            control: "close"
            name: qsTr("Close")
            iconStroke: "M 6 6 L 18 18 M 18 6 L 6 18"
        }
    }

    Item {
        id: card
        objectName: "stageCard"
        width: root.width
        height: root.height

        Item {
            id: container
            objectName: "channelsCollectionContainerView"
            width: card.width
            height: card.height

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
            width: card.width * 0.25
            height: card.height

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

        // Enlarged touch targets over the page player's controls; they take their touches, so a
        // press on them is neither a hold nor a page change.
        MouseArea {
            id: closeHitArea
            objectName: "closeButtonHitArea"
            x: card.width - 56
            width: 56
            height: 56
            onClicked: root.closeHitAreaPressed()
        }
        // Left of the close area, over the page's share button; hidden on pages without media.
        MouseArea {
            objectName: "shareButtonHitArea"
            x: card.width - 96
            y: closeHitArea.y
            width: 40
            height: 56
            visible: false
            onClicked: root.shareHitAreaPressed()
        }
        MouseArea {
            objectName: "learnMoreButtonHitArea"
            x: card.width / 2 - 100
            y: card.height - 96
            width: 200
            height: 96
            enabled: false
            onClicked: root.learnMoreHitAreaPressed()
        }

        // Pointer controls on the card, faded with the background like everything around it.
        Item {
            anchors.fill: parent
            opacity: root.color.a

            StageButton {
                objectName: "playPauseButton"
                control: "playPause"
                property bool paused: false
                name: paused ? qsTr("Play") : qsTr("Pause")
                iconFill: paused ? "M 8 5 L 19 12 L 8 19 Z"
                                 : "M 6.5 5 L 10 5 L 10 19 L 6.5 19 Z M 14 5 L 17.5 5 L 17.5 19 L 14 19 Z"
            }
            StageButton {
                objectName: "soundButton"
                control: "sound"
                property bool soundOn: false
                name: soundOn ? qsTr("Turn sound off") : qsTr("Turn sound on")
                iconFill: "M 3 9 L 7 9 L 12 5 L 12 19 L 7 15 L 3 15 Z"
                iconStroke: soundOn ? "M 15.5 9 Q 17.5 12 15.5 15 M 18 6.5 Q 22 12 18 17.5"
                                    : "M 15.5 9.5 L 20.5 14.5 M 20.5 9.5 L 15.5 14.5"
            }
        }
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

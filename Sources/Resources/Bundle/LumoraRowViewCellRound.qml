import QtQuick
import LumoraSDK

// A round channel cell: the picture in a ringed frame, the title below it. The cell is 0.65 of
// its height wide; the frame is as wide as the cell. Outlets are found by objectName.
LumoraRowViewCellRound {
    id: cell

    FrameButtonView {
        id: frame

        objectName: "imageFrameBackground"
        width: cell.width
        height: width
        // The rings are drawn inside this frame; the picture keeps a gap to them.
        borderWidth: 3
        cornerRadius: width / 2
        leftRounding: true
        rightRounding: true

        FrameButtonView {
            objectName: "imageButton"
            anchors.fill: parent
            anchors.margins: frame.borderWidth * 2
            cornerRadius: width / 2
            leftRounding: true
            rightRounding: true
            contentMode: ImageView.AspectFill
        }
    }

    // Where the keyboard is: an outline around the picture while the cell has the focus.
    Rectangle {
        anchors.fill: frame
        anchors.margins: -2
        radius: width / 2
        color: "transparent"
        border.color: "#3b82f6"  // FrameButtonView::kFocusColor
        border.width: 2
        visible: cell.activeFocus
    }

    FrameButtonView {
        objectName: "labelPlaceholder"
        anchors.top: frame.bottom
        anchors.topMargin: 8
        anchors.horizontalCenter: parent.horizontalCenter
        width: cell.width * 0.7
        height: 8
        cornerRadius: height / 2
        leftRounding: true
        rightRounding: true
        imageName: "placeholder-gradient-vertical"
        enabled: false
        visible: false
    }

    Text {
        objectName: "label"
        anchors.top: frame.bottom
        anchors.topMargin: 5
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.leftMargin: -4
        anchors.rightMargin: -4
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        maximumLineCount: 2
        elide: Text.ElideRight
        color: "#1a1a1a"
        font.family: "Inter"
        font.pixelSize: 11
        lineHeight: 1.05

        TapHandler {
            onTapped: cell.onLabelPressed()
        }
    }
}

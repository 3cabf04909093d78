import QtQuick
import LumoraSDK

// A square channel cell: a 9:16 card whose picture fills it, a small ringed channel icon in the
// top corner, and the title over a gradient that darkens the lower part. Outlets are found by
// objectName.
LumoraRowViewCellSquare {
    id: cell

    FrameButtonView {
        id: picture

        objectName: "imageButton"
        anchors.fill: parent
        cornerRadius: 12
        leftRounding: true
        rightRounding: true
        contentMode: ImageView.AspectFill
        // Shows when the channel's first page has no preview picture.
        backgroundColor: "#3b4150"
    }

    // Where the keyboard is: an outline around the card while the cell has the focus.
    Rectangle {
        anchors.fill: picture
        anchors.margins: -2
        radius: picture.cornerRadius + 2
        color: "transparent"
        border.color: "#3b82f6"  // FrameButtonView::kFocusColor
        border.width: 2
        visible: cell.activeFocus
    }

    ImageView {
        objectName: "gradientBottom"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        height: parent.height * 0.55
        imageName: "gradient-bottom"
        visible: !cell.isPlaceholder
    }

    FrameButtonView {
        id: icon

        objectName: "iconBackground"
        x: 8
        y: 8
        width: Math.round(cell.width * 0.32)
        height: width
        // The rings are drawn inside this frame, around the icon.
        borderWidth: 2.5
        cornerRadius: width / 2
        leftRounding: true
        rightRounding: true
        backgroundColor: "#ffffff"
        // Taps on the icon belong to the card.
        enabled: false

        FrameButtonView {
            objectName: "iconImageButton"
            anchors.fill: parent
            anchors.margins: icon.borderWidth * 1.6
            cornerRadius: width / 2
            leftRounding: true
            rightRounding: true
            contentMode: ImageView.AspectFill
        }
    }

    FrameButtonView {
        objectName: "labelPlaceholder"
        anchors.left: parent.left
        anchors.bottom: parent.bottom
        anchors.leftMargin: 10
        anchors.bottomMargin: 14
        width: cell.width * 0.6
        height: 8
        cornerRadius: height / 2
        leftRounding: true
        rightRounding: true
        backgroundColor: "#ffffff"
        opacity: 0.7
        enabled: false
        visible: false
    }

    Text {
        objectName: "label"
        anchors.left: parent.left
        anchors.right: parent.right
        anchors.bottom: parent.bottom
        anchors.margins: 9
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
        color: "#ffffff"
        font.family: "Inter"
        font.pixelSize: 12
        font.weight: Font.DemiBold
        lineHeight: 1.05
        style: Text.Raised
        styleColor: "#40000000"
    }
}

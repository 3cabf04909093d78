import QtQuick
import LumoraSDK

// What the host's QQuickWidget shows: the story row along its top. While the player is open the
// widget takes the whole window, and the player fills it.
Item {
    LumoraRowView {
        objectName: "row"
        anchors.left: parent.left
        anchors.right: parent.right
        height: 112
        cellType: "round"
        uiStyle: "light"
        cellSpacing: 12
        leftInset: 12
        rightInset: 12
    }
}

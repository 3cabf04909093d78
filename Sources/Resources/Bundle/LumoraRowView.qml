import QtQuick
import LumoraSDK

// The row's own view: the strip of channel cells, filling the row. Its logic is in
// LumoraRowView (C++), which finds the strip by its objectName.
Item {
    anchors.fill: parent

    LumoraRowCollectionView {
        objectName: "collectionView"
        anchors.fill: parent
    }
}

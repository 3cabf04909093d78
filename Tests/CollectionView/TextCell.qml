import QtQuick
import LumoraSDK.CollectionView

// A cell made in QML: its children land in the cell's content view.
CollectionViewCell {
    Text {
        objectName: "label"
    }
}

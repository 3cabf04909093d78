import QtQuick
import LumoraSDK.CollectionView

// The list behind a CollectionView: layout, delegate reuse and the update transitions. The
// view's logic is in C++. Replace add/remove/move/displaced on this ListView (reachable as
// CollectionView::listView()) to change how batch updates animate.
ListView {
    id: list

    // Length of the insert, delete and move animations, in milliseconds.
    property int updateDuration: 300

    orientation: ListView.Horizontal
    clip: true
    reuseItems: true
    currentIndex: -1
    highlightFollowsCurrentItem: false
    keyNavigationEnabled: false

    add: Transition {
        NumberAnimation { property: "opacity"; from: 0; to: 1; duration: list.updateDuration }
    }
    remove: Transition {
        NumberAnimation { property: "opacity"; to: 0; duration: list.updateDuration }
    }
    move: Transition {
        NumberAnimation {
            properties: "x,y"; duration: list.updateDuration; easing.type: Easing.InOutQuad
        }
    }
    displaced: Transition {
        NumberAnimation {
            properties: "x,y"; duration: list.updateDuration; easing.type: Easing.InOutQuad
        }
    }

    delegate: CollectionViewSlot {
        required property int index

        row: index
        listView: ListView.view
        ListView.onPooled: pooled()
        ListView.onReused: reused()
    }
}

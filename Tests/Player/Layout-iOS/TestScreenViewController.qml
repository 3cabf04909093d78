import QtQuick

// A screen for the presentation tests: one colour over the whole window, and the outlet its
// controller looks for.
Rectangle {
    color: "#00ff00"

    Item { objectName: "keep" }
}

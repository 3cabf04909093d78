import QtQuick

// A screen for the presentation tests: one colour over the whole window, and children with and
// without restoration identifiers.
Rectangle {
    color: "#00ff00"

    Item { objectName: "keep"; property string restorationIdentifier: "keep" }
    Item { objectName: "other"; property string restorationIdentifier: "other" }
    Item { objectName: "blank"; property string restorationIdentifier: "" }
    Item { objectName: "anonymous" }
}

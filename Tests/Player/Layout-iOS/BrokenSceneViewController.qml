import QtQuick

// Does not load: the property has no value.
Item {
    width:
}

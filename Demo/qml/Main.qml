import QtQuick
import LumoraSDK

// A mock host application: its own header, content and tab bar around two story rows.
Window {
    id: window

    required property var showcase
    readonly property bool dark: showcase.dark
    readonly property color textColor: dark ? "#F3F4F6" : "#111827"

    width: 390
    height: 844
    visible: true
    title: showcase.title
    color: dark ? "#0B0B0F" : "#F4F5F7"

    Connections {
        target: window.showcase
        function onReloadRequested() {
            roundRow.reloadData()
            squareRow.reloadData()
        }
    }

    Flickable {
        anchors.fill: parent
        anchors.bottomMargin: tabBar.height
        contentHeight: page.height
        clip: true

        Column {
            id: page
            width: parent.width
            spacing: 12

            Image {
                width: parent.width
                height: width * sourceSize.height / Math.max(1, sourceSize.width)
                source: window.showcase.headerImageUrl
                fillMode: Image.PreserveAspectFit
            }

            Text {
                x: 16
                text: qsTr("Stories")
                color: window.textColor
                font.family: "Inter"
                font.pixelSize: 20
                font.weight: Font.DemiBold
            }

            LumoraRowView {
                id: roundRow
                objectName: "roundRow"
                width: parent.width
                height: 112
                cellType: "round"
                uiStyle: window.dark ? "dark" : "light"
                cellSpacing: 12
                leftInset: 12
                rightInset: 12
                onChannelsDataLoadComplete: (success, error, count) => window.showcase.rowLoaded("round", success, count)
            }

            Text {
                x: 16
                text: qsTr("Featured")
                color: window.textColor
                font.family: "Inter"
                font.pixelSize: 20
                font.weight: Font.DemiBold
            }

            LumoraRowView {
                id: squareRow
                objectName: "squareRow"
                width: parent.width
                height: 230
                cellType: "square"
                uiStyle: window.dark ? "dark" : "light"
                cellSpacing: 10
                leftInset: 12
                rightInset: 12
                primaryColor: window.showcase.themeColor
                secondaryColor: "#EC4899"
                onChannelsDataLoadComplete: (success, error, count) => window.showcase.rowLoaded("square", success, count)
            }

            Image {
                width: parent.width
                height: width * sourceSize.height / Math.max(1, sourceSize.width)
                source: window.showcase.contentImageUrl
                fillMode: Image.PreserveAspectFit
                opacity: window.dark ? 0.8 : 1
            }
        }
    }

    Image {
        id: tabBar
        anchors.bottom: parent.bottom
        width: parent.width
        height: width * sourceSize.height / Math.max(1, sourceSize.width)
        source: window.showcase.tabBarImageUrl
        fillMode: Image.PreserveAspectFit

        Rectangle {
            anchors.fill: parent
            color: "#111827"
            opacity: window.dark ? 0.85 : 0
        }
    }
}

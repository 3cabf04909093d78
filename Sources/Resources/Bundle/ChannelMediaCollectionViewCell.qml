import LumoraSDK

// One page of the media list: the page's still image, filling the page.
ChannelMediaCollectionViewCell {
    ImageView {
        objectName: "imageView"
        anchors.fill: parent
        contentMode: ImageView.AspectFill
    }
}

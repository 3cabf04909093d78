import LumoraSDK

// One segment of the page progress bar. Its track and fill are drawn layers made in C++.
ChannelProgressCollectionViewCell {
}

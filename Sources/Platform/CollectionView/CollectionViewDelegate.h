#pragma once

namespace LumoraSDK {

class CollectionView;

/// Scrolling as a CollectionView reports it. Offsets, content size and bounds are read from the
/// view (contentOffset, contentSize, bounds). Every method does nothing unless overridden.
class CollectionViewDelegate {
public:
    virtual ~CollectionViewDelegate() = default;

    /// The content offset changed, by the user, a deceleration or a programmatic scroll.
    virtual void scrollViewDidScroll(CollectionView&) {}
    virtual void scrollViewWillBeginDragging(CollectionView&) {}
    /// The user let go; `willDecelerate` tells whether the content keeps moving.
    virtual void scrollViewDidEndDragging(CollectionView&, bool /*willDecelerate*/) {}
    /// Content set moving by the user came to rest.
    virtual void scrollViewDidEndDecelerating(CollectionView&) {}
    /// An animated programmatic scroll finished (reported once per scroll).
    virtual void scrollViewDidEndScrollingAnimation(CollectionView&) {}
};

}  // namespace LumoraSDK

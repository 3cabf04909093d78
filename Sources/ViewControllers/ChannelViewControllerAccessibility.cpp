// The page player for assistive technology: the page reads as "Page 2 of 5" of its channel, and
// the close, share and learn-more controls are buttons it can press. The keyboard already has
// its own keys in the player (Escape closes), so Tab does not stop on them.
#include "Extensions/AccessibilityExtensions.h"
#include "ViewControllers/ChannelViewController.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

void ChannelViewController::setupAccessibility() {
    makeAccessibleButton(m_closeButton, tr("Close"), tr("Closes the stories"), false);
    makeAccessibleButton(m_shareButton, tr("Share"), tr("Shares this page"), false);
    updatePageAccessibility();
}

void ChannelViewController::updatePageAccessibility() {
    const int count = channel ? int(channel->pages.size()) : 0;
    const QString title = channel ? channel->title.value_or(QString()) : QString();
    setAccessible(view(), QAccessible::Pane,
                  count > 0 ? tr("Page %1 of %2").arg(currentIndex() + 1).arg(count) : title,
                  title);
    const std::optional<Page> page = currentPage();
    const QString link = page ? page->swipeUpText.value_or(QString()) : QString();
    makeAccessibleButton(m_learnMoreContainerView, link.isEmpty() ? tr("Learn more") : link,
                         tr("Opens the page's link"), false);
}

}  // namespace LumoraSDK

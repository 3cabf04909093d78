// A row cell for assistive technology and the keyboard: a button named after its channel that
// tells whether the channel is read, opened with Return or Space, scrolled into view on focus.
#include <QKeyEvent>

#include "Extensions/AccessibilityExtensions.h"
#include "Views/LumoraRowCollectionView.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"

namespace LumoraSDK {

QString LumoraRowViewCell::accessibleName() const {
    return m_isPlaceholder ? tr("Loading") : m_title;
}

QString LumoraRowViewCell::accessibleDescription() const {
    if (m_isPlaceholder) {
        return QString();
    }
    return m_isActive ? tr("Unread") : tr("Read");
}

void LumoraRowViewCell::updateAccessibility() {
    setActiveFocusOnTab(!m_isPlaceholder);
    setAccessible(this, QAccessible::Button, accessibleName(), accessibleDescription());
}

void LumoraRowViewCell::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (!event->isAutoRepeat()) {
                openChannelsHost();
            }
            event->accept();
            return;
        default:
            CollectionViewCell::keyPressEvent(event);
    }
}

void LumoraRowViewCell::focusInEvent(QFocusEvent* event) {
    CollectionViewCell::focusInEvent(event);
    LumoraRowCollectionView* strip = rowInstance ? rowInstance->collectionView() : nullptr;
    if (!strip || !m_currentIndex) {
        return;
    }
    const QRectF inStrip = mapRectToItem(strip, QRectF(0, 0, width(), height()));
    if (inStrip.left() < 0) {
        strip->scrollToItem(IndexPath{*m_currentIndex, 0}, CollectionView::ScrollPosition::left,
                            true);
    } else if (inStrip.right() > strip->width()) {
        strip->scrollToItem(IndexPath{*m_currentIndex, 0}, CollectionView::ScrollPosition::right,
                            true);
    }
}

}  // namespace LumoraSDK

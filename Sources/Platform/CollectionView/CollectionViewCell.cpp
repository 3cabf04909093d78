#include "CollectionView/CollectionViewCell.h"

namespace LumoraSDK {

CollectionViewCell::CollectionViewCell(QQuickItem* parent)
    : QQuickItem(parent), m_contentView(new QQuickItem(this)) {
    m_contentView->setObjectName(QStringLiteral("contentView"));
}

CollectionViewCell::~CollectionViewCell() = default;

void CollectionViewCell::prepareForReuse() {}

void CollectionViewCell::setIndexPath(const IndexPath& indexPath) {
    if (m_indexPath != indexPath) {
        m_indexPath = indexPath;
        Q_EMIT indexPathChanged();
    }
}

void CollectionViewCell::geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) {
    QQuickItem::geometryChange(newGeometry, oldGeometry);
    m_contentView->setSize(newGeometry.size());
}

QQmlListProperty<QObject> CollectionViewCell::contentData() {
    return QQmlListProperty<QObject>(this, nullptr, &CollectionViewCell::appendContent,
                                     &CollectionViewCell::contentCount,
                                     &CollectionViewCell::contentAt, nullptr);
}

void CollectionViewCell::appendContent(QQmlListProperty<QObject>* list, QObject* object) {
    auto* cell = static_cast<CollectionViewCell*>(list->object);
    if (auto* item = qobject_cast<QQuickItem*>(object)) {
        item->setParentItem(cell->m_contentView);
    }
    // Items and non-visual objects alike belong to the content view.
    object->setParent(cell->m_contentView);
    cell->m_contentObjects.append(object);
}

qsizetype CollectionViewCell::contentCount(QQmlListProperty<QObject>* list) {
    return static_cast<CollectionViewCell*>(list->object)->m_contentObjects.size();
}

QObject* CollectionViewCell::contentAt(QQmlListProperty<QObject>* list, qsizetype index) {
    return static_cast<CollectionViewCell*>(list->object)->m_contentObjects.value(index);
}

}  // namespace LumoraSDK

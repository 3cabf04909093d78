#pragma once

#include <QPointer>
#include <QQmlListProperty>
#include <QQuickItem>
#include <QString>

#include "CollectionView/IndexPath.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class CollectionView;

/// Base of every cell a CollectionView shows. A cell's visible content goes into its content
/// view, which fills the cell: items declared inside a cell in QML land there, and whole-cell
/// effects (the cube turn of the pager, for instance) transform the content view.
///
/// A cell is created for a reuse identifier, then filled by the data source for one item after
/// another as the list scrolls; prepareForReuse() runs before it is filled again.
class LUMORASDK_EXPORT CollectionViewCell : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QQuickItem* contentView READ contentView CONSTANT FINAL)
    Q_PROPERTY(QQmlListProperty<QObject> contentData READ contentData FINAL)
    Q_PROPERTY(int item READ item NOTIFY indexPathChanged FINAL)
    Q_CLASSINFO("DefaultProperty", "contentData")

public:
    explicit CollectionViewCell(QQuickItem* parent = nullptr);
    ~CollectionViewCell() override;

    /// The item this cell shows; meaningful while the cell is on the list.
    IndexPath indexPath() const { return m_indexPath; }
    int item() const { return m_indexPath.item; }
    QString reuseIdentifier() const { return m_reuseIdentifier; }
    QQuickItem* contentView() const { return m_contentView; }

    /// Resets per-item state before the cell is filled for another item (or the same one again,
    /// on reload). The base does nothing.
    virtual void prepareForReuse();

    QQmlListProperty<QObject> contentData();

Q_SIGNALS:
    void indexPathChanged();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;

private:
    friend class CollectionView;
    void setIndexPath(const IndexPath& indexPath);

    static void appendContent(QQmlListProperty<QObject>* list, QObject* object);
    static qsizetype contentCount(QQmlListProperty<QObject>* list);
    static QObject* contentAt(QQmlListProperty<QObject>* list, qsizetype index);

    QQuickItem* m_contentView = nullptr;
    QList<QPointer<QObject>> m_contentObjects;
    IndexPath m_indexPath{-1, 0};
    QString m_reuseIdentifier;
};

}  // namespace LumoraSDK

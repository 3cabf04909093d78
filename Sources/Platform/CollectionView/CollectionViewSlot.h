#pragma once

#include <QPointer>
#include <QQuickItem>

namespace LumoraSDK {

class CollectionView;
class CollectionViewCell;

/// The list's delegate: it holds the cell for its row and tells the CollectionView when the list
/// creates it, moves it to another row, pools it or reuses it. The list has one delegate for
/// every row while cells come in several kinds (reuse identifiers), so a slot swaps its cell when
/// it is reused for a row of another kind; a row that only moves keeps its slot and its cell.
class CollectionViewSlot : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(int row READ row WRITE setRow NOTIFY rowChanged FINAL)
    Q_PROPERTY(QQuickItem* listView READ listView WRITE setListView NOTIFY listViewChanged FINAL)

public:
    explicit CollectionViewSlot(QQuickItem* parent = nullptr);
    ~CollectionViewSlot() override;

    /// The model row, -1 once the row was removed (while the slot plays its remove transition).
    int row() const { return m_row; }
    void setRow(int row);
    QQuickItem* listView() const { return m_listView; }
    void setListView(QQuickItem* listView);

    CollectionViewCell* cell() const { return m_cell; }
    void setCell(CollectionViewCell* cell) { m_cell = cell; }
    /// Parked in the list's reuse pool, showing nothing.
    bool isPooled() const { return m_pooled; }
    /// Forgets the view (when the view goes first).
    void detach() { m_view = nullptr; }

    Q_INVOKABLE void pooled();
    Q_INVOKABLE void reused();

Q_SIGNALS:
    void rowChanged();
    void listViewChanged();

protected:
    void componentComplete() override;

private:
    void attachIfReady();

    int m_row = -1;
    bool m_pooled = false;
    bool m_attached = false;
    QPointer<QQuickItem> m_listView;
    QPointer<CollectionView> m_view;
    CollectionViewCell* m_cell = nullptr;
};

}  // namespace LumoraSDK

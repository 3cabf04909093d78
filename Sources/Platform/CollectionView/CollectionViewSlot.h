#pragma once

#include <QPointer>
#include <QQuickItem>

namespace LumoraSDK {

class CollectionViewCell;
class CollectionViewSlot;

/// What a slot reports to the item that owns its list (a CollectionView): the list made it, moved
/// it to another row, pooled it, reused it, or is destroying it.
class CollectionViewSlotHost {
public:
    virtual void slotCreated(CollectionViewSlot* slot) = 0;
    virtual void slotRowChanged(CollectionViewSlot* slot) = 0;
    virtual void slotPooled(CollectionViewSlot* slot) = 0;
    virtual void slotReused(CollectionViewSlot* slot) = 0;
    virtual void slotDestroyed(CollectionViewSlot* slot) = 0;

protected:
    ~CollectionViewSlotHost() = default;
};

/// The list's delegate: it holds the cell for its row and tells its host when the list
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
    /// Forgets the host (when the host goes first).
    void detach() { m_host = nullptr; }

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
    CollectionViewSlotHost* m_host = nullptr;
    CollectionViewCell* m_cell = nullptr;
};

}  // namespace LumoraSDK

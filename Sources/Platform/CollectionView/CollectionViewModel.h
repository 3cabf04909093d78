#pragma once

#include <QAbstractListModel>
#include <QList>

#include "CollectionView/CollectionViewBatchUpdate.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The rows behind a CollectionView's list. It holds no data, only the number of items shown:
/// cells are filled by the view's data source, and the model's job is to tell the list exactly
/// which rows came, went and moved, so that the list keeps and animates its delegates.
class LUMORASDK_EXPORT CollectionViewModel final : public QAbstractListModel {
    Q_OBJECT

public:
    explicit CollectionViewModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

    /// Starts over with `count` rows.
    void reset(int count);
    /// Announces the steps of a batch, one model notification each.
    void apply(const QList<CollectionViewBatchUpdate::Step>& steps);
    /// Announces that the content of rows first..last changed.
    void notifyChanged(int first, int last);

private:
    int m_count = 0;
};

}  // namespace LumoraSDK

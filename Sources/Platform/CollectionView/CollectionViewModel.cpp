#include "CollectionView/CollectionViewModel.h"

namespace LumoraSDK {

CollectionViewModel::CollectionViewModel(QObject* parent) : QAbstractListModel(parent) {}

int CollectionViewModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : m_count;
}

QVariant CollectionViewModel::data(const QModelIndex&, int) const {
    return {};
}

void CollectionViewModel::reset(int count) {
    beginResetModel();
    m_count = count;
    endResetModel();
}

void CollectionViewModel::apply(const QList<CollectionViewBatchUpdate::Step>& steps) {
    using Kind = CollectionViewBatchUpdate::Step::Kind;
    for (const auto& step : steps) {
        const int length = step.last - step.first + 1;
        switch (step.kind) {
            case Kind::remove:
                beginRemoveRows(QModelIndex(), step.first, step.last);
                m_count -= length;
                endRemoveRows();
                break;
            case Kind::move:
                if (!beginMoveRows(QModelIndex(), step.first, step.last, QModelIndex(),
                                   step.destination)) {
                    qFatal("CollectionViewModel - invalid move of rows %d..%d before %d",
                           step.first, step.last, step.destination);
                }
                endMoveRows();
                break;
            case Kind::insert:
                beginInsertRows(QModelIndex(), step.first, step.last);
                m_count += length;
                endInsertRows();
                break;
        }
    }
}

void CollectionViewModel::notifyChanged(int first, int last) {
    if (first <= last) {
        Q_EMIT dataChanged(index(first), index(last));
    }
}

}  // namespace LumoraSDK

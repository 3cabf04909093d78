#include "Views/ChannelProgressCollectionDataSource.h"

#include "Extensions/ViewExtensions.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Views/ChannelProgressCollectionViewCell.h"

namespace LumoraSDK {

ChannelProgressCollectionDataSource::ChannelProgressCollectionDataSource(int count) {
    this->count = count;
}

ChannelProgressCollectionDataSource::~ChannelProgressCollectionDataSource() {
    if (progressTimer) {
        progressTimer->invalidate();
    }
}

void ChannelProgressCollectionDataSource::startNewTimer(double durationSeconds,
                                                        std::function<void(qreal)> onUpdate,
                                                        std::function<void()> onComplete) {
    if (progressTimer) {
        progressTimer->invalidate();
    }
    timerCurrentTotalMs = durationSeconds * 100;
    onTimerComplete = std::move(onComplete);
    onTimerUpdate = std::move(onUpdate);
    timerRemainingMs = timerCurrentTotalMs;
    if (!isResumed) {
        timerStartingTotalMs = timerCurrentTotalMs;
    }
    progressTimer = Scheduler::current().repeating(kTimerInterval, [this] { timerUpdate(); });
    progressTimer->fire();
}

void ChannelProgressCollectionDataSource::timerUpdate() {
    if (!timerRemainingMs || !timerCurrentTotalMs || !timerStartingTotalMs) {
        return;
    }
    const double current = *timerCurrentTotalMs;
    const double starting = *timerStartingTotalMs;
    timerRemainingMs = *timerRemainingMs - timerUpdateIntervalMs;
    const double remaining = *timerRemainingMs;

    const std::weak_ptr<int> alive = m_lifetime;
    if (remaining <= 0) {
        // Copied: the callback may start the next run, which replaces it.
        const auto complete = onTimerComplete;
        complete();
        if (alive.expired()) {
            return;
        }
        if (progressTimer) {
            progressTimer->invalidate();
        }
        isResumed = false;
    }
    // Written as the shown part of this run plus what earlier runs of the page showed; evaluated
    // in this order, so the last tick of an uneven remainder reports slightly more than 1.
    const double progress = ((current - remaining) + starting - current) / starting;
    const auto update = onTimerUpdate;
    update(progress);
}

void ChannelProgressCollectionDataSource::updateProgress(CollectionView& view, int index,
                                                         qreal progressPercent) {
    for (CollectionViewCell* visible : view.visibleCells()) {
        auto* cell = qobject_cast<ChannelProgressCollectionViewCell*>(visible);
        if (cell && cell->progressIndex == index) {
            cell->progressPercent = progressPercent;
            removeAllSublayers(cell->contentView());
            cell->initProgressLayers(cell->progressPercent);
        }
    }
}

void ChannelProgressCollectionDataSource::completeProgress(CollectionView& view, int until) {
    for (CollectionViewCell* visible : view.visibleCells()) {
        if (auto* cell = qobject_cast<ChannelProgressCollectionViewCell*>(visible)) {
            cell->progressPercent = cell->progressIndex < until ? 1.0 : 0.0;
            removeAllSublayers(cell->contentView());
            cell->initProgressLayers(cell->progressPercent);
        }
    }
}

int ChannelProgressCollectionDataSource::numberOfItems(CollectionView&, int) {
    return count;
}

QString ChannelProgressCollectionDataSource::reuseIdentifier(CollectionView&, const IndexPath&) {
    return ChannelProgressCollectionViewCell::identifier();
}

void ChannelProgressCollectionDataSource::configureCell(CollectionView&, CollectionViewCell& cell,
                                                        const IndexPath& indexPath) {
    if (auto* segment = qobject_cast<ChannelProgressCollectionViewCell*>(&cell)) {
        segment->progressIndex = indexPath.row();
    }
}

QSizeF ChannelProgressCollectionDataSource::sizeForItem(CollectionView& view, const IndexPath&) {
    return QSizeF(view.width() / count - itemSpacing, view.height());
}

qreal ChannelProgressCollectionDataSource::minimumLineSpacing(CollectionView&, int) {
    return itemSpacing;
}

}  // namespace LumoraSDK

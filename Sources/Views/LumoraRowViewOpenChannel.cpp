// The row while its player is open: the strip follows the player's channel, opens a channel
// asked for by id, and takes the read state back when the player closes.
#include "Extensions/ChannelListExtensions.h"
#include "Platform/Scheduler.h"
#include "Services/DatabaseService.h"
#include "Views/LumoraRowCollectionView.h"
#include "Views/LumoraRowView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "Views/LumoraRowViewDataSource.h"

namespace LumoraSDK {

void LumoraRowView::channelContainerClosed(int index) {
    if (!m_collectionDataSource || !m_collectionView) {
        return;
    }
    // Channels read in the player show as read from now on.
    loadDataWithBatchUpdate(getLocallyUpdatedChannels(m_collectionDataSource->dataItems,
                                                      DatabaseService::sharedInstance()),
                            true);
    for (CollectionViewCell* visible : m_collectionView->visibleCells()) {
        auto* cell = qobject_cast<LumoraRowViewCell*>(visible);
        if (cell && cell->currentIndex() == index) {
            cell->animatePop([self = QPointer<LumoraRowView>(this)] {
                if (!self) {
                    return;
                }
                if (self->m_delegate) {
                    self->m_delegate->onChannelDismissed();
                }
                Q_EMIT self->channelDismissed();
            });
            return;
        }
    }
}

void LumoraRowView::openChannelChanged() {
    MainQueue::async([self = QPointer<LumoraRowView>(this)] {
        if (!self || !self->m_collectionView || !self->m_collectionDataSource) {
            return;
        }
        const int index = self->m_currentlyOpenChannelIndex;
        if (index >= 0 && index < self->m_collectionDataSource->dataItems.size() &&
            index < self->m_collectionView->numberOfItems(0)) {
            self->m_collectionView->scrollToItem(IndexPath{index, 0},
                                                 CollectionView::ScrollPosition::right, true);
        }
    });
}

void LumoraRowView::openChannel(const QString& id, bool animated) {
    logOperation(QStringLiteral("openChannel ") + id + QStringLiteral(", animated ") +
                 (animated ? QStringLiteral("true") : QStringLiteral("false")));
    getChannels(
        [self = QPointer<LumoraRowView>(this), id, animated](const QList<Channel>& channels) {
            // After the list just loaded has reached the strip.
            MainQueue::async([self, id, animated, channels] {
                if (self) {
                    self->openLoadedChannel(id, channels, animated);
                }
            });
        },
        {});
}

void LumoraRowView::openLoadedChannel(const QString& id, const QList<Channel>& channels,
                                      bool animated) {
    if (channels.isEmpty() || !m_collectionView || m_collectionView->numberOfItems(0) == 0) {
        logOperation(QStringLiteral("openChannel: nothing to open!"));
        return;
    }
    const auto found = std::find_if(channels.begin(), channels.end(),
                                    [&](const Channel& channel) { return channel.id == id; });
    int index = int(found - channels.begin());
    if (found != channels.end() && index < m_collectionView->numberOfItems(0)) {
        logOperation(
            QStringLiteral("openChannel: found channel with id %1 at index %2").arg(id).arg(index));
    } else {
        logOperation(
            QStringLiteral("openChannel: could not find channel with id %1, open the first one "
                           "instead")
                .arg(id));
        index = 0;
    }
    const IndexPath path{index, 0};
    if (animated) {
        m_collectionView->scrollToItem(path, CollectionView::ScrollPosition::right, true,
                                       [self = QPointer<LumoraRowView>(this), index] {
                                           if (self) {
                                               self->openChannelFromVisibleCell(index);
                                           }
                                       });
        return;
    }
    m_collectionView->scrollToItem(path, CollectionView::ScrollPosition::right, false);
    openChannelFromVisibleCell(index);
}

void LumoraRowView::openChannelFromVisibleCell(int index) {
    for (CollectionViewCell* visible : m_collectionView->visibleCells()) {
        auto* cell = qobject_cast<LumoraRowViewCell*>(visible);
        if (cell && cell->currentIndex() == index) {
            cell->openChannelsHost();
            return;
        }
    }
    logOperation(QStringLiteral("openChannel: the cell of index %1 is not on screen").arg(index));
}

}  // namespace LumoraSDK

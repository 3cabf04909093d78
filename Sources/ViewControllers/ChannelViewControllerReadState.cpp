// The page player's memory of each channel: where it reopens and whether it was read.
#include <algorithm>
#include <limits>

#include "Lumora.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"
#include "ViewControllers/ChannelViewController.h"
#include "Views/ChannelMediaCollectionDataSource.h"

namespace LumoraSDK {

int ChannelViewController::startPageMarkingReadState() {
    const QString id = *channel->id;
    DatabaseService& database = DatabaseService::sharedInstance();
    // Page indexes here are ints; a server page beyond them is as far out of range as INT_MAX.
    int start =
        int(std::clamp<qint64>(channel->initialPage.value_or(0), std::numeric_limits<int>::min(),
                               std::numeric_limits<int>::max()));

    // The channel opens at the furthest of the server's page and the page reached on this device.
    QVariantMap pages = database.channelInitialPageMapping();
    const auto stored = pages.constFind(id);
    if (stored != pages.constEnd() && start < stored->toInt()) {
        start = stored->toInt();
    } else {
        pages.insert(id, start);
        database.setChannelInitialPageMapping(pages);
    }

    // A channel that was read restarts from its first page.
    QVariantMap read = database.channelIsReadMapping();
    const auto flag = read.constFind(id);
    if (flag != read.constEnd() && (flag->toBool() || channel->status == Status::Read)) {
        pages.insert(id, 0);
        database.setChannelInitialPageMapping(pages);
        start = 0;
    }
    if (channel->status == Status::Read) {
        read.insert(id, true);
        database.setChannelIsReadMapping(read);
    }
    return start;
}

void ChannelViewController::trackViewingHistory(const QString& pageId) {
    if (!channel || !channel->id || !mediaCollectionViewDataSource) {
        return;
    }
    const QString id = *channel->id;
    const int idx = currentIndex();
    DatabaseService& database = DatabaseService::sharedInstance();

    QVariantMap pages = database.channelInitialPageMapping();
    const auto stored = pages.constFind(id);
    if (stored != pages.constEnd()) {
        const int storedIndex = stored->toInt();
        if (storedIndex < idx) {
            pages.insert(id, idx);
        }
        // Having seen the first page of a longer channel, it reopens at the second.
        if (storedIndex == 0 && idx == 0 && channel->pages.size() >= 2) {
            pages.insert(id, 1);
        }
        database.setChannelInitialPageMapping(pages);
    }
    if (idx == mediaCollectionViewDataSource->finalIndex) {
        QVariantMap read = database.channelIsReadMapping();
        read.insert(id, true);
        database.setChannelIsReadMapping(read);
    }

    log(QStringLiteral("trackViewingHistory - page:") + pageId);
    Lumora::sharedInstance().requestRecordViewingHistory(
        pageId, id, [] { log(QStringLiteral("requestRecordViewingHistory OK")); },
        [](const RequestError&) { log(QStringLiteral("requestRecordViewingHistory Error")); });
}

}  // namespace LumoraSDK

// The channel list as requestGetChannels decodes it: a JSON array of channel objects.
#include <QJsonArray>

#include "FuzzSupport.h"
#include "Models/Channel.h"
#include "Models/ChannelList.h"
#include "Models/Page.h"

using namespace LumoraSDK;

namespace {
/// A channel with two or more decoded pages of which one has no integer "sortOrder" stops the
/// process by design: the API requires the field on every page. Such inputs are skipped here,
/// so that the fuzzer counts only stops nobody meant.
bool stopsByDesign(const QJsonObject& channel) {
    const QJsonValue pages = channel.value(QLatin1String("pages"));
    if (!pages.isArray()) {
        return false;
    }
    int decoded = 0;
    bool unordered = false;
    for (const QJsonValue& value : pages.toArray()) {
        if (!value.isObject()) {
            return false;  // not a list of objects: decoded as no pages at all
        }
        if (const auto page = Page::fromJson(value.toObject())) {
            ++decoded;
            unordered |= !page->sortOrder.has_value();
        }
    }
    return decoded >= 2 && unordered;
}
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    LumoraFuzz::silenceLogs();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const QByteArray json = LumoraFuzz::bytes(data, size);
    const QJsonDocument document = QJsonDocument::fromJson(json);
    bool stops = false;
    for (const QJsonValue& value : document.array()) {
        if (!value.isObject()) {
            continue;
        }
        if (stopsByDesign(value.toObject())) {
            stops = true;
            continue;
        }
        if (const auto channel = Channel::fromJson(value.toObject())) {
            const QJsonObject again = channel->serialize();
            (void)Channel::fromJson(again);
            (void)channel->isRead();
        }
    }
    // The fast reader answers what QJsonDocument answers, for any text.
    if (!stops) {
        const auto serialized = [](const std::optional<QList<Channel>>& channels) {
            QList<QJsonObject> objects;
            for (const Channel& channel : channels.value_or(QList<Channel>())) {
                objects.append(channel.serialize());
            }
            return std::pair(channels.has_value(), objects);
        };
        if (serialized(decodeChannelList(json)) != serialized(decodeChannelListWithQtJson(json))) {
            qFatal("the channel list reads differently with simdjson and with QJsonDocument");
        }
    }
    return 0;
}

// Decoding a channel feed four ways, on the same bytes:
//   QtParse      QJsonDocument::fromJson only (the floor for any decoder through Qt JSON);
//   FullDecode   the same parse plus Channel::fromJson for every channel (the reference reader);
//   ChannelList  decodeChannelList: simdjson's DOM into the same entities (what the SDK does);
//   Simdjson     simdjson on-demand reading the same fields into plain structs (a reference).
// Arguments: channel count; every channel has ten pages.

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Models/Channel.h"
#include "Models/ChannelList.h"

namespace {

constexpr int kPagesPerChannel = 10;

QByteArray makeFeed(int channels) {
    static const QStringList words = {
        u"Summer"_qs, u"City"_qs,   u"Kitchen"_qs, u"Match day"_qs,
        u"Studio"_qs, u"Travel"_qs, u"Launch"_qs,  u"Behind the scenes"_qs};
    QJsonArray feed;
    for (int c = 0; c < channels; ++c) {
        const QString id = QStringLiteral("c0ffee%1-4b1d-4c2a-9e3f-%2")
                               .arg(c, 2, 16, QLatin1Char('0'))
                               .arg(c * 7919, 12, 16, QLatin1Char('0'));
        QJsonArray pages;
        for (int p = 0; p < kPagesPerChannel; ++p) {
            const bool video = (c + p) % 3 == 0;
            const QString pageId = QStringLiteral("%1-p%2").arg(id).arg(p);
            QJsonObject page{
                {u"id"_qs, pageId},
                {u"type"_qs, video ? u"video"_qs : u"image"_qs},
                {u"duration"_qs, video ? 15 : 5},
                {u"url"_qs, QStringLiteral("https://media.lumora.test/channels/%1/pages/%2.%3")
                                .arg(id, pageId, video ? u"mp4"_qs : u"jpg"_qs)},
                {u"sortOrder"_qs, p + 1},  // delivered in order, as the API does
                {u"status"_qs, p < 3 ? u"read"_qs : u"unread"_qs},
                {u"skippable"_qs, p % 4 != 0},
                {u"showSwipeUpUi"_qs, p % 2 == 0},
            };
            if (p % 2 == 0) {
                page.insert(u"swipeUpText"_qs,
                            QStringLiteral("Shop the %1 look").arg(words[p % 8]));
                page.insert(
                    u"swipeUpUrl"_qs,
                    QStringLiteral("https://shop.lumora.test/collections/%1?ref=story").arg(p));
            }
            if (video) {
                page.insert(u"playcardUrl"_qs,
                            QStringLiteral("https://media.lumora.test/channels/%1/pages/%2.jpg")
                                .arg(id, pageId));
            }
            pages.append(page);
        }
        feed.append(QJsonObject{
            {u"id"_qs, id},
            {u"title"_qs, QStringLiteral("%1 stories #%2").arg(words[c % 8]).arg(c)},
            {u"initialPage"_qs, c % 4},
            {u"profilePictureUrl"_qs,
             QStringLiteral("https://media.lumora.test/channels/%1/avatar.png").arg(id)},
            {u"status"_qs, c % 5 == 0 ? u"read"_qs : u"unread"_qs},
            {u"pages"_qs, pages},
        });
    }
    return QJsonDocument(feed).toJson(QJsonDocument::Compact);
}

const QByteArray& feed(int channels) {
    static const QByteArray small = makeFeed(100);
    static const QByteArray large = makeFeed(2000);
    return channels == 100 ? small : large;
}

void setCounters(benchmark::State& state, const QByteArray& bytes) {
    state.SetBytesProcessed(state.iterations() * bytes.size());
    state.counters["channels"] = static_cast<double>(state.range(0));
}

void QtParse(benchmark::State& state) {
    const QByteArray& bytes = feed(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        QJsonDocument document = QJsonDocument::fromJson(bytes);
        benchmark::DoNotOptimize(document);
    }
    setCounters(state, bytes);
}

QList<LumoraSDK::Channel> decodeChannels(const QJsonArray& list) {
    QList<LumoraSDK::Channel> channels;
    channels.reserve(list.size());
    for (const auto& value : list) {
        if (auto channel = LumoraSDK::Channel::fromJson(value.toObject())) {
            channels.append(std::move(*channel));
        }
    }
    return channels;
}

void FullDecode(benchmark::State& state) {
    const QByteArray& bytes = feed(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const QList<LumoraSDK::Channel> channels =
            decodeChannels(QJsonDocument::fromJson(bytes).array());
        benchmark::DoNotOptimize(channels.data());
        if (channels.size() != state.range(0)) {
            state.SkipWithError("decoded a different number of channels");
        }
    }
    setCounters(state, bytes);
}

void ChannelList(benchmark::State& state) {
    const QByteArray& bytes = feed(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        const auto channels = LumoraSDK::decodeChannelList(bytes);
        benchmark::DoNotOptimize(channels->data());
        if (channels->size() != state.range(0)) {
            state.SkipWithError("decoded a different number of channels");
        }
    }
    setCounters(state, bytes);
}

// The entity decoding alone, on a document parsed once outside the loop.
void EntitiesOnly(benchmark::State& state) {
    const QByteArray& bytes = feed(static_cast<int>(state.range(0)));
    const QJsonArray list = QJsonDocument::fromJson(bytes).array();
    for (auto _ : state) {
        const QList<LumoraSDK::Channel> channels = decodeChannels(list);
        benchmark::DoNotOptimize(channels.data());
    }
    setCounters(state, bytes);
}

// Plain structs for the simdjson reference: owned strings, like the SDK's entities.
struct PlainPage {
    std::optional<std::string> type, url, swipeUpText, swipeUpUrl, playcardUrl, id, status;
    std::optional<int64_t> duration, sortOrder;
    std::optional<bool> showSwipeUpUi, skippable;
};
struct PlainChannel {
    std::optional<std::string> title, id, profilePictureUrl, status;
    std::optional<int64_t> initialPage;
    std::vector<PlainPage> pages;
};

template <typename Value>
void readString(Value value, std::optional<std::string>& out) {
    std::string_view text;
    if (value.get_string().get(text) == simdjson::SUCCESS) {
        out.emplace(text);
    }
}

template <typename Value>
void readInteger(Value value, std::optional<int64_t>& out) {
    int64_t number = 0;
    if (value.get_int64().get(number) == simdjson::SUCCESS) {
        out = number;
    }
}

template <typename Value>
void readBool(Value value, std::optional<bool>& out) {
    bool flag = false;
    if (value.get_bool().get(flag) == simdjson::SUCCESS) {
        out = flag;
    }
}

PlainPage readPage(simdjson::ondemand::object object) {
    PlainPage page;
    for (auto field : object) {
        const std::string_view key = field.unescaped_key().value();
        auto value = field.value();
        if (key == "type")
            readString(value, page.type);
        else if (key == "duration")
            readInteger(value, page.duration);
        else if (key == "url")
            readString(value, page.url);
        else if (key == "swipeUpText")
            readString(value, page.swipeUpText);
        else if (key == "swipeUpUrl")
            readString(value, page.swipeUpUrl);
        else if (key == "showSwipeUpUi")
            readBool(value, page.showSwipeUpUi);
        else if (key == "playcardUrl")
            readString(value, page.playcardUrl);
        else if (key == "sortOrder")
            readInteger(value, page.sortOrder);
        else if (key == "id")
            readString(value, page.id);
        else if (key == "status")
            readString(value, page.status);
        else if (key == "skippable")
            readBool(value, page.skippable);
    }
    return page;
}

PlainChannel readChannel(simdjson::ondemand::object object) {
    PlainChannel channel;
    for (auto field : object) {
        const std::string_view key = field.unescaped_key().value();
        auto value = field.value();
        if (key == "title")
            readString(value, channel.title);
        else if (key == "id")
            readString(value, channel.id);
        else if (key == "initialPage")
            readInteger(value, channel.initialPage);
        else if (key == "profilePictureUrl")
            readString(value, channel.profilePictureUrl);
        else if (key == "status")
            readString(value, channel.status);
        else if (key == "pages") {
            for (auto element : value.get_array()) {
                channel.pages.push_back(readPage(element.get_object()));
            }
        }
    }
    std::stable_sort(
        channel.pages.begin(), channel.pages.end(),
        [](const PlainPage& a, const PlainPage& b) { return a.sortOrder < b.sortOrder; });
    return channel;
}

void Simdjson(benchmark::State& state) {
    const QByteArray& bytes = feed(static_cast<int>(state.range(0)));
    // simdjson reads past the end of its input; the padded copy is made once, outside the loop.
    const simdjson::padded_string padded(bytes.constData(), static_cast<size_t>(bytes.size()));
    simdjson::ondemand::parser parser;
    for (auto _ : state) {
        std::vector<PlainChannel> channels;
        simdjson::ondemand::document document = parser.iterate(padded);
        for (auto element : document.get_array()) {
            channels.push_back(readChannel(element.get_object()));
        }
        benchmark::DoNotOptimize(channels.data());
        if (channels.size() != static_cast<size_t>(state.range(0))) {
            state.SkipWithError("decoded a different number of channels");
        }
    }
    setCounters(state, bytes);
}

}  // namespace

BENCHMARK(QtParse)->Arg(100)->Arg(2000)->Unit(benchmark::kMicrosecond);
BENCHMARK(FullDecode)->Arg(100)->Arg(2000)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChannelList)->Arg(100)->Arg(2000)->Unit(benchmark::kMicrosecond);
BENCHMARK(EntitiesOnly)->Arg(100)->Arg(2000)->Unit(benchmark::kMicrosecond);
BENCHMARK(Simdjson)->Arg(100)->Arg(2000)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();

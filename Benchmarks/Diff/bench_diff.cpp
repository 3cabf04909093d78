// The Heckel diff on lists of UUID texts and on a channel row, next to
// - a floor: one flat hash table built from the new keys and probed with the old ones, the least
//   any keyed diff does;
// - dtl: a Myers O(NP) shortest edit script on the same lists (no moves; quadratic-ish in the
//   number of edits, so its input is capped);
// and a 50-change batch applied to a CollectionView with a live ListView in an offscreen window.

#include <benchmark/benchmark.h>

#include <QAnimationDriver>
#include <QGuiApplication>
#include <QQuickWindow>
#include <QRandomGenerator>
#include <QUuid>
#include <dtl/dtl.hpp>
#include <vector>

#include "Extensions/ChannelDiffAware.h"
#include "Extensions/CollectionViewReload.h"
#include "Extensions/DiffExtensions.h"
#include "Extensions/DiffKeyTable.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/CollectionView/CollectionViewCell.h"
#include "Platform/CollectionView/CollectionViewDataSource.h"

using namespace LumoraSDK;

namespace {

QString uuidText(QRandomGenerator& random) {
    const quint64 high = random.generate64();
    const quint64 low = random.generate64();
    QUuid uuid(quint32(high >> 32), quint16(high >> 16), quint16(high), quint8(low >> 56),
               quint8(low >> 48), quint8(low >> 40), quint8(low >> 32), quint8(low >> 24),
               quint8(low >> 16), quint8(low >> 8), quint8(low));
    return uuid.toString(QUuid::WithoutBraces);
}

/// `count` old texts; the new list drops `deleted` of them, gains `inserted` fresh ones at random
/// places, and moves `shuffled` of its elements to random places.
struct ListPair {
    QList<QString> oldList;
    QList<QString> newList;
};

ListPair makePair(int count, int deleted, int inserted, int shuffled) {
    QRandomGenerator random(20240611u + quint32(count));
    ListPair pair;
    for (int i = 0; i < count; ++i) {
        pair.oldList.append(uuidText(random));
    }
    pair.newList = pair.oldList;
    for (int i = 0; i < deleted; ++i) {
        pair.newList.removeAt(random.bounded(int(pair.newList.size())));
    }
    for (int i = 0; i < inserted; ++i) {
        pair.newList.insert(random.bounded(int(pair.newList.size()) + 1), uuidText(random));
    }
    for (int i = 0; i < shuffled; ++i) {
        const QString moved = pair.newList.takeAt(random.bounded(int(pair.newList.size())));
        pair.newList.insert(random.bounded(int(pair.newList.size()) + 1), moved);
    }
    return pair;
}

const ListPair& pairFor(int count) {
    static const ListPair small = makePair(5'000, 1'000, 1'000, 200);
    static const ListPair medium = makePair(20'000, 2'000, 2'000, 400);
    static const ListPair large = makePair(100'000, 10'000, 10'000, 2'000);
    return count == 5'000 ? small : count == 20'000 ? medium : large;
}

void BM_HeckelDiff(benchmark::State& state) {
    const ListPair& pair = pairFor(int(state.range(0)));
    qsizetype changes = 0;
    for (auto _ : state) {
        const auto result = diff(pair.oldList, pair.newList);
        changes = result.size();
        benchmark::DoNotOptimize(result.constData());
    }
    state.counters["changes"] = double(changes);
}
BENCHMARK(BM_HeckelDiff)->Arg(5'000)->Arg(20'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

void BM_HashTableFloor(benchmark::State& state) {
    const ListPair& pair = pairFor(int(state.range(0)));
    for (auto _ : state) {
        DiffKeyTable<QString, int> table(std::max(pair.oldList.size(), pair.newList.size()));
        for (int i = 0; i < pair.newList.size(); ++i) {
            table.findOrInsert(pair.newList[i], [i] { return i; });
        }
        qint64 found = 0;
        for (const QString& key : pair.oldList) {
            const int* index = table.find(key);
            found += index ? *index : -1;
        }
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(BM_HashTableFloor)->Arg(5'000)->Arg(20'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

void BM_DtlEditScript(benchmark::State& state) {
    const ListPair& pair = pairFor(int(state.range(0)));
    const std::vector<QString> a(pair.oldList.cbegin(), pair.oldList.cend());
    const std::vector<QString> b(pair.newList.cbegin(), pair.newList.cend());
    long long distance = 0;
    for (auto _ : state) {
        dtl::Diff<QString, std::vector<QString>> script(a, b);
        script.compose();
        distance = script.getEditDistance();
    }
    state.counters["editDistance"] = double(distance);
}
// 100,000 elements with ~24,000 edits is out of reach for an O(NP) script within a benchmark run.
BENCHMARK(BM_DtlEditScript)->Arg(5'000)->Arg(20'000)->Unit(benchmark::kMicrosecond);

QList<Channel> channelRow(int count) {
    QList<Channel> row;
    for (int i = 0; i < count; ++i) {
        Channel channel;
        channel.id = QStringLiteral("6a1f%1-channel").arg(i, 4, 10, QChar(u'0'));
        channel.title = QStringLiteral("Channel %1").arg(i);
        row.append(channel);
    }
    return row;
}

void BM_HeckelChannelRow(benchmark::State& state) {
    // A reload after viewing: five channels read and sent to the end, one new, one gone.
    const QList<Channel> oldRow = channelRow(200);
    QList<Channel> newRow = oldRow;
    for (int i = 0; i < 5; ++i) {
        newRow.append(newRow.takeAt(10 + 3 * i));
    }
    newRow.removeAt(100);
    Channel fresh;
    fresh.id = QStringLiteral("fresh");
    newRow.insert(0, fresh);
    qsizetype changes = 0;
    for (auto _ : state) {
        const auto result = diff(oldRow, newRow);
        changes = result.size();
        benchmark::DoNotOptimize(result.constData());
    }
    state.counters["changes"] = double(changes);
}
BENCHMARK(BM_HeckelChannelRow)->Unit(benchmark::kMicrosecond);

// --- A batch on a live list ------------------------------------------------------------------

class BenchCell : public CollectionViewCell {
public:
    QString text;
};

class BenchSource : public CollectionViewDataSource {
public:
    QList<QString> items;
    int numberOfItems(CollectionView&, int) override { return int(items.size()); }
    QString reuseIdentifier(CollectionView&, const IndexPath&) override { return "BenchCell"; }
    void configureCell(CollectionView&, CollectionViewCell& cell, const IndexPath& path) override {
        static_cast<BenchCell&>(cell).text = items.at(path.item);
    }
    QSizeF sizeForItem(CollectionView&, const IndexPath&) override { return QSizeF(50, 80); }
    qreal minimumLineSpacing(CollectionView&, int) override { return 8; }
};

class StepAnimationDriver : public QAnimationDriver {
public:
    void step(qint64 ms) {
        m_elapsed += ms;
        advance();
    }
    qint64 elapsed() const override { return m_elapsed; }

private:
    qint64 m_elapsed = 0;
};

/// Two lists of 200 whose diff has exactly 50 changes among the first 45 items: ten replaced
/// by new ones in place, and two rotated runs (25 and 5 items, every one of them a move).
std::pair<QList<QString>, QList<QString>> fiftyChangeLists() {
    QList<QString> first;
    for (int i = 0; i < 200; ++i) {
        first.append(QStringLiteral("item-%1").arg(i));
    }
    QList<QString> second = first;
    second.move(0, 24);
    second.move(40, 44);
    for (int i = 30; i < 40; ++i) {
        second[i] = QStringLiteral("new-%1").arg(i);
    }
    return {first, second};
}

void BM_BatchOnLiveList(benchmark::State& state) {
    const auto [first, second] = fiftyChangeLists();
    QQuickWindow window;
    window.resize(1400, 100);
    BenchSource source;
    source.items = first;
    CollectionView view(window.contentItem());
    view.setSize(QSizeF(1400, 100));
    view.registerCell("BenchCell", [] { return new BenchCell; });
    view.setDataSource(&source);
    window.show();
    QCoreApplication::processEvents();
    view.layoutIfNeeded();
    StepAnimationDriver animations;
    animations.install();

    if (diff(first, second).size() != 50 || diff(second, first).size() != 50) {
        state.SkipWithError("the lists do not differ by 50 changes");
        return;
    }
    bool forward = true;
    for (auto _ : state) {
        const QList<QString>& next = forward ? second : first;
        reload(view, diff(source.items, next), 0, [&] { source.items = next; });
        view.layoutIfNeeded();
        state.PauseTiming();
        // Let the transitions start and run out before the next batch.
        QCoreApplication::processEvents();
        animations.step(1000);
        forward = !forward;
        state.ResumeTiming();
    }
    animations.uninstall();
    state.counters["visibleCells"] = double(view.visibleCells().size());
}
BENCHMARK(BM_BatchOnLiveList)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

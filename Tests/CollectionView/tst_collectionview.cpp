#include <QAbstractItemModelTester>
#include <QQuickWindow>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <memory>
#include <utility>

#include "../Diff/Versioned.h"
#include "Extensions/CollectionViewReload.h"
#include "Extensions/DiffExtensions.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/CollectionView/CollectionViewCell.h"
#include "Platform/CollectionView/CollectionViewDataSource.h"
#include "Platform/CollectionView/CollectionViewDelegate.h"
#include "Platform/Scheduler.h"
#include "TestSupport.h"

using namespace LumoraSDK;

namespace {

class TestCell : public CollectionViewCell {
public:
    TestCell() { ++created; }
    static inline int created = 0;
    QString text;
    void prepareForReuse() override { text.clear(); }
};

template <typename T>
class ListSource : public CollectionViewDataSource {
public:
    QList<T> items;
    int configured = 0;

    int numberOfItems(CollectionView&, int) override { return int(items.size()); }
    /// Items ending in a lower-case letter or an odd digit get the QML cell, the others the C++
    /// one, so that one list mixes both kinds.
    static bool usesQmlCell(const QString& name) {
        const QChar last = name.isEmpty() ? QChar() : name.back();
        return last.isLower() || (last.isDigit() && last.digitValue() % 2 == 1);
    }
    QString reuseIdentifier(CollectionView&, const IndexPath& path) override {
        return usesQmlCell(nameOf(items.at(path.item))) ? QStringLiteral("TextCell") : "TestCell";
    }
    void configureCell(CollectionView&, CollectionViewCell& cell, const IndexPath& path) override {
        ++configured;
        if (auto* testCell = dynamic_cast<TestCell*>(&cell)) {
            testCell->text = nameOf(items.at(path.item));
        } else {
            cell.findChild<QObject*>("label")->setProperty("text", nameOf(items.at(path.item)));
        }
    }
    QSizeF sizeForItem(CollectionView&, const IndexPath&) override { return QSizeF(50, 80); }
    qreal minimumLineSpacing(CollectionView&, int) override { return 10; }
    QMarginsF insetForSection(CollectionView&, int) override { return QMarginsF(16, 0, 16, 0); }
};

class EventLog : public CollectionViewDelegate {
public:
    QStringList events;
    void scrollViewDidEndScrollingAnimation(CollectionView&) override {
        events << "didEndScrollingAnimation";
    }
};

/// Replays a model's notifications on a plain list, starting from the old items: inserted rows
/// take the data source's item at that row, changed rows are read again.
template <typename T>
class ModelMirror {
public:
    ModelMirror(QAbstractItemModel* model, const ListSource<T>& source) {
        QObject::connect(model, &QAbstractItemModel::rowsRemoved, &m_context,
                         [this](const QModelIndex&, int first, int last) {
                             rows.remove(first, last - first + 1);
                         });
        QObject::connect(model, &QAbstractItemModel::rowsInserted, &m_context,
                         [this, &source](const QModelIndex&, int first, int last) {
                             rows.insert(first, last - first + 1, T{});
                             for (int row = first; row <= last; ++row) {
                                 rows[row] = source.items.at(row);
                             }
                         });
        QObject::connect(
            model, &QAbstractItemModel::rowsMoved, &m_context,
            [this](const QModelIndex&, int first, int last, const QModelIndex&, int destination) {
                const int length = last - first + 1;
                const QList<T> block = rows.mid(first, length);
                rows.remove(first, length);
                const int at = destination > first ? destination - length : destination;
                for (int i = 0; i < length; ++i) {
                    rows.insert(at + i, block[i]);
                }
            });
        QObject::connect(model, &QAbstractItemModel::dataChanged, &m_context,
                         [this, &source](const QModelIndex& from, const QModelIndex& to) {
                             for (int row = from.row(); row <= to.row(); ++row) {
                                 rows[row] = source.items.at(row);
                             }
                         });
        QObject::connect(model, &QAbstractItemModel::modelReset, &m_context, [this] { ++resets; });
    }
    QList<T> rows;
    int resets = 0;

private:
    QObject m_context;
};

QString textOf(CollectionViewCell* cell) {
    if (auto* testCell = dynamic_cast<TestCell*>(cell)) {
        return testCell->text;
    }
    return cell->findChild<QObject*>(QStringLiteral("label"))->property("text").toString();
}

QStringList texts(const QList<CollectionViewCell*>& cells) {
    QStringList result;
    for (CollectionViewCell* cell : cells) {
        result << textOf(cell);
    }
    return result;
}

QStringList letters(const QString& text) {
    return text.split(u' ', Qt::SkipEmptyParts);
}

}  // namespace

class CollectionViewTest : public QObject {
    Q_OBJECT

private:
    template <typename T>
    void applyRandomPairs(const std::function<T(QRandomGenerator&)>& element) {
        ListSource<T> source;
        CollectionView view;
        view.registerCell(QStringLiteral("TestCell"), [] { return new TestCell; });
        view.setDataSource(&source);
        QAbstractItemModelTester tester(view.model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
        ModelMirror<T> mirror(view.model(), source);
        QRandomGenerator random(20240611);
        for (int pair = 0; pair < 3000; ++pair) {
            QList<T> newItems;
            for (int n = random.bounded(12); n > 0; --n) {
                newItems.append(element(random));
            }
            mirror.rows = source.items;
            reload(view, diff(source.items, newItems), 0, [&] { source.items = newItems; });
            QCOMPARE(view.numberOfItems(0), newItems.size());
            if (mirror.rows != newItems) {
                QFAIL(qPrintable(
                    QStringLiteral("pair %1: the model ended up differently").arg(pair)));
            }
        }
        QCOMPARE(mirror.resets, 0);
    }

    struct Scene {
        QQuickWindow window;
        ListSource<QString> source;
        EventLog events;
        CollectionView* view = nullptr;
    };

    std::unique_ptr<Scene> makeScene(const QStringList& items, qreal width) {
        auto scene = std::make_unique<Scene>();
        scene->window.resize(int(width), 100);
        scene->source.items = items;
        scene->view = new CollectionView(scene->window.contentItem());
        scene->view->setSize(QSizeF(width, 100));
        scene->view->registerCell(QStringLiteral("TestCell"), [] { return new TestCell; });
        scene->view->registerCell("TextCell", QUrl::fromLocalFile(QFINDTESTDATA("TextCell.qml")));
        scene->view->setDataSource(&scene->source);
        scene->view->setDelegate(&scene->events);
        scene->window.show();
        if (!QTest::qWaitForWindowExposed(&scene->window)) {
            return nullptr;
        }
        // Installed once a window exists, so that the window's render loop does not replace it.
        if (!std::exchange(m_animationsInstalled, true)) {
            m_animations.install();
        }
        scene->view->layoutIfNeeded();
        return scene;
    }

    /// Lets animations started since the last call begin (they start on a queued call), then
    /// moves their clock.
    void advanceAnimations(qint64 ms) {
        QCoreApplication::processEvents();
        m_animations.advanceBy(ms);
    }

    ManualScheduler m_clock;
    LumoraTest::ManualAnimationDriver m_animations;
    bool m_animationsInstalled = false;

private slots:
    void initTestCase() { Scheduler::setCurrent(&m_clock); }
    void cleanupTestCase() { Scheduler::setCurrent(nullptr); }

    // Thousands of random list pairs, of channels (only ids, some absent) and of elements whose
    // content changes too, each applied as one batch: the model ends up exactly the new list.
    void randomListsApplyExactly() {
        static const QStringList ids{"a", "b", "c", "d", "e", "f", "-"};
        applyRandomPairs<Channel>([](QRandomGenerator& random) {
            Channel channel;
            const QString id = ids[random.bounded(int(ids.size()))];
            if (id != u"-") {
                channel.id = id;
            }
            channel.title = id;
            return channel;
        });
        applyRandomPairs<Versioned>([](QRandomGenerator& random) {
            return Versioned{QString(QChar(u'A' + random.bounded(6))), random.bounded(1, 4)};
        });
    }

    void explicitBatches_data() {
        QTest::addColumn<QString>("oldItems");
        QTest::addColumn<QString>("newItems");
        QTest::addColumn<QList<int>>("deletes");
        QTest::addColumn<QList<int>>("inserts");
        QTest::addColumn<QList<QPoint>>("moves");
        QTest::addColumn<bool>("valid");
        const auto row = [](const char* name, const char* oldItems, const char* newItems,
                            QList<int> deletes, QList<int> inserts, QList<QPoint> moves,
                            bool valid) {
            QTest::newRow(name) << QString(oldItems) << QString(newItems) << deletes << inserts
                                << moves << valid;
        };
        row("delete, insert and move at once", "A B C D E", "E X B D", {0, 2}, {1}, {{4, 0}}, true);
        row("count that does not add up", "A B C", "A B", {}, {}, {}, false);
        row("deleted item also moved", "A B C", "B A", {0}, {}, {{0, 1}}, false);
        row("two items moved to one place", "A B C", "B C A", {}, {}, {{0, 2}, {1, 2}}, false);
    }

    void explicitBatches() {
        QFETCH(QString, oldItems);
        QFETCH(QString, newItems);
        QFETCH(QList<int>, deletes);
        QFETCH(QList<int>, inserts);
        QFETCH(QList<QPoint>, moves);
        QFETCH(bool, valid);
        ListSource<QString> source;
        source.items = letters(oldItems);
        CollectionView view;
        view.registerCell(QStringLiteral("TestCell"), [] { return new TestCell; });
        view.setDataSource(&source);
        QAbstractItemModelTester tester(view.model(),
                                        QAbstractItemModelTester::FailureReportingMode::Fatal);
        ModelMirror<QString> mirror(view.model(), source);
        mirror.rows = source.items;
        LumoraTest::LogCapture log;
        int completions = 0;
        view.performBatchUpdates(
            [&] {
                source.items = letters(newItems);
                for (int row : deletes) {
                    view.deleteItems({IndexPath{row, 0}});
                }
                for (int row : inserts) {
                    view.insertItems({IndexPath{row, 0}});
                }
                for (const QPoint& move : moves) {
                    view.moveItem(IndexPath{move.x(), 0}, IndexPath{move.y(), 0});
                }
            },
            [&](bool finished) { completions += finished ? 1 : 100; });
        QCOMPARE(completions, 0);  // on a later turn of the main queue
        m_clock.runUntilIdle();
        QCOMPARE(completions, 1);
        QCOMPARE(view.numberOfItems(0), source.items.size());
        // A faulty batch is logged and replaced by a reload, so the view still shows the data.
        QCOMPARE(mirror.resets, valid ? 0 : 1);
        QCOMPARE(log.count(QStringLiteral("invalid batch update")), valid ? 0 : 1);
        if (valid) {
            QCOMPARE(mirror.rows, source.items);
        }
    }

    void liveListKeepsCellsOfMovedItems_data() {
        QTest::addColumn<QString>("oldItems");
        QTest::addColumn<QString>("newItems");
        for (const auto& [name, oldItems, newItems] :
             {std::tuple("delete, insert and move", "A B C D E", "X E B Y D"),
              {"from empty", "", "A B C"},
              {"to empty", "A B C", ""},
              {"C++ and QML cells mixed", "A b C d", "b A d x C"}}) {
            QTest::newRow(name) << QString(oldItems) << QString(newItems);
        }
    }

    void liveListKeepsCellsOfMovedItems() {
        QFETCH(QString, oldItems);
        QFETCH(QString, newItems);
        auto scene = makeScene(letters(oldItems), 400);
        QVERIFY(scene);
        CollectionView& view = *scene->view;
        QCOMPARE(texts(view.visibleCells()), letters(oldItems));
        QHash<QString, CollectionViewCell*> cellOf;
        for (CollectionViewCell* cell : view.visibleCells()) {
            cellOf.insert(textOf(cell), cell);
        }
        const int createdBefore = TestCell::created;
        const QStringList next = letters(newItems);
        int inserted = 0;
        for (const QString& item : next) {
            inserted += cellOf.contains(item) ? 0 : 1;
        }

        reload(view, diff(scene->source.items, next), 0, [&] { scene->source.items = next; });
        view.layoutIfNeeded();

        QCOMPARE(texts(view.visibleCells()), next);
        for (CollectionViewCell* cell : view.visibleCells()) {
            const QString text = textOf(cell);
            const bool madeInQml = dynamic_cast<TestCell*>(cell) == nullptr;
            QCOMPARE(madeInQml, ListSource<QString>::usesQmlCell(text));
            if (madeInQml) {
                QCOMPARE(cell->findChild<QQuickItem*>("label")->parentItem(), cell->contentView());
            }
            if (cellOf.contains(text)) {
                QVERIFY2(cellOf.value(text) == cell, qPrintable(text + " got another cell"));
            }
            QCOMPARE(cell->indexPath().item, next.indexOf(text));
        }
        QVERIFY(TestCell::created - createdBefore <= inserted);
        // The transitions run out, and the list still shows the new items.
        advanceAnimations(1000);
        view.layoutIfNeeded();
        QCOMPARE(texts(view.visibleCells()), next);
        // Hiding the whole view (a stalled video hides its pages) keeps its cells for the code.
        view.setVisible(false);
        QCOMPARE(texts(view.visibleCells()), next);
    }

    void scrollToItem_data() {
        QTest::addColumn<int>("item");
        QTest::addColumn<CollectionView::ScrollPosition>("position");
        QTest::addColumn<bool>("animated");
        QTest::addColumn<double>("duration");
        QTest::addColumn<qreal>("offset");
        QTest::addColumn<QStringList>("visible");
        using P = CollectionView::ScrollPosition;
        // 20 items of 50 px, 10 px apart, 16 px insets, in a 200 px wide view.
        QTest::newRow("right, animated over 0.3 s")
            << 5 << P::right << true << 0.3 << 166.0 << QStringList{"2", "3", "4", "5"};
        QTest::newRow("first item at left keeps the inset")
            << 0 << P::left << true << 0.3 << 16.0 << QStringList{"0", "1", "2", "3"};
        QTest::newRow("last item stops at the content's end")
            << 19 << P::left << true << 0.3 << 1022.0 << QStringList{"16", "17", "18", "19"};
    }

    void scrollToItem() {
        QFETCH(int, item);
        QFETCH(CollectionView::ScrollPosition, position);
        QFETCH(bool, animated);
        QFETCH(double, duration);
        QFETCH(qreal, offset);
        QFETCH(QStringList, visible);
        QStringList items;
        for (int i = 0; i < 20; ++i) {
            items << QString::number(i);
        }
        auto scene = makeScene(items, 200);
        QVERIFY(scene);
        CollectionView& view = *scene->view;
        QCOMPARE(view.contentSize(), QSizeF(1222, 100));
        view.setScrollAnimationDuration(duration);

        view.scrollToItem(IndexPath{item, 0}, position, animated);
        QVERIFY(scene->events.events.isEmpty());
        m_clock.advance(duration / 2);
        if (animated && duration > 0) {
            QVERIFY(scene->events.events.isEmpty());
            QVERIFY(view.contentOffset().x() != offset);
        }
        m_clock.advance(duration);
        QCOMPARE(view.contentOffset().x(), offset);
        QCOMPARE(scene->events.events.count("didEndScrollingAnimation"), animated ? 1 : 0);
        view.layoutIfNeeded();
        QCOMPARE(texts(view.visibleCells()), visible);
        QCOMPARE(view.cellForItem(IndexPath{item, 0}),
                 view.visibleCells().at(visible.indexOf(QString::number(item))));
    }
};

QTEST_MAIN(CollectionViewTest)
#include "tst_collectionview.moc"

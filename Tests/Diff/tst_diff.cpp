#include <QTest>

#include "Extensions/ChannelDiffAware.h"
#include "Extensions/CollectionViewReload.h"
#include "Extensions/DiffExtensions.h"
#include "Extensions/IndexPathConverter.h"

using namespace LumoraSDK;

namespace {

/// An element whose identity (key) and content (version) differ, so replaces can happen.
struct Versioned {
    QString key;
    int version = 1;
    QString name() const { return key + QString::number(version); }
    friend bool operator==(const Versioned&, const Versioned&) = default;
};

}  // namespace

template <>
struct LumoraSDK::DiffTraits<Versioned> {
    using DiffId = QString;
    static const QString& diffId(const Versioned& v) { return v.key; }
    static bool compareContent(const Versioned& a, const Versioned& b) {
        return a.version == b.version;
    }
};

namespace {

QString nameOf(const QString& s) {
    return s;
}
QString nameOf(const Versioned& v) {
    return v.name();
}
QString nameOf(const Channel& c) {
    return c.title.value_or(QStringLiteral("?"));
}

template <typename T>
QStringList describe(const QList<Change<T>>& changes) {
    QStringList lines;
    for (const Change<T>& change : changes) {
        if (const auto* c = change.insert()) {
            lines << QStringLiteral("insert(%1,%2)").arg(nameOf(c->item())).arg(c->index());
        } else if (const auto* c = change.delete_()) {
            lines << QStringLiteral("delete(%1,%2)").arg(nameOf(c->item())).arg(c->index());
        } else if (const auto* c = change.replace()) {
            lines << QStringLiteral("replace(%1->%2,%3)")
                         .arg(nameOf(c->oldItem()), nameOf(c->newItem()))
                         .arg(c->index());
        } else if (const auto* c = change.move()) {
            lines << QStringLiteral("move(%1,%2->%3)")
                         .arg(nameOf(c->item()))
                         .arg(c->fromIndex())
                         .arg(c->toIndex());
        }
    }
    return lines;
}

/// "A1 B2" -> [A version 1, B version 2]
QList<Versioned> versioned(const QString& text) {
    QList<Versioned> list;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        list.append(Versioned{word.left(1), word.mid(1).toInt()});
    }
    return list;
}

/// "a:Old -:Untitled" -> channels with id "a" and no id, titled Old and Untitled.
QList<Channel> channels(const QString& text) {
    QList<Channel> list;
    for (const QString& word : text.split(u' ', Qt::SkipEmptyParts)) {
        const QStringList parts = word.split(u':');
        Channel channel;
        if (parts[0] != u"-") {
            channel.id = parts[0];
        }
        channel.title = parts.value(1);
        list.append(channel);
    }
    return list;
}

QString indexPath(const IndexPath& path) {
    return QStringLiteral("%1.%2").arg(path.item).arg(path.section);
}

QString indexPaths(const QList<IndexPath>& paths) {
    QStringList parts;
    for (const IndexPath& path : paths) {
        parts << indexPath(path);
    }
    return parts.join(u' ');
}

/// Records the batch calls `reload` makes, in order; completions run when the test says so.
struct RecordingView {
    QStringList calls;
    QList<std::function<void(bool)>> pendingCompletions;

    void performBatchUpdates(std::function<void()> updates, std::function<void(bool)> completion) {
        calls << QStringLiteral("begin");
        updates();
        calls << QStringLiteral("end");
        pendingCompletions.append(std::move(completion));
    }
    void deleteItems(const QList<IndexPath>& paths) {
        calls << "delete(" + indexPaths(paths) + ")";
    }
    void insertItems(const QList<IndexPath>& paths) {
        calls << "insert(" + indexPaths(paths) + ")";
    }
    void moveItem(const IndexPath& from, const IndexPath& to) {
        calls << "move(" + indexPath(from) + "->" + indexPath(to) + ")";
    }
    void reloadItems(const QList<IndexPath>& paths) {
        calls << "reload(" + indexPaths(paths) + ")";
    }
};

}  // namespace

class DiffTest : public QObject {
    Q_OBJECT

private slots:
    void stringLists_data() {
        QTest::addColumn<QStringList>("oldList");
        QTest::addColumn<QStringList>("newList");
        QTest::addColumn<QStringList>("changes");
        const auto l = [](const char* text) {
            return QString::fromLatin1(text).split(u' ', Qt::SkipEmptyParts);
        };
        QTest::newRow("both empty") << l("") << l("") << QStringList();
        QTest::newRow("old empty: inserts in order, no moves")
            << l("") << l("A B C") << QStringList{"insert(A,0)", "insert(B,1)", "insert(C,2)"};
        QTest::newRow("new empty: deletes ascending")
            << l("A B C") << l("") << QStringList{"delete(A,0)", "delete(B,1)", "delete(C,2)"};
        QTest::newRow("identical") << l("A B C") << l("A B C") << QStringList();
        QTest::newRow("rotation: three moves, not one")
            << l("A B C") << l("C A B")
            << QStringList{"move(C,2->0)", "move(A,0->1)", "move(B,1->2)"};
        QTest::newRow("delete before: no move") << l("A B") << l("B") << QStringList{"delete(A,0)"};
        QTest::newRow("insert before: no move") << l("A") << l("X A") << QStringList{"insert(X,0)"};
        QTest::newRow("swap") << l("A B") << l("B A")
                              << QStringList{"move(B,1->0)", "move(A,0->1)"};
        QTest::newRow("duplicates: first pairs with first, surplus old deleted")
            << l("A A") << l("A") << QStringList{"delete(A,1)"};
        QTest::newRow("duplicates: surplus new inserted")
            << l("A") << l("A A") << QStringList{"insert(A,1)"};
        QTest::newRow("delete in the middle: the rest keep their place")
            << l("A B C D") << l("A C D") << QStringList{"delete(B,1)"};
        QTest::newRow("first to last: every shifted element moves")
            << l("A B C D E") << l("B C D E A")
            << QStringList{"move(B,1->0)", "move(C,2->1)", "move(D,3->2)", "move(E,4->3)",
                           "move(A,0->4)"};
        QTest::newRow("deletes first, then inserts and moves by new index")
            << l("A B C") << l("D C B")
            << QStringList{"delete(A,0)", "insert(D,0)", "move(C,2->1)", "move(B,1->2)"};
    }

    void stringLists() {
        QFETCH(QStringList, oldList);
        QFETCH(QStringList, newList);
        QFETCH(QStringList, changes);
        QCOMPARE(describe(diff(oldList, newList)), changes);
    }

    void contentChanges_data() {
        QTest::addColumn<QString>("oldList");
        QTest::addColumn<QString>("newList");
        QTest::addColumn<QStringList>("changes");
        QTest::newRow("content only") << "A1 B1"
                                      << "A2 B1" << QStringList{"replace(A1->A2,0)"};
        QTest::newRow("replace and move: replace first")
            << "A1 B1"
            << "B2 A1" << QStringList{"replace(B1->B2,0)", "move(B2,1->0)", "move(A1,0->1)"};
        QTest::newRow("duplicated keys pair in order, whatever their content")
            << "A1 A2"
            << "A2 A1" << QStringList{"replace(A1->A2,0)", "replace(A2->A1,1)"};
        QTest::newRow("every kind") << "A1 B1 C1"
                                    << "C1 X1 A2"
                                    << QStringList{"delete(B1,1)", "move(C1,2->0)", "insert(X1,1)",
                                                   "replace(A1->A2,2)", "move(A2,0->2)"};
    }

    void contentChanges() {
        QFETCH(QString, oldList);
        QFETCH(QString, newList);
        QFETCH(QStringList, changes);
        QCOMPARE(describe(diff(versioned(oldList), versioned(newList))), changes);
    }

    void channelLists_data() {
        QTest::addColumn<QString>("oldList");
        QTest::addColumn<QString>("newList");
        QTest::addColumn<QStringList>("changes");
        QTest::newRow("same id, other title: no replace") << "a:Old"
                                                          << "a:New" << QStringList();
        QTest::newRow("channels without id pair in order of occurrence")
            << "-:n1 x:X -:n2"
            << "-:n3 -:n4 x:X" << QStringList{"move(n4,2->1)", "move(X,1->2)"};
        QTest::newRow("an absent id is not any id")
            << "-:n"
            << "a:A" << QStringList{"delete(n,0)", "insert(A,0)"};
        QTest::newRow("empty id is an id")
            << "-:n :e"
            << ":e -:n" << QStringList{"move(e,1->0)", "move(n,0->1)"};
    }

    void channelLists() {
        QFETCH(QString, oldList);
        QFETCH(QString, newList);
        QFETCH(QStringList, changes);
        QCOMPARE(describe(diff(channels(oldList), channels(newList))), changes);
    }

    void channelKeys_data() {
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::addColumn<bool>("sameKey");
        QTest::newRow("equal ids") << "a1b2"
                                   << "a1b2" << true;
        QTest::newRow("different ids") << "a1b2"
                                       << "a1b3" << false;
        QTest::newRow("both absent") << "-"
                                     << "-" << true;
        QTest::newRow("absent and empty") << "-"
                                          << "" << false;
        QTest::newRow("absent and the text of the absent key")
            << "-" << DiffTraits<Channel>::diffId(Channel{}).toString() << false;
    }

    void channelKeys() {
        QFETCH(QString, first);
        QFETCH(QString, second);
        QFETCH(bool, sameKey);
        const auto channel = [](const QString& id) {
            Channel c;
            if (id != u"-") {
                c.id = id;
            }
            return c;
        };
        const Channel a = channel(first);
        const Channel b = channel(second);
        const ChannelDiffId keyA = DiffTraits<Channel>::diffId(a);
        const ChannelDiffId keyB = DiffTraits<Channel>::diffId(b);
        QCOMPARE(keyA == keyB, sameKey);
        QCOMPARE(keyA.toString() == keyB.toString(), sameKey);
        QCOMPARE(DiffTraits<Channel>::compareContent(a, b), sameKey);
        // The text wraps the decimal hash of the id.
        QCOMPARE(keyA.toString(), a.id ? QStringLiteral("ChannelId(%1)").arg(qHash(*a.id))
                                       : QStringLiteral("ChannelId(none)"));
    }

    void arrayEntryEquality_data() {
        QTest::addColumn<int>("caseNumber");
        QTest::addColumn<bool>("equal");
        QTest::newRow("same entry") << 0 << true;
        QTest::newRow("distinct entries with equal fields") << 1 << true;
        QTest::newRow("different counters") << 2 << false;
        QTest::newRow("different old indexes") << 3 << false;
        QTest::newRow("equal other indexes") << 4 << true;
        QTest::newRow("different other indexes") << 5 << false;
        QTest::newRow("entry and other index") << 6 << false;
    }

    void arrayEntryEquality() {
        using A = HeckelBase::ArrayEntry;
        using Entry = HeckelBase::TableEntry;
        using Counter = HeckelBase::Counter;
        QFETCH(int, caseNumber);
        QFETCH(bool, equal);
        const auto entry = [](Counter oldCounter, Counter newCounter,
                              std::initializer_list<int> old) {
            return std::make_shared<Entry>(Entry{oldCounter, newCounter, old});
        };
        const auto shared = entry(Counter::one, Counter::many, {2});
        const QList<std::pair<A, A>> cases = {
            {A::tableEntry(shared), A::tableEntry(shared)},
            {A::tableEntry(entry(Counter::one, Counter::one, {1, 4})),
             A::tableEntry(entry(Counter::one, Counter::one, {1, 4}))},
            {A::tableEntry(entry(Counter::one, Counter::one, {1})),
             A::tableEntry(entry(Counter::many, Counter::one, {1}))},
            {A::tableEntry(entry(Counter::one, Counter::one, {1})),
             A::tableEntry(entry(Counter::one, Counter::one, {2}))},
            {A::indexInOther(3), A::indexInOther(3)},
            {A::indexInOther(3), A::indexInOther(4)},
            {A::tableEntry(shared), A::indexInOther(0)},
        };
        QCOMPARE(cases[caseNumber].first == cases[caseNumber].second, equal);
        QCOMPARE(cases[caseNumber].second == cases[caseNumber].first, equal);
    }

    void indexPathConversion_data() {
        QTest::addColumn<QString>("oldList");
        QTest::addColumn<QString>("newList");
        QTest::addColumn<int>("section");
        QTest::addColumn<QString>("inserts");
        QTest::addColumn<QString>("deletes");
        QTest::addColumn<QString>("replaces");
        QTest::addColumn<QString>("moves");
        QTest::newRow("nothing") << "A1"
                                 << "A1" << 0 << ""
                                 << ""
                                 << ""
                                 << "";
        QTest::newRow("insert at 3 in section 0") << "A1 B1 C1"
                                                  << "A1 B1 C1 D1" << 0 << "3.0"
                                                  << ""
                                                  << ""
                                                  << "";
        QTest::newRow("section carried") << "A1 B1 C1"
                                         << "X1 B2 A1" << 4 << "0.4"
                                         << "2.4"
                                         << "1.4"
                                         << "1.4->1.4 0.4->2.4";
        QTest::newRow("each list keeps change order") << "A1 B1 C1 D1"
                                                      << "D2 C2 X1" << 0 << "2.0"
                                                      << "0.0 1.0"
                                                      << "0.0 1.0"
                                                      << "3.0->0.0 2.0->1.0";
    }

    void indexPathConversion() {
        QFETCH(QString, oldList);
        QFETCH(QString, newList);
        QFETCH(int, section);
        const ChangeWithIndexPath converted =
            IndexPathConverter().convert(diff(versioned(oldList), versioned(newList)), section);
        QStringList moves;
        for (const IndexPathMove& move : converted.moves()) {
            moves << indexPath(move.from) + "->" + indexPath(move.to);
        }
        QTEST(indexPaths(converted.inserts()), "inserts");
        QTEST(indexPaths(converted.deletes()), "deletes");
        QTEST(indexPaths(converted.replaces()), "replaces");
        QTEST(moves.join(u' '), "moves");
    }

    void reloadOrder_data() {
        QTest::addColumn<QString>("oldList");
        QTest::addColumn<QString>("newList");
        QTest::addColumn<int>("section");
        QTest::addColumn<QStringList>("calls");
        QTest::newRow("empty change list: one batch that only switches the data")
            << "A1 B1"
            << "A1 B1" << 0 << QStringList{"begin", "updateData", "end", "completion(true)"};
        QTest::newRow("deletes only: one deleteItems call")
            << "A1 B1 C1"
            << "B1" << 0
            << QStringList{"begin", "updateData", "delete(0.0 2.0)", "end", "completion(true)"};
        QTest::newRow("replace and move: moved in the batch, reloaded after at its new index")
            << "A1 B1"
            << "B2 A1" << 0
            << QStringList{"begin", "updateData",  "move(1.0->0.0)",  "move(0.0->1.0)",
                           "end",   "reload(0.0)", "completion(true)"};
        QTest::newRow("every kind, in section 1")
            << "A1 B1 C1"
            << "C1 X1 A2" << 1 << QStringList{"begin",       "updateData",     "delete(1.1)",
                                              "insert(1.1)", "move(2.1->0.1)", "move(0.1->2.1)",
                                              "end",         "reload(2.1)",    "completion(true)"};
    }

    void reloadOrder() {
        QFETCH(QString, oldList);
        QFETCH(QString, newList);
        QFETCH(int, section);
        RecordingView view;
        reload(
            view, diff(versioned(oldList), versioned(newList)), section,
            [&] { view.calls << QStringLiteral("updateData"); },
            [&](bool finished) {
                view.calls << QStringLiteral("completion(%1)").arg(finished ? "true" : "false");
            });
        QCOMPARE(view.pendingCompletions.size(), 1);
        view.pendingCompletions.takeFirst()(true);
        QTEST(view.calls, "calls");
    }
};

QTEST_GUILESS_MAIN(DiffTest)
#include "tst_diff.moc"

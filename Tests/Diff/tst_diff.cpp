#include <QTest>

#include "Extensions/CollectionViewReload.h"
#include "Extensions/DiffExtensions.h"
#include "Versioned.h"

using namespace LumoraSDK;

namespace {

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
        calls << "begin";
        updates();
        calls << "end";
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
    // The changes that turn one list into another: plain strings ("A"), elements whose key and
    // content differ ("A1": key A, version 1), and channels ("id:title", "-" for no id).
    void changes_data() {
        QTest::addColumn<QString>("elements");
        QTest::addColumn<QString>("oldList");
        QTest::addColumn<QString>("newList");
        QTest::addColumn<QStringList>("changes");
        const auto row = [](const char* name, const char* elements, const char* oldList,
                            const char* newList, const QStringList& changes) {
            QTest::newRow(name) << QString(elements) << QString(oldList) << QString(newList)
                                << changes;
        };
        row("both empty", "strings", "", "", {});
        row("old empty: inserts in order, no moves", "strings", "", "A B C",
            {"insert(A,0)", "insert(B,1)", "insert(C,2)"});
        row("new empty: deletes ascending", "strings", "A B C", "",
            {"delete(A,0)", "delete(B,1)", "delete(C,2)"});
        row("identical", "strings", "A B C", "A B C", {});
        row("rotation: three moves, not one", "strings", "A B C", "C A B",
            {"move(C,2->0)", "move(A,0->1)", "move(B,1->2)"});
        row("delete before: no move", "strings", "A B", "B", {"delete(A,0)"});
        row("duplicates: first pairs with first, surplus old deleted", "strings", "A A", "A",
            {"delete(A,1)"});
        row("first to last: every shifted element moves", "strings", "A B C D E", "B C D E A",
            {"move(B,1->0)", "move(C,2->1)", "move(D,3->2)", "move(E,4->3)", "move(A,0->4)"});
        row("deletes first, then inserts and moves by new index", "strings", "A B C", "D C B",
            {"delete(A,0)", "insert(D,0)", "move(C,2->1)", "move(B,1->2)"});
        row("content only", "versioned", "A1 B1", "A2 B1", {"replace(A1->A2,0)"});
        row("duplicated keys pair in order, whatever their content", "versioned", "A1 A2", "A2 A1",
            {"replace(A1->A2,0)", "replace(A2->A1,1)"});
        row("every kind", "versioned", "A1 B1 C1", "C1 X1 A2",
            {"delete(B1,1)", "move(C1,2->0)", "insert(X1,1)", "replace(A1->A2,2)",
             "move(A2,0->2)"});
        row("same id, other title: no replace", "channels", "a:Old", "a:New", {});
        row("channels without id pair in order of occurrence", "channels", "-:n1 x:X -:n2",
            "-:n3 -:n4 x:X", {"move(n4,2->1)", "move(X,1->2)"});
        row("an absent id is not any id", "channels", "-:n", "a:A", {"delete(n,0)", "insert(A,0)"});
        row("empty id is an id", "channels", "-:n :e", ":e -:n", {"move(e,1->0)", "move(n,0->1)"});
        row("an id spelled like the absent key is still an id", "channels", "-:n",
            "ChannelId(none):A", {"delete(n,0)", "insert(A,0)"});
    }

    void changes() {
        QFETCH(QString, elements);
        QFETCH(QString, oldList);
        QFETCH(QString, newList);
        QFETCH(QStringList, changes);
        if (elements == u"strings") {
            const auto words = [](const QString& text) {
                return text.split(u' ', Qt::SkipEmptyParts);
            };
            QCOMPARE(describe(diff(words(oldList), words(newList))), changes);
        } else if (elements == u"versioned") {
            QCOMPARE(describe(diff(versioned(oldList), versioned(newList))), changes);
        } else {
            QCOMPARE(describe(diff(channels(oldList), channels(newList))), changes);
        }
    }

    // The batch `reload` makes of a change list, with the index paths in the given section.
    void reloadOrder_data() {
        QTest::addColumn<QString>("oldList");
        QTest::addColumn<QString>("newList");
        QTest::addColumn<int>("section");
        QTest::addColumn<QString>("calls");
        const auto row = [](const char* name, const char* oldList, const char* newList, int section,
                            const char* calls) {
            QTest::newRow(name) << QString(oldList) << QString(newList) << section
                                << QString(calls);
        };
        row("empty change list: one batch that only switches the data", "A1 B1", "A1 B1", 0,
            "begin, updateData, end, completion(true)");
        row("every kind, in section 1", "A1 B1 C1", "C1 X1 A2", 1,
            "begin, updateData, delete(1.1), insert(1.1), move(2.1->0.1), move(0.1->2.1), end, "
            "reload(2.1), completion(true)");
        row("section carried, a replace that stays put", "A1 B1 C1", "X1 B2 A1", 4,
            "begin, updateData, delete(2.4), insert(0.4), move(1.4->1.4), move(0.4->2.4), end, "
            "reload(1.4), completion(true)");
        row("each kind keeps change order", "A1 B1 C1 D1", "D2 C2 X1", 0,
            "begin, updateData, delete(0.0 1.0), insert(2.0), move(3.0->0.0), move(2.0->1.0), "
            "end, reload(0.0 1.0), completion(true)");
    }

    void reloadOrder() {
        QFETCH(QString, oldList);
        QFETCH(QString, newList);
        QFETCH(int, section);
        RecordingView view;
        reload(
            view, diff(versioned(oldList), versioned(newList)), section,
            [&] { view.calls << "updateData"; },
            [&](bool finished) {
                view.calls << QStringLiteral("completion(%1)").arg(finished ? "true" : "false");
            });
        QCOMPARE(view.pendingCompletions.size(), 1);
        view.pendingCompletions.takeFirst()(true);
        QTEST(view.calls.join(", "), "calls");
    }
};

QTEST_GUILESS_MAIN(DiffTest)
#include "tst_diff.moc"

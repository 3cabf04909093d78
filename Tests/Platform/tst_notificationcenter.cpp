#include <QTest>

#include "Platform/NotificationCenter.h"

using namespace LumoraSDK;

class NotificationCenterTest : public QObject {
    Q_OBJECT

private slots:
    void deliversToObserversOfTheNameInOrderWithUserInfo() {
        NotificationCenter center;
        QStringList heard;
        int first = 0;
        int second = 0;
        center.addObserver(&first, "ready", [&](const Notification& n) {
            heard << QStringLiteral("first:%1").arg(n.userInfo.value("mediaIndex").toInt());
        });
        center.addObserver(&second, "ready", [&](const Notification& n) {
            heard << QStringLiteral("second:%1").arg(n.userInfo.value("isReady").toBool());
        });
        center.addObserver(&second, "other", [&](const Notification&) { heard << "other"; });
        center.post("ready", {{"mediaIndex", 4}, {"isReady", true}});
        QCOMPARE(heard, QStringList({"first:4", "second:1"}));
    }

    // Removed observers hear nothing, also when removed by an earlier handler of the same post.
    void removedObserversHearNothing() {
        NotificationCenter center;
        int calls = 0;
        int observer = 0;
        for (const char* name : {"a", "b", "c"}) {
            center.addObserver(&observer, QLatin1String(name),
                               [&](const Notification&) { ++calls; });
        }
        center.removeObserver(&observer, "a");
        center.post("a");
        center.post("b");
        QCOMPARE(calls, 1);
        center.removeObserver(&observer);
        center.post("b");
        center.post("c");
        QCOMPARE(calls, 1);
        QCOMPARE(center.observerCount("c"), 0);

        int remover = 0;
        center.addObserver(&remover, "x",
                           [&](const Notification&) { center.removeObserver(&observer); });
        center.addObserver(&observer, "x", [&](const Notification&) { ++calls; });
        center.post("x");
        QCOMPARE(calls, 1);
    }

    void handlerMayPostAndAddObservers() {
        NotificationCenter center;
        QStringList heard;
        int observer = 0;
        center.addObserver(&observer, "outer", [&](const Notification&) {
            heard << "outer";
            center.addObserver(&observer, "inner", [&](const Notification&) { heard << "inner"; });
            center.post("inner");
        });
        center.post("outer");
        QCOMPARE(heard, QStringList({"outer", "inner"}));
    }
};

QTEST_GUILESS_MAIN(NotificationCenterTest)
#include "tst_notificationcenter.moc"

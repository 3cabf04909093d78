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
        center.addObserver(&first, QStringLiteral("ready"), [&](const Notification& n) {
            heard << QStringLiteral("first:%1")
                         .arg(n.userInfo.value(QStringLiteral("mediaIndex")).toInt());
        });
        center.addObserver(&second, QStringLiteral("ready"), [&](const Notification& n) {
            heard << QStringLiteral("second:%1")
                         .arg(n.userInfo.value(QStringLiteral("isReady")).toBool());
        });
        center.addObserver(&second, QStringLiteral("other"),
                           [&](const Notification&) { heard << "other"; });
        center.post(QStringLiteral("ready"),
                    {{QStringLiteral("mediaIndex"), 4}, {QStringLiteral("isReady"), true}});
        QCOMPARE(heard, QStringList({"first:4", "second:1"}));
    }

    void removedObserversHearNothing() {
        NotificationCenter center;
        int calls = 0;
        int observer = 0;
        for (const char* name : {"a", "b", "c"}) {
            center.addObserver(&observer, QLatin1String(name),
                               [&](const Notification&) { ++calls; });
        }
        center.removeObserver(&observer, QStringLiteral("a"));
        center.post(QStringLiteral("a"));
        center.post(QStringLiteral("b"));
        QCOMPARE(calls, 1);
        center.removeObserver(&observer);
        center.post(QStringLiteral("b"));
        center.post(QStringLiteral("c"));
        QCOMPARE(calls, 1);
        QCOMPARE(center.observerCount(QStringLiteral("c")), 0);
    }

    void observerRemovedDuringPostIsNotCalled() {
        NotificationCenter center;
        int first = 0;
        int second = 0;
        int secondCalls = 0;
        center.addObserver(&first, QStringLiteral("x"),
                           [&](const Notification&) { center.removeObserver(&second); });
        center.addObserver(&second, QStringLiteral("x"),
                           [&](const Notification&) { ++secondCalls; });
        center.post(QStringLiteral("x"));
        QCOMPARE(secondCalls, 0);
    }

    void handlerMayPostAndAddObservers() {
        NotificationCenter center;
        QStringList heard;
        int observer = 0;
        center.addObserver(&observer, QStringLiteral("outer"), [&](const Notification&) {
            heard << "outer";
            center.addObserver(&observer, QStringLiteral("inner"),
                               [&](const Notification&) { heard << "inner"; });
            center.post(QStringLiteral("inner"));
        });
        center.post(QStringLiteral("outer"));
        QCOMPARE(heard, QStringList({"outer", "inner"}));
    }
};

QTEST_GUILESS_MAIN(NotificationCenterTest)
#include "tst_notificationcenter.moc"

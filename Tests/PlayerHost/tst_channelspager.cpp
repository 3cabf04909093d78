// The pager's scroll logic on plain offsets: directions against the last rest position and the
// drag limits past either end, one channel wide.

#include <QTest>

#include "Views/ChannelsCollectionDataSource.h"

using namespace LumoraSDK;

Q_DECLARE_METATYPE(NavigationDirection)

namespace {
/// A pager over `count` channels of 100 points, recording what it reports.
struct Pager {
    explicit Pager(int count) : source(QList<ChannelViewController*>(count, nullptr)) {
        source.onScrollViewDidScroll = [this](qreal progress, NavigationDirection direction) {
            progresses << progress;
            directions << direction;
        };
        source.onDragLimitExceeded = [this](NavigationDirection direction) { limits << direction; };
        source.onScrollViewDidEndDecelerating = [this](NavigationDirection direction) {
            rests << direction;
        };
        source.onScrollViewDidEndScrollingAnimation = [this](NavigationDirection direction) {
            rests << direction;
        };
    }
    QSizeF contentSize() const { return QSizeF(100.0 * qMax(1, count()), 640); }
    int count() const { return int(source.channelsViewControllers.size()); }

    ChannelsCollectionDataSource source;
    QList<qreal> progresses;
    QList<NavigationDirection> directions;
    QList<NavigationDirection> limits;
    QList<NavigationDirection> rests;
};
}  // namespace

class ChannelsPagerTest : public QObject {
    Q_OBJECT

private slots:
    void directionIsTakenAgainstTheLastRest_data() {
        QTest::addColumn<qreal>("rest");
        QTest::addColumn<qreal>("step");
        QTest::addColumn<NavigationDirection>("expected");
        QTest::addColumn<qreal>("progress");
        QTest::newRow("moving on from the first")
            << 0.0 << 30.0 << NavigationDirection::forward << 0.3;
        QTest::newRow("moving back from the second")
            << 100.0 << 60.0 << NavigationDirection::reverse << 0.6;
        QTest::newRow("standing still counts as back")
            << 100.0 << 100.0 << NavigationDirection::reverse << 0.0;
        QTest::newRow("a hair forward") << 100.0 << 100.5 << NavigationDirection::forward << 0.005;
    }
    void directionIsTakenAgainstTheLastRest() {
        QFETCH(qreal, rest);
        QFETCH(qreal, step);
        QFETCH(NavigationDirection, expected);
        QFETCH(qreal, progress);
        Pager pager(3);
        pager.source.didEndDecelerating(rest);
        pager.source.didScroll(QPointF(step, 0), pager.contentSize());
        QCOMPARE(pager.directions, QList<NavigationDirection>{expected});
        QVERIFY2(qAbs(pager.progresses.value(0) - progress) < 1e-9,
                 qPrintable(QString::number(pager.progresses.value(0))));
        // Scroll steps do not move the rest position; only the next rest does, so standing there
        // then counts as going back.
        pager.source.didScroll(QPointF(step + 1, 0), pager.contentSize());
        pager.source.didEndScrollingAnimation(step);
        QCOMPARE(pager.rests.last(), expected);
        pager.source.didScroll(QPointF(step, 0), pager.contentSize());
        QCOMPARE(pager.directions.last(), NavigationDirection::reverse);
    }

    void dragsPastAnEndTrigger_data() {
        QTest::addColumn<int>("channels");
        QTest::addColumn<qreal>("offset");
        QTest::addColumn<QList<NavigationDirection>>("expected");
        const QList<NavigationDirection> none;
        const QList<NavigationDirection> back{NavigationDirection::reverse};
        const QList<NavigationDirection> onwards{NavigationDirection::forward};
        QTest::newRow("first dragged right by 25") << 3 << -25.0 << none;
        QTest::newRow("first dragged right by 25.5") << 3 << -25.5 << back;
        QTest::newRow("last dragged left by 25") << 3 << 225.0 << none;
        QTest::newRow("last dragged left by 25.5") << 3 << 225.5 << onwards;
        QTest::newRow("middle of the pager") << 3 << 150.0 << none;
        QTest::newRow("single channel past its end") << 1 << 26.0 << onwards;
        // Without channels, the whole width counts as one.
        QTest::newRow("no channels, past the width") << 0 << 26.0 << onwards;
        QTest::newRow("no channels, within the width") << 0 << 25.0 << none;
    }
    void dragsPastAnEndTrigger() {
        QFETCH(int, channels);
        QFETCH(qreal, offset);
        QFETCH(QList<NavigationDirection>, expected);
        Pager pager(channels);
        pager.source.didScroll(QPointF(offset, 0), pager.contentSize());
        QCOMPARE(pager.limits, expected);
        // Every step beyond the limit reports again.
        pager.source.didScroll(QPointF(offset, 0), pager.contentSize());
        QCOMPARE(pager.limits.size(), expected.size() * 2);
    }
};

QTEST_GUILESS_MAIN(ChannelsPagerTest)
#include "tst_channelspager.moc"

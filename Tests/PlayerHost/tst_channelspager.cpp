// The pager's drag limits on plain offsets: a quarter of a channel past either end.

#include <QTest>

#include "Views/ChannelsCollectionDataSource.h"

using namespace LumoraSDK;

Q_DECLARE_METATYPE(NavigationDirection)

namespace {
/// A pager over `count` channels of 100 points, recording the drag limits it reports.
struct Pager {
    explicit Pager(int count) : source(QList<ChannelViewController*>(count, nullptr)) {
        source.onDragLimitExceeded = [this](NavigationDirection direction) { limits << direction; };
    }
    QSizeF contentSize() const { return QSizeF(100.0 * qMax(1, count()), 640); }
    int count() const { return int(source.channelsViewControllers.size()); }

    ChannelsCollectionDataSource source;
    QList<NavigationDirection> limits;
};
}  // namespace

class ChannelsPagerTest : public QObject {
    Q_OBJECT

private slots:
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

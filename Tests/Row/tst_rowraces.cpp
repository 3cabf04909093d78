// The row under real timing: a programmatic scroll cut short by another, and rings drawn before
// the row's scale reached its cells. Real rows fed by lumora-devserver, real clicks.

#include <QTest>

#include "RowTestSupport.h"

using namespace LumoraSDK;
using RowTest::Fixture;

class RowRacesTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Fixture> m_env;
    QList<int> m_opened;

private slots:
    void initTestCase() {
        m_env = std::make_unique<Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_env->isReady(), 20000);
        LumoraRowViewCell::channelPresenter = [this](int index, auto, auto) { m_opened << index; };
    }
    void cleanupTestCase() { m_env.reset(); }

    void aScrollCutShortLeavesTheStripTouchable() {
        const QJsonArray channels = m_env->serverChannels();
        auto scene = m_env->loadedScene(channels, {}, QSize(360, 120));
        QVERIFY(scene);
        LumoraRowView& row = *scene->row;
        const QString last = channels.last()["id"].toString();
        const QString first = channels.first()["id"].toString();
        row.openChannel(last, true);
        QVERIFY(m_env->settleUntil(nullptr,
                                   [&] { return !scene->strip().isUserInteractionEnabled(); }));
        // Before the scroll to the last channel ends, the host asks for the first one at once.
        row.openChannel(first, false);
        QVERIFY(m_env->settleUntil(&row, [&] { return !m_opened.isEmpty(); }));
        m_env->settle(&row);
        QCOMPARE(m_opened, QList<int>{0});
        LumoraRowViewCell* cell = scene->visibleCells().at(1);
        QTest::mouseClick(&scene->window, Qt::LeftButton, {},
                          cell->contentCenterInWindow().toPoint());
        QCOMPARE(m_opened, (QList<int>{0, *cell->currentIndex()}));
    }

    void ringsFollowTheRowsScale() {
        auto scene = m_env->loadedScene({}, "cellScale: 0.5", QSize(360, 120));
        QVERIFY(scene);
        for (LumoraRowViewCell* cell : scene->visibleCells()) {
            const qreal border = cell->borderTargetView()->borderWidth() * 0.5;
            QCOMPARE(cell->inactiveGradientBorderLayer()->maskLineWidth(), border * 0.5);
            if (cell->activeGradientBorderLayer()) {
                QCOMPARE(cell->activeGradientBorderLayer()->maskLineWidth(), border);
            }
        }
    }
};

QTEST_MAIN(RowRacesTest)
#include "tst_rowraces.moc"

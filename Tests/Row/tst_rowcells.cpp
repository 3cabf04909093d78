#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QSet>

#include "RowTestSupport.h"
#include "TestSupport.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCellRound.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCellSquare.h"

using namespace LumoraSDK;
using namespace RowTest;
using LumoraTest::saveArtifact;

namespace {

bool near(const QColor& a, const QColor& b, int tolerance = 20) {
    return qAbs(a.red() - b.red()) <= tolerance && qAbs(a.green() - b.green()) <= tolerance &&
           qAbs(a.blue() - b.blue()) <= tolerance;
}

QColor pixelAt(const QImage& image, const QQuickItem* item, const QPointF& at) {
    const QPoint point = item->mapToScene(at).toPoint();
    return image.pixelColor(qBound(0, point.x(), image.width() - 1),
                            qBound(0, point.y(), image.height() - 1));
}

/// Of the four pixels at the top (or bottom) edge of `frame`, down its middle, the one nearest
/// to `expected`: a ring a pixel or two wide is found whatever its antialiasing.
QColor nearestAtEdge(const QImage& image, const QQuickItem* frame, bool top,
                     const QColor& expected) {
    QColor best;
    int bestDistance = INT_MAX;
    for (int row = 0; row < 4; ++row) {
        const qreal y = top ? row + 0.5 : frame->height() - row - 0.5;
        const QColor color = pixelAt(image, frame, QPointF(frame->width() / 2, y));
        const int distance = qAbs(color.red() - expected.red()) +
                             qAbs(color.green() - expected.green()) +
                             qAbs(color.blue() - expected.blue());
        if (distance < bestDistance) {
            bestDistance = distance;
            best = color;
        }
    }
    return best;
}

/// A round cell made from its interface file, outside any row: never set up, so no index.
LumoraRowViewCellRound* standaloneCell(QQmlEngine& engine, QQuickItem* parent) {
    QQmlComponent component(
        &engine,
        QUrl(QStringLiteral("qrc:/LumoraSDK/LumoraSDK.bundle/LumoraRowViewCellRound.qml")));
    auto* cell = qobject_cast<LumoraRowViewCellRound*>(component.beginCreate(engine.rootContext()));
    if (cell) {
        cell->setParentItem(parent);
        component.completeCreate();
        cell->setSize(QSizeF(78, 120));
    }
    return cell;
}

/// Every cell the strip holds: on the list (shown, cached or pooled) and in its reuse pool.
QList<LumoraRowViewCell*> allCells(CollectionView& strip) {
    QList<LumoraRowViewCell*> cells = strip.findChildren<LumoraRowViewCell*>();
    QList<QQuickItem*> items{strip.listView()};
    while (!items.isEmpty()) {
        QQuickItem* item = items.takeLast();
        auto* cell = qobject_cast<LumoraRowViewCell*>(item);
        if (!cell) {
            items += item->childItems();
        } else if (!cells.contains(cell)) {
            cells.append(cell);
        }
    }
    return cells;
}

}  // namespace

class RowCellsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Fixture> m_env;
    QList<int> m_presented;

private slots:
    void initTestCase() {
        m_env = std::make_unique<Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_env->isReady(), 20000);
        LumoraRowViewCell::channelPresenter = [this](int index, LumoraRowView*, auto) {
            m_presented.append(index);
        };
    }
    void init() {
        DatabaseService::sharedInstance().setAllChannelsData({});
        m_env->server().clearFaults();
        m_presented.clear();
    }
    void cleanupTestCase() { m_env.reset(); }

    void ringsFollowReadStateAndBranding_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("secondary");
        QTest::addColumn<QString>("ring");
        QTest::newRow("round, read: grey") << "round"
                                           << "read"
                                           << "#e21219"
                                           << "grey";
        QTest::newRow("round, unread: branding gradient") << "round"
                                                          << "unread"
                                                          << "#e21219"
                                                          << "branding";
        QTest::newRow("round, no status counts as unread") << "round"
                                                           << ""
                                                           << "#e21219"
                                                           << "branding";
        QTest::newRow("round, unread without a secondary colour: no ring") << "round"
                                                                           << "unread"
                                                                           << ""
                                                                           << "none";
        QTest::newRow("round, read without a secondary colour: grey") << "round"
                                                                      << "read"
                                                                      << ""
                                                                      << "grey";
        QTest::newRow("square icon, read: grey") << "square"
                                                 << "read"
                                                 << "#e21219"
                                                 << "grey";
        QTest::newRow("square icon, unread: branding gradient") << "square"
                                                                << "unread"
                                                                << "#e21219"
                                                                << "branding";
    }

    void ringsFollowReadStateAndBranding() {
        QFETCH(QString, cellType);
        QFETCH(QString, status);
        QFETCH(QString, secondary);
        QFETCH(QString, ring);
        const QColor primary(QStringLiteral("#1e90ff"));
        Branding branding{primary.name(), std::nullopt};
        if (!secondary.isEmpty()) {
            branding.secondaryColor = secondary;
        }
        auto scene = m_env->loadedScene(
            {channelJson("one", "One", status, m_env->mediaUrl(QStringLiteral("avatars/hi.png")))},
            QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 160), Qt::white,
            [&](LumoraRowView* row) { row->setBranding(branding); });
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(0);
        QVERIFY(cell);
        FrameButtonView* frame = cell->borderTargetView();
        const QImage image = scene->window.grabWindow();
        saveArtifact(image, QStringLiteral("row-ring-") + QTest::currentDataTag());
        const QColor grey = LumoraRowViewCell::colorInactive;
        for (const bool top : {true, false}) {
            const QColor nearPrimary = nearestAtEdge(image, frame, top, primary);
            const QColor nearSecondary = nearestAtEdge(image, frame, top, QColor(secondary));
            const QColor nearGrey = nearestAtEdge(image, frame, top, grey);
            const QString seen = QStringLiteral("%1 edge: %2 %3 %4")
                                     .arg(top ? "top" : "bottom", nearPrimary.name(),
                                          nearSecondary.name(), nearGrey.name());
            if (ring == QLatin1String("branding")) {
                QVERIFY2(near(top ? nearPrimary : nearSecondary, top ? primary : QColor(secondary)),
                         qPrintable(seen));
            } else {
                QVERIFY2(!near(nearPrimary, primary, 60), qPrintable(seen));
            }
            // Around a round picture, on white, a grey ring is a neutral pixel at least as dark
            // as a half-covered one. (The square's icon sits on a grey placeholder card.)
            if (cellType == QLatin1String("round")) {
                const bool greyRing = qAbs(nearGrey.red() - nearGrey.blue()) < 4 &&
                                      nearGrey.red() <= (grey.red() + 255) / 2 + 6;
                QVERIFY2(greyRing == (ring == QLatin1String("grey")), qPrintable(seen));
            }
        }
        QCOMPARE(cell->activeGradientBorderLayer() != nullptr, ring == QLatin1String("branding"));
        QCOMPARE(cell->inactiveGradientBorderLayer()->isVisible(), ring == QLatin1String("grey"));
    }

    void tapPopsAndPresentsTheChannel_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("target");
        QTest::addColumn<qreal>("popScale");
        QTest::newRow("round picture") << "round"
                                       << "imageButton" << 1.1;
        QTest::newRow("round title") << "round"
                                     << "label" << 1.1;
        QTest::newRow("square card") << "square"
                                     << "imageButton" << 1.05;
        QTest::newRow("square title, over the card") << "square"
                                                     << "label" << 1.05;
    }

    void tapPopsAndPresentsTheChannel() {
        QFETCH(QString, cellType);
        QFETCH(QString, target);
        QFETCH(qreal, popScale);
        auto scene =
            m_env->loadedScene(m_env->numberedChannels(6),
                               QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 200));
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(2);
        QVERIFY(cell);
        auto* item = cell->findChild<QQuickItem*>(target);
        const QPointF inside(item->width() / 2, qMin(item->height() / 2, 6.0));
        QTest::mouseClick(&scene->window, Qt::LeftButton, {}, item->mapToScene(inside).toPoint());
        QCOMPARE(m_presented, QList<int>{2});
        QVERIFY(scene->row->cellCenters().at(2).has_value());
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration);
        QVERIFY(qAbs(cell->contentView()->scale() - popScale) < 0.005);
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration * 2);
        QCOMPARE(cell->contentView()->scale(), 1.0);
    }

    void tapOnACellWithoutIndexOnlyPops() {
        QQuickWindow window;
        window.resize(200, 200);
        QQmlEngine engine;
        std::unique_ptr<LumoraRowViewCellRound> cell(standaloneCell(engine, window.contentItem()));
        QVERIFY(cell);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        LumoraTest::LogCapture log;
        QTest::mouseClick(&window, Qt::LeftButton, {},
                          cell->imageButton()->mapToScene(QPointF(30, 30)).toPoint());
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration);
        QVERIFY(cell->contentView()->scale() > 1.05);
        m_env->clock.advance(LumoraRowViewCell::kPopHalfDuration * 2);
        QCOMPARE(cell->contentView()->scale(), 1.0);
        QVERIFY(m_presented.isEmpty());
        QVERIFY(log.contains(
            QStringLiteral("LumoraSDK.LumoraRowViewCellRound - openChannelsHost invalid index ")));
    }

    void badPicturesKeepThePlaceholderLook_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("shown");
        QTest::newRow("picture that loads") << "media/avatars/welcome.png" << true;
        QTest::newRow("missing file (404)") << "media/avatars/nobody.png" << false;
        QTest::newRow("an HTML page") << "pages/welcome.html" << false;
        QTest::newRow("invalid address") << "http://[::1" << false;
        QTest::newRow("no address") << "" << false;
    }

    void badPicturesKeepThePlaceholderLook() {
        QFETCH(QString, url);
        QFETCH(bool, shown);
        const QString address = url.isEmpty() || url.startsWith(QLatin1String("http"))
                                    ? url
                                    : m_env->server().baseUrl() + QLatin1Char('/') + url;
        auto scene = m_env->loadedScene({channelJson("one", "One", "unread", address)}, QString(),
                                        QSize(390, 120));
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(0);
        QVERIFY(cell);
        FrameButtonView* picture = cell->imageButton();
        QCOMPARE(picture->hasImage(), shown);
        const QColor centre = pixelAt(scene->window.grabWindow(), picture,
                                      QPointF(picture->width() / 2, picture->height() / 2));
        // The placeholder's soft grey, midway down its gradient.
        QCOMPARE(near(centre, QColor(0xd8, 0xd8, 0xd8), 12), !shown);
        QCOMPARE(scene->visibleTitles(), QStringList{"One"});
    }

    void titlesLayOutWithinTheCell_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("secondLineAdded");
        const QString words = QStringLiteral("stories ").repeated(62).left(500);
        QTest::newRow("round, one short word") << "round"
                                               << "Hi" << true;
        // Broken inside the word, by the label and by the count alike: two lines, nothing added.
        QTest::newRow("round, 500 characters without a space")
            << "round" << QString(500, QLatin1Char('w')) << false;
        QTest::newRow("round, 500 characters in words") << "round" << words << false;
        QTest::newRow("round, right to left")
            << "round" << QStringLiteral("חדשות הערב והבוקר של היום") << false;
        QTest::newRow("round, emoji") << "round" << QStringLiteral("🎉🔥") << true;
        QTest::newRow("square, 500 characters in words") << "square" << words << false;
        QTest::newRow("square, right to left")
            << "square" << QStringLiteral("قناة الأخبار العاجلة اليوم") << false;
    }

    void titlesLayOutWithinTheCell() {
        QFETCH(QString, cellType);
        QFETCH(QString, title);
        QFETCH(bool, secondLineAdded);
        auto scene =
            m_env->loadedScene({channelJson("t", title, "unread",
                                            m_env->mediaUrl(QStringLiteral("avatars/tips.png")))},
                               QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 160));
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(0);
        QVERIFY(cell);
        QQuickItem* label = cell->label();
        const QString text = label->property("text").toString();
        QCOMPARE(text.endsWith(QLatin1Char('\n')), secondLineAdded);
        QCOMPARE(text.trimmed(), title.trimmed());
        QVERIFY(label->property("lineCount").toInt() <=
                (cellType == QLatin1String("round") ? 2 : 3));
        QVERIFY(label->property("paintedWidth").toReal() <= label->width() + 1);
        const QRectF shown = label->mapRectToItem(
            cell, QRectF(0, 0, label->width(), label->property("paintedHeight").toReal()));
        QVERIFY(shown.top() >= 0 && shown.bottom() <= cell->height() + 1);
        saveArtifact(scene->window.grabWindow(),
                     QStringLiteral("row-title-") + QTest::currentDataTag());
    }

    void thousandChannelsScrollOnRecycledCells() {
        auto scene = m_env->loadedScene(m_env->numberedChannels(1000), QString(), QSize(390, 120));
        QVERIFY(scene);
        LumoraRowCollectionView& strip = scene->strip();
        QCOMPARE(strip.numberOfItems(0), 1000);
        QSet<QObject*> cells;
        int destroyed = 0;
        QObject tracking;
        const auto collect = [&] {
            for (LumoraRowViewCell* cell : allCells(strip)) {
                if (!cells.contains(cell)) {
                    cells.insert(cell);
                    connect(cell, &QObject::destroyed, &tracking, [&, cell] {
                        cells.remove(cell);
                        ++destroyed;
                    });
                }
            }
        };
        const qreal end = strip.contentSize().width() - strip.width();
        for (qreal offset = 0; offset < end; offset += strip.width() / 2) {
            strip.setContentOffset(QPointF(offset, 0));
            strip.layoutIfNeeded();
            collect();
        }
        strip.setContentOffset(QPointF(end, 0));
        m_env->settle(scene->row.get());
        collect();
        QCOMPARE(scene->visibleTitles().last(), QStringLiteral("Channel 999"));
        QCOMPARE(scene->visibleCells().last()->currentIndex(), std::optional<int>(999));
        // The visible cells, the list's cache on both sides, and the few in the reuse pools.
        const int created = int(cells.size()) + destroyed;
        const int visible = int(scene->visibleCells().size());
        QVERIFY2(created <= 3 * visible + 6,
                 qPrintable(QStringLiteral("%1 cells for %2 visible").arg(created).arg(visible)));
    }

    void screenshots_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("style");
        QTest::addColumn<int>("height");
        QTest::addColumn<bool>("loads");
        QTest::newRow("round light") << "round"
                                     << "light" << 120 << true;
        QTest::newRow("round dark") << "round"
                                    << "dark" << 120 << true;
        QTest::newRow("square light") << "square"
                                      << "light" << 230 << true;
        QTest::newRow("square dark") << "square"
                                     << "dark" << 230 << true;
        QTest::newRow("round light placeholders") << "round"
                                                  << "light" << 120 << false;
        QTest::newRow("square dark placeholders") << "square"
                                                  << "dark" << 230 << false;
    }

    void screenshots() {
        QFETCH(QString, cellType);
        QFETCH(QString, style);
        QFETCH(int, height);
        QFETCH(bool, loads);
        const bool dark = style == QLatin1String("dark");
        auto scene = m_env->loadedScene(
            QJsonArray(),
            QStringLiteral("cellType: '%1'; uiStyle: '%2'; leftInset: 16; rightInset: 16; "
                           "cellSpacing: 10")
                .arg(cellType, style),
            QSize(1000, height), dark ? QColor("#0b0b0f") : QColor("#ffffff"), [&](LumoraRowView*) {
                if (!loads) {
                    m_env->failChannelsOnce(500);
                }
            });
        QVERIFY(scene);
        const QList<LumoraRowViewCell*> cells = scene->visibleCells();
        QVERIFY(loads ? cells.size() >= 5 : cells.size() == 5);
        for (LumoraRowViewCell* cell : cells) {
            QCOMPARE(cell->isPlaceholder(), !loads);
            QCOMPARE(cell->labelPlaceholder()->isVisible(), !loads);
        }
        if (cellType == QLatin1String("round")) {
            QCOMPARE(cells.first()->label()->property("color").value<QColor>(),
                     dark ? QColor("#ffffff") : QColor("#1a1a1a"));
        }
        saveArtifact(scene->window.grabWindow(), QStringLiteral("row-") + QTest::currentDataTag());
    }
};

QTEST_MAIN(RowCellsTest)
#include "tst_rowcells.moc"

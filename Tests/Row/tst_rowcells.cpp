#include <QFont>
#include <QSet>

#include "RowTestSupport.h"
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
    QQmlComponent component(&engine,
                            QUrl("qrc:/LumoraSDK/LumoraSDK.bundle/LumoraRowViewCellRound.qml"));
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

class RowCellsTest : public RowTestCase {
    Q_OBJECT

private slots:
    // One channel's cell on white: its ring follows the read state and the branding (none
    // without a secondary colour), and a picture that cannot be shown leaves the placeholder's
    // grey in its place, ring or not.
    void cellLook_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("secondary");
        QTest::addColumn<QString>("pictureUrl");  // on the server unless absolute or empty
        QTest::addColumn<QString>("ring");
        QTest::addColumn<bool>("shown");
        const auto row = [](const char* name, const char* cellType, const char* status,
                            const char* secondary, const char* pictureUrl, const char* ring,
                            bool shown) {
            QTest::newRow(name) << QString(cellType) << QString(status) << QString(secondary)
                                << QString(pictureUrl) << QString(ring) << shown;
        };
        const char* hi = "media/avatars/hi.png";
        row("round, read: grey", "round", "read", "#e21219", hi, "grey", true);
        row("round, unread: branding gradient", "round", "unread", "#e21219", hi, "branding", true);
        row("round, no status counts as unread", "round", "", "#e21219", hi, "branding", true);
        row("round, unread without a secondary colour: no ring", "round", "unread", "", hi, "none",
            true);
        row("round, read without a secondary colour: grey", "round", "read", "", hi, "grey", true);
        row("square icon, read: grey", "square", "read", "#e21219", hi, "grey", true);
        row("square icon, unread: branding gradient", "square", "unread", "#e21219", hi, "branding",
            true);
        row("missing picture (404)", "round", "unread", "#e21219", "media/avatars/nobody.png",
            "branding", false);
        row("an HTML page for a picture", "round", "read", "#e21219", "pages/welcome.html", "grey",
            false);
        row("invalid picture address", "round", "unread", "", "http://[::1", "none", false);
        row("no picture address", "round", "unread", "#e21219", "", "branding", false);
    }

    void cellLook() {
        QFETCH(QString, cellType);
        QFETCH(QString, status);
        QFETCH(QString, secondary);
        QFETCH(QString, pictureUrl);
        QFETCH(QString, ring);
        QFETCH(bool, shown);
        const QColor primary("#1e90ff");
        Branding branding{primary.name(), std::nullopt};
        if (!secondary.isEmpty()) {
            branding.secondaryColor = secondary;
        }
        const QString address = pictureUrl.isEmpty() || pictureUrl.startsWith(QLatin1String("http"))
                                    ? pictureUrl
                                    : m_env->server().baseUrl() + QLatin1Char('/') + pictureUrl;
        auto scene =
            m_env->loadedScene({channelJson("one", "One", status, address)},
                               QStringLiteral("cellType: '%1'").arg(cellType), QSize(390, 160),
                               Qt::white, [&](LumoraRowView* row) { row->setBranding(branding); });
        QVERIFY(scene);
        LumoraRowViewCell* cell = scene->visibleCells().value(0);
        QVERIFY(cell);
        QCOMPARE(scene->visibleTitles(), QStringList{"One"});
        FrameButtonView* frame = cell->borderTargetView();
        const QImage image = scene->window.grabWindow();
        saveArtifact(image, QStringLiteral("row-cell-") + QTest::currentDataTag());
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
        // The channel's picture: the round cell's own, the square's icon over its card. Without
        // one, the placeholder's soft grey shows midway down its gradient.
        auto* square = qobject_cast<LumoraRowViewCellSquare*>(cell);
        FrameButtonView* picture = square ? square->iconImageButton() : cell->imageButton();
        QCOMPARE(picture->hasImage(), shown);
        const QColor centre =
            pixelAt(image, picture, QPointF(picture->width() / 2, picture->height() / 2));
        QCOMPARE(near(centre, QColor(0xd8, 0xd8, 0xd8), 12), !shown);
    }

    void tapPopsAndPresentsTheChannel_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("target");
        QTest::addColumn<qreal>("popScale");
        for (const auto& [name, cellType, target, popScale] :
             {std::tuple("round picture", "round", "imageButton", 1.1),
              {"round title", "round", "label", 1.1},
              {"square card", "square", "imageButton", 1.05},
              {"square title, over the card", "square", "label", 1.05}}) {
            QTest::newRow(name) << QString(cellType) << QString(target) << popScale;
        }
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
        QVERIFY(log.contains("LumoraSDK.LumoraRowViewCellRound - openChannelsHost invalid index "));
    }

    void titlesLayOutWithinTheCell_data() {
        QTest::addColumn<QString>("cellType");
        QTest::addColumn<QString>("title");
        QTest::addColumn<bool>("secondLineAdded");
        const QString words = QStringLiteral("stories ").repeated(62).left(500);
        const auto row = [](const char* name, const char* cellType, const QString& title,
                            bool secondLineAdded) {
            QTest::newRow(name) << QString(cellType) << title << secondLineAdded;
        };
        row("round, one short word", "round", "Hi", true);
        // Broken inside the word, by the label and by the count alike: two lines, nothing added.
        row("round, 500 characters without a space", "round", QString(500, QLatin1Char('w')),
            false);
        row("round, 500 characters in words", "round", words, false);
        row("round, right to left", "round", "חדשות הערב והבוקר של היום", false);
        row("round, emoji", "round", "🎉🔥", true);
        row("square, 500 characters in words", "square", words, false);
        row("square, right to left", "square", "قناة الأخبار العاجلة اليوم", false);
    }

    void titlesLayOutWithinTheCell() {
        QFETCH(QString, cellType);
        QFETCH(QString, title);
        QFETCH(bool, secondLineAdded);
        auto scene = m_env->loadedScene(
            {channelJson("t", title, "unread", m_env->mediaUrl("avatars/tips.png"))},
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
        QCOMPARE(scene->visibleTitles().last(), "Channel 999");
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
        for (const auto& [name, cellType, style, height, loads] :
             {std::tuple("round light", "round", "light", 120, true),
              {"round dark", "round", "dark", 120, true},
              {"square light", "square", "light", 230, true},
              {"square dark", "square", "dark", 230, true},
              {"round light placeholders", "round", "light", 120, false},
              {"square dark placeholders", "square", "dark", 230, false}}) {
            QTest::newRow(name) << QString(cellType) << QString(style) << height << loads;
        }
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

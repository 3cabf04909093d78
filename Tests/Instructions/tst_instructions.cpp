// The first-use instructions overlay in real offscreen scenes: its light and dark looks, its two
// buttons, and the player that shows it once per installation while holding its first page.
// Time runs on ManualScheduler; only the player's network I/O is waited for.

#include "../PlayerHost/PlayerTestSupport.h"
#include "Extensions/ColorExtensions.h"
#include "ViewControllers/InstructionsViewController.h"
#include "Views/ChannelMediaCollectionViewCell.h"

using namespace LumoraSDK;
using OptionalStyle = std::optional<LumoraRowViewStyle>;
Q_DECLARE_METATYPE(OptionalStyle)

namespace {
QString colorOf(const QQuickItem* item) {
    return toHexString(item->property("color").value<QColor>());
}
QPoint centerOf(const QQuickItem* item) {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}
QList<PresentableViewController*> presentedOn(QQuickWindow& window) {
    return PresentationStack::forWindow(&window)->presentedViewControllers();
}
QList<QQuickItem*> titlesOf(InstructionsViewController& o) {
    return {o.title1(), o.title2(), o.title3(), o.title4()};
}
QList<QQuickItem*> descriptionsOf(InstructionsViewController& o) {
    return {o.description1(), o.description2(), o.description3(), o.description4()};
}
QList<ImageView*> imagesOf(InstructionsViewController& o) {
    return {o.icon1(), o.icon2(), o.icon3(), o.icon4(), o.closeButton()};
}
// Looks that neither style produces, put on the overlay before it appears.
constexpr int kMarkBlur = 1;
const char* const kMarkImage = "gradient-bottom";
}  // namespace

class InstructionsTest : public QObject {
    Q_OBJECT

    // The content server and the SDK pointed at it; its clock drives every test.
    std::unique_ptr<RowTest::Fixture> m_env;
    QQmlEngine m_engine;
    std::unique_ptr<QQuickWindow> m_window;

    /// The overlay presented animated over the window's content, once its fade-in is over.
    InstructionsViewController* present(
        OptionalStyle style,
        const std::function<void(InstructionsViewController&)>& beforeAppearing = {}) {
        auto* overlay =
            PresentableViewController::instantiateFromStoryboard<InstructionsViewController>(
                m_engine);
        overlay->uiStyle = style;
        overlay->loadViewIfNeeded();
        if (beforeAppearing) {
            beforeAppearing(*overlay);
        }
        PresentableViewController::getGlobalContext(m_window.get())->present(overlay, true);
        m_env->clock.advance(PresentationStack::kPresentationDuration);
        return overlay;
    }

private slots:
    void initTestCase() {
        m_env = std::make_unique<RowTest::Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_env->isReady(), 20000);
    }
    void init() {
        m_window = std::make_unique<QQuickWindow>();
        m_window->resize(375, 812);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void cleanup() { m_window.reset(); }
    void cleanupTestCase() { m_env.reset(); }

    // Light and dark recolour the overlay and pick the black or the white glyphs; with the
    // automatic style while the platform reports no scheme, the overlay keeps whatever look it
    // had.
    void looks_data() {
        QTest::addColumn<OptionalStyle>("style");
        QTest::addColumn<int>("blur");
        // Heading, titles, descriptions, button, button title.
        QTest::addColumn<QStringList>("colors");
        QTest::addColumn<QString>("glyphs");
        const QStringList marks{"#ff0000", "#00ff00", "#0000ff", "#ff00ff", "#00ffff"};
        QTest::newRow("light: dark text on extra light")
            << OptionalStyle(LumoraRowViewStyle::Light) << 0
            << QStringList{"#494949", "#111111", "#6d6d6d", "#111111", "#ffffff"} << "black";
        QTest::newRow("dark: light text on dark")
            << OptionalStyle(LumoraRowViewStyle::Dark) << 2
            << QStringList{"#d2d2d2", "#ffffff", "#afafaf", "#ffffff", "#111111"} << "white";
        QTest::newRow("auto, platform scheme unspecified")
            << OptionalStyle(LumoraRowViewStyle::Auto) << kMarkBlur << marks << "";
    }
    void looks() {
        QFETCH(OptionalStyle, style);
        QFETCH(int, blur);
        QFETCH(QStringList, colors);
        QFETCH(QString, glyphs);
        InstructionsViewController* overlay = present(style, [&](InstructionsViewController& o) {
            o.backgroundBlurView()->setProperty("effectStyle", kMarkBlur);
            o.mainTitle()->setProperty("color", QColor(Qt::red));
            for (int i = 0; i < 4; ++i) {
                titlesOf(o)[i]->setProperty("color", QColor(Qt::green));
                descriptionsOf(o)[i]->setProperty("color", QColor(Qt::blue));
            }
            o.startButton()->setBackgroundColor(Qt::magenta);
            o.startButtonTitle()->setProperty("color", QColor(Qt::cyan));
            for (ImageView* image : imagesOf(o)) {
                image->setImageName(kMarkImage);
            }
        });
        QCOMPARE(overlay->backgroundBlurView()->property("effectStyle").toInt(), blur);
        QCOMPARE(colorOf(overlay->mainTitle()), colors[0]);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(colorOf(titlesOf(*overlay)[i]), colors[1]);
            QCOMPARE(colorOf(descriptionsOf(*overlay)[i]), colors[2]);
        }
        QCOMPARE(toHexString(overlay->startButton()->backgroundColor()), colors[3]);
        QCOMPARE(colorOf(overlay->startButtonTitle()), colors[4]);
        const QStringList prefixes{"icon-instruction-forward-", "icon-instruction-pause-",
                                   "icon-instruction-back-", "icon-instruction-swipe-",
                                   "icon-close-"};
        for (int i = 0; i < 5; ++i) {
            const QString name = glyphs.isEmpty() ? QString(kMarkImage) : prefixes[i] + glyphs;
            QCOMPARE(imagesOf(*overlay)[i]->imageName(), name);
            QVERIFY2(imagesOf(*overlay)[i]->hasImage(), qPrintable(name + " is not in the bundle"));
        }
        if (!glyphs.isEmpty()) {
            // The glyph is drawn in the titles' colour: a pause bar's middle.
            QCOMPARE(toHexString(overlay->icon2()->image().pixelColor(38, 48)), colors[1]);
        }
    }

    // Both buttons close the overlay the same way: it fades out, then onDismissed runs once,
    // however often the button is pressed. A caller's completion runs before onDismissed.
    void buttonsDismissOnce_data() {
        QTest::addColumn<QString>("how");
        QTest::newRow("close button") << "closeButton";
        QTest::newRow("escape key") << "escape";
        QTest::newRow("dismiss with a completion") << "completion";
    }
    void buttonsDismissOnce() {
        QFETCH(QString, how);
        InstructionsViewController* overlay = present(LumoraRowViewStyle::Light);
        QPointer<QQuickItem> view = overlay->view();
        QStringList calls;
        overlay->onDismissed = [&] { calls << "onDismissed"; };
        if (how == "completion") {
            overlay->dismiss(true, [&] { calls << "completion"; });
        } else if (how == "escape") {
            m_env->settle();  // it takes the keyboard once it is on the window
            QTest::keyClick(m_window.get(), Qt::Key_Escape);
            QTest::keyClick(m_window.get(), Qt::Key_Escape);
        } else {
            const QPoint target = centerOf(overlay->closeButton());
            QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, target);
            QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, target);
        }
        m_env->clock.advance(PresentationStack::kPresentationDuration / 2);
        QVERIFY(calls.isEmpty());
        m_env->clock.advance(PresentationStack::kPresentationDuration);
        QCOMPARE(calls, (how == "completion" ? QStringList{"completion", "onDismissed"}
                                             : QStringList{"onDismissed"}));
        QVERIFY(presentedOn(*m_window).isEmpty());
        QVERIFY(!view || !view->window());
    }

    // The player shows the overlay, in its row's style, the first time it opens on a device
    // and holds the first page until it is closed; the next time it plays at once.
    void shownOncePerInstallation_data() {
        QTest::addColumn<QString>("style");
        QTest::newRow("light row") << "light";
        QTest::newRow("dark row") << "dark";
    }
    void shownOncePerInstallation() {
        QFETCH(QString, style);
        PlayerTest::HostHarness h(*m_env);
        h.reset();
        UserDefaults& defaults = DatabaseService::sharedInstance().userDefaults();
        defaults.setValue(DatabaseService::Key::hasShownInstructions, false);
        InstructionsViewController::installAsInstructionsPresenter();
        const QJsonArray channels{
            PlayerTest::imageChannelJson(*m_env, "intro", "unread", 2, 1, "welcome/page-1.jpg")};
        const QString properties = "uiStyle: \"" + style + "\"";
        QVERIFY(h.openFromRow(channels, 0, {}, properties));
        h.advance(0.3);
        QQuickWindow& window = h.scene()->window;
        ChannelsHostViewController* host = h.host();
        QCOMPARE(defaults.boolValue(DatabaseService::Key::hasShownInstructions), true);
        QCOMPARE(presentedOn(window).size(), 2);
        auto* overlay = qobject_cast<InstructionsViewController*>(presentedOn(window).at(1));
        QVERIFY(overlay);
        QVERIFY(host->isPresentingInstructions);
        QCOMPARE(overlay->backgroundBlurView()->property("effectStyle").toInt(),
                 style == "dark" ? 2 : 0);

        // The first page's picture arrives, yet the page stays put under the overlay for longer
        // than it lasts.
        QVERIFY(h.waitFor([&] {
            auto* cell = h.player() ? h.player()->getVisibleMediaCell(0) : nullptr;
            return cell && cell->mediaReady();
        }));
        QTest::keyClick(&window, Qt::Key_Right);  // the overlay keeps the player's keys
        h.advance(1.0);
        QCOMPARE(h.player()->currentIndex(), 0);
        QVERIFY(!h.pageTimerRuns());

        QTest::mouseClick(&window, Qt::LeftButton, {}, centerOf(overlay->startButton()));
        h.advance(PresentationStack::kPresentationDuration + 0.1);
        QCOMPARE(presentedOn(window).size(), 1);
        QVERIFY(!host->isPresentingInstructions);
        QVERIFY(host->view()->hasActiveFocus());  // the player's keys work again
        // Closing it plays the held page.
        QVERIFY(h.waitForPageTimer(0, 0));
        h.closeHost();

        QVERIFY(h.openFromRow(channels, 0, {}, properties));
        h.advance(0.3);
        QCOMPARE(presentedOn(h.scene()->window).size(), 1);
        QVERIFY(h.waitFor([&] { return h.pageTimerRuns(); }));
        h.tearDown();
    }
};

QTEST_MAIN(InstructionsTest)
#include "tst_instructions.moc"

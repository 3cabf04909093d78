// The row's cells, the player's page and controls and the first-use instructions as assistive
// technology reads them (QAccessible on the offscreen scene), and where Tab takes the keyboard.
#include <QAccessible>
#include <QQuickItem>
#include <QTest>

#include "../PlayerHost/PlayerTestSupport.h"
#include "ViewControllers/InstructionsViewController.h"

using namespace LumoraSDK;
using namespace PlayerTest;

namespace {
/// "<role> <name> / <description>", as a screen reader gets it.
QString spoken(QObject* object) {
    QAccessibleInterface* accessible =
        object ? QAccessible::queryAccessibleInterface(object) : nullptr;
    if (!accessible) {
        return QStringLiteral("(not accessible)");
    }
    return QStringLiteral("%1 %2 / %3")
        .arg(QString::fromLatin1(
                 QMetaEnum::fromType<QAccessible::Role>().valueToKey(accessible->role())),
             accessible->text(QAccessible::Name), accessible->text(QAccessible::Description));
}
}  // namespace

class AccessibilityTest : public HostTestCase {
    Q_OBJECT

private slots:
    // Each cell is a button named after its channel and telling its read state; Tab goes from
    // cell to cell in the row's order, Shift+Tab back, and Return opens the focused one.
    void rowCells() {
        const QJsonArray channels = m_env->numberedChannels(4);
        auto scene = m_env->loadedScene(channels, {}, QSize(400, 120));
        QVERIFY(scene);
        QStringList cells;
        for (LumoraRowViewCell* cell : scene->visibleCells()) {
            cells << spoken(cell);
        }
        const QStringList expected{"Button Channel 0 / Unread", "Button Channel 1 / Unread",
                                   "Button Channel 2 / Read", "Button Channel 3 / Unread"};
        QCOMPARE(cells, expected);

        QStringList tabbed;
        for (int i = 0; i < channels.size(); ++i) {
            QTest::keyClick(&scene->window, Qt::Key_Tab);
            m_env->settle(scene->row.get(), 0.1);
            tabbed << spoken(scene->window.activeFocusItem());
        }
        QCOMPARE(tabbed, expected);
        for (const int back : {2, 1}) {
            QTest::keyClick(&scene->window, Qt::Key_Tab, Qt::ShiftModifier);
            m_env->settle(scene->row.get(), 0.1);
            QCOMPARE(spoken(scene->window.activeFocusItem()), expected.at(back));
        }

        QTest::keyClick(&scene->window, Qt::Key_Return);
        m_env->settle(scene->row.get(), 0.1);
        const auto presented =
            PresentationStack::forWindow(&scene->window)->presentedViewControllers();
        QCOMPARE(presented.size(), 1);
        auto* host = qobject_cast<ChannelsHostViewController*>(presented.first());
        QVERIFY(host && host->currentChannelViewController());
        QCOMPARE(host->currentChannelViewController()->channel->title, "Channel 1");
        host->dismissToCellCenter();
        m_env->settle(scene->row.get(), 1.0);
    }

    // The first-use overlay is a dialog that keeps Tab between its two buttons, starting on
    // "Start watching". Behind it, the page reads as its place in the channel, and the player's
    // controls are buttons assistive technology can press.
    void playerAndInstructions() {
        DatabaseService::sharedInstance().userDefaults().setValue(
            DatabaseService::Key::hasShownInstructions, false);
        InstructionsViewController::installAsInstructionsPresenter();
        QVERIFY(m_h->openFromRow(
            QJsonArray{withPage(
                imageChannelJson(*m_env, QStringLiteral("a11y"), "unread", 3), 1,
                {{"swipeUpUrl", "http://127.0.0.1:9/page"}, {"swipeUpText", "Read the story"}})},
            0));
        QQuickWindow& window = m_h->scene()->window;
        m_h->advance(0.5);
        auto* overlay = qobject_cast<InstructionsViewController*>(
            PresentationStack::forWindow(&window)->presentedViewControllers().value(1));
        QVERIFY(overlay);
        QCOMPARE(spoken(overlay->view()),
                 QStringLiteral("Dialog Welcome to Stories / A few gestures get you around."));
        QCOMPARE(
            spoken(window.activeFocusItem()),
            QStringLiteral("Button Start watching / Closes the instructions and plays the page"));
        QStringList tabbed;
        for (const auto modifier : {Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier}) {
            QTest::keyClick(&window, Qt::Key_Tab, modifier);
            tabbed << spoken(window.activeFocusItem()).section(QLatin1Char('/'), 0, 0).trimmed();
        }
        QCOMPARE(tabbed, (QStringList{"Button Close", "Button Start watching", "Button Close"}));
        QTest::keyClick(&window, Qt::Key_Return);  // on "Close"
        m_h->advance(0.5);
        QCOMPARE(PresentationStack::forWindow(&window)->presentedViewControllers().size(), 1);

        ChannelViewController* player = m_h->player();
        QVERIFY(m_h->waitForPageTimer(0, 0));
        QCOMPARE(spoken(player->view()), QStringLiteral("Pane Page 1 of 3 / Channel a11y"));
        QTest::keyClick(&window, Qt::Key_Right);
        QVERIFY(m_h->waitForPageTimer(0, 1));
        QCOMPARE(spoken(player->view()), QStringLiteral("Pane Page 2 of 3 / Channel a11y"));
        QCOMPARE(spoken(player->learnMoreContainerView()),
                 QStringLiteral("Button Read the story / Opens the page's link"));
        QCOMPARE(spoken(player->view()->findChild<QQuickItem*>(QStringLiteral("shareButton"))),
                 QStringLiteral("Button Share / Shares this page"));

        // Pressed the way assistive technology presses it, the close button closes the player.
        QAccessibleInterface* close = QAccessible::queryAccessibleInterface(
            player->view()->findChild<QQuickItem*>(QStringLiteral("closeButton")));
        QCOMPARE(close->text(QAccessible::Name), QStringLiteral("Close"));
        close->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        m_h->advance(1.0);
        QTRY_VERIFY(!m_h->host());
    }
};

QTEST_MAIN(AccessibilityTest)
#include "tst_accessibility.moc"

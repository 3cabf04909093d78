// The page player on its own in an offscreen window: which page a channel opens at, what it
// remembers in the defaults store, and how viewing a page moves that memory on.

#include "PlayerTestSupport.h"
#include "Views/ChannelMediaCollectionViewCell.h"

using namespace LumoraSDK;
using namespace PlayerTest;

namespace {
const QString kNone = QStringLiteral("none");

/// A page player for `channel` standing in a window, its view loaded and appearing, and
/// appeared unless told otherwise.
struct PlayerScene {
    explicit PlayerScene(const Channel& channel, bool appeared = true) {
        window.resize(360, 640);
        player =
            PresentableViewController::instantiateFromStoryboard<ChannelViewController>(engine);
        player->channel = channel;
        player->view()->setParentItem(window.contentItem());
        player->view()->setSize(QSizeF(360, 640));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        player->viewWillAppear(false);
        if (appeared) {
            player->viewDidAppear(false);
        }
    }
    ~PlayerScene() { delete player; }
    QQmlEngine engine;
    QQuickWindow window;
    ChannelViewController* player = nullptr;
};

Channel makeChannel(const QString& id, int pageCount, std::optional<int> initialPage,
                    const QString& status) {
    Channel channel;
    channel.id = id;
    channel.title = QStringLiteral("Channel ") + id;
    channel.initialPage = initialPage;
    if (status != kNone) {
        channel.status = status == QStringLiteral("read") ? Status::Read : Status::Unread;
    }
    for (int i = 0; i < pageCount; ++i) {
        Page page;
        page.id = QStringLiteral("%1-%2").arg(id).arg(i + 1);
        page.mediaType = PageType::Image;
        page.duration = 5;
        channel.pages.append(page);
    }
    return channel;
}

void store(const QString& id, int storedPage, const QString& storedRead) {
    DatabaseService& database = DatabaseService::sharedInstance();
    QVariantMap pages = database.channelInitialPageMapping();
    QVariantMap read = database.channelIsReadMapping();
    pages.remove(id);
    read.remove(id);
    if (storedPage >= 0) {
        pages.insert(id, storedPage);
    }
    if (storedRead != kNone) {
        read.insert(id, storedRead == QStringLiteral("true"));
    }
    database.setChannelInitialPageMapping(pages);
    database.setChannelIsReadMapping(read);
}

int storedPage(const QString& id) {
    return DatabaseService::sharedInstance().channelInitialPageMapping().value(id, -1).toInt();
}

QString storedRead(const QString& id) {
    const QVariant flag = DatabaseService::sharedInstance().channelIsReadMapping().value(id);
    return flag.isValid() ? (flag.toBool() ? QStringLiteral("true") : QStringLiteral("false"))
                          : kNone;
}
}  // namespace

class ChannelPlayerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        m_fixture = std::make_unique<RowTest::Fixture>();
        QTRY_VERIFY_WITH_TIMEOUT(m_fixture->isReady(), 20000);
    }
    void cleanupTestCase() { m_fixture.reset(); }

    void startPageAndReadState_data() {
        QTest::addColumn<int>("serverPage");  // -1: the channel has no initial page
        QTest::addColumn<int>("stored");      // -1: nothing stored
        QTest::addColumn<QString>("readFlag");
        QTest::addColumn<QString>("status");
        QTest::addColumn<int>("opens");  // and stores as the page to reopen at
        QTest::addColumn<QString>("readAfter");
        const auto row = [](const char* name, int serverPage, int stored, const char* readFlag,
                            const char* status, int opens, const char* readAfter) {
            QTest::newRow(name) << serverPage << stored << QString(readFlag) << QString(status)
                                << opens << QString(readAfter);
        };
        row("server 2, stored 4: device is further", 2, 4, "none", "unread", 4, "none");
        row("server 3, stored 1: server is further", 3, 1, "none", "unread", 3, "none");
        row("nothing stored: server page kept", 2, -1, "none", "unread", 2, "none");
        row("no initial page, nothing stored", -1, -1, "none", "none", 0, "none");
        row("stored read flag resets to the start", 3, 4, "true", "unread", 0, "true");
        row("flag false but server says read", 2, 1, "false", "read", 0, "true");
        row("flag false, unread: no reset", 2, 1, "false", "unread", 2, "false");
        row("no flag, server says read", 2, -1, "none", "read", 2, "true");
    }
    void startPageAndReadState() {
        QFETCH(int, serverPage);
        QFETCH(int, stored);
        QFETCH(QString, readFlag);
        QFETCH(QString, status);
        QFETCH(int, opens);
        QFETCH(QString, readAfter);
        const QString id = QStringLiteral("start-%1").arg(QTest::currentDataTag());
        store(id, stored, readFlag);
        PlayerScene scene(
            makeChannel(id, 6, serverPage < 0 ? std::nullopt : std::optional(serverPage), status));
        m_fixture->settle();

        QCOMPARE(scene.player->currentIndex(), opens);
        QCOMPARE(scene.player->currentPage()->id, QStringLiteral("%1-%2").arg(id).arg(opens + 1));
        QCOMPARE(storedPage(id), opens);
        QCOMPARE(storedRead(id), readAfter);
    }

    void viewingMovesTheReopeningPoint_data() {
        QTest::addColumn<int>("pageCount");
        QTest::addColumn<int>("stored");
        QTest::addColumn<int>("viewing");
        QTest::addColumn<int>("storedAfter");
        QTest::addColumn<QString>("readAfter");
        QTest::newRow("page 0 of three moves on to 1") << 3 << 0 << 0 << 1 << kNone;
        QTest::newRow("page 0 of one: nothing new, but read") << 1 << 0 << 0 << 0 << "true";
        QTest::newRow("further page raises the index") << 5 << 1 << 3 << 3 << kNone;
        QTest::newRow("earlier page keeps the index") << 5 << 3 << 1 << 3 << kNone;
        QTest::newRow("last page marks read") << 3 << 1 << 2 << 2 << "true";
        QTest::newRow("nothing stored: index left alone") << 3 << -1 << 1 << -1 << kNone;
    }
    void viewingMovesTheReopeningPoint() {
        QFETCH(int, pageCount);
        QFETCH(int, stored);
        QFETCH(int, viewing);
        QFETCH(int, storedAfter);
        QFETCH(QString, readAfter);
        const QString id = QStringLiteral("view-%1").arg(QTest::currentDataTag());
        PlayerScene scene(makeChannel(id, pageCount, std::nullopt, "unread"), false);
        m_fixture->settle();
        scene.player->scrollMediaCollection(viewing, false);
        QCOMPARE(scene.player->currentIndex(), viewing);
        store(id, stored, kNone);
        const int eventsBefore = int(m_fixture->server().events().size());

        const QString pageId = scene.player->currentPage()->id.value();
        scene.player->trackViewingHistory(pageId);
        QCOMPARE(storedPage(id), storedAfter);
        QCOMPARE(storedRead(id), readAfter);
        QTRY_COMPARE_WITH_TIMEOUT(m_fixture->server().events().size(), eventsBefore + 1, 20000);
        QCOMPARE(eventLines(*m_fixture).last(), QStringLiteral("history %1 %2").arg(id, pageId));
    }

    void learnMorePillFollowsThePage_data() {
        QTest::addColumn<QString>("url");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("showUi");
        QTest::addColumn<bool>("shown");
        const QString link = "https://127.0.0.1/x";
        QTest::newRow("link, text and flag") << link << "Learn more" << true << true;
        QTest::newRow("flag without a link") << QString() << "Learn more" << true << false;
        QTest::newRow("flag off") << link << "Learn more" << false << false;
    }
    void learnMorePillFollowsThePage() {
        QFETCH(QString, url);
        QFETCH(QString, text);
        QFETCH(bool, showUi);
        QFETCH(bool, shown);
        Channel channel = makeChannel("pill", 1, std::nullopt, "unread");
        channel.pages[0].swipeUpUrl = url;
        channel.pages[0].swipeUpText = text;
        channel.pages[0].showSwipeUpUI = showUi;
        channel.pages[0].url = m_fixture->mediaUrl("avatars/hi.png");
        PlayerScene scene(channel);
        QVERIFY(m_fixture->settleUntil(nullptr, [&] {
            auto* cell = scene.player->getVisibleMediaCell(0);
            return cell && cell->mediaReady();
        }));
        // The page coming on screen decides, after the pill's delay and animation.
        scene.player->mediaCollectionViewDataSource->onScrollViewDidEndScrollingAnimation();
        m_fixture->clock.advance(ChannelViewController::animateStartDelay +
                                 ChannelViewController::baseAnimateDuration + 0.02);
        QCOMPARE(scene.player->isLearnMoreContainerVisible, shown);
        QCOMPARE(scene.player->learnMoreContainerView()->isVisible(), shown);
        if (shown) {
            QCOMPARE(scene.player->learnMoreButtonText()->property("text").toString(),
                     "LEARN MORE");
        }
    }

    void aHideReplacesAWaitingShowOfTheLearnMorePill() {
        PlayerScene scene(makeChannel("pill-timing", 1, std::nullopt, "unread"), false);
        QQuickItem* pill = scene.player->learnMoreContainerView();
        scene.player->toggleLearnMoreContainer(true, true);
        m_fixture->clock.advance(1.0);
        QVERIFY(pill->isVisible());
        scene.player->toggleLearnMoreContainer(false, false);
        scene.player->toggleLearnMoreContainer(true, true);
        scene.player->toggleLearnMoreContainer(false, true);
        m_fixture->clock.advance(1.0);
        QCOMPARE(pill->isVisible(), false);
        QVERIFY(!scene.player->isLearnMoreContainerVisible);
    }

private:
    std::unique_ptr<RowTest::Fixture> m_fixture;
};

QTEST_MAIN(ChannelPlayerTest)
#include "tst_channelplayer.moc"

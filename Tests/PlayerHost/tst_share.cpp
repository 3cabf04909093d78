// Sharing a page from the player, end to end on real offscreen scenes: the share button's press,
// the permission answer, the download from lumora-devserver shown in the loading overlay, the
// share sheet or the settings alert chosen from by real clicks, and playback paused throughout
// and running again afterwards.

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QMimeData>
#include <QQuickItem>
#include <QStandardPaths>
#include <QThreadPool>

#include "Platform/SharePlatform.h"
#include "Platform/VideoNode.h"
#include "PlayerTestSupport.h"
#include "Services/Logger.h"
#include "Services/NetworkingService.h"
#include "TestSupport.h"
#include "ViewControllers/ActivityViewController.h"
#include "ViewControllers/AlertController.h"

using namespace LumoraSDK;
using namespace PlayerTest;

namespace {

// Saved copies go to the viewer's Pictures and Videos folders: here, this test's own.
QTemporaryDir& home() {
    static QTemporaryDir dir;
    return dir;
}
const bool kHomeIsTemporary = [] {
    qputenv("HOME", home().path().toUtf8());
    qputenv("XDG_CONFIG_HOME", home().filePath(QStringLiteral("config")).toUtf8());
    return true;
}();

/// The desktop platform, except that the permission answer is whatever the test sets; it still
/// arrives from another thread.
class TestSharePlatform : public DesktopSharePlatform {
public:
    std::atomic<PhotoAuthorizationStatus> status{PhotoAuthorizationStatus::authorized};
    void requestAuthorization(AuthorizationHandler handler) override {
        QThreadPool::globalInstance()->start(
            [handler, answer = status.load()] { handler(answer); });
    }
};

QQuickItem* findItem(QQuickItem* root, const QString& name) {
    if (!root || root->objectName() == name) {
        return root;
    }
    for (QQuickItem* child : root->childItems()) {
        if (QQuickItem* found = findItem(child, name)) {
            return found;
        }
    }
    return nullptr;
}

/// A channel whose first page is an image or the demo video, at `path`.
QJsonObject channelWithPage(RowTest::Fixture& env, const QString& id,
                            const QString& type = QStringLiteral("image"),
                            const QString& path = QStringLiteral("avatars/hi.png")) {
    QJsonObject page{{"type", type}, {"url", env.mediaUrl(path)}};
    if (type == QLatin1String("video")) {
        page.insert("playcardUrl", env.mediaUrl(QStringLiteral("music/page-1-playcard.png")));
    }
    return withPage(imageChannelJson(env, id, QStringLiteral("unread"), 2, 5), 0, page);
}

}  // namespace

class ShareTest : public HostTestCase {
    Q_OBJECT

public:
    /// Records the addresses QDesktopServices is asked to open, instead of opening them.
    Q_INVOKABLE void openUrl(const QUrl& url) { m_opened.append(url); }

private:
    TestSharePlatform m_platform;
    std::unique_ptr<QTemporaryDir> m_caches;
    QList<QUrl> m_opened;

    QQuickWindow* window() { return &m_h->scene()->window; }
    template <typename T>
    T* presented() {
        const auto screens = PresentationStack::forWindow(window())->presentedViewControllers();
        return screens.isEmpty() ? nullptr : qobject_cast<T*>(screens.last());
    }
    void click(QQuickItem* item) {
        QVERIFY(item);
        // A render lays out a screen presented in this turn, so that the click lands where the
        // item is drawn.
        window()->grabWindow();
        const QPointF center = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        QTest::mouseClick(window(), Qt::LeftButton, {}, center.toPoint());
    }
    /// Opens the player on a channel and waits until the page plays and the two events of
    /// opening it are in, so that later ones are counted from there.
    bool openPlaying(const QJsonObject& channel) {
        m_h->eventsSeen = int(eventLines(*m_env).size());
        if (!m_h->openFromRow(QJsonArray{channel}, 0)) {
            return false;
        }
        m_h->advance(0.25);
        return m_h->waitFor([&] { return isPlaying(); }) &&
               m_h->eventsSince(m_h->eventsSeen, 2).size() == 2;
    }
    bool isPlaying() {
        ChannelViewController* player = m_h->player();
        if (!player || !player->currentPage()) {
            return false;
        }
        if (player->currentPage()->isVideo()) {
            return m_h->host()->videoNode && m_h->host()->videoNode->isPlaying();
        }
        return m_h->pageTimerRuns();
    }

private slots:
    void init() {
        m_h->reset();
        SharePlatform::setCurrent(&m_platform);
        m_platform.status = PhotoAuthorizationStatus::authorized;
        m_caches = std::make_unique<QTemporaryDir>();
        QVERIFY(NetworkingService::sharedInstance().setCachesDirectory(m_caches->path()));
        QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
        QDesktopServices::setUrlHandler(QStringLiteral("lumora-settings"), this, "openUrl");
        m_opened.clear();
        // The sheet's lines are information.
        dynamic_cast<Logger&>(logger()).setLogLevel(LogLevel::info);
    }
    void cleanup() {
        m_h->tearDown();
        QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
        QDesktopServices::unsetUrlHandler(QStringLiteral("lumora-settings"));
    }

    void theSheetGetsThePagesMedia_data() {
        QTest::addColumn<QString>("type");
        QTest::addColumn<int>("activity");   // clicked; -1: Cancel
        QTest::addColumn<QString>("saved");  // the copy's path under home, if any
        QTest::newRow("image, cancelled") << "image" << -1 << "";
        QTest::newRow("image, saved as a second copy") << "image" << 0 << "Pictures/hi (2).png";
        QTest::newRow("image, copied") << "image" << 1 << "";
        QTest::newRow("video, saved") << "video" << 0 << "Videos/page-1.mp4";
        QTest::newRow("video, opened") << "video" << 2 << "";
    }
    void theSheetGetsThePagesMedia() {
        QFETCH(QString, type);
        QFETCH(int, activity);
        QFETCH(QString, saved);
        QDir(home().path()).removeRecursively();
        QDir().mkpath(home().filePath(QStringLiteral("Pictures")));
        QFile earlier(home().filePath(QStringLiteral("Pictures/hi.png")));
        QVERIFY(earlier.open(QIODevice::WriteOnly) && earlier.write("an earlier picture") > 0);
        earlier.close();
        const QString path = type == QLatin1String("image") ? QStringLiteral("avatars/hi.png")
                                                            : QStringLiteral("music/page-1.mp4");
        QVERIFY(openPlaying(channelWithPage(*m_env, QStringLiteral("s1"), type, path)));
        LumoraTest::LogCapture log;

        QVERIFY(m_h->player()->shareButton()->isVisible());
        // Both presses land before the permission answer arrives: the second is ignored.
        click(m_h->host()->shareButtonHitArea());
        click(m_h->host()->shareButtonHitArea());
        QVERIFY(m_h->player()->isSharing);
        QVERIFY(m_h->waitFor([&] { return presented<ActivityViewController>(); }));
        m_h->advance(0.5);
        ActivityViewController* sheet = presented<ActivityViewController>();
        QCOMPARE(m_h->host()->progressLoadingViewText()->property("text").toString(),
                 QStringLiteral("100%"));
        QVERIFY(!m_h->host()->progressLoadingViewContainer()->isVisible());
        const ShareItem item = sheet->activityItems.value(0);
        QCOMPARE(item.isImage(), type == QLatin1String("image"));
        QCOMPARE(item.image.size(), item.isImage() ? QSize(256, 256) : QSize(0, 0));
        QVERIFY(item.fileUrl.isLocalFile());
        QCOMPARE(QFileInfo(item.fileUrl.toLocalFile()).absolutePath(), m_caches->path());
        m_h->advance(1.0);
        QVERIFY(!isPlaying());  // the page stays paused under the sheet
        QCOMPARE(log.count(QStringLiteral("performDownloadToCacheRequest(_:onProgressUpdated:"
                                          "completion:) - url:")),
                 1);
        QCOMPARE(m_h->eventsSince(m_h->eventsSeen, 1),
                 QStringList{QStringLiteral("shareButtonTapped s1 s1-1")});

        click(findItem(sheet->view(), activity < 0 ? QStringLiteral("cancelButton")
                                                   : QStringLiteral("activity%1").arg(activity)));
        m_h->advance(0.5);
        QVERIFY(!presented<ActivityViewController>());
        QVERIFY(!m_h->player()->isSharing);
        QVERIFY(m_h->waitFor([&] { return isPlaying(); }));
        const QString chosen =
            activity < 0 ? QStringLiteral("nil") : m_platform.activities(item).value(activity).type;
        if (!saved.isEmpty()) {
            QCOMPARE(QFileInfo(home().filePath(saved)).size(),
                     QFileInfo(item.fileUrl.toLocalFile()).size());
            QCOMPARE(QFileInfo(home().filePath(QStringLiteral("Pictures/hi.png"))).size(), 18);
        }
        if (chosen == QLatin1String(SharePlatform::kCopyToClipboard)) {
            QCOMPARE(QGuiApplication::clipboard()->image().size(), item.image.size());
        }
        if (chosen == QLatin1String(SharePlatform::kOpenWithDefaultApplication)) {
            QCOMPARE(m_opened, QList<QUrl>{item.fileUrl});
        }
    }

    void aHostsShareHandlerReplacesTheSheet() {
        // The host answers from a thread of its own, twice; the first answer ends the share.
        std::optional<ShareItem> handed;
        m_platform.setShareHandler([&](const ShareItem& item, auto done) {
            handed = item;
            QThreadPool::globalInstance()->start([done] {
                done({QStringLiteral("host.mail"), true, std::nullopt});
                done({QStringLiteral("host.again"), true, std::nullopt});
            });
        });
        QVERIFY(openPlaying(channelWithPage(*m_env, QStringLiteral("s5"))));
        LumoraTest::LogCapture log;
        click(m_h->host()->shareButtonHitArea());
        QVERIFY(m_h->waitFor([&] { return !m_h->player()->isSharing; }));
        QVERIFY(m_h->waitFor([&] { return log.contains(QStringLiteral("answered twice")); }));
        m_h->advance(0.1);
        m_platform.setShareHandler({});
        QVERIFY(!presented<ActivityViewController>());
        QVERIFY(handed && handed->isImage());
        QCOMPARE(log.count(QStringLiteral(" completionWithItemsHandler host.")), 1);
        QVERIFY(log.contains(QStringLiteral(" completionWithItemsHandler host.mail true nil nil")));
        QVERIFY(m_h->waitFor([&] { return isPlaying(); }));
    }

    void aRefusedPermissionOffersSettings_data() {
        QTest::addColumn<int>("choice");
        QTest::addColumn<QList<QUrl>>("opened");
        QTest::newRow("cancel") << 0 << QList<QUrl>();
        QTest::newRow("open settings") << 1 << QList<QUrl>{QUrl("lumora-settings:photos")};
    }
    void aRefusedPermissionOffersSettings() {
        QFETCH(int, choice);
        QFETCH(QList<QUrl>, opened);
        m_platform.status = PhotoAuthorizationStatus::denied;
        m_platform.setSettingsUrl(QUrl(QStringLiteral("lumora-settings:photos")));
        QVERIFY(openPlaying(channelWithPage(*m_env, QStringLiteral("s2"))));
        LumoraTest::LogCapture log;
        click(m_h->host()->shareButtonHitArea());
        QVERIFY(m_h->waitFor([&] { return presented<AlertController>(); }));
        m_h->advance(0.5);
        AlertController* alert = presented<AlertController>();
        QCOMPARE(alert->actions().size(), 2);
        QVERIFY(!isPlaying());

        click(findItem(alert->view(), QStringLiteral("alertAction%1").arg(choice)));
        m_h->advance(0.5);
        QVERIFY(!presented<AlertController>());
        QCOMPARE(m_opened, opened);
        QVERIFY(!m_h->player()->isSharing);
        QVERIFY(m_h->waitFor([&] { return isPlaying(); }));
        QVERIFY(!log.contains(QStringLiteral("performDownloadToCacheRequest(")));
    }

    void aFailedDownloadResumesPlayback_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("drop");
        QTest::newRow("404 page") << "avatars/missing.png" << false;
        QTest::newRow("not an image") << "pages/offers.html" << false;
        QTest::newRow("connection dropped") << "avatars/hi.png" << true;
    }
    void aFailedDownloadResumesPlayback() {
        QFETCH(QString, path);
        QFETCH(bool, drop);
        // The page shows the avatar; the share downloads `path`.
        QVERIFY(openPlaying(channelWithPage(*m_env, QStringLiteral("s3"))));
        m_h->player()->channel->pages[0].url = m_env->mediaUrl(path);
        if (drop) {
            // Every time: the network stack sends a GET again once when its connection closes.
            m_env->server().setFault(QStringLiteral("/media/") + path, {{"drop", true}});
        }
        LumoraTest::LogCapture log;
        click(m_h->host()->shareButtonHitArea());
        QVERIFY(m_h->waitFor([&] { return !m_h->player()->isSharing; }));
        m_h->advance(0.1);
        QVERIFY(log.contains(ChannelViewController::description() +
                             QStringLiteral(" performDownloadToCacheRequest failed - error ")));
        QVERIFY(!presented<ActivityViewController>());
        QVERIFY(!m_h->host()->progressLoadingViewContainer()->isVisible());
        QVERIFY(m_h->waitFor([&] { return isPlaying(); }));
        QCOMPARE(QDir(m_caches->path()).entryList(QDir::Files | QDir::Hidden), QStringList());
    }
};

QTEST_MAIN(ShareTest)
#include "tst_share.moc"

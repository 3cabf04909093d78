// The web page viewer in a real offscreen window: drag to dismiss through real pointer events,
// the progress bar, refused addresses, a real page from lumora-devserver over loopback, and the
// viewer as a sandbox for what a page tries.
#include <QDirIterator>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <memory>

#include "DevServer.h"
#include "Lumora.h"
#include "Platform/Scheduler.h"
#include "TestSupport.h"
#include "ViewControllers/PresentationStack.h"
#include "ViewControllers/WebViewController.h"
#include "Views/FrameButtonView.h"

using namespace LumoraSDK;

namespace {
// Phone-sized; the height makes the drag fractions below whole points.
const QSize kPhone(375, 800);

const QString kWelcomeTitle = QStringLiteral("Welcome to Lumora stories");

/// Where the process, and so the browser, would keep anything; set before the application starts.
QTemporaryDir& home() {
    static QTemporaryDir dir;
    return dir;
}
}  // namespace

class WebViewerTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        Lumora::sharedInstance();  // installs the bundled fonts
        m_server = std::make_unique<LumoraTest::DevServer>();
        LumoraTest::DevServer::Options tls;
        tls.tls = true;
        m_tlsServer = std::make_unique<LumoraTest::DevServer>(tls);
        QVERIFY(m_server->isRunning() && m_tlsServer->isRunning());
    }
    void init() {
        Scheduler::setCurrent(&m_clock);
        m_dismissed = 0;
        m_observingAtDismissal = true;
        m_window = std::make_unique<QQuickWindow>();
        m_window->resize(kPhone);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void cleanup() {
        m_window.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        Scheduler::setCurrent(nullptr);
    }

    // A drag on the bar moves the page with it; released past 20% of the height it dismisses,
    // short of that the bar springs back over 0.5 s.
    void dragOnTheBar_data() {
        QTest::addColumn<qreal>("fraction");  // of the screen's height; negative is upward
        QTest::addColumn<bool>("dismisses");
        QTest::addColumn<bool>("touch");
        QTest::newRow("25% down dismisses") << 0.25 << true << false;
        QTest::newRow("25% down by touch dismisses") << 0.25 << true << true;
        QTest::newRow("15% down springs back") << 0.15 << false << false;
        QTest::newRow("10% up keeps the bar at rest") << -0.10 << false << false;
    }
    void dragOnTheBar() {
        QFETCH(qreal, fraction);
        QFETCH(bool, dismisses);
        QFETCH(bool, touch);
        QPointer<WebViewController> screen = present(pageUrl());
        const qreal dy = fraction * kPhone.height();
        const QPoint start(kPhone.width() / 2, 30);
        static QPointingDevice* const finger = QTest::createTouchDevice();
        // The same drag with the mouse or a finger.
        const auto pointer = [&](QTest::MouseAction action, const QPoint& at) {
            if (!touch) {
                QTest::mouseEvent(action, m_window.get(), Qt::LeftButton, {}, at);
                return;
            }
            QTest::QTouchEventSequence sequence = QTest::touchEvent(m_window.get(), finger);
            action == QTest::MousePress  ? sequence.press(0, at)
            : action == QTest::MouseMove ? sequence.move(0, at)
                                         : sequence.release(0, at);
        };
        pointer(QTest::MousePress, start);
        for (int step = 1; step <= 10; ++step) {
            pointer(QTest::MouseMove, start + QPoint(0, qRound(dy * step / 10)));
        }
        // Touch moves are merged and handed on with the next frame.
        QTRY_COMPARE(screen->topBarView()->y(), std::max<qreal>(qRound(dy), 0));
        QCOMPARE(screen->containerView()->y(), screen->topBarView()->y() + 64);
        pointer(QTest::MouseRelease, start + QPoint(0, qRound(dy)));

        if (dismisses) {
            m_clock.advance(PresentationStack::kPresentationDuration);
            QCOMPARE(m_dismissed, 1);
            QVERIFY(!m_observingAtDismissal);
            QVERIFY(
                PresentationStack::forWindow(m_window.get())->presentedViewControllers().isEmpty());
            return;
        }
        m_clock.advance(WebViewController::kSpringBackDuration / 2);
        if (dy > 0) {
            QVERIFY(screen->topBarView()->y() > 0 && screen->topBarView()->y() < dy);
        }
        m_clock.advance(WebViewController::kSpringBackDuration / 2 + 0.05);
        QCOMPARE(screen->topBarView()->y(), 0.0);
        QCOMPARE(m_dismissed, 0);
        QVERIFY(screen->isObservingEstimatedProgress());
    }

    // Only http and https pages with a host are opened; any other address is refused with a log
    // line naming it, and the screen goes away at once as if it had no address. So does any page
    // where Qt WebEngine was not prepared before the application object (the graphics are not
    // shared): the viewer logs why instead of risking the process.
    void refusedPagesCloseAtOnce_data() {
        QTest::addColumn<QString>("address");  // empty: the server's page
        QTest::addColumn<bool>("accepted");
        QTest::addColumn<bool>("webEnginePrepared");
        QTest::newRow("http") << "http://127.0.0.1:8787/pages/welcome.html" << true << true;
        QTest::newRow("https") << "https://127.0.0.1/offers" << true << true;
        QTest::newRow("file") << "file:///etc/passwd" << false << true;
        QTest::newRow("javascript") << "javascript:alert(document.cookie)" << false << true;
        QTest::newRow("http without a host") << "http:///pages/welcome.html" << false << true;
        QTest::newRow("no address") << "" << false << true;
        QTest::newRow("web engine not prepared") << "" << true << false;
    }
    void refusedPagesCloseAtOnce() {
        QFETCH(QString, address);
        QFETCH(bool, accepted);
        QFETCH(bool, webEnginePrepared);
        const QUrl url = webEnginePrepared ? QUrl(address) : pageUrl();
        QCOMPARE(WebViewController::canOpen(url), accepted);
        if (accepted && webEnginePrepared) {
            return;
        }
        LumoraTest::LogCapture log;
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, webEnginePrepared);
        QPointer<WebViewController> screen = present(url);
        QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);
        QCOMPARE(log.count(webEnginePrepared
                               ? QStringLiteral("refusing to open \"%1\"").arg(url.toString())
                               : "Qt WebEngine was not prepared"),
                 1);
        QVERIFY(!screen || !screen->webView());
        m_clock.advance(PresentationStack::kPresentationDuration);
        QCOMPARE(m_dismissed, 1);
        QVERIFY(PresentationStack::forWindow(m_window.get())->presentedViewControllers().isEmpty());
    }

    // A real page in a phone-sized window: the labels show its title and address, the progress
    // bar fades once the page has loaded, and the close button dismisses.
    void loadsAPageAndCloses() {
        m_window->resize(375, 812);
        QPointer<WebViewController> screen = present(pageUrl());
        QTRY_COMPARE_WITH_TIMEOUT(screen->pageTitle()->property("text").toString(), kWelcomeTitle,
                                  30000);
        QTRY_VERIFY_WITH_TIMEOUT(!screen->webView()->property("loading").toBool(), 30000);
        QCOMPARE(screen->pageUrl()->property("text").toString(), pageUrl().toString());
        QCOMPARE(screen->progressBar()->opacity(), 1.0);
        QCOMPARE(screen->progressBar()->width(), 375.0);
        // The page's blue header shows under the bar once Chromium has painted it.
        QTRY_COMPARE_WITH_TIMEOUT(m_window->grabWindow().pixelColor(20, 100), QColor("#2563EB"),
                                  30000);
        m_clock.advance(WebViewController::kProgressFadeDuration);
        QCOMPARE(screen->progressBar()->opacity(), 0.0);

        const QQuickItem* close = screen->closeButton();
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {},
                          close->mapToScene(close->boundingRect().center()).toPoint());
        QCOMPARE(m_dismissed, 0);  // only once the screen has gone
        m_clock.advance(PresentationStack::kPresentationDuration);
        QCOMPARE(m_dismissed, 1);
        QVERIFY(!m_observingAtDismissal);
    }

    // /pages/sandbox.html?<attempt> tries one thing when tapped and reports the outcome in its
    // title. Each is refused with a log line; the same viewer then still loads a page and closes.
    void refusesWhatAPageTries_data() {
        QTest::addColumn<QString>("address");  // a path of the server, or a whole address
        QTest::addColumn<QString>("title");    // what the page reports; empty: not checked
        QTest::addColumn<QString>("logLine");
        const QString file = "refusing to open \"file:///etc/hostname\": only http and https";
        const QString permission = "refused the permission ";
        const QString untrusted = m_tlsServer->baseUrl() + "/pages/welcome.html";
        const struct {
            const char* name;
            QString address, title, logLine;
        } rows[] = {
            {"link to file://", "?file", "sandbox", file},
            {"custom scheme", "?scheme", "sandbox", "refusing to open \"lumora-test://open/page\""},
            {"window.open of file://", "?open-file", "open-file: blocked", file},
            {"target=_blank stays here", "?blank", kWelcomeTitle, ""},
            {"geolocation", "?geolocation", "geolocation: denied 1", permission + "Geolocation"},
            {"camera", "?camera", "camera: denied NotAllowedError",
             permission + "MediaAudioVideoCapture"},
            {"clipboard", "?clipboard", "clipboard: denied NotAllowedError", ""},
            {"download", "?download", "download: clicked", "refused download"},
            {"dialogs", "?dialogs", "dialogs: false null", "refused a JavaScript dialog"},
            {"untrusted certificate", untrusted, "", "rejected the certificate of " + untrusted},
        };
        for (const auto& row : rows) {
            QTest::newRow(row.name) << row.address << row.title << row.logLine;
        }
    }
    void refusesWhatAPageTries() {
        QFETCH(QString, address);
        QFETCH(QString, title);
        QFETCH(QString, logLine);
        LumoraTest::LogCapture log;
        const bool tap = address.startsWith('?');
        QPointer<WebViewController> screen =
            present(tap ? page("/pages/sandbox.html" + address) : QUrl(address));
        QQuickItem* view = screen->webView();
        if (tap) {
            tapOnceLoaded(view);
        }
        QTRY_VERIFY_WITH_TIMEOUT(log.count(logLine) > 0, kPageTimeout);
        if (!title.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(view->property("title").toString(), title, kPageTimeout);
        }
        QCOMPARE(PresentationStack::forWindow(m_window.get())->presentedViewControllers().size(),
                 1);
        QCOMPARE(screen->webView(), view);

        view->setProperty("url", pageUrl());
        QTRY_COMPARE_WITH_TIMEOUT(screen->pageTitle()->property("text").toString(), kWelcomeTitle,
                                  kPageTimeout);
        close(screen);
    }

    // A page that stores a cookie and local storage sees them after a reload but not in the next
    // viewer, and once the viewers are closed the browser has left no file in the (temporary)
    // home, data, cache or config directories. Skipped: caches of Qt's QML compiler and of the
    // system's fonts and graphics, and the user's certificate store that Chromium creates empty.
    void nothingOutlivesTheViewer() {
        for (int viewer = 0; viewer < 2; ++viewer) {
            QPointer<WebViewController> screen = present(page("/pages/sandbox.html?storage"));
            for (const char* title : {"storage: none none", "storage: seen visit=seen"}) {
                tapOnceLoaded(screen->webView());
                QTRY_COMPARE_WITH_TIMEOUT(screen->webView()->property("title").toString(), title,
                                          kPageTimeout);
                QMetaObject::invokeMethod(screen->webView(), "reload");
            }
            close(screen);
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QStringList files;
        QDirIterator it(home().path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        static const QRegularExpression kept("/qmlcache/|/fontconfig/|shader_cache|/\\.pki/nssdb/");
        while (it.hasNext()) {
            files.append(it.next().mid(home().path().size()));
        }
        files.removeIf([](const QString& file) { return kept.match(file).hasMatch(); });
        QVERIFY2(files.isEmpty(), qPrintable(files.join(", ")));
    }

private:
    static constexpr int kPageTimeout = 20000;

    QUrl page(const QString& path) const { return QUrl(m_server->baseUrl() + path); }

    /// The sandbox page makes its attempt when tapped, as a link is followed. Chromium drops
    /// input that arrives before the page's first frame, so the tap waits for the painted header.
    void tapOnceLoaded(QQuickItem* view) {
        QTRY_VERIFY_WITH_TIMEOUT(
            view->property("title").toString() == "sandbox" && !view->property("loading").toBool(),
            kPageTimeout);
        const QPoint header = view->mapToScene(QPointF(20, 20)).toPoint();
        QTRY_COMPARE_WITH_TIMEOUT(m_window->grabWindow().pixelColor(header), QColor("#7C3AED"),
                                  kPageTimeout);
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {},
                          view->mapToScene(view->boundingRect().center()).toPoint());
    }

    void close(WebViewController* screen) {
        const QQuickItem* button = screen->closeButton();
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {},
                          button->mapToScene(button->boundingRect().center()).toPoint());
        m_clock.advance(PresentationStack::kPresentationDuration);
        QCOMPARE(std::exchange(m_dismissed, 0), 1);
    }

    QUrl pageUrl() const { return QUrl(m_server->baseUrl() + "/pages/welcome.html"); }

    WebViewController* present(const QUrl& url) {
        auto* screen =
            PresentableViewController::instantiateFromStoryboard<WebViewController>(m_window.get());
        screen->url = url;
        QPointer<WebViewController> guard(screen);
        screen->onDismissed = [this, guard] {
            ++m_dismissed;
            m_observingAtDismissal = guard && guard->isObservingEstimatedProgress();
        };
        PresentableViewController::getGlobalContext(m_window.get())->present(screen, true);
        m_clock.advance(PresentationStack::kPresentationDuration);
        return screen;
    }

    ManualScheduler m_clock;
    std::unique_ptr<LumoraTest::DevServer> m_server;
    std::unique_ptr<LumoraTest::DevServer> m_tlsServer;
    std::unique_ptr<QQuickWindow> m_window;
    int m_dismissed = 0;
    bool m_observingAtDismissal = true;
};

int main(int argc, char** argv) {
    // Anything the browser keeps lands in one temporary directory; media capture devices are
    // Chromium's fakes, so that a camera request reaches the permission step.
    const QByteArray dir = home().path().toLocal8Bit();
    for (const char* variable : {"HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
        qputenv(variable, dir + "/" + variable);
    }
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", "--use-fake-device-for-media-stream");
    qputenv("LUMORA_SDK_LOG_LEVEL", "1");
    Lumora::prepareApplication();
    QGuiApplication app(argc, argv);
    WebViewerTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_webviewer.moc"

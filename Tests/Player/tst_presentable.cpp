#include <QQmlEngine>
#include <QQuickWindow>
#include <QTest>

#include "Platform/Scheduler.h"
#include "TestSupport.h"
#include "ViewControllers/PresentableViewController.h"
#include "ViewControllers/PresentationStack.h"

using namespace LumoraSDK;

namespace {
constexpr const char* kChildVariable = "LUMORA_PRESENTABLE_CHILD";
}

/// A screen that writes its lifecycle into a shared log.
class TestScreenViewController : public PresentableViewController {
    Q_OBJECT

public:
    QString name;
    QStringList* log = nullptr;

    void viewDidLoad() override {
        PresentableViewController::viewDidLoad();
        outlet<QQuickItem>("keep");
        record("viewDidLoad");
    }
    void viewWillAppear(bool animated) override { record("viewWillAppear", animated); }
    void viewDidAppear(bool animated) override { record("viewDidAppear", animated); }
    void viewWillDisappear(bool animated) override { record("viewWillDisappear", animated); }
    void viewDidDisappear(bool animated) override { record("viewDidDisappear", animated); }

private:
    void record(const char* event, int animated = -1) {
        const char* flag = animated < 0 ? "" : animated ? "(animated)" : "()";
        *log << name + '.' + event + flag;
    }
};

class MissingOutletViewController : public PresentableViewController {
    Q_OBJECT

public:
    void viewDidLoad() override {
        PresentableViewController::viewDidLoad();
        outlet<QQuickItem>("closeButton");
    }
};

class BrokenSceneViewController : public PresentableViewController {
    Q_OBJECT
};

class NoSceneViewController : public PresentableViewController {
    Q_OBJECT
};

/// Host content that counts the presses reaching it.
class TapCounter : public QQuickItem {
public:
    TapCounter() { setAcceptedMouseButtons(Qt::LeftButton); }
    int taps = 0;

protected:
    void mousePressEvent(QMouseEvent* event) override {
        ++taps;
        event->accept();
    }
};

class PresentableTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        Scheduler::setCurrent(&m_clock);
        m_log.clear();
        m_window = std::make_unique<QQuickWindow>();
        m_window->setColor(Qt::red);  // the host's own content
        m_window->resize(300, 400);
        m_host = new TapCounter();
        m_host->setSize(QSizeF(300, 400));
        m_host->setParentItem(m_window->contentItem());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void cleanup() {
        m_window.reset();
        Scheduler::setCurrent(nullptr);
    }

    // Appearing and disappearing are reported in order; an animated change takes 0.3 s and
    // completes exactly once; a dismissed screen that the presentation held is released.
    void lifecycle_data() {
        QTest::addColumn<bool>("animated");
        QTest::newRow("at once") << false;
        QTest::newRow("animated") << true;
    }
    void lifecycle() {
        QFETCH(bool, animated);
        const QString flag = animated ? "(animated)" : "()";
        QPointer<TestScreenViewController> screen = screenNamed("A");
        PresentableViewController* root =
            PresentableViewController::getGlobalContext(m_window.get());
        root->present(screen, animated, [this] { m_log << "presented"; });
        QCOMPARE(m_log, QStringList({"A.viewDidLoad", "A.viewWillAppear" + flag}));
        QQuickItem* container = screen->view()->parentItem();
        QCOMPARE(container->parentItem(), m_window->contentItem());
        QCOMPARE(container->opacity(), animated ? 0.0 : 1.0);
        if (animated) {
            m_clock.advance(0.15);
            QVERIFY(container->opacity() > 0.2 && container->opacity() < 0.8);
            QVERIFY(!m_log.contains("presented"));
        }
        m_clock.advance(animated ? 0.15 : 0);
        QCOMPARE(m_log.mid(2), QStringList({"A.viewDidAppear" + flag, "presented"}));
        QCOMPARE(container->opacity(), 1.0);
        QCOMPARE(root->presentedViewController(), static_cast<PresentableViewController*>(screen));

        m_log.clear();
        screen->dismiss(animated, [this] { m_log << "dismissed"; });
        QCOMPARE(m_log, QStringList({"A.viewWillDisappear" + flag}));
        m_clock.advance(PresentationStack::kPresentationDuration);
        m_clock.advance(1.0);
        QCOMPARE(m_log, QStringList({"A.viewWillDisappear" + flag, "A.viewDidDisappear" + flag,
                                     "dismissed"}));
        QCOMPARE(root->presentedViewController(), nullptr);
        QVERIFY(!screen->view()->window());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(screen.isNull());
    }

    // The top-most screen is the one to present from; it covers the window at any size and
    // keeps clicks from the content under it.
    void globalContextIsTheTopScreen_data() {
        QTest::addColumn<int>("presented");        // root → A → B, as far as this
        QTest::addColumn<QString>("dismissFrom");  // then dismiss from this one
        QTest::addColumn<QString>("top");
        QTest::addColumn<QColor>("seen");
        QTest::addColumn<int>("hostTaps");
        const auto row = [](const char* name, int presented, const char* dismissFrom,
                            const char* top, Qt::GlobalColor seen, int hostTaps) {
            QTest::newRow(name) << presented << QString(dismissFrom) << QString(top) << QColor(seen)
                                << hostTaps;
        };
        row("nothing presented", 0, "", "root", Qt::red, 1);
        row("root → A → B", 2, "", "B", Qt::blue, 0);
        row("B dismissed", 2, "B", "A", Qt::green, 0);
        row("A dismisses what it presents", 2, "A", "A", Qt::green, 0);
        row("root dismisses all", 2, "root", "root", Qt::red, 1);
    }
    void globalContextIsTheTopScreen() {
        QFETCH(int, presented);
        QFETCH(QString, dismissFrom);
        QFETCH(QString, top);
        QFETCH(QColor, seen);
        QMap<QString, PresentableViewController*> screens;
        screens["root"] = PresentableViewController::getGlobalContext(m_window.get());
        PresentableViewController* from = screens["root"];
        for (int i = 0; i < presented; ++i) {
            const QString name = i == 0 ? "A" : "B";
            auto* screen = screenNamed(name);
            screen->view()->setProperty("color", i == 0 ? QColor(Qt::green) : QColor(Qt::blue));
            from->present(screen, false);
            screens[name] = from = screen;
        }
        if (!dismissFrom.isEmpty()) {
            screens[dismissFrom]->dismiss(false);
        }
        m_clock.runUntilIdle();
        QCOMPARE(PresentableViewController::getGlobalContext(m_window.get()), screens[top]);

        m_window->resize(500, 600);
        QTRY_COMPARE(m_window->contentItem()->size(), QSizeF(500, 600));
        const QImage shot = m_window->grabWindow();
        QCOMPARE(shot.size(), QSize(500, 600));
        QCOMPARE(shot.pixelColor(490, 590), seen);
        QCOMPARE(shot.pixelColor(150, 200), seen);
        QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, QPoint(150, 200));
        QTEST(m_host->taps, "hostTaps");
    }

    // A screen whose scene is missing, does not load or lacks an outlet stops the process,
    // naming what is wrong.
    void brokenScenesAreFatal_data() {
        QTest::addColumn<QString>("child");
        QTest::addColumn<QString>("message");
        QTest::newRow("missing outlet")
            << "MissingOutletViewController"
            << "missing outlet \"closeButton\" in the scene qrc:/LumoraSDK/LumoraSDK.bundle/"
               "Layout-iOS/MissingOutletViewController.qml";
        QTest::newRow("scene does not load") << QString("BrokenSceneViewController")
                                             << "BrokenSceneViewController.qml does not load";
        QTest::newRow("no scene") << QString("NoSceneViewController")
                                  << "the storyboard Layout-iOS has no scene NoSceneViewController";
    }
    void brokenScenesAreFatal() {
        QFETCH(QString, child);
        QFETCH(QString, message);
        const auto result = LumoraTest::runSelf(
            {}, {QString(kChildVariable) + '=' + child, "QT_FORCE_STDERR_LOGGING=1"});
        QVERIFY2(result.crashed, qPrintable(result.standardOutput));
        QVERIFY2(result.standardError.contains(message), qPrintable(result.standardError));
    }

private:
    TestScreenViewController* screenNamed(const QString& name) {
        auto* screen =
            PresentableViewController::instantiateFromStoryboard<TestScreenViewController>(
                m_engine);
        screen->name = name;
        screen->log = &m_log;
        return screen;
    }

    ManualScheduler m_clock;
    QQmlEngine m_engine;
    std::unique_ptr<QQuickWindow> m_window;
    TapCounter* m_host = nullptr;
    QStringList m_log;
};

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    const QString child = qEnvironmentVariable(kChildVariable);
    QQmlEngine engine;
    if (child == QLatin1String("MissingOutletViewController")) {
        PresentableViewController::instantiateFromStoryboard<MissingOutletViewController>(engine)
            ->view();
    } else if (child == QLatin1String("BrokenSceneViewController")) {
        PresentableViewController::instantiateFromStoryboard<BrokenSceneViewController>(engine);
    } else if (child == QLatin1String("NoSceneViewController")) {
        PresentableViewController::instantiateFromStoryboard<NoSceneViewController>(engine);
    }
    if (!child.isEmpty()) {
        return 0;  // still alive: the parent reports it
    }
    PresentableTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_presentable.moc"

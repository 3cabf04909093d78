#include <QPointingDevice>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QSignalSpy>
#include <QTest>
#include <memory>

#include "Scene.h"
#include "Views/FrameButtonView.h"
#include "Views/PassthroughTouchButton.h"
#include "Views/PassthroughTouchView.h"

using namespace LumoraSDK;
using namespace LumoraTest;

namespace {
constexpr QPoint kOrigin(20, 20);

FrameButtonView* makeButton(QQuickItem* parent, const QSizeF& size) {
    auto* button = new FrameButtonView(parent);
    button->setPosition(kOrigin);
    button->setSize(size);
    return button;
}

enum class Device { Mouse, Touch };

// The pass-through view and button over a MouseArea: which of them (or what lies behind) gets a
// press that lands on the item itself or on a child of it.
constexpr char kScene[] = R"(
import QtQuick
import LumoraSDK
Item {
    id: root
    width: 200; height: 100
    property string hit: "nothing"
    MouseArea { anchors.fill: parent; onPressed: root.hit = "behind" }
    PassthroughTouchView {
        objectName: "view"
        width: 100; height: 100
        MouseArea { x: 50; width: 50; height: 100; onPressed: root.hit = "child" }
    }
    PassthroughTouchButton {
        objectName: "button"
        x: 100; width: 100; height: 100
        onClicked: root.hit = "button"
    }
}
)";
}  // namespace

Q_DECLARE_METATYPE(Device)

class FrameButtonTest : public QObject {
    Q_OBJECT

    QPointingDevice* m_touch = nullptr;

    void send(QQuickWindow* window, Device device, QEventPoint::State state, const QPoint& at) {
        if (device == Device::Touch) {
            auto touch = QTest::touchEvent(window, m_touch);
            state == QEventPoint::Pressed    ? touch.press(0, at, window)
            : state == QEventPoint::Released ? touch.release(0, at, window)
                                             : touch.move(0, at, window);
        } else if (state == QEventPoint::Pressed) {
            QTest::mousePress(window, Qt::LeftButton, {}, at);
        } else if (state == QEventPoint::Released) {
            QTest::mouseRelease(window, Qt::LeftButton, {}, at);
        } else {
            QTest::mouseMove(window, at, 16);
        }
    }

private slots:
    void initTestCase() { m_touch = QTest::createTouchDevice(); }

    // Rounded on the left only: the mask cuts the frame at the rounded corners, and the square
    // ones keep it.
    void frameRoundsOnlyTheCornersAskedFor() {
        Scene scene({200, 100});
        FrameButtonView* button = makeButton(scene.root(), {160, 60});
        button->setBorderWidth(8);
        button->setCornerRadius(20);
        button->setBorderColor(Qt::red);
        button->setBackgroundColor(Qt::blue);
        button->setLeftRounding(true);
        button->setRightRounding(false);
        const QImage shot = scene.grab(QStringLiteral("frame"));
        QVERIFY2(closeTo(shot.pixelColor(100, 50), Qt::blue, 10), describe(shot, {100, 50}));
        QVERIFY2(closeTo(shot.pixelColor(100, 22), Qt::red, 40), describe(shot, {100, 22}));
        // Outside the rounded outline: the corner's tip, and where the line's outer half would be.
        for (const QPoint& tip : {QPoint(21, 21), QPoint(24, 24), QPoint(21, 78), QPoint(24, 75)}) {
            QVERIFY2(untouched(shot, tip), describe(shot, tip));
        }
        for (const QPoint& tip : {QPoint(178, 21), QPoint(178, 78)}) {
            QVERIFY2(closeTo(shot.pixelColor(tip), Qt::red, 40), describe(shot, tip));
        }
    }

    void pressDimsAndOnlyAReleaseInsideClicks_data() {
        QTest::addColumn<Device>("device");
        QTest::addColumn<QPoint>("to");  // moved there in ten steps from (50, 100), released there
        QTest::addColumn<bool>("scrolls");
        QTest::addColumn<int>("clicks");
        for (const Device device : {Device::Mouse, Device::Touch}) {
            const char* name = device == Device::Mouse ? "mouse" : "touch";
            QTest::addRow("%s, released inside", name) << device << QPoint(150, 100) << false << 1;
            QTest::addRow("%s, released outside", name) << device << QPoint(195, 100) << false << 0;
            // The list takes the gesture over: a list's touch is ungrabbed, not its mouse.
            QTest::addRow("%s, list scrolled", name) << device << QPoint(50, 0) << true << 0;
        }
    }

    void pressDimsAndOnlyAReleaseInsideClicks() {
        QFETCH(Device, device);
        QFETCH(QPoint, to);
        QFETCH(bool, scrolls);
        QFETCH(int, clicks);
        Scene scene({200, 200});
        QVERIFY(QTest::qWaitForWindowExposed(&scene.window));
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData(
            "import QtQuick\nFlickable { width: 200; height: 200; contentHeight: "
            "1000; flickableDirection: Flickable.VerticalFlick; pressDelay: 0 }",
            QUrl());
        std::unique_ptr<QQuickItem> list(qobject_cast<QQuickItem*>(component.create()));
        QVERIFY2(list, qPrintable(component.errorString()));
        list->setParentItem(scene.root());
        FrameButtonView* button =
            makeButton(list->property("contentItem").value<QQuickItem*>(), {160, 160});
        QSignalSpy clicked(button, &FrameButtonView::clicked);

        const QPointingDevice* pointer =
            device == Device::Touch ? m_touch : QPointingDevice::primaryPointingDevice();
        QSignalSpy grabs(pointer, &QPointingDevice::grabChanged);
        const QPoint from(50, 100);
        send(&scene.window, device, QEventPoint::Pressed, from);
        QCOMPARE(button->opacity(), 0.5);
        for (int step = 1; step <= 10; ++step) {
            send(&scene.window, device, QEventPoint::Updated, from + (to - from) * step / 10);
        }
        const bool listGrabbed = std::any_of(grabs.begin(), grabs.end(), [&](const auto& grab) {
            return grab.at(0).template value<QObject*>() == list.get() &&
                   grab.at(1).template value<QPointingDevice::GrabTransition>() ==
                       QPointingDevice::GrabExclusive;
        });
        QCOMPARE(listGrabbed, scrolls);
        QCOMPARE(button->opacity(), scrolls ? 1.0 : 0.5);
        send(&scene.window, device, QEventPoint::Released, to);
        QCOMPARE(button->opacity(), 1.0);
        QVERIFY(!button->isHighlighted());
        QCOMPARE(clicked.count(), clicks);
    }

    void pressGoesTo_data() {
        QTest::addColumn<bool>("passthrough");
        QTest::addColumn<QPoint>("at");
        QTest::addColumn<bool>("touch");
        QTest::addColumn<QString>("hit");
        QTest::newRow("view keeps its empty part") << false << QPoint(25, 50) << false << "nothing";
        QTest::newRow("view lets it through") << true << QPoint(25, 50) << false << "behind";
        QTest::newRow("view lets a touch through") << true << QPoint(25, 50) << true << "behind";
        QTest::newRow("child keeps its press") << true << QPoint(75, 50) << false << "child";
        QTest::newRow("button clicks") << false << QPoint(150, 50) << false << "button";
        QTest::newRow("button only draws") << true << QPoint(150, 50) << false << "behind";
        QTest::newRow("button lets a touch through") << true << QPoint(150, 50) << true << "behind";
    }
    void pressGoesTo() {
        QFETCH(bool, passthrough);
        QFETCH(QPoint, at);
        QFETCH(bool, touch);
        QFETCH(QString, hit);
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData(kScene, QUrl());
        std::unique_ptr<QQuickItem> root(qobject_cast<QQuickItem*>(component.create()));
        QVERIFY2(root, qPrintable(component.errorString()));
        root->findChild<PassthroughTouchView*>("view")->passthroughTouchEvents = passthrough;
        root->findChild<PassthroughTouchButton*>("button")->passthroughTouchEvents = passthrough;
        Scene scene(QSize(200, 100));
        root->setParentItem(scene.root());
        QVERIFY(QTest::qWaitForWindowExposed(&scene.window));

        if (touch) {
            QTest::touchEvent(&scene.window, m_touch).press(0, at);
            QTest::touchEvent(&scene.window, m_touch).release(0, at);
        } else {
            QTest::mouseClick(&scene.window, Qt::LeftButton, {}, at);
        }
        QCOMPARE(root->property("hit").toString(), hit);
    }
};

QTEST_MAIN(FrameButtonTest)
#include "tst_framebutton.moc"

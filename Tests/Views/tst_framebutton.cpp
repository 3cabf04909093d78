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

/// Lengths of the red and other runs along row `y` from `fromX` to `toX`, without the first and
/// last run (the scan's ends cut them).
QList<QPair<bool, int>> runs(const QImage& image, int y, int fromX, int toX) {
    QList<QPair<bool, int>> result;
    for (int x = fromX; x <= toX; ++x) {
        const bool painted = closeTo(image.pixelColor(x, y), Qt::red, 100);
        if (result.isEmpty() || result.last().first != painted) {
            result.append({painted, 0});
        }
        ++result.last().second;
    }
    return result.mid(1, result.size() - 2);
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

using Dash = std::optional<QList<qreal>>;
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

    void frameRoundsItsCornersAndDashesItsLine_data() {
        QTest::addColumn<bool>("left");
        QTest::addColumn<bool>("right");
        QTest::addColumn<Dash>("dash");
        QTest::addColumn<int>("on");  // lengths of the dashes and gaps
        QTest::addColumn<int>("off");
        QTest::newRow("left rounded") << true << false << Dash() << 0 << 0;
        QTest::newRow("right rounded") << false << true << Dash() << 0 << 0;
        QTest::newRow("6 on, 4 off") << true << true << Dash(QList<qreal>{6, 4}) << 6 << 4;
        QTest::newRow("one length repeats") << false << false << Dash(QList<qreal>{5}) << 5 << 5;
    }

    void frameRoundsItsCornersAndDashesItsLine() {
        QFETCH(bool, left);
        QFETCH(bool, right);
        QFETCH(Dash, dash);
        QFETCH(int, on);
        QFETCH(int, off);
        Scene scene({200, 100});
        FrameButtonView* button = makeButton(scene.root(), {160, 60});
        button->setBorderWidth(8);
        button->setCornerRadius(20);
        button->setBorderColor(Qt::red);
        button->setBackgroundColor(Qt::blue);
        button->setLeftRounding(left);
        button->setRightRounding(right);
        button->setLineDash(dash);
        const QImage shot = scene.grab(QStringLiteral("frame ") + QTest::currentDataTag());
        QVERIFY2(closeTo(shot.pixelColor(100, 50), Qt::blue, 10), describe(shot, {100, 50}));

        // Along the top line between the corners, in the half of the line inside the outline.
        const auto found = runs(shot, 22, 48, 151);
        QCOMPARE(found.size() >= 6, off > 0);
        QVERIFY2(off > 0 || closeTo(shot.pixelColor(100, 22), Qt::red, 40),
                 describe(shot, {100, 22}));
        for (const auto& [painted, length] : found) {
            QVERIFY2(std::abs(length - (painted ? on : off)) <= 1,
                     qPrintable(QStringLiteral("%1 run of %2").arg(painted).arg(length)));
        }
        const struct {
            bool rounded;
            QPoint at;
            QPoint inward;
        } corners[] = {{left, {20, 20}, {1, 1}},
                       {right, {179, 20}, {-1, 1}},
                       {left, {20, 79}, {1, -1}},
                       {right, {179, 79}, {-1, -1}}};
        for (const auto& corner : corners) {
            const QPoint tip = corner.at + corner.inward;
            // Outside the rounded outline, where the outer half of the line would fall: the
            // button's mask cuts its frame too.
            const QPoint rim = corner.at + 4 * corner.inward;
            if (corner.rounded) {
                QVERIFY2(untouched(shot, tip), describe(shot, tip));
                QVERIFY2(untouched(shot, rim), describe(shot, rim));
            } else if (!dash) {
                QVERIFY2(closeTo(shot.pixelColor(tip), Qt::red, 40), describe(shot, tip));
            }
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

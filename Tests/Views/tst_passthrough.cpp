// The pass-through view and button over a MouseArea, with real mouse and touch presses: which of
// them (or what lies behind) gets a press that lands on the item itself or on a child of it.

#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>

#include "Scene.h"
#include "Views/PassthroughTouchButton.h"
#include "Views/PassthroughTouchView.h"

using namespace LumoraSDK;

namespace {
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

class PassthroughTest : public QObject {
    Q_OBJECT

private slots:
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
        LumoraTest::Scene scene(QSize(200, 100));
        root->setParentItem(scene.root());
        QVERIFY(QTest::qWaitForWindowExposed(&scene.window));

        if (touch) {
            static QPointingDevice* device = QTest::createTouchDevice();
            QTest::touchEvent(&scene.window, device).press(0, at);
            QTest::touchEvent(&scene.window, device).release(0, at);
        } else {
            QTest::mouseClick(&scene.window, Qt::LeftButton, {}, at);
        }
        QCOMPARE(root->property("hit").toString(), hit);
    }
};

QTEST_MAIN(PassthroughTest)
#include "tst_passthrough.moc"

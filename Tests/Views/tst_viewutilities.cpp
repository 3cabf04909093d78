#include <QFont>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QTest>
#include <memory>

#include "Extensions/ViewExtensions.h"
#include "Platform/Layers/GradientLayer.h"
#include "Platform/Layers/ShapeLayer.h"
#include "Scene.h"

using namespace LumoraSDK;
using namespace LumoraTest;

namespace {
/// The first and last painted row of column `x`, or (-1, -1).
QPair<int, int> paintedRows(const QImage& image, int x) {
    QPair<int, int> rows{-1, -1};
    for (int y = 0; y < image.height(); ++y) {
        if (!untouched(image, {x, y})) {
            rows = {rows.first < 0 ? y : rows.first, y};
        }
    }
    return rows;
}
}  // namespace

class ViewUtilitiesTest : public QObject {
    Q_OBJECT

private slots:
    // Layers stack among a view's children by index; clearing shape layers leaves the rest, and
    // removing or hiding the views spares the layers and the views whose restoration identifier
    // is excepted (a view without one counts as having an empty one).
    void layersStackAndClearApartFromViews_data() {
        QTest::addColumn<int>(
            "index");  // of a new layer; -1: none, -2: the bottom layer moves to 2
        QTest::addColumn<QString>("operation");
        QTest::addColumn<QStringList>("except");
        QTest::addColumn<QStringList>("shown");  // the children left, in order, that are visible
        const auto row = [](const char* name, int index, const char* operation,
                            const QStringList& except, const QStringList& shown) {
            QTest::newRow(name) << index << QString(operation) << except << shown;
        };
        row("new layer at 0 goes below the children", 0, "", {},
            {"new", "shape", "gradient", "kept", "other"});
        row("new layer past the end goes on top", 9, "", {},
            {"shape", "gradient", "kept", "other", "new"});
        row("bottom layer moved to 2", -2, "", {}, {"gradient", "kept", "shape", "other"});
        row("clearShapeLayers", -1, "clearShapeLayers", {}, {"gradient", "kept", "other"});
        row("removeAllSubViews except kept", -1, "removeAllSubViews", {"kept"},
            {"shape", "gradient", "kept"});
        row("removeAllSubViews except the unnamed", -1, "removeAllSubViews", {""},
            {"shape", "gradient", "other"});
        row("toggleAllSubviews hides all but kept", -1, "toggleAllSubviews", {"kept"},
            {"shape", "gradient", "kept"});
    }

    void layersStackAndClearApartFromViews() {
        QFETCH(int, index);
        QFETCH(QString, operation);
        QFETCH(QStringList, except);
        QQuickItem view;
        (new ShapeLayer())->insertInto(&view, 0);
        (new GradientLayer())->insertInto(&view, 1);
        new QQuickItem(&view);
        new QQuickItem(&view);
        const QStringList names{"shape", "gradient", "kept", "other"};
        for (int i = 0; i < names.size(); ++i) {
            view.childItems()[i]->setObjectName(names[i]);
        }
        view.childItems()[2]->setProperty("restorationIdentifier", names[2]);
        if (index >= 0) {
            auto* layer = new ShapeLayer();
            layer->setObjectName("new");
            layer->insertInto(&view, index);
        } else if (index == -2) {
            qobject_cast<Layer*>(view.childItems()[0])->insertInto(&view, 2);
        }
        if (operation == QLatin1String("clearShapeLayers")) {
            clearShapeLayers(&view);
        } else if (operation == QLatin1String("removeAllSubViews")) {
            removeAllSubViews(&view, except);
        } else if (operation == QLatin1String("toggleAllSubviews")) {
            toggleAllSubviews(&view, true, except);
        }
        QStringList shown;
        for (const QQuickItem* item : view.childItems()) {
            if (item->isVisible()) {
                shown << item->objectName();
            }
        }
        QTEST(shown, "shown");
    }

    void perspectiveShrinksTheFarEdge_data() {
        QTest::addColumn<QList<qreal>>("multipliers");  // applied one after the other
        QTest::addColumn<qreal>("pivotX");
        QTest::newRow("turned, then back to 0") << QList<qreal>{-0.5, 0.0} << 1.0;
        QTest::newRow("left hinge, 0.5") << QList<qreal>{0.5} << 0.0;
        QTest::newRow("-0.9 replaced by -0.5") << QList<qreal>{-0.9, -0.5} << 1.0;
    }

    void perspectiveShrinksTheFarEdge() {
        QFETCH(QList<qreal>, multipliers);
        QFETCH(qreal, pivotX);
        Scene scene({240, 200});
        QQuickItem face(scene.root());
        face.setPosition({70, 50});
        face.setSize({100, 100});
        auto* fill = new ShapeLayer(&face);
        fill->setSize(face.size());
        fill->setBackgroundColor(Qt::red);
        for (qreal multiplier : multipliers) {
            applyPerspectiveTransform(&face, multiplier, pivotX);
        }
        QCOMPARE(perspectiveMultiplier(&face), multipliers.last());
        const QImage shot = scene.grab(QStringLiteral("perspective ") + QTest::currentDataTag());

        // Measured on screen: the painted columns and, at either end, the painted rows.
        int leftmost = -1, rightmost = -1;
        for (int x = 0; x < shot.width(); ++x) {
            if (paintedRows(shot, x).first >= 0) {
                rightmost = x;
                leftmost = leftmost < 0 ? x : leftmost;
            }
        }
        const bool rightHinge = pivotX > 0.5;
        const auto hinge = paintedRows(shot, rightHinge ? rightmost : leftmost);
        const auto far = paintedRows(shot, rightHinge ? leftmost : rightmost);
        QCOMPARE(rightHinge ? rightmost : leftmost, rightHinge ? 169 : 70);  // the hinge stays
        QCOMPARE(hinge, qMakePair(50, 149));
        const int farHeight = far.second - far.first + 1, width = rightmost - leftmost + 1;
        if (multipliers.last() == 0) {
            QCOMPARE(far, qMakePair(50, 149));
            QCOMPARE(width, 100);
        } else {
            QVERIFY2(farHeight < 90 && farHeight > 40, qPrintable(QString::number(farHeight)));
            QVERIFY2(width < 90, qPrintable(QString::number(width)));
        }
    }

    void calculatedLineCountMatchesTheTextItem_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qreal>("width");
        QTest::addColumn<QFont>("font");
        QFont small("DejaVu Sans");
        small.setPixelSize(14);
        QFont inter("Inter");
        inter.setPointSizeF(11.5);
        QFont large;
        large.setPointSize(22);
        const QString title =
            "Weekend recipes for busy people who still like to cook something nice";
        QTest::newRow("long text, narrow label") << title << 90.0 << small;
        QTest::newRow("long text, Inter 11.5pt") << title << 120.0 << inter;
        QTest::newRow("two words, large font") << "Fitness studio" << 110.0 << large;
        QTest::newRow("explicit line break") << "Tips\nand tricks" << 300.0 << inter;
        // The round cell pads a one-line title this way, once.
        QTest::newRow("trailing line break") << "Travel\n" << 300.0 << small;
    }

    void calculatedLineCountMatchesTheTextItem() {
        QFETCH(QString, text);
        QFETCH(qreal, width);
        QFETCH(QFont, font);
        QQmlEngine engine;
        QQmlComponent component(&engine);
        component.setData("import QtQuick\nText { wrapMode: Text.WordWrap }", QUrl());
        std::unique_ptr<QQuickItem> label(qobject_cast<QQuickItem*>(component.create()));
        QVERIFY2(label, qPrintable(component.errorString()));
        label->setProperty("font", font);
        label->setWidth(width);
        label->setProperty("text", text);
        QCOMPARE(calculatedLineCount(label.get()), label->property("lineCount").toInt());
    }
};

QTEST_MAIN(ViewUtilitiesTest)
#include "tst_viewutilities.moc"

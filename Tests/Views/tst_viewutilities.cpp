#include <QQuickItem>
#include <QTest>

#include "Extensions/ViewExtensions.h"
#include "Platform/Layers/GradientLayer.h"
#include "Platform/Layers/ShapeLayer.h"

using namespace LumoraSDK;

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
};

QTEST_MAIN(ViewUtilitiesTest)
#include "tst_viewutilities.moc"

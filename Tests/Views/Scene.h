#pragma once

// A white offscreen window whose rendering the view tests sample pixel by pixel.

#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <cstdlib>

#include "TestSupport.h"

namespace LumoraTest {

struct Scene {
    explicit Scene(const QSize& size) {
        window.setColor(Qt::white);
        window.resize(size);
        window.show();
    }
    QQuickItem* root() const { return window.contentItem(); }
    /// Renders the window now; the picture is kept among the artifacts as `<name>.png`.
    QImage grab(const QString& name) {
        const QImage image = window.grabWindow();
        saveArtifact(image, name);
        return image;
    }
    QQuickWindow window;
};

inline bool closeTo(const QColor& a, const QColor& b, int tolerance) {
    return std::abs(a.red() - b.red()) <= tolerance &&
           std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

/// Nothing drawn at `point`: the window's white shows through.
inline bool untouched(const QImage& image, const QPoint& point) {
    return closeTo(image.pixelColor(point), Qt::white, 12);
}

inline QByteArray describe(const QImage& image, const QPoint& point) {
    return QStringLiteral("pixel (%1, %2) is %3")
        .arg(point.x())
        .arg(point.y())
        .arg(image.pixelColor(point).name())
        .toUtf8();
}

}  // namespace LumoraTest

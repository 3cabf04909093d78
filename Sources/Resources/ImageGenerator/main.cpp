// Draws the SDK's bundled images at build time, so no artwork is downloaded or kept as binaries.
// Usage: lumora-mkimages <output directory>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QTextStream>
#include <functional>
#include <utility>

namespace {

using Painter = std::function<void(QPainter&, const QSize&)>;

struct Artwork {
    QString name;
    QSize size;
    Painter paint;
};

// A soft vertical grey gradient: what a cell shows while its channel is still loading.
void placeholderGradientVertical(QPainter& painter, const QSize& size) {
    QLinearGradient gradient(0, 0, 0, size.height());
    gradient.setColorAt(0, QColor(0xe6, 0xe6, 0xe6));
    gradient.setColorAt(1, QColor(0xc9, 0xc9, 0xc9));
    painter.fillRect(QRect(QPoint(), size), gradient);
}

// Transparent at the top to a deep shade at the bottom: lays under the title of a square row
// cell so that white text reads on any picture. The shade eases in, so its start is not seen.
void gradientBottom(QPainter& painter, const QSize& size) {
    QLinearGradient gradient(0, 0, 0, size.height());
    constexpr int kSteps = 8;
    for (int i = 0; i <= kSteps; ++i) {
        const qreal t = qreal(i) / kSteps;
        gradient.setColorAt(t, QColor(0, 0, 0, qRound(190 * t * t)));
    }
    painter.fillRect(QRect(QPoint(), size), gradient);
}

// The instruction glyphs: drawn on a 96 x 96 canvas (shown at about 48 points, so crisp at 2x),
// in near-black for the light overlay and white for the dark one.
const QColor kGlyphBlack(0x11, 0x11, 0x11);
const QColor kGlyphWhite(0xff, 0xff, 0xff);
constexpr qreal kGlyphStroke = 7;

QPen glyphPen(const QColor& color, qreal width = kGlyphStroke) {
    return QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
}

// A finger's tap: a solid dot inside a faint ring.
void tapMark(QPainter& painter, const QPointF& center, const QColor& color) {
    QColor ring = color;
    ring.setAlphaF(0.4);
    painter.setPen(glyphPen(ring, 3.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(center, 17, 17);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(center, 9, 9);
}

// A tap followed by a chevron pointing the way the pages go; `direction` is 1 or -1.
void tapChevron(QPainter& painter, const QSize& size, const QColor& color, int direction) {
    const qreal mid = size.width() / 2.0;
    tapMark(painter, QPointF(mid - direction * 18, 48), color);
    painter.setPen(glyphPen(color));
    painter.setBrush(Qt::NoBrush);
    const qreal tip = mid + direction * 28;
    const qreal back = tip - direction * 15;
    painter.drawPolyline(QPolygonF({QPointF(back, 31), QPointF(tip, 48), QPointF(back, 65)}));
}

// Hold to pause: two bars inside a ring.
void pauseGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 4.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QPointF(48, 48), 36, 36);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(33, 29, 11, 38), 3.5, 3.5);
    painter.drawRoundedRect(QRectF(52, 29, 11, 38), 3.5, 3.5);
}

// Swipe up: a finger's dot at the bottom and its trail, fading in, ending in an arrow head.
void swipeGlyph(QPainter& painter, const QColor& color) {
    QColor faint = color;
    faint.setAlphaF(0.15);
    QLinearGradient trail(0, 74, 0, 22);
    trail.setColorAt(0, faint);
    trail.setColorAt(1, color);
    painter.setPen(QPen(QBrush(trail), kGlyphStroke, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawLine(QPointF(48, 66), QPointF(48, 20));
    painter.setPen(glyphPen(color));
    painter.drawPolyline(QPolygonF({QPointF(33, 34), QPointF(48, 19), QPointF(63, 34)}));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawEllipse(QPointF(48, 77), 9, 9);
}

// Close: a plain cross.
void closeGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 6));
    painter.drawLine(QPointF(31, 31), QPointF(65, 65));
    painter.drawLine(QPointF(65, 31), QPointF(31, 65));
}

// Share: an open tray with an arrow rising out of it.
void shareGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF({QPointF(36, 40), QPointF(24, 40), QPointF(24, 80),
                                    QPointF(72, 80), QPointF(72, 40), QPointF(60, 40)}));
    painter.drawLine(QPointF(48, 58), QPointF(48, 14));
    painter.drawPolyline(QPolygonF({QPointF(35, 27), QPointF(48, 14), QPointF(61, 27)}));
}

// Save: an arrow coming down into a tray.
void saveGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(
        QPolygonF({QPointF(20, 60), QPointF(20, 78), QPointF(76, 78), QPointF(76, 60)}));
    painter.drawLine(QPointF(48, 16), QPointF(48, 60));
    painter.drawPolyline(QPolygonF({QPointF(33, 46), QPointF(48, 61), QPointF(63, 46)}));
}

// Copy: two overlapping sheets.
void copyGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 6));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(36, 34, 42, 46), 7, 7);
    painter.drawPolyline(QPolygonF(
        {QPointF(60, 22), QPointF(60, 16), QPointF(18, 16), QPointF(18, 62), QPointF(26, 62)}));
}

// Open: a frame with an arrow leaving it at the top right.
void openGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolyline(QPolygonF(
        {QPointF(44, 22), QPointF(20, 22), QPointF(20, 76), QPointF(74, 76), QPointF(74, 52)}));
    painter.drawLine(QPointF(44, 52), QPointF(76, 20));
    painter.drawPolyline(QPolygonF({QPointF(56, 20), QPointF(76, 20), QPointF(76, 40)}));
}

// Folder: a tabbed folder.
void folderGlyph(QPainter& painter, const QColor& color) {
    painter.setPen(glyphPen(color, 6));
    painter.setBrush(Qt::NoBrush);
    painter.drawPolygon(QPolygonF({QPointF(16, 24), QPointF(40, 24), QPointF(48, 33),
                                   QPointF(80, 33), QPointF(80, 74), QPointF(16, 74)}));
    painter.drawLine(QPointF(16, 42), QPointF(80, 42));
}

// One black and one white artwork of a glyph, named prefix + "black" / "white".
void addGlyph(QList<Artwork>& list, const QString& prefix,
              const std::function<void(QPainter&, const QSize&, const QColor&)>& draw) {
    for (const auto& [suffix, color] : {std::pair{QStringLiteral("black"), kGlyphBlack},
                                        {QStringLiteral("white"), kGlyphWhite}}) {
        list.append(
            {prefix + suffix, {96, 96}, [draw, color](QPainter& painter, const QSize& size) {
                 draw(painter, size, color);
             }});
    }
}

const QList<Artwork>& artworks() {
    static const QList<Artwork> all = [] {
        QList<Artwork> list = {
            {QStringLiteral("placeholder-gradient-vertical"),
             {120, 240},
             placeholderGradientVertical},
            {QStringLiteral("gradient-bottom"), {16, 256}, gradientBottom},
        };
        addGlyph(list, QStringLiteral("icon-instruction-forward-"),
                 [](QPainter& p, const QSize& s, const QColor& c) { tapChevron(p, s, c, 1); });
        addGlyph(list, QStringLiteral("icon-instruction-pause-"),
                 [](QPainter& p, const QSize&, const QColor& c) { pauseGlyph(p, c); });
        addGlyph(list, QStringLiteral("icon-instruction-back-"),
                 [](QPainter& p, const QSize& s, const QColor& c) { tapChevron(p, s, c, -1); });
        addGlyph(list, QStringLiteral("icon-instruction-swipe-"),
                 [](QPainter& p, const QSize&, const QColor& c) { swipeGlyph(p, c); });
        addGlyph(list, QStringLiteral("icon-close-"),
                 [](QPainter& p, const QSize&, const QColor& c) { closeGlyph(p, c); });
        // The share button and the share sheet's activities.
        addGlyph(list, QStringLiteral("icon-share-"),
                 [](QPainter& p, const QSize&, const QColor& c) { shareGlyph(p, c); });
        addGlyph(list, QStringLiteral("icon-save-"),
                 [](QPainter& p, const QSize&, const QColor& c) { saveGlyph(p, c); });
        addGlyph(list, QStringLiteral("icon-copy-"),
                 [](QPainter& p, const QSize&, const QColor& c) { copyGlyph(p, c); });
        addGlyph(list, QStringLiteral("icon-open-"),
                 [](QPainter& p, const QSize&, const QColor& c) { openGlyph(p, c); });
        addGlyph(list, QStringLiteral("icon-folder-"),
                 [](QPainter& p, const QSize&, const QColor& c) { folderGlyph(p, c); });
        return list;
    }();
    return all;
}

}  // namespace

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        QTextStream(stderr) << "usage: lumora-mkimages <output directory>\n";
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    QDir().mkpath(out.path());
    for (const Artwork& artwork : artworks()) {
        QImage image(artwork.size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        artwork.paint(painter, artwork.size);
        painter.end();
        const QString path = out.filePath(artwork.name + QStringLiteral(".png"));
        if (!image.save(path)) {
            QTextStream(stderr) << "cannot write " << path << '\n';
            return 1;
        }
    }
    return 0;
}

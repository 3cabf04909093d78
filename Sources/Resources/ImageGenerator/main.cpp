// Draws the SDK's bundled images at build time, so no artwork is downloaded or kept as binaries.
// Usage: lumora-mkimages <output directory>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QTextStream>
#include <functional>

namespace {

using Painter = std::function<void(QPainter&, const QSize&)>;

struct Artwork {
    const char* name;
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

const QList<Artwork>& artworks() {
    static const QList<Artwork> all = {
        {"placeholder-gradient-vertical", {120, 240}, placeholderGradientVertical},
        {"gradient-bottom", {16, 256}, gradientBottom},
    };
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
        const QString path = out.filePath(QLatin1String(artwork.name) + QStringLiteral(".png"));
        if (!image.save(path)) {
            QTextStream(stderr) << "cannot write " << path << '\n';
            return 1;
        }
    }
    return 0;
}

// Draws the showcase's mock host artwork (header, content and tab bar images) at build time.
// Usage: lumora-demo-assets <output directory>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int kWidth = 1170;  // 390 points at 3x

QImage canvas(int height) {
    QImage image(kWidth, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void roundedCard(QPainter& p, const QRectF& rect, qreal radius, const QBrush& brush) {
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    p.fillPath(path, brush);
}

QImage header() {
    QImage image = canvas(330);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, kWidth, 330);
    sky.setColorAt(0, QColor("#4F46E5"));
    sky.setColorAt(1, QColor("#9333EA"));
    p.fillRect(image.rect(), sky);
    p.setPen(Qt::white);
    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(84);
    font.setWeight(QFont::DemiBold);
    p.setFont(font);
    p.drawText(QRect(60, 120, kWidth - 120, 110), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("Good morning"));
    font.setPixelSize(42);
    font.setWeight(QFont::Normal);
    p.setFont(font);
    p.setOpacity(0.85);
    p.drawText(QRect(60, 230, kWidth - 120, 60), Qt::AlignLeft | Qt::AlignVCenter,
               QStringLiteral("Here is what is new today"));
    p.setOpacity(1);
    p.setBrush(QColor(255, 255, 255, 60));
    p.setPen(Qt::NoPen);
    p.drawEllipse(QRectF(kWidth - 190, 135, 120, 120));
    return image;
}

QImage content() {
    QImage image = canvas(900);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QList<QColor> colors{QColor("#F59E0B"), QColor("#10B981"), QColor("#3B82F6"),
                               QColor("#EF4444")};
    for (int i = 0; i < 4; ++i) {
        const QRectF card(48 + (i % 2) * 555, 30 + (i / 2) * 430, 519, 400);
        roundedCard(p, card, 42, colors[i].lighter(150));
        roundedCard(p, QRectF(card.left() + 36, card.top() + 36, card.width() - 72, 210), 28,
                    colors[i]);
        roundedCard(p, QRectF(card.left() + 36, card.top() + 276, card.width() * 0.6, 32), 16,
                    QColor(0, 0, 0, 60));
        roundedCard(p, QRectF(card.left() + 36, card.top() + 330, card.width() * 0.4, 28), 14,
                    QColor(0, 0, 0, 35));
    }
    return image;
}

QImage tabBar() {
    QImage image = canvas(250);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.fillRect(image.rect(), QColor(255, 255, 255, 245));
    p.fillRect(QRect(0, 0, kWidth, 3), QColor(0, 0, 0, 30));
    for (int i = 0; i < 5; ++i) {
        const qreal cx = kWidth / 5.0 * (i + 0.5);
        p.setBrush(i == 0 ? QColor("#4F46E5") : QColor("#9CA3AF"));
        p.setPen(Qt::NoPen);
        roundedCard(p, QRectF(cx - 36, 50, 72, 72), i % 2 ? 36 : 18, p.brush());
        roundedCard(p, QRectF(cx - 60, 146, 120, 22), 11,
                    i == 0 ? QColor("#4F46E5") : QColor("#D1D5DB"));
    }
    return image;
}

}  // namespace

int main(int argc, char* argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    QDir().mkpath(out.path());
    const bool ok = header().save(out.filePath(QStringLiteral("header.png"))) &&
                    content().save(out.filePath(QStringLiteral("content.png"))) &&
                    tabBar().save(out.filePath(QStringLiteral("tabbar.png")));
    return ok ? 0 : 1;
}

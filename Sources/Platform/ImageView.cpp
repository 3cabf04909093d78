#include "ImageView.h"

#include <QPainter>

namespace LumoraSDK {

namespace {
std::function<std::optional<Bundle>()>& interfaceBundle() {
    static std::function<std::optional<Bundle>()> bundle;
    return bundle;
}
}  // namespace

ImageView::ImageView(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setClip(true);
}

void ImageView::setImage(const QImage& image) {
    m_image = image;
    update();
    emit imageChanged();
}

void ImageView::setContentMode(ContentMode mode) {
    if (m_contentMode != mode) {
        m_contentMode = mode;
        update();
        emit contentModeChanged();
    }
}

void ImageView::setImageName(const QString& name) {
    if (m_imageName != name) {
        m_imageName = name;
        setImage(named(name, interfaceBundle() ? interfaceBundle()() : std::nullopt));
        emit imageNameChanged();
    }
}

void ImageView::setMaskPath(const std::optional<QPainterPath>& path) {
    m_maskPath = path;
    update();
}

void ImageView::setInterfaceBundle(std::function<std::optional<Bundle>()> bundle) {
    interfaceBundle() = std::move(bundle);
}

QImage ImageView::named(const QString& name, const std::optional<Bundle>& bundle) {
    if (!bundle || name.isEmpty()) {
        return {};
    }
    const auto path =
        bundle->pathForResource(QStringLiteral("Images/") + name, QStringLiteral("png"));
    return path ? QImage(*path) : QImage();
}

void ImageView::paint(QPainter* painter) {
    drawImage(painter, m_image, QRectF(0, 0, width(), height()));
}

void ImageView::drawImage(QPainter* painter, const QImage& image, const QRectF& rect) const {
    if (image.isNull() || rect.isEmpty()) {
        return;
    }
    painter->save();
    painter->setRenderHint(QPainter::SmoothPixmapTransform);
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_maskPath) {
        painter->setClipPath(*m_maskPath);
    }
    QRectF target = rect;
    if (m_contentMode != ContentMode::ScaleToFill) {
        QSizeF size = image.size();
        size.scale(rect.size(), m_contentMode == ContentMode::AspectFit
                                    ? Qt::KeepAspectRatio
                                    : Qt::KeepAspectRatioByExpanding);
        target = QRectF(rect.center() - QPointF(size.width() / 2, size.height() / 2), size);
    }
    painter->drawImage(target, image);
    painter->restore();
}

}  // namespace LumoraSDK

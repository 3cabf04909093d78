#pragma once

#include <QtQml/qqmlregistration.h>
#include <QImage>
#include <QPainterPath>
#include <QQuickPaintedItem>
#include <functional>
#include <optional>

#include "Bundle.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Shows one image, scaled by its content mode and clipped to its bounds (and to a mask path,
/// when one is set).
class LUMORASDK_EXPORT ImageView : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ContentMode contentMode READ contentMode WRITE setContentMode NOTIFY
                   contentModeChanged FINAL)
    Q_PROPERTY(QString imageName READ imageName WRITE setImageName NOTIFY imageNameChanged FINAL)
    Q_PROPERTY(bool hasImage READ hasImage NOTIFY imageChanged FINAL)

public:
    enum class ContentMode { ScaleToFill, AspectFit, AspectFill };
    Q_ENUM(ContentMode)

    explicit ImageView(QQuickItem* parent = nullptr);

    QImage image() const { return m_image; }
    void setImage(const QImage& image);
    bool hasImage() const { return !m_image.isNull(); }
    ContentMode contentMode() const { return m_contentMode; }
    void setContentMode(ContentMode mode);
    /// An image of the interface bundle (see setInterfaceBundle), by name (without extension).
    QString imageName() const { return m_imageName; }
    void setImageName(const QString& name);
    /// Content outside the path is not drawn; none clips to the bounds only.
    void setMaskPath(const std::optional<QPainterPath>& path);
    std::optional<QPainterPath> maskPath() const { return m_maskPath; }

    /// An image of `bundle` ("Images/<name>.png"); null when missing.
    static QImage named(const QString& name, const std::optional<Bundle>& bundle);
    /// The bundle that interface files name their images in, asked each time an image name is
    /// set; none until the library that owns the interface files installs it.
    static void setInterfaceBundle(std::function<std::optional<Bundle>()> bundle);

    void paint(QPainter* painter) override;

signals:
    void contentModeChanged();
    void imageNameChanged();
    void imageChanged();

protected:
    /// Draws `image` into `rect` by the content mode, clipped by the mask.
    void drawImage(QPainter* painter, const QImage& image, const QRectF& rect) const;

private:
    QImage m_image;
    QString m_imageName;
    ContentMode m_contentMode = ContentMode::ScaleToFill;
    std::optional<QPainterPath> m_maskPath;
};

}  // namespace LumoraSDK

#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QList>
#include <functional>
#include <optional>

#include "Platform/ImageView.h"

namespace LumoraSDK {

/// A button that draws its own rounded, optionally dashed frame and clips its pictures to it.
/// It dims to half opacity while pressed and emits clicked() on release inside.
class LUMORASDK_EXPORT FrameButtonView : public LumoraSDK::ImageView {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(qreal borderWidth READ borderWidth WRITE setBorderWidth NOTIFY frameChanged FINAL)
    Q_PROPERTY(qreal cornerRadius READ cornerRadius WRITE setCornerRadius NOTIFY frameChanged FINAL)
    Q_PROPERTY(QColor borderColor READ borderColor WRITE setBorderColor NOTIFY frameChanged FINAL)
    Q_PROPERTY(bool leftRounding READ leftRounding WRITE setLeftRounding NOTIFY frameChanged FINAL)
    Q_PROPERTY(
        bool rightRounding READ rightRounding WRITE setRightRounding NOTIFY frameChanged FINAL)
    Q_PROPERTY(
        bool highlighted READ isHighlighted WRITE setHighlighted NOTIFY highlightedChanged FINAL)
    Q_PROPERTY(QColor backgroundColor READ backgroundColor WRITE setBackgroundColor NOTIFY
                   frameChanged FINAL)

public:
    /// The outline of a button that has the keyboard.
    static const QColor kFocusColor;
    static constexpr qreal kFocusLineWidth = 2;

    explicit FrameButtonView(QQuickItem* parent = nullptr);

    qreal borderWidth() const { return m_borderWidth; }
    void setBorderWidth(qreal width);
    qreal cornerRadius() const { return m_cornerRadius; }
    void setCornerRadius(qreal radius);
    QColor borderColor() const { return m_borderColor; }
    void setBorderColor(const QColor& color);
    bool leftRounding() const { return m_leftRounding; }
    void setLeftRounding(bool on);
    bool rightRounding() const { return m_rightRounding; }
    void setRightRounding(bool on);
    std::optional<QList<qreal>> lineDash() const { return m_lineDash; }
    void setLineDash(const std::optional<QList<qreal>>& dash);
    QColor backgroundColor() const { return m_backgroundColor; }
    void setBackgroundColor(const QColor& color);
    /// Listener for focus changes, called by the owner.
    std::function<void(bool)> onFocusChanged;

    /// The rounded corners as RectCorner flags, from leftRounding and rightRounding.
    int corners() const;

    bool isHighlighted() const { return m_highlighted; }
    /// Half opacity while highlighted, full otherwise.
    void setHighlighted(bool highlighted);

    /// The picture behind the image (the button's background image for the normal state).
    QImage backgroundImage() const { return m_backgroundImage; }
    void setBackgroundImage(const QImage& image);

    /// Replaces the frame layer and the clipping with ones made from the current values.
    void applyCornersAndBorder();

    void paint(QPainter* painter) override;

signals:
    void frameChanged();
    void highlightedChanged();
    void clicked();

protected:
    void geometryChange(const QRectF& newGeometry, const QRectF& oldGeometry) override;
    void componentComplete() override;
    /// A button the keyboard reaches (activeFocusOnTab) clicks on Return, Enter or Space and
    /// shows a focus outline.
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void touchEvent(QTouchEvent* event) override;
    void touchUngrabEvent() override;

private:
    void frameDidChange();

    qreal m_borderWidth = 0;
    qreal m_cornerRadius = 0;
    QColor m_borderColor = Qt::transparent;
    QColor m_backgroundColor = Qt::transparent;
    bool m_leftRounding = false;
    bool m_rightRounding = false;
    bool m_highlighted = false;
    std::optional<QList<qreal>> m_lineDash;
    QImage m_backgroundImage;
};

}  // namespace LumoraSDK

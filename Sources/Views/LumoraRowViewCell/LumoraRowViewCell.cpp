#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"

#include <QFont>
#include <QGuiApplication>
#include <QStyleHints>

#include "Extensions/ColorExtensions.h"
#include "Extensions/ViewExtensions.h"
#include "Lumora.h"
#include "Platform/Layers/GradientLayer.h"
#include "Platform/ViewAnimation.h"
#include "Services/Logger.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

namespace {

void presentWithoutPlayer(int index, const QPointer<LumoraRowView>&, std::function<void(int)>) {
    logger().log(QStringLiteral("LumoraSDK.LumoraRowViewCell - presentChannel at index %1: no "
                                "channel player is installed")
                     .arg(index),
                 LogLevel::debug);
}

/// The circle through which a ring of `lineWidth` shows: the view's outline moved inwards by
/// half the line, so that the whole stroke lies inside the view, which clips its children.
void fitRing(GradientLayer* ring, const QQuickItem* view, qreal lineWidth) {
    const QRectF bounds(0, 0, view->width(), view->height());
    ring->setPosition(QPointF(0, 0));
    ring->setSize(bounds.size());
    const qreal inset = lineWidth / 2;
    ring->setMask(
        roundedRectPath(bounds.adjusted(inset, inset, -inset, -inset), AllCorners, view->width()),
        lineWidth, std::nullopt);
}

}  // namespace

LumoraRowViewCell::ChannelPresenter LumoraRowViewCell::channelPresenter = presentWithoutPlayer;

const QColor LumoraRowViewCell::colorInactive = colorFromHexString(QStringLiteral("#c5c5c5"));
const QColor LumoraRowViewCell::textColorLabel = colorFromHexString(QStringLiteral("#1a1a1a"));
const QColor LumoraRowViewCell::textColorLabelNight = colorFromHexString(QStringLiteral("#ffffff"));
const QList<QColor> LumoraRowViewCell::gradientColorsDefault = {QColor(0, 0, 0, 0),
                                                                QColor(0, 0, 0, 0)};
const QString LumoraRowViewCell::placeholderImageName =
    QStringLiteral("placeholder-gradient-vertical");

const QImage& LumoraRowViewCell::placeholderImage() {
    static const QImage image = ImageView::named(placeholderImageName, Lumora::resourceBundle());
    return image;
}

LumoraRowViewCell::LumoraRowViewCell(QQuickItem* parent) : CollectionViewCell(parent) {}

LumoraRowViewCell::~LumoraRowViewCell() = default;

QString LumoraRowViewCell::description() const {
    // A cell made from its interface file has a QML type of its own on top of the C++ class.
    const QMetaObject* meta = metaObject();
    while (meta->superClass() && !QByteArray(meta->className()).startsWith("LumoraSDK::")) {
        meta = meta->superClass();
    }
    return QString::fromLatin1(meta->className())
        .replace(QStringLiteral("::"), QStringLiteral("."));
}

QQuickItem* LumoraRowViewCell::findOutlet(const char* name) const {
    return findChild<QQuickItem*>(QLatin1String(name));
}

void LumoraRowViewCell::componentComplete() {
    CollectionViewCell::componentComplete();
    m_label = outlet<QQuickItem>("label");
    m_labelPlaceholder = outlet<QQuickItem>("labelPlaceholder");
    m_imageButton = outlet<FrameButtonView>("imageButton");
    connect(m_imageButton, &FrameButtonView::clicked, this, &LumoraRowViewCell::openChannelsHost);
    // Until its picture arrives, and when it never does, the picture shows the placeholder.
    m_imageButton->setBackgroundImage(placeholderImage());
    m_labelPlaceholder->setVisible(m_isPlaceholder);
}

void LumoraRowViewCell::prepareForReuse() {
    CollectionViewCell::prepareForReuse();
    if (m_imageButton) {
        m_imageButton->setImage(QImage());
    }
}

// ---------------------------------------------------------------------------------------------
// Content

void LumoraRowViewCell::setup(int, const Channel& channel, const Branding& branding,
                              LumoraRowViewStyle style) {
    if (!m_label || !m_imageButton) {
        qFatal("%s - setup without its label and picture outlets", qPrintable(description()));
    }
    m_title = channel.title.value_or(QString());
    m_primaryColorActive = branding.primaryColor;
    m_secondaryColorActive = branding.secondaryColor;
    applyUiStyle(style);
}

bool LumoraRowViewCell::isActiveChannel(const Channel& channel) {
    return !channel.status || *channel.status == Status::Unread;
}

void LumoraRowViewCell::applyUiStyle(LumoraRowViewStyle style) {
    if (!m_label) {
        return;
    }
    switch (style) {
        case LumoraRowViewStyle::Light:
            m_label->setProperty("color", textColorLabel);
            break;
        case LumoraRowViewStyle::Dark:
            m_label->setProperty("color", textColorLabelNight);
            break;
        case LumoraRowViewStyle::Auto:
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
            // Only a platform that reports its scheme decides; otherwise the colour stays.
            switch (QGuiApplication::styleHints()->colorScheme()) {
                case Qt::ColorScheme::Dark:
                    m_label->setProperty("color", textColorLabelNight);
                    break;
                case Qt::ColorScheme::Light:
                    m_label->setProperty("color", textColorLabel);
                    break;
                case Qt::ColorScheme::Unknown:
                    break;
            }
#endif
            break;
    }
}

void LumoraRowViewCell::adjustScale(qreal multiplier) {
    m_scale = multiplier;
    if (m_labelTextSize && m_label) {
        setFontSize(m_label, *m_labelTextSize * multiplier);
    }
    // Rings drawn before the row's scale was known take their scaled widths now.
    if (m_borderTargetView) {
        if (m_inactiveGradientBorderLayer) {
            fitRing(m_inactiveGradientBorderLayer, m_borderTargetView,
                    ringWidth(m_borderTargetView, false));
        }
        if (m_activeGradientBorderLayer) {
            fitRing(m_activeGradientBorderLayer, m_borderTargetView,
                    ringWidth(m_borderTargetView, true));
        }
    }
}

void LumoraRowViewCell::captureLabelTextSize() {
    if (!m_labelTextSize && m_label) {
        m_labelTextSize = fontSize(m_label);
    }
}

void LumoraRowViewCell::setLabelText(const QString& text) {
    if (m_label) {
        m_label->setProperty("text", text);
    }
}

QString LumoraRowViewCell::labelText() const {
    return m_label ? m_label->property("text").toString() : QString();
}

void LumoraRowViewCell::setActive(bool active) {
    const bool changed = m_isActive != active;
    m_isActive = active;
    if (m_activeGradientBorderLayer) {
        m_activeGradientBorderLayer->setVisible(active);
    }
    if (m_inactiveGradientBorderLayer) {
        m_inactiveGradientBorderLayer->setVisible(!active);
    }
    updateAccessibility();
    if (changed) {
        Q_EMIT activeChanged();
    }
}

void LumoraRowViewCell::setPlaceholder(bool placeholder) {
    const bool changed = m_isPlaceholder != placeholder;
    m_isPlaceholder = placeholder;
    placeholderDidChange();
    updateAccessibility();
    if (changed) {
        Q_EMIT placeholderChanged();
    }
}

void LumoraRowViewCell::placeholderDidChange() {
    if (m_labelPlaceholder) {
        m_labelPlaceholder->setVisible(m_isPlaceholder);
    }
    if (!m_isPlaceholder) {
        return;
    }
    if (m_imageButton) {
        m_imageButton->setBackgroundImage(placeholderImage());
    }
    setLabelText(QString());
}

// ---------------------------------------------------------------------------------------------
// Rings

void LumoraRowViewCell::setBorderTargetView(FrameButtonView* view) {
    m_borderTargetView = view;
    // Rings are made once; they follow the view when the row's height changes its size.
    connect(view, &QQuickItem::widthChanged, this, &LumoraRowViewCell::layoutRings);
    connect(view, &QQuickItem::heightChanged, this, &LumoraRowViewCell::layoutRings);
}

void LumoraRowViewCell::setupBorders(FrameButtonView* view) {
    if (!view) {
        return;
    }
    if (!m_inactiveGradientBorderLayer) {
        m_inactiveGradientBorderLayer =
            makeRing(view, ringWidth(view, false), {colorInactive, colorInactive}, 0, !m_isActive);
    }
    if (m_primaryColorActive && m_secondaryColorActive && m_isActive &&
        !m_activeGradientBorderLayer) {
        m_activeGradientBorderLayer = makeRing(view, ringWidth(view, true),
                                               {colorFromHexString(*m_primaryColorActive, 1.0),
                                                colorFromHexString(*m_secondaryColorActive, 1.0)},
                                               1, m_isActive);
    }
}

qreal LumoraRowViewCell::ringWidth(const FrameButtonView* view, bool active) const {
    return view->borderWidth() * m_scale * (active ? 1.0 : kInactiveRingWidthFactor);
}

GradientLayer* LumoraRowViewCell::makeRing(FrameButtonView* view, qreal width,
                                           const QList<QColor>& colors, int stackIndex,
                                           bool visible) {
    // A radius of the view's width, on every corner, rounds the square view into a circle.
    GradientLayer* ring = createGradientBorder(view, width, colors, view->width(),
                                               LumoraSDK::AllCorners, std::nullopt);
    fitRing(ring, view, width);
    ring->setVisible(visible);
    ring->insertInto(view, stackIndex);
    return ring;
}

void LumoraRowViewCell::layoutRings() {
    if (!m_borderTargetView) {
        return;
    }
    for (GradientLayer* ring :
         {m_inactiveGradientBorderLayer.data(), m_activeGradientBorderLayer.data(),
          m_placeholderBorderLayer.data()}) {
        if (ring) {
            fitRing(ring, m_borderTargetView, ring->maskLineWidth());
        }
    }
}

// ---------------------------------------------------------------------------------------------
// Taps, the pop and the player

void LumoraRowViewCell::onLabelPressed() {
    if (m_labelTapEnabled) {
        openChannelsHost();
    }
}

void LumoraRowViewCell::openChannelsHost() {
    animatePop();
    if (!m_currentIndex) {
        logger().log(description() + QStringLiteral(" - openChannelsHost invalid index "),
                     LogLevel::debug);
        return;
    }
    onCellClicked();
    if (channelPresenter) {
        channelPresenter(*m_currentIndex, rowInstance, onChannelContainerDismissed);
    }
}

void LumoraRowViewCell::animatePop(std::function<void()> onComplete) {
    const QPointer<QQuickItem> content(contentView());
    ViewAnimation::animate(kPopHalfDuration, {{content.data(), "scale", m_animatePopScale}},
                           [content, onComplete = std::move(onComplete)](bool) {
                               ViewAnimation::animate(kPopHalfDuration,
                                                      {{content.data(), "scale", 1.0}},
                                                      [onComplete](bool) {
                                                          if (onComplete) {
                                                              onComplete();
                                                          }
                                                      });
                           });
}

QPointF LumoraRowViewCell::contentCenterInWindow() const {
    const QQuickItem* content = contentView();
    return mapToScene(QRectF(content->position(), content->size()).center());
}

void LumoraRowViewCell::updateCenterPosition() {
    if (m_isPlaceholder || !m_currentIndex) {
        return;
    }
    onCenterPositionUpdated(*m_currentIndex, contentCenterInWindow());
}

}  // namespace LumoraSDK

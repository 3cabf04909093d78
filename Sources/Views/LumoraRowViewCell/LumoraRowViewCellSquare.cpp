#include "Views/LumoraRowViewCell/LumoraRowViewCellSquare.h"

#include "Extensions/ViewExtensions.h"
#include "Platform/Layers/GradientLayer.h"
#include "Platform/Layers/ShapeLayer.h"
#include "Platform/Scheduler.h"
#include "Services/NetworkingService.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

namespace {
constexpr qreal kPopScale = 1.05;
}  // namespace

LumoraRowViewCellSquare::LumoraRowViewCellSquare(QQuickItem* parent) : LumoraRowViewCell(parent) {
    setAnimatePopScale(kPopScale);
}

void LumoraRowViewCellSquare::componentComplete() {
    LumoraRowViewCell::componentComplete();
    m_iconBackground = outlet<FrameButtonView>("iconBackground");
    m_iconImageButton = outlet<FrameButtonView>("iconImageButton");
    m_gradientBottom = outlet<ImageView>("gradientBottom");
    m_iconImageButton->setBackgroundImage(placeholderImage());
    setBorderTargetView(m_iconBackground);
    placeholderDidChange();
}

void LumoraRowViewCellSquare::prepareForReuse() {
    LumoraRowViewCell::prepareForReuse();
    if (m_iconImageButton) {
        m_iconImageButton->setImage(QImage());
    }
}

void LumoraRowViewCellSquare::setup(int currentDataIndex, const Channel& channel,
                                    const Branding& branding, LumoraRowViewStyle style) {
    LumoraRowViewCell::setup(currentDataIndex, channel, branding, style);
    setLabelText(QString());
    // Once the card has its size for this channel: the gradient's lower corners follow the
    // picture's rounded ones.
    MainQueue::async([self = QPointer<LumoraRowViewCellSquare>(this)] {
        if (self) {
            self->roundGradientCorners();
        }
    });
    setCurrentIndex(currentDataIndex);
    setPlaceholder(channel.isPlaceholder);
    if (!channel.isPlaceholder) {
        imageButton()->setContentMode(ImageView::ContentMode::AspectFill);
        // The card shows the preview of the channel's first page.
        const QString playcardUrl = channel.pages.isEmpty()
                                        ? QString()
                                        : channel.pages.first().playcardUrl.value_or(QString());
        NetworkingService& network = NetworkingService::sharedInstance();
        network.loadRemoteImage(imageButton(), ControlState::Normal, playcardUrl);
        network.loadRemoteImage(m_iconImageButton, ControlState::Normal,
                                channel.profilePictureUrl.value_or(QString()));
        setLabelText(channel.title.value_or(QString()));
        setActive(isActiveChannel(channel));
    }
    setupBorders(borderTargetView());
}

void LumoraRowViewCellSquare::roundGradientCorners() {
    if (!m_gradientBottom || !imageButton()) {
        return;
    }
    clearShapeLayers(m_gradientBottom);
    ShapeLayer* shape = createBorder(m_gradientBottom, 0, Qt::transparent, Qt::transparent,
                                     imageButton()->cornerRadius(),
                                     LumoraSDK::BottomLeft | LumoraSDK::BottomRight, std::nullopt);
    shape->insertInto(m_gradientBottom, 0);
}

void LumoraRowViewCellSquare::applyUiStyle(LumoraRowViewStyle) {}

void LumoraRowViewCellSquare::setupBorders(FrameButtonView* view) {
    LumoraRowViewCell::setupBorders(view);
    if (view && !m_placeholderBorderLayer) {
        m_placeholderBorderLayer = makeRing(view, view->borderWidth() * kPlaceholderRingWidthFactor,
                                            {colorInactive, colorInactive}, 2, isPlaceholder());
    }
}

void LumoraRowViewCellSquare::placeholderDidChange() {
    LumoraRowViewCell::placeholderDidChange();
    // A card whose channel has no preview shows its own colour, not the loading look.
    if (!isPlaceholder() && imageButton()) {
        imageButton()->setBackgroundImage(QImage());
    }
    if (m_placeholderBorderLayer) {
        m_placeholderBorderLayer->setVisible(isPlaceholder());
    }
}

}  // namespace LumoraSDK

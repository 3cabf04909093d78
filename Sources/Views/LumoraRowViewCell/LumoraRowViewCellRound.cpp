#include "Views/LumoraRowViewCell/LumoraRowViewCellRound.h"

#include "Extensions/ViewExtensions.h"
#include "Services/NetworkingService.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

namespace {
constexpr qreal kPopScale = 1.1;
constexpr int kTitleLines = 2;
}  // namespace

LumoraRowViewCellRound::LumoraRowViewCellRound(QQuickItem* parent) : LumoraRowViewCell(parent) {
    setAnimatePopScale(kPopScale);
}

void LumoraRowViewCellRound::componentComplete() {
    LumoraRowViewCell::componentComplete();
    m_imageFrameBackground = outlet<FrameButtonView>("imageFrameBackground");
    setBorderTargetView(m_imageFrameBackground);
}

void LumoraRowViewCellRound::setup(int currentDataIndex, const Channel& channel,
                                   const Branding& branding, LumoraRowViewStyle style) {
    LumoraRowViewCell::setup(currentDataIndex, channel, branding, style);
    setCurrentIndex(currentDataIndex);
    setPlaceholder(channel.isPlaceholder);
    if (!channel.isPlaceholder) {
        NetworkingService::sharedInstance().loadRemoteImage(
            imageButton(), ControlState::Normal, channel.profilePictureUrl.value_or(QString()));
        setLabelText(channel.title.value_or(QString()));
        updateTitleLines();
        setActive(isActiveChannel(channel));
        captureLabelTextSize();
        enableLabelTap();
    }
    // The layout pass that follows a set-up draws the rings for the new state.
    setupBorders(borderTargetView());
}

void LumoraRowViewCellRound::adjustScale(qreal multiplier) {
    LumoraRowViewCell::adjustScale(multiplier);
    if (labelTextSize()) {
        updateTitleLines();
    }
}

void LumoraRowViewCellRound::updateTitleLines() {
    if (!label() || calculatedLineCount(label()) >= kTitleLines) {
        return;
    }
    setLabelText(labelText() + QLatin1Char('\n'));
}

}  // namespace LumoraSDK

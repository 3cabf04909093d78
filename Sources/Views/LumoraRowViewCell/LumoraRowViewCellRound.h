#pragma once

#include <QtQml/qqmlregistration.h>
#include <QPointer>

#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// A round picture with the channel's title below it; the rings go around the picture's frame.
class LUMORASDK_EXPORT LumoraRowViewCellRound : public LumoraSDK::LumoraRowViewCell {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit LumoraRowViewCellRound(QQuickItem* parent = nullptr);

    void setup(int currentDataIndex, const Channel& channel, const Branding& branding,
               LumoraRowViewStyle style) override;
    void adjustScale(qreal multiplier) override;

    /// A title that takes one line gets an empty second one, so every title in the strip
    /// starts at the same height whatever its length.
    void updateTitleLines();

    FrameButtonView* imageFrameBackground() const { return m_imageFrameBackground; }

protected:
    void componentComplete() override;

private:
    QPointer<FrameButtonView> m_imageFrameBackground;
};

}  // namespace LumoraSDK

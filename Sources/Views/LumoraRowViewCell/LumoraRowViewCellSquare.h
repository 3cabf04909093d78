#pragma once

#include <QtQml/qqmlregistration.h>
#include <QPointer>

#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// A 9:16 card: the preview of the channel's first page fills it, a small round channel icon
/// sits in its corner (the rings go around the icon) and the title stands over a gradient that
/// darkens the card's lower part.
class LUMORASDK_EXPORT LumoraRowViewCellSquare : public LumoraSDK::LumoraRowViewCell {
    Q_OBJECT
    QML_ELEMENT

public:
    /// The placeholder ring is this fraction of the icon frame's border width, whatever the scale.
    static constexpr qreal kPlaceholderRingWidthFactor = 0.5;

    explicit LumoraRowViewCellSquare(QQuickItem* parent = nullptr);

    void setup(int currentDataIndex, const Channel& channel, const Branding& branding,
               LumoraRowViewStyle style) override;
    /// The title stands on the darkened picture in every style: its colour comes from the
    /// interface file and stays.
    void applyUiStyle(LumoraRowViewStyle style) override;
    void setupBorders(FrameButtonView* view) override;
    void prepareForReuse() override;

    FrameButtonView* iconBackground() const { return m_iconBackground; }
    FrameButtonView* iconImageButton() const { return m_iconImageButton; }
    ImageView* gradientBottom() const { return m_gradientBottom; }

protected:
    void componentComplete() override;
    void placeholderDidChange() override;

private:
    void roundGradientCorners();

    QPointer<FrameButtonView> m_iconBackground;
    QPointer<FrameButtonView> m_iconImageButton;
    QPointer<ImageView> m_gradientBottom;
};

}  // namespace LumoraSDK

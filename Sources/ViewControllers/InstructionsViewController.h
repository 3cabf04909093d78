#pragma once

#include <QColor>
#include <QPointer>
#include <functional>
#include <optional>

#include "Enums/LumoraRowViewStyle.h"
#include "Platform/ImageView.h"
#include "ViewControllers/PresentableViewController.h"
#include "Views/FrameButtonView.h"
#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

class ChannelsHostViewController;

/// The first-use overlay over the paused player: a frosted backdrop, a heading, the four gestures
/// (tap right, hold, tap left, swipe up) each with an icon, a title and a line of text, a start
/// button and a close button. Styled light or dark after the row that opened the player; without
/// a style the scene's own look stays. Closing it, either way, runs onDismissed once it is gone.
class LUMORASDK_EXPORT InstructionsViewController : public PresentableViewController {
    Q_OBJECT

public:
    /// Looks of the backdrop, numbered like the platform's blur effect styles; the scene renders
    /// its `effectStyle` property.
    enum class BlurEffectStyle { extraLight = 0, light = 1, dark = 2 };

    explicit InstructionsViewController(QObject* parent = nullptr);
    ~InstructionsViewController() override;

    // Outlets (valid once the view is loaded).
    QQuickItem* backgroundBlurView() const { return m_backgroundBlurView; }
    FrameButtonView* closeButton() const { return m_closeButton; }
    QQuickItem* mainTitle() const { return m_mainTitle; }
    QQuickItem* subTitle() const { return m_subTitle; }
    ImageView* icon1() const { return m_icon1; }
    QQuickItem* title1() const { return m_title1; }
    QQuickItem* description1() const { return m_description1; }
    ImageView* icon2() const { return m_icon2; }
    QQuickItem* title2() const { return m_title2; }
    QQuickItem* description2() const { return m_description2; }
    ImageView* icon3() const { return m_icon3; }
    QQuickItem* title3() const { return m_title3; }
    QQuickItem* description3() const { return m_description3; }
    ImageView* icon4() const { return m_icon4; }
    QQuickItem* title4() const { return m_title4; }
    QQuickItem* description4() const { return m_description4; }
    FrameButtonView* startButton() const { return m_startButton; }
    /// The start button's title label.
    QQuickItem* startButtonTitle() const { return m_startButtonTitle; }

    const QColor textColorPrimary;
    const QColor textColorSecondary;
    const QColor textColorSecondary2;
    const QColor textColorPrimaryNight;
    const QColor textColorSecondaryNight;
    const QColor textColorSecondary2Night;

    /// Set by the player from its row before the overlay appears; none keeps the scene's look.
    std::optional<LumoraRowViewStyle> uiStyle;
    /// Runs once the overlay has been dismissed.
    std::function<void()> onDismissed = [] {};

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;
    /// Dismisses the overlay; once it is gone, runs `completion`, then onDismissed.
    void dismiss(bool animated, Completion completion = {}) override;

    /// Light and dark restyle the overlay; automatic follows the platform's colour scheme where
    /// it reports one and otherwise changes nothing.
    void applyUiStyle(LumoraRowViewStyle style);
    void setColors(LumoraRowViewStyle style);
    void setImages(LumoraRowViewStyle style);

    Q_SLOT void onCloseButtonPressed();
    Q_SLOT void onStartButtonPressed();

    /// The overlay over `host`, styled after its row and presented animated; dismissing it lets
    /// the host play again.
    static InstructionsViewController* presentOver(ChannelsHostViewController& host);
    /// Makes the player show this overlay the first time it opens on the device.
    static void installAsInstructionsPresenter();

private:
    QList<QQuickItem*> titles() const;
    QList<QQuickItem*> descriptions() const;

    QPointer<QQuickItem> m_backgroundBlurView;
    QPointer<FrameButtonView> m_closeButton;
    QPointer<QQuickItem> m_mainTitle;
    QPointer<QQuickItem> m_subTitle;
    QPointer<ImageView> m_icon1;
    QPointer<QQuickItem> m_title1;
    QPointer<QQuickItem> m_description1;
    QPointer<ImageView> m_icon2;
    QPointer<QQuickItem> m_title2;
    QPointer<QQuickItem> m_description2;
    QPointer<ImageView> m_icon3;
    QPointer<QQuickItem> m_title3;
    QPointer<QQuickItem> m_description3;
    QPointer<ImageView> m_icon4;
    QPointer<QQuickItem> m_title4;
    QPointer<QQuickItem> m_description4;
    QPointer<FrameButtonView> m_startButton;
    QPointer<QQuickItem> m_startButtonTitle;
};

}  // namespace LumoraSDK

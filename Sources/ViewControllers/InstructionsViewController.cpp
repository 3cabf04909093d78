#include "ViewControllers/InstructionsViewController.h"

#include <QFont>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStyleHints>
#include <algorithm>

#include "Extensions/AccessibilityExtensions.h"
#include "Extensions/ColorExtensions.h"
#include "Extensions/ViewExtensions.h"
#include "Platform/Scheduler.h"
#include "Services/Logger.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostStage.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "Views/ChannelProgressCollectionDataSource.h"

namespace LumoraSDK {

namespace {

/// The platform's colour scheme as a row style, when the platform reports one. Qt reports it
/// from 6.5 on; before that it counts as unspecified, as it does for the row's own labels, so
/// an automatic overlay keeps the scene's look instead of guessing from the palette.
std::optional<LumoraRowViewStyle> platformStyle() {
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    switch (QGuiApplication::styleHints()->colorScheme()) {
        case Qt::ColorScheme::Light:
            return LumoraRowViewStyle::Light;
        case Qt::ColorScheme::Dark:
            return LumoraRowViewStyle::Dark;
        case Qt::ColorScheme::Unknown:
            break;
    }
#endif
    return std::nullopt;
}

}  // namespace

InstructionsViewController::InstructionsViewController(QObject* parent)
    : PresentableViewController(parent)
    , textColorPrimary(colorFromHexString(QStringLiteral("#111111"), 1.0))
    , textColorSecondary(colorFromHexString(QStringLiteral("#494949"), 1.0))
    , textColorSecondary2(colorFromHexString(QStringLiteral("#6D6D6D"), 1.0))
    , textColorPrimaryNight(colorFromHexString(QStringLiteral("#ffffff"), 1.0))
    , textColorSecondaryNight(colorFromHexString(QStringLiteral("#D2D2D2"), 1.0))
    , textColorSecondary2Night(colorFromHexString(QStringLiteral("#AFAFAF"), 1.0)) {}

InstructionsViewController::~InstructionsViewController() = default;

void InstructionsViewController::viewDidLoad() {
    PresentableViewController::viewDidLoad();
    m_backgroundBlurView = outlet(QStringLiteral("backgroundBlurView"));
    m_closeButton = outlet<FrameButtonView>(QStringLiteral("closeButton"));
    m_mainTitle = outlet(QStringLiteral("mainTitle"));
    m_subTitle = outlet(QStringLiteral("subTitle"));
    m_icon1 = outlet<ImageView>(QStringLiteral("icon1"));
    m_title1 = outlet(QStringLiteral("title1"));
    m_description1 = outlet(QStringLiteral("description1"));
    m_icon2 = outlet<ImageView>(QStringLiteral("icon2"));
    m_title2 = outlet(QStringLiteral("title2"));
    m_description2 = outlet(QStringLiteral("description2"));
    m_icon3 = outlet<ImageView>(QStringLiteral("icon3"));
    m_title3 = outlet(QStringLiteral("title3"));
    m_description3 = outlet(QStringLiteral("description3"));
    m_icon4 = outlet<ImageView>(QStringLiteral("icon4"));
    m_title4 = outlet(QStringLiteral("title4"));
    m_description4 = outlet(QStringLiteral("description4"));
    m_startButton = outlet<FrameButtonView>(QStringLiteral("startButton"));
    m_startButtonTitle = outlet(QStringLiteral("startButtonTitle"));

    connect(m_closeButton, &FrameButtonView::clicked, this,
            &InstructionsViewController::onCloseButtonPressed);
    connect(m_startButton, &FrameButtonView::clicked, this,
            &InstructionsViewController::onStartButtonPressed);
    // Escape or Return on the overlay (it takes the keyboard when it appears).
    connect(view(), SIGNAL(closeRequested()), this, SLOT(onCloseButtonPressed()));
    // A dialog for assistive technology; Tab moves between its two buttons and stays there.
    setAccessible(view(), QAccessible::Dialog, m_mainTitle->property("text").toString(),
                  m_subTitle->property("text").toString());
    makeAccessibleButton(m_startButton, m_startButtonTitle->property("text").toString(),
                         tr("Closes the instructions and plays the page"), true);
    makeAccessibleButton(m_closeButton, tr("Close"), tr("Closes the instructions"), true);
    chainTabFocus({m_startButton, m_closeButton});
}

void InstructionsViewController::viewWillAppear(bool animated) {
    PresentableViewController::viewWillAppear(animated);
    // The keyboard moves to the overlay's start button once it is on the window (on the next
    // turn), so that no key reaches the paused player below.
    QPointer<QQuickItem> start(m_startButton);
    MainQueue::async([start] {
        if (start) {
            start->forceActiveFocus(Qt::TabFocusReason);
        }
    });
    if (uiStyle) {
        applyUiStyle(*uiStyle);
    }
    // The row titles read as one list only when they share a size: all take the smallest.
    const QList<QQuickItem*> rowTitles = titles();
    qreal smallest = fontSize(rowTitles.first());
    for (QQuickItem* title : rowTitles) {
        smallest = std::min(smallest, fontSize(title));
    }
    for (QQuickItem* title : rowTitles) {
        setFontSize(title, smallest);
    }
}

void InstructionsViewController::dismiss(bool animated, Completion completion) {
    QPointer<InstructionsViewController> self(this);
    PresentableViewController::dismiss(animated, [self, completion = std::move(completion)] {
        if (completion) {
            completion();
        }
        if (self && self->onDismissed) {
            // A copy: the callback may release this overlay.
            const std::function<void()> dismissed = self->onDismissed;
            dismissed();
        }
    });
}

// ---------------------------------------------------------------------------------------------
// Style

void InstructionsViewController::applyUiStyle(LumoraRowViewStyle style) {
    if (style == LumoraRowViewStyle::Auto) {
        const std::optional<LumoraRowViewStyle> platform = platformStyle();
        if (!platform) {
            return;
        }
        style = *platform;
    }
    setColors(style);
    setImages(style);
}

void InstructionsViewController::setColors(LumoraRowViewStyle style) {
    if (style != LumoraRowViewStyle::Light && style != LumoraRowViewStyle::Dark) {
        logger().log(QStringLiteral("setColors - cannot determine which colors to use for style ") +
                         rawValue(style),
                     LogLevel::debug);
        return;
    }
    const bool light = style == LumoraRowViewStyle::Light;
    const BlurEffectStyle effect = light ? BlurEffectStyle::extraLight : BlurEffectStyle::dark;
    m_backgroundBlurView->setProperty("effectStyle", int(effect));
    m_mainTitle->setProperty("color", light ? textColorSecondary : textColorSecondaryNight);
    for (QQuickItem* title : titles()) {
        title->setProperty("color", light ? textColorPrimary : textColorPrimaryNight);
    }
    for (QQuickItem* description : descriptions()) {
        description->setProperty("color", light ? textColorSecondary2 : textColorSecondary2Night);
    }
    // A solid button that stands out from the backdrop: dark on light, light on dark.
    m_startButton->setBackgroundColor(light ? textColorPrimary : textColorPrimaryNight);
    m_startButtonTitle->setProperty("color", light ? textColorPrimaryNight : textColorPrimary);
}

void InstructionsViewController::setImages(LumoraRowViewStyle style) {
    if (style != LumoraRowViewStyle::Light && style != LumoraRowViewStyle::Dark) {
        logger().log(QStringLiteral("setImages - cannot determine which image to use for style ") +
                         rawValue(style),
                     LogLevel::debug);
        return;
    }
    const QString suffix =
        style == LumoraRowViewStyle::Light ? QStringLiteral("black") : QStringLiteral("white");
    m_icon1->setImageName(QStringLiteral("icon-instruction-forward-") + suffix);
    m_icon2->setImageName(QStringLiteral("icon-instruction-pause-") + suffix);
    m_icon3->setImageName(QStringLiteral("icon-instruction-back-") + suffix);
    m_icon4->setImageName(QStringLiteral("icon-instruction-swipe-") + suffix);
    m_closeButton->setImageName(QStringLiteral("icon-close-") + suffix);
}

QList<QQuickItem*> InstructionsViewController::titles() const {
    return {m_title1, m_title2, m_title3, m_title4};
}

QList<QQuickItem*> InstructionsViewController::descriptions() const {
    return {m_description1, m_description2, m_description3, m_description4};
}

// ---------------------------------------------------------------------------------------------
// Buttons

void InstructionsViewController::onCloseButtonPressed() {
    dismiss(true);
}

void InstructionsViewController::onStartButtonPressed() {
    dismiss(true);
}

// ---------------------------------------------------------------------------------------------
// Over the player

InstructionsViewController* InstructionsViewController::presentOver(
    ChannelsHostViewController& host) {
    QQuickWindow* window = host.window();
    QQmlEngine* engine = qmlEngine(host.view()) ? qmlEngine(host.view()) : engineFor(window);
    auto* overlay = instantiateFromStoryboard<InstructionsViewController>(*engine);
    overlay->uiStyle = host.rowInstance
                           ? lumoraRowViewStyleFromRawValue(host.rowInstance->uiStyle())
                           : std::nullopt;
    QPointer<ChannelsHostViewController> player(&host);
    // Over the card the channels play in, not the whole window.
    overlay->presentationFrame = [player](const QSizeF& window) {
        return player ? player->stage()->currentLayout().card : QRectF(QPointF(), window);
    };
    overlay->onDismissed = [player] {
        if (!player) {
            return;
        }
        player->isPresentingInstructions = false;
        // The keyboard goes back to the player's own keys.
        player->view()->forceActiveFocus();
        ChannelViewController* current = player->currentChannelViewController();
        if (!current) {
            return;
        }
        // While the overlay was up the host held back its first page; a page whose timer never
        // ran is started the way the host starts it when there is nothing to show first.
        const bool started = current->progressCollectionViewDataSource &&
                             current->progressCollectionViewDataSource->progressTimer;
        current->resumeCurrentMedia();
        if (!started) {
            player->onChannelTransitionComplete();
        }
    };
    getGlobalContext(window)->present(overlay, true);
    return overlay;
}

void InstructionsViewController::installAsInstructionsPresenter() {
    ChannelsHostViewController::instructionsPresenter = [](ChannelsHostViewController& host) {
        presentOver(host);
    };
}

}  // namespace LumoraSDK

#include "ViewControllers/ChannelsHostStage.h"

#include <QQuickPaintedItem>
#include <QQuickWindow>
#include <QScreen>
#include <QtMath>
#include <algorithm>

#include "Platform/AudioSession.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ImageManager.h"
#include "Services/DatabaseService.h"
#include "Services/NetworkingService.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

std::optional<bool> ChannelsHostStage::pointerInputOverride;

namespace {

const char* const kShownPictureUrl = "lumoraStagePictureUrl";
/// The backdrop is the page's picture reduced to a few points across, drawn into a texture a
/// sixteenth of the window's size and stretched back up over it: blurred, by any renderer.
constexpr QSize kBackdropPictureSize(18, 32);
constexpr int kBackdropTextureReduction = 16;

template <typename T = QQuickItem>
T* stageItem(QQuickItem* root, const QString& name) {
    auto* item = root->findChild<T*>(name);
    if (!item) {
        qFatal("ChannelsHostStage - missing outlet \"%s\" in the player's scene", qPrintable(name));
    }
    return item;
}

void place(QQuickItem* item, const QRectF& rect, bool shown = true) {
    item->setVisible(shown && !rect.isEmpty());
    if (item->isVisible()) {
        item->setPosition(rect.topLeft());
        item->setSize(rect.size());
    }
}

/// Painted items draw at the pixel ratio they last painted for; a new ratio needs new drawings.
void repaint(QQuickItem* item) {
    if (auto* painted = qobject_cast<QQuickPaintedItem*>(item)) {
        painted->update();
    }
    const QList<QQuickItem*> children = item->childItems();
    for (QQuickItem* child : children) {
        repaint(child);
    }
}

/// The page a channel shows: the current page of a player that has appeared, otherwise the page
/// it will open at.
std::optional<Page> shownPage(const ChannelViewController& player) {
    if (std::optional<Page> page = player.currentPage()) {
        return page;
    }
    if (!player.channel || player.channel->pages.isEmpty()) {
        return std::nullopt;
    }
    const Channel& channel = *player.channel;
    const int stored = DatabaseService::sharedInstance()
                           .channelInitialPageMapping()
                           .value(channel.id.value_or(QString()), 0)
                           .toInt();
    const qint64 index = channel.status == Status::Read
                             ? 0
                             : std::max<qint64>(stored, channel.initialPage.value_or(0));
    return channel.pages.at(int(std::clamp<qint64>(index, 0, channel.pages.size() - 1)));
}

/// The still a page shows: its picture, or a video's play card.
QString stillOf(const std::optional<Page>& page) {
    const std::optional<QString> still =
        page ? (page->isVideo() ? page->playcardUrl : page->url) : std::nullopt;
    return still.value_or(QString());
}

/// Loads `url` into `button` unless it shows it already.
void showPicture(FrameButtonView* button, const QString& url) {
    if (button->property(kShownPictureUrl).toString() == url) {
        return;
    }
    button->setProperty(kShownPictureUrl, url);
    button->setImage(QImage());
    if (!url.isEmpty()) {
        NetworkingService::sharedInstance().loadRemoteImage(button, ControlState::Normal, url);
    }
}
}  // namespace

ChannelsHostStage::ChannelsHostStage(ChannelsHostViewController& host) : m_host(host) {
    QQuickItem* root = host.view();
    m_card = stageItem(root, QStringLiteral("stageCard"));
    m_chrome = stageItem(root, QStringLiteral("stageChrome"));
    m_backdrop = stageItem<ImageView>(root, QStringLiteral("stageBackdrop"));
    m_previousNeighbour = stageItem<FrameButtonView>(root, QStringLiteral("previousNeighbour"));
    m_nextNeighbour = stageItem<FrameButtonView>(root, QStringLiteral("nextNeighbour"));
    m_previousArrow = stageItem(root, QStringLiteral("previousArrowButton"));
    m_nextArrow = stageItem(root, QStringLiteral("nextArrowButton"));
    m_closeButton = stageItem(root, QStringLiteral("stageCloseButton"));
    m_playPauseButton = stageItem(root, QStringLiteral("playPauseButton"));
    m_soundButton = stageItem(root, QStringLiteral("soundButton"));

    connect(root, SIGNAL(stageControlClicked(QString)), this, SLOT(onControlClicked(QString)));
    connect(root, &QQuickItem::widthChanged, this, &ChannelsHostStage::layout);
    connect(root, &QQuickItem::heightChanged, this, &ChannelsHostStage::layout);
    connect(root, &QQuickItem::windowChanged, this, &ChannelsHostStage::watchScreen);
    watchScreen();
    layout();
}

ChannelsHostStage::~ChannelsHostStage() = default;

void ChannelsHostStage::watchScreen() {
    if (m_screen) {
        disconnect(m_screen, nullptr, this, nullptr);
    }
    QQuickWindow* window = m_host.view()->window();
    if (!window) {
        return;
    }
    connect(window, &QWindow::screenChanged, this, &ChannelsHostStage::watchScreen,
            Qt::UniqueConnection);
    m_screen = window->screen();
    if (m_screen) {
        // A change of scale comes as a change of the screen's dots per inch.
        connect(m_screen, &QScreen::logicalDotsPerInchChanged, this, &ChannelsHostStage::layout);
        connect(m_screen, &QScreen::physicalDotsPerInchChanged, this, &ChannelsHostStage::layout);
    }
    layout();
}

StageLayout ChannelsHostStage::currentLayout() const {
    QQuickItem* root = m_host.view();
    const qreal ratio = root->window() ? root->window()->devicePixelRatio() : 1;
    return StageLayout(root->size(), ratio,
                       pointerInputOverride.value_or(StageLayout::hasPointerInput()));
}

void ChannelsHostStage::layout() {
    QQuickItem* root = m_host.view();
    const StageLayout stage = currentLayout();
    const qreal ratio = root->window() ? root->window()->devicePixelRatio() : 1;
    if (std::exchange(m_devicePixelRatio, ratio) != ratio) {
        repaint(root);
    }

    const qreal oldWidth = m_card->width();
    m_card->setPosition(stage.card.topLeft());
    m_card->setSize(stage.card.size());
    // The pager kept its page through the resize; where it last came to rest moved with it, so
    // the next move is still told apart as forward or back.
    if (m_host.channelsCollectionDataSource && oldWidth > 0 && stage.card.width() != oldWidth) {
        m_host.channelsCollectionDataSource->lastContentOffsetX *= stage.card.width() / oldWidth;
    }
    // At rest (not growing, shrinking or dragged) the pager fills the card.
    QQuickItem* container = m_host.channelsCollectionContainerView();
    if (container && container->scale() == 1.0) {
        container->setPosition(QPointF(0, m_host.channelsContainerTopOffset));
    }

    m_backdrop->setTextureSize(
        QSize(std::max(1, qCeil(root->width() / kBackdropTextureReduction)),
              std::max(1, qCeil(root->height() / kBackdropTextureReduction))));
    refresh();
}

void ChannelsHostStage::refresh() {
    const StageLayout stage = currentLayout();
    m_chrome->setVisible(!stage.isFullWindow);
    place(m_previousArrow, stage.previousArrow);
    place(m_nextArrow, stage.nextArrow);
    place(m_closeButton, stage.closeButton);

    const std::optional<int> index = m_host.currentVisibleChannelIndex();
    const auto neighbourAt = [this, &index](int step) -> std::optional<int> {
        if (!index || *index + step < 0 ||
            *index + step >= m_host.contentViewControllers().size()) {
            return std::nullopt;
        }
        return *index + step;
    };
    place(m_previousNeighbour, stage.previousNeighbour, neighbourAt(-1).has_value());
    place(m_nextNeighbour, stage.nextNeighbour, neighbourAt(1).has_value());
    showNeighbour(m_previousNeighbour, neighbourAt(-1));
    showNeighbour(m_nextNeighbour, neighbourAt(1));

    ChannelViewController* player = m_host.currentChannelViewController();
    const std::optional<Page> page = player ? player->currentPage() : std::nullopt;
    if (!stage.isFullWindow) {
        showBackdrop(stillOf(page));
    }
    place(m_playPauseButton, stage.playPauseButton);
    m_playPauseButton->setProperty("paused", m_host.isPausedByViewer);
    place(m_soundButton, stage.soundButton, page && page->isVideo());
    m_soundButton->setProperty("soundOn", m_host.isSoundOn());
}

void ChannelsHostStage::showNeighbour(FrameButtonView* view, std::optional<int> index) {
    if (!view->isVisible() || !index) {
        return;
    }
    const ChannelViewController* player = m_host.contentViewControllers().at(*index);
    showPicture(view, stillOf(shownPage(*player)));
    const std::optional<Channel>& channel = player->channel;
    view->setProperty("title", channel ? channel->title.value_or(QString()) : QString());
    showPicture(view->findChild<FrameButtonView*>(QStringLiteral("neighbourPicture")),
                channel ? channel->profilePictureUrl.value_or(QString()) : QString());
}

void ChannelsHostStage::showBackdrop(const QString& url) {
    if (m_backdrop->property(kShownPictureUrl).toString() == url) {
        return;
    }
    m_backdrop->setProperty(kShownPictureUrl, url);
    m_backdrop->setImage(QImage());
    QPointer<ImageView> backdrop = m_backdrop;
    ImageManager::sharedInstance().loadImage(QUrl(url), [backdrop,
                                                         url](const ImageManager::Result& result) {
        if (backdrop && backdrop->property(kShownPictureUrl).toString() == url &&
            !result.image.isNull()) {
            backdrop->setImage(result.image.scaled(
                kBackdropPictureSize, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation));
        }
    });
}

bool ChannelsHostStage::isOnCardControl(QPointF scenePosition) const {
    for (QQuickItem* button : {m_playPauseButton.data(), m_soundButton.data()}) {
        if (button && button->isVisible() &&
            button->contains(button->mapFromScene(scenePosition))) {
            return true;
        }
    }
    return false;
}

// ---------------------------------------------------------------------------------------------
// What the controls do

void ChannelsHostStage::onControlClicked(const QString& control) {
    using Target = ChannelsHostViewController::HoldTarget;
    if (control == QLatin1String("previousArrow") || control == QLatin1String("nextArrow")) {
        // A click on an arrow is a short press on that side of the card.
        const Target target =
            control == QLatin1String("nextArrow") ? Target::Next : Target::Previous;
        m_host.onButtonHold(GestureState::Began, target);
        m_host.onButtonHold(GestureState::Ended, target);
    } else if (control == QLatin1String("close") || control == QLatin1String("backdrop")) {
        m_host.onCloseButtonHitAreaPressed();
    } else if (control == QLatin1String("previousNeighbour")) {
        moveToNeighbour(NavigationDirection::reverse);
    } else if (control == QLatin1String("nextNeighbour")) {
        moveToNeighbour(NavigationDirection::forward);
    } else if (control == QLatin1String("playPause")) {
        togglePlayback();
    } else if (control == QLatin1String("sound")) {
        toggleSound();
    }
}

void ChannelsHostStage::togglePlayback() {
    m_host.isPausedByViewer = !m_host.isPausedByViewer;
    if (m_host.isPausedByViewer) {
        m_host.pauseAllMedia();
    } else if (ChannelViewController* player = m_host.currentChannelViewController()) {
        player->resumeCurrentMedia();
    }
    refresh();
}

void ChannelsHostStage::toggleSound() {
    if (!m_host.isSoundOn()) {
        m_host.onOutputVolumeChanged();
        return;
    }
    m_host.isSoundMutedByViewer = true;
    // Muted, the player needs none of the audio settings it took: they go back as on closing.
    AudioSession::sharedInstance().setCategory(m_host.startingAudioCategory,
                                               m_host.startingAudioMode,
                                               m_host.startingAudioCategoryOptions);
    if (m_host.videoNode) {
        m_host.videoNode->setMuted(true);
    }
    refresh();
}

void ChannelsHostStage::moveToNeighbour(NavigationDirection direction) {
    const std::optional<int> index = m_host.currentVisibleChannelIndex();
    CollectionView* pager = m_host.channelsCollectionView();
    // Touches are off while the pager turns to another channel.
    if (!index || !pager->isUserInteractionEnabled()) {
        return;
    }
    const int target = *index + (direction == NavigationDirection::forward ? 1 : -1);
    if (target < 0 || target >= pager->numberOfItems(0)) {
        return;
    }
    if (direction == NavigationDirection::forward) {
        m_host.trackSkippedChannel();
    }
    m_host.pauseAllMedia();
    // They come back once the turn has ended (onChannelTransitionComplete).
    pager->setUserInteractionEnabled(false);
    pager->scrollToItem(IndexPath{target, 0}, CollectionView::ScrollPosition::left, true);
}

}  // namespace LumoraSDK

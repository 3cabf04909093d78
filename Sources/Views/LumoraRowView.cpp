#include "Views/LumoraRowView.h"

#include <QCoreApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QThread>

#include "Extensions/ChannelDiffAware.h"
#include "Extensions/ChannelListExtensions.h"
#include "Extensions/CollectionViewReload.h"
#include "Extensions/ColorExtensions.h"
#include "Extensions/DiffExtensions.h"
#include "Lumora.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Scheduler.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"
#include "Services/VideoPrefetchService.h"
#include "Views/LumoraRowCollectionView.h"
#include "Views/LumoraRowViewCell/LumoraRowViewCell.h"
#include "Views/LumoraRowViewDataSource.h"

namespace LumoraSDK {

namespace {

const QString kInterfaceFile = QStringLiteral("LumoraRowView.qml");
const QString kCollectionViewOutlet = QStringLiteral("collectionView");

/// Engine for rows made from C++, which no QML engine builds.
QQmlEngine* sharedEngine() {
    static QPointer<QQmlEngine> engine;
    if (!engine) {
        engine = new QQmlEngine(QCoreApplication::instance());
    }
    return engine;
}

/// A QML file of the SDK's resource bundle.
QUrl bundleFileUrl(const QString& name) {
    const auto bundle = Lumora::resourceBundle();
    if (!bundle) {
        qFatal("%s - the SDK's resource bundle is missing",
               qPrintable(LumoraRowView::description()));
    }
    const QString path = bundle->resourcePath() + QLatin1Char('/') + name;
    return path.startsWith(QLatin1String(":/")) ? QUrl(QStringLiteral("qrc") + path)
                                                : QUrl::fromLocalFile(path);
}

QList<Channel> placeholderChannels() {
    Channel placeholder;
    placeholder.isPlaceholder = true;
    return QList<Channel>(LumoraRowView::placeholderCount, placeholder);
}

/// Runs `work` for the row on the GUI thread: at once when already there, else on the main queue.
void onRowThread(LumoraRowView* row, void (LumoraRowView::*work)()) {
    if (QThread::currentThread() == row->thread()) {
        (row->*work)();
        return;
    }
    MainQueue::async([row = QPointer<LumoraRowView>(row), work] {
        if (row) {
            (row.data()->*work)();
        }
    });
}

}  // namespace

LumoraRowView::LumoraRowView(QQuickItem* parent) : QQuickItem(parent) {
    // A row declared in QML sets itself up once QML has built it (componentComplete); one made
    // in C++ gets no such call and sets itself up on the next turn of the event loop.
    QMetaObject::invokeMethod(this, &LumoraRowView::setupIfNeeded, Qt::QueuedConnection);
}

LumoraRowView::~LumoraRowView() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.removeObserver(this, Lumora::openChannelDidChange);
    center.removeObserver(this, Lumora::sdkDidInit);
    center.removeObserver(this, Lumora::userIdDidChange);
    // The strip calls its data source until it goes; it goes first.
    delete m_view;
}

LumoraRowCollectionView* LumoraRowView::collectionView() const {
    return m_collectionView;
}

void LumoraRowView::componentComplete() {
    QQuickItem::componentComplete();
    setupIfNeeded();
}

void LumoraRowView::setupIfNeeded() {
    // An item QML is still building waits for componentComplete.
    if (m_isSetUp || !isComponentComplete()) {
        return;
    }
    m_isSetUp = true;
    loadViewFromInterfaceFile(qmlEngine(this) ? qmlEngine(this) : sharedEngine());
    for (const LumoraRowViewCellType type :
         {LumoraRowViewCellType::Round, LumoraRowViewCellType::Square}) {
        const QString identifier = LumoraRowViewDataSource::reuseIdentifier(type);
        m_collectionView->registerCell(identifier,
                                       bundleFileUrl(identifier + QStringLiteral(".qml")));
    }
    addObservers();
    setupCollectionView([this] { showPlaceholders(); });
    // A style or cell type written while QML built the row is already in the strip just set
    // up; what remains of its effect is the reload.
    if (std::exchange(m_reloadAfterSetup, false)) {
        reloadData();
    }
}

void LumoraRowView::loadViewFromInterfaceFile(QQmlEngine* engine) {
    const QUrl url = bundleFileUrl(kInterfaceFile);
    QQmlComponent component(engine, url, QQmlComponent::PreferSynchronous);
    auto* view = qobject_cast<QQuickItem*>(component.beginCreate(engine->rootContext()));
    if (!view) {
        qFatal("%s - cannot load %s: %s", qPrintable(description()), qPrintable(url.toString()),
               qPrintable(component.errorString()));
    }
    QQmlEngine::setObjectOwnership(view, QQmlEngine::CppOwnership);
    view->setParent(this);
    view->setParentItem(this);
    component.completeCreate();
    m_view = view;
    m_collectionView = view->findChild<LumoraRowCollectionView*>(kCollectionViewOutlet);
    if (!m_collectionView) {
        qFatal("%s - outlet %s is missing from %s", qPrintable(description()),
               qPrintable(kCollectionViewOutlet), qPrintable(url.toString()));
    }
}

void LumoraRowView::addObservers() {
    NotificationCenter& center = NotificationCenter::defaultCenter();
    center.addObserver(this, Lumora::openChannelDidChange, [this](const Notification&) {
        onRowThread(this, &LumoraRowView::openChannelChanged);
    });
    center.addObserver(this, Lumora::sdkDidInit, [this](const Notification&) {
        onRowThread(this, &LumoraRowView::reloadData);
    });
    center.addObserver(this, Lumora::userIdDidChange, [this](const Notification&) {
        onRowThread(this, &LumoraRowView::reloadData);
    });
}

void LumoraRowView::setupCollectionView(std::function<void()> onComplete) {
    MainQueue::async([self = QPointer<LumoraRowView>(this), onComplete = std::move(onComplete)] {
        if (!self || !self->m_collectionView) {
            return;
        }
        auto source = std::make_unique<LumoraRowViewDataSource>(
            QList<Channel>(), self->m_cellScale,
            QMarginsF(self->m_leftInset, 0, self->m_rightInset, 0), self->m_cellSpacing,
            self->m_cellType, self->m_branding, self->m_uiStyle);
        source->rowInstance = self;
        source->onChannelContainerClosed = [row = self](int index) {
            if (row) {
                row->channelContainerClosed(index);
            }
        };
        // The strip has no content or indicator insets of its own: the section insets are all.
        LumoraRowCollectionView& strip = *self->m_collectionView;
        strip.setDelegate(source.get());
        strip.setDataSource(source.get());
        // A programmatic scroll cut short by the rebuild would otherwise leave the strip dead.
        strip.setUserInteractionEnabled(true);
        self->m_collectionDataSource = std::move(source);
        if (onComplete) {
            onComplete();
        }
    });
}

void LumoraRowView::showPlaceholders() {
    cellCenters() = QList<std::optional<QPointF>>(placeholderCount, std::nullopt);
    loadDataWithBatchUpdate(placeholderChannels(), true);
}

// ---------------------------------------------------------------------------------------------
// Loading

void LumoraRowView::reloadData() {
    logOperation(QStringLiteral("reloadData"));
    if (m_delegate) {
        m_delegate->onChannelsDataLoadStarted();
    }
    Q_EMIT channelsDataLoadStarted();
    getChannels(
        [this](const QList<Channel>& channels) {
            const int count = int(channels.size());
            if (m_delegate) {
                m_delegate->onChannelsDataLoadComplete(true, std::nullopt, count);
            }
            Q_EMIT channelsDataLoadComplete(true, QString(), count);
        },
        [this](const RequestError& error) {
            const int count = int(DatabaseService::sharedInstance().allChannelsData().size());
            if (m_delegate) {
                m_delegate->onChannelsDataLoadComplete(false, error, count);
            }
            Q_EMIT channelsDataLoadComplete(
                false, errorDescription(error).value_or(describe(error)), count);
        });
}

void LumoraRowView::getChannels(ChannelsCompletion onComplete, ErrorCompletion onError) {
    // Both answers arrive on the network thread; everything else happens on the GUI thread,
    // and only while the row still exists.
    const QPointer<LumoraRowView> self(this);
    Lumora::sharedInstance().requestGetChannels(
        [self, onComplete](const QList<Channel>& channels) {
            MainQueue::async([self, onComplete, channels] {
                if (!self) {
                    return;
                }
                logOperation(QStringLiteral("requestGetChannels OK"));
                DatabaseService& database = DatabaseService::sharedInstance();
                database.setAllChannelsData(channels);
                // The server decides what is read when a list arrives.
                updateLocalChannelReadMapping(channels, database);
                self->cellCenters() = QList<std::optional<QPointF>>(channels.size(), std::nullopt);
                self->loadDataWithBatchUpdate(channels, true);
                VideoPrefetchService::prefetchVideoItems(
                    getInitialPageVideoUrls(channels, database));
                if (onComplete) {
                    onComplete(channels);
                }
            });
        },
        [self, onError](const RequestError& error) {
            MainQueue::async([self, onError, error] {
                if (!self) {
                    return;
                }
                logOperation(QStringLiteral("requestGetChannels - ") + describe(error));
                if (DatabaseService::sharedInstance().allChannelsData().isEmpty()) {
                    self->showPlaceholders();
                }
                if (onError) {
                    onError(error);
                }
            });
        });
}

void LumoraRowView::loadDataWithBatchUpdate(QList<Channel> newItems, bool animate) {
    MainQueue::async(
        [self = QPointer<LumoraRowView>(this), newItems = std::move(newItems), animate] {
            if (!self || !self->m_collectionView || !self->m_collectionDataSource) {
                return;
            }
            LumoraRowCollectionView& strip = *self->m_collectionView;
            LumoraRowViewDataSource& source = *self->m_collectionDataSource;
            const auto reloadSection = [strip = QPointer<LumoraRowCollectionView>(&strip)] {
                if (strip) {
                    strip->performBatchUpdates([&] { strip->reloadSections({0}); });
                }
            };
            if (!animate) {
                source.dataItems = newItems;
                reloadSection();
                return;
            }
            // The diff pairs channels by id only, so the moved and kept cells are refreshed by a
            // reload of the whole section once the animated batch is in.
            const QList<Channel> oldItems = source.dataItems;
            reload(
                strip, diff(oldItems, newItems), 0, [&] { source.dataItems = newItems; },
                [reloadSection](bool) { reloadSection(); });
        });
}

// ---------------------------------------------------------------------------------------------
// Properties

QString LumoraRowView::uiStyle() const {
    return rawValue(m_uiStyle);
}

void LumoraRowView::setUiStyle(const QString& text) {
    const QString lowered = text.toLower();
    const QString previous = rawValue(m_uiStyle);
    m_uiStyle = lumoraRowViewStyleFromRawValue(lowered).value_or(LumoraRowViewStyle::Auto);
    if (rawValue(m_uiStyle) != previous) {
        Q_EMIT uiStyleChanged();
    }
    // Compared with the text as written, so an unknown style rebuilds even though it stays Auto.
    if (lowered != previous) {
        styleOrTypeDidChange();
    }
}

QString LumoraRowView::cellType() const {
    return rawValue(m_cellType);
}

void LumoraRowView::setCellType(const QString& text) {
    const QString lowered = text.toLower();
    const QString previous = rawValue(m_cellType);
    m_cellType = lumoraRowViewCellTypeFromRawValue(lowered).value_or(LumoraRowViewCellType::Round);
    if (rawValue(m_cellType) != previous) {
        Q_EMIT cellTypeChanged();
    }
    if (lowered != previous) {
        styleOrTypeDidChange();
    }
}

void LumoraRowView::styleOrTypeDidChange() {
    // Written while QML builds the row: taken into the set-up, and the reload follows it once
    // the host's signal handlers are connected.
    if (!m_isSetUp) {
        m_reloadAfterSetup = true;
        return;
    }
    setupCollectionView({});
    reloadData();
}

void LumoraRowView::setCellScale(qreal scale) {
    if (!qFuzzyCompare(m_cellScale, scale)) {
        m_cellScale = scale;
        Q_EMIT cellScaleChanged();
    }
}

void LumoraRowView::setCellSpacing(qreal spacing) {
    if (!qFuzzyCompare(m_cellSpacing, spacing)) {
        m_cellSpacing = spacing;
        Q_EMIT cellSpacingChanged();
    }
}

void LumoraRowView::setLeftInset(qreal inset) {
    if (m_leftInset != inset) {
        m_leftInset = inset;
        Q_EMIT leftInsetChanged();
    }
}

void LumoraRowView::setRightInset(qreal inset) {
    if (m_rightInset != inset) {
        m_rightInset = inset;
        Q_EMIT rightInsetChanged();
    }
}

QColor LumoraRowView::primaryColor() const {
    return colorFromHexString(
        m_branding.primaryColor.value_or(Branding::defaultColors.primaryColor.value_or(QString())),
        1.0);
}

void LumoraRowView::setPrimaryColor(const QColor& color) {
    const QString hex = toHexString(color);
    if (m_branding.primaryColor != hex) {
        m_branding.primaryColor = hex;
        Q_EMIT primaryColorChanged();
    }
}

QColor LumoraRowView::secondaryColor() const {
    return colorFromHexString(m_branding.secondaryColor.value_or(
                                  Branding::defaultColors.secondaryColor.value_or(QString())),
                              1.0);
}

void LumoraRowView::setSecondaryColor(const QColor& color) {
    const QString hex = toHexString(color);
    if (m_branding.secondaryColor != hex) {
        m_branding.secondaryColor = hex;
        Q_EMIT secondaryColorChanged();
    }
}

void LumoraRowView::setBranding(const Branding& branding) {
    const Branding previous = m_branding;
    m_branding = branding;
    if (previous.primaryColor != branding.primaryColor) {
        Q_EMIT primaryColorChanged();
    }
    if (previous.secondaryColor != branding.secondaryColor) {
        Q_EMIT secondaryColorChanged();
    }
}

void LumoraRowView::setCurrentlyOpenChannelIndex(int index) {
    if (m_currentlyOpenChannelIndex != index) {
        m_currentlyOpenChannelIndex = index;
        Q_EMIT currentlyOpenChannelIndexChanged();
    }
}

void LumoraRowView::setChannelHostActive(bool active) {
    if (m_isChannelHostActive != active) {
        m_isChannelHostActive = active;
        Q_EMIT isChannelHostActiveChanged();
    }
}

QList<std::optional<QPointF>>& LumoraRowView::cellCenters() {
    if (!m_cellCenters) {
        m_cellCenters.emplace();
    }
    return *m_cellCenters;
}

const QList<std::optional<QPointF>>& LumoraRowView::cellCenters() const {
    static const QList<std::optional<QPointF>> none;
    return m_cellCenters ? *m_cellCenters : none;
}

void LumoraRowView::logOperation(const QString& operation) {
    logger().log(description() + QStringLiteral(" - ") + operation, LogLevel::debug);
}

}  // namespace LumoraSDK

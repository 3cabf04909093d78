#include "Views/ChannelMediaCollectionViewCell.h"

#include "Extensions/ViewExtensions.h"
#include "Lumora.h"
#include "Platform/CollectionView/CollectionView.h"
#include "Platform/ImageManager.h"
#include "Platform/ImageView.h"
#include "Platform/Layers/ShapeLayer.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Scheduler.h"

namespace LumoraSDK {

const QString ChannelMediaCollectionViewCell::kMediaIndexKey = QStringLiteral("mediaIndex");
const QString ChannelMediaCollectionViewCell::kIsReadyKey = QStringLiteral("isReady");

namespace {
const QString kImageViewOutlet = QStringLiteral("imageView");
}  // namespace

ChannelMediaCollectionViewCell::ChannelMediaCollectionViewCell(QQuickItem* parent)
    : CollectionViewCell(parent) {}

ChannelMediaCollectionViewCell::~ChannelMediaCollectionViewCell() = default;

QString ChannelMediaCollectionViewCell::identifier() {
    return QStringLiteral("ChannelMediaCollectionViewCell");
}

QUrl ChannelMediaCollectionViewCell::interfaceUrl() {
    return QUrl(QStringLiteral("qrc:/LumoraSDK/LumoraSDK.bundle/%1.qml").arg(identifier()));
}

void ChannelMediaCollectionViewCell::registerIn(CollectionView& view) {
    view.registerCell(identifier(), interfaceUrl());
}

void ChannelMediaCollectionViewCell::componentComplete() {
    CollectionViewCell::componentComplete();
    imageView = findChild<ImageView*>(kImageViewOutlet);
    if (!imageView) {
        qFatal("%s - missing outlet \"%s\" in %s", qPrintable(identifier()),
               qPrintable(kImageViewOutlet), qPrintable(interfaceUrl().toString()));
    }
}

void ChannelMediaCollectionViewCell::setPage(const std::optional<Page>& page, int mediaIndex) {
    this->mediaIndex = mediaIndex;
    mediaUrl = page ? page->url : std::nullopt;
    if (imageView) {
        imageView->setImage(QImage());
        imageView->setVisible(true);
    }
    if (!page || !page->mediaType || !page->url) {
        if (imageView) {
            imageView->setVisible(false);
        }
        return;
    }

    // After the current layout pass: a fresh, clear background under the content.
    MainQueue::async([cell = QPointer(this)] {
        if (!cell) {
            return;
        }
        clearShapeLayers(cell);
        auto* background = new ShapeLayer();
        background->setPosition(QPointF(0, 0));
        background->setSize(cell->size());
        background->setBackgroundColor(Qt::transparent);
        background->insertInto(cell, 0);
    });

    const std::optional<QString> still = page->isVideo() ? page->playcardUrl : page->url;
    QUrl url(still.value_or(QString()), QUrl::StrictMode);
    if (!url.isValid()) {
        url = QUrl();  // not an address: the load completes at once, with nothing
    }
    const quint64 generation = ++m_loadGeneration;
    ImageManager::sharedInstance().loadImage(
        url, [cell = QPointer(this), generation](const ImageManager::Result& result) {
            if (!cell || cell->m_loadGeneration != generation) {
                return;
            }
            if (!result.image.isNull() && cell->imageView) {
                cell->imageView->setImage(result.image);
            }
            cell->setMediaReady(true);
        });
}

void ChannelMediaCollectionViewCell::prepareForReuse() {
    CollectionViewCell::prepareForReuse();
    if (!imageView) {
        qFatal("%s - prepareForReuse without an image view", qPrintable(identifier()));
    }
    imageView->setImage(QImage());
    setMediaReady(false);
}

void ChannelMediaCollectionViewCell::setMediaReady(bool ready) {
    const bool changed = m_mediaReady != ready;
    m_mediaReady = ready;
    if (!changed) {
        return;
    }
    const int index = mediaIndex;
    MainQueue::async([cell = QPointer(this), index, ready] {
        const bool isReady = cell ? cell->m_mediaReady : ready;
        NotificationCenter::defaultCenter().post(Lumora::onChannelMediaReady,
                                                 {{kMediaIndexKey, index}, {kIsReadyKey, isReady}});
    });
}

}  // namespace LumoraSDK

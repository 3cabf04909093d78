#pragma once

#include <QtQml/qqmlregistration.h>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <optional>

#include "Models/Page.h"
#include "Platform/CollectionView/CollectionViewCell.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class CollectionView;
class ImageView;

/// One full-screen page of a channel's media list. It shows the page's still image (an image
/// page's picture, a video page's play card), filling the cell, and announces through
/// Lumora::onChannelMediaReady when that image has finished loading, so that playback of the page
/// can start. A failed load counts as finished: a page never waits for ever on a broken image.
class LUMORASDK_EXPORT ChannelMediaCollectionViewCell : public LumoraSDK::CollectionViewCell {
    Q_OBJECT
    QML_ELEMENT

public:
    /// User-info keys of the readiness notice.
    static const QString kMediaIndexKey;  // "mediaIndex": int
    static const QString kIsReadyKey;     // "isReady": bool

    explicit ChannelMediaCollectionViewCell(QQuickItem* parent = nullptr);
    ~ChannelMediaCollectionViewCell() override;

    /// The reuse identifier, which is the class's name.
    static QString identifier();
    /// The cell's interface file in the SDK's resource bundle; its image view is the item named
    /// "imageView".
    static QUrl interfaceUrl();
    /// Makes `view` create these cells from the interface file under identifier().
    static void registerIn(CollectionView& view);

    /// Shows `page` as page `mediaIndex` of the list: clears the image and starts loading the
    /// page's still; without a page, a media type or a url, the image view is hidden instead.
    void setPage(const std::optional<Page>& page, int mediaIndex);
    /// Clears the image and marks the cell not ready.
    void prepareForReuse() override;

    bool mediaReady() const { return m_mediaReady; }
    /// A change posts the readiness notice on the main queue, as its own work item, with the
    /// index the cell showed when the value changed and the readiness it has when the notice
    /// goes out. Setting the same value again posts nothing.
    void setMediaReady(bool ready);

    /// Shows the page's still image.
    QPointer<ImageView> imageView;
    /// The page's url (a video's own address for video pages, not its play card).
    std::optional<QString> mediaUrl;
    /// The page index shown.
    int mediaIndex = -1;

protected:
    void componentComplete() override;

private:
    bool m_mediaReady = false;
    // Only the latest load of a recycled cell may set its image.
    quint64 m_loadGeneration = 0;
};

}  // namespace LumoraSDK

#include "ViewControllers/ActivityViewController.h"

#include <QFileInfo>
#include <QLocale>
#include <QPainterPath>
#include <QQuickItem>
#include <QVariantMap>

#include "Platform/Scheduler.h"

namespace LumoraSDK {

namespace {

constexpr qreal kPreviewCornerRadius = 10;

/// The sheet's glyph for an activity.
QString iconName(const QString& type) {
    if (type == QLatin1String(SharePlatform::kSaveToPictures) ||
        type == QLatin1String(SharePlatform::kSaveToVideos)) {
        return QStringLiteral("icon-save-black");
    }
    if (type == QLatin1String(SharePlatform::kCopyToClipboard)) {
        return QStringLiteral("icon-copy-black");
    }
    if (type == QLatin1String(SharePlatform::kShowInFileManager)) {
        return QStringLiteral("icon-folder-black");
    }
    return QStringLiteral("icon-open-black");
}

}  // namespace

ActivityViewController::ActivityViewController(QObject* parent)
    : PresentableViewController(parent) {}

ActivityViewController::~ActivityViewController() = default;

void ActivityViewController::viewDidLoad() {
    PresentableViewController::viewDidLoad();
    m_previewImage = outlet<ImageView>(QStringLiteral("previewImage"));
    connect(view(), SIGNAL(activityChosen(int)), this, SLOT(onActivityChosen(int)));
}

void ActivityViewController::viewWillAppear(bool animated) {
    PresentableViewController::viewWillAppear(animated);
    const ShareItem item = activityItems.value(0);
    m_activities = SharePlatform::current().activities(item);
    QVariantList rows;
    for (const ShareActivity& activity : m_activities) {
        rows.append(QVariantMap{{QStringLiteral("title"), activity.title},
                                {QStringLiteral("icon"), iconName(activity.type)}});
    }
    QQuickItem* root = view();
    root->setProperty("activities", rows);
    root->setProperty("itemName", item.fileName());
    const QFileInfo file(item.fileUrl.toLocalFile());
    root->setProperty("itemDetail",
                      (item.isImage() ? QStringLiteral("Picture") : QStringLiteral("Video")) +
                          QStringLiteral(" \u00b7 ") + QLocale().formattedDataSize(file.size()));
    m_previewImage->setImage(item.image);
    QPainterPath rounded;
    rounded.addRoundedRect(QRectF(0, 0, m_previewImage->width(), m_previewImage->height()),
                           kPreviewCornerRadius, kPreviewCornerRadius);
    m_previewImage->setMaskPath(rounded);
    // The keyboard moves to the sheet once it is on the window (on the next turn).
    QPointer<QQuickItem> sheet(root);
    MainQueue::async([sheet] {
        if (sheet) {
            sheet->forceActiveFocus();
        }
    });
}

void ActivityViewController::onActivityChosen(int index) {
    if (m_chosen) {
        return;
    }
    m_chosen = true;
    if (index < 0 || index >= m_activities.size()) {
        finish({});
        return;
    }
    finish(SharePlatform::current().perform(m_activities[index].type, activityItems.value(0)));
}

void ActivityViewController::finish(const ShareResult& result) {
    // A copy: the sheet is released once it is gone.
    const CompletionWithItemsHandler handler = completionWithItemsHandler;
    dismiss(true, [handler, result] {
        if (handler) {
            handler(result.activityType, result.completed, std::nullopt, result.error);
        }
    });
}

}  // namespace LumoraSDK

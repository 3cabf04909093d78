// Sharing of the page player: the current page's media is downloaded into the caches directory
// with its progress in the host's loading overlay, then handed to the share sheet. Playback is
// paused from the press until the flow ends, and resumed on every way out.
#include <QFile>
#include <QImage>
#include <QQuickItem>
#include <atomic>
#include <memory>

#include "Enums/ActivityType.h"
#include "Services/AnalyticsService.h"
#include "Services/Logger.h"
#include "Services/NetworkingService.h"
#include "ViewControllers/ActivityViewController.h"
#include "ViewControllers/AlertController.h"
#include "ViewControllers/ChannelViewController.h"
#include "ViewControllers/ChannelsHostViewController.h"

namespace LumoraSDK {

namespace {

QString orNil(const std::optional<QString>& text) {
    return text.value_or(QStringLiteral("nil"));
}

}  // namespace

QString ChannelViewController::progressLoadingText(double fraction) {
    // Not "fraction < 0": a zero-length file reports 0 / 0.
    if (!(fraction >= 0)) {
        return QString();
    }
    return QString::number(qint64(fraction * 100)) + QLatin1Char('%');
}

void ChannelViewController::updateShareButton() {
    const std::optional<Page> page = currentPage();
    const bool hasMedia = page && page->url && !page->url->isEmpty();
    m_shareButton->setVisible(hasMedia);
    if (hostController && hostController->currentChannelViewController() == this &&
        hostController->shareButtonHitArea()) {
        hostController->shareButtonHitArea()->setVisible(hasMedia);
    }
}

void ChannelViewController::setProgressLoadingViewText(const QString& text) {
    if (hostController && hostController->progressLoadingViewText()) {
        hostController->progressLoadingViewText()->setProperty("text", text);
    }
}

void ChannelViewController::onShareButtonPressed() {
    // A second press before the first flow has ended would start another one, whose end would
    // resume playback under the first one's sheet.
    if (isSharing) {
        log(description() + QStringLiteral(" onShareButtonPressed - already sharing"));
        return;
    }
    const std::optional<Page> page = currentPage();
    AnalyticsService::sharedInstance().trackActivity(ActivityType::ShareButtonTapped,
                                                     channel ? channel->id : std::nullopt,
                                                     page ? page->id : std::nullopt);
    setProgressLoadingViewText(progressLoadingText(0));
    pauseCurrentMedia();
    if (!page || !page->url || page->url->isEmpty()) {
        resumeCurrentMedia();
        isSharing = false;
        return;
    }
    isSharing = true;
    QPointer<ChannelViewController> self(this);
    SharePlatform::current().requestAuthorization(
        [self, page = *page](PhotoAuthorizationStatus status) {
            MainQueue::async([self, page, status] {
                if (self) {
                    self->onShareAuthorizationAnswered(status, page);
                }
            });
        });
}

void ChannelViewController::onShareAuthorizationAnswered(PhotoAuthorizationStatus status,
                                                         const Page& page) {
    QPointer<ChannelViewController> self(this);
    if (status != PhotoAuthorizationStatus::authorized) {
        log(description() +
                QStringLiteral(" requestAuthorization failed - PHAuthorizationStatus ") +
                QString::number(int(status)),
            LogLevel::error);
        presentOpenSettingsAlert([self] {
            if (self) {
                self->endSharing();
            }
        });
        return;
    }
    if (hostController) {
        hostController->toggleLoadingView(false);
    }
    const bool started = NetworkingService::sharedInstance().performDownloadToCacheRequest(
        QUrl(*page.url),
        [self](double fraction) {
            MainQueue::async([self, fraction] {
                if (self) {
                    self->setProgressLoadingViewText(progressLoadingText(fraction));
                }
            });
        },
        [self, page](bool success, const std::optional<RequestError>& error,
                     const std::optional<QUrl>& file) {
            MainQueue::async([self, page, success, error, file] {
                if (self) {
                    self->onShareDownloadFinished(success, error, file, page);
                }
            });
        });
    if (!started) {
        // Nothing will call back: there is nowhere to put the file (the download logged why).
        if (hostController) {
            hostController->toggleLoadingView(true);
        }
        endSharing();
    }
}

void ChannelViewController::onShareDownloadFinished(bool success,
                                                    const std::optional<RequestError>& error,
                                                    const std::optional<QUrl>& file,
                                                    const Page& page) {
    if (hostController) {
        hostController->toggleLoadingView(true);
    }
    QString failure = error ? LumoraSDK::describe(*error) : QStringLiteral("nil");
    std::optional<ShareItem> item;
    if (success && file) {
        item = ShareItem{*file, QImage(), QUrl(*page.url).fileName()};
        if (page.isImage()) {
            item->image = QImage(file->toLocalFile());
            if (item->image.isNull()) {
                // Useless to share and in the way of the next try, which would find its name taken.
                QFile::remove(file->toLocalFile());
                failure = QStringLiteral("not an image: ") + file->toLocalFile();
                item.reset();
            }
        }
    }
    if (!item) {
        log(description() + QStringLiteral(" performDownloadToCacheRequest failed - error ") +
                failure,
            LogLevel::error);
        endSharing();
        return;
    }
    QPointer<ChannelViewController> self(this);
    presentSharingController(m_shareButton, {*item}, [self] {
        if (self) {
            self->endSharing();
        }
    });
}

void ChannelViewController::presentOpenSettingsAlert(std::function<void()> onActionComplete) {
    auto* alert = instantiateFromStoryboard<AlertController>(view()->window());
    alert->title = QStringLiteral("Lumora needs access to your photos");
    alert->message = QStringLiteral("Please open Settings and give Lumora access to your photos");
    // Cancel comes first and is drawn as destructive: deliberately so.
    alert->addAction({QStringLiteral("Cancel"), AlertAction::Style::destructive, onActionComplete});
    alert->addAction(
        {QStringLiteral("Open Settings"), AlertAction::Style::defaultStyle, [onActionComplete] {
             SharePlatform::current().openSettings();
             onActionComplete();
         }});
    getGlobalContext(view()->window())->present(alert, true);
}

void ChannelViewController::presentSharingController(QQuickItem* sourceView,
                                                     const QList<ShareItem>& shareItems,
                                                     std::function<void()> onComplete) {
    log(description() + QStringLiteral(" presentSharingController"), LogLevel::info);
    auto completion = [onComplete](const std::optional<QString>& activityType, bool completed,
                                   const std::optional<QList<ShareItem>>& returnedItems,
                                   const std::optional<QString>& error) {
        log(description() + QStringLiteral(" completionWithItemsHandler ") + orNil(activityType) +
                QLatin1Char(' ') + (completed ? QStringLiteral("true") : QStringLiteral("false")) +
                QLatin1Char(' ') +
                (returnedItems ? QString::number(returnedItems->size()) : QStringLiteral("nil")) +
                QLatin1Char(' ') + orNil(error),
            LogLevel::info);
        onComplete();
    };
    if (const SharePlatform::ShareHandler& handler = SharePlatform::current().shareHandler()) {
        // The host's handler may answer on any thread, and more than once: only its first answer
        // ends the flow, on the main queue.
        auto answered = std::make_shared<std::atomic_bool>(false);
        handler(shareItems.value(0), [completion, answered](const ShareResult& result) {
            if (answered->exchange(true)) {
                log(description() + QStringLiteral(" share handler answered twice"),
                    LogLevel::error);
                return;
            }
            MainQueue::async([completion, result] {
                completion(result.activityType, result.completed, std::nullopt, result.error);
            });
        });
        return;
    }
    auto* sheet = instantiateFromStoryboard<ActivityViewController>(view()->window());
    sheet->activityItems = shareItems;
    sheet->sourceView = sourceView;
    sheet->completionWithItemsHandler = completion;
    getGlobalContext(view()->window())->present(sheet, true);
}

void ChannelViewController::endSharing() {
    isSharing = false;
    // The keys go back to the player from the alert or sheet that had them.
    if (hostController) {
        hostController->view()->forceActiveFocus();
    }
    resumeCurrentMedia();
}

}  // namespace LumoraSDK

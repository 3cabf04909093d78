// Remote images of the NetworkingService: fetched through the shared ImageManager.
#include <QImage>
#include <QPointer>

#include "Platform/ImageManager.h"
#include "Services/Logger.h"
#include "Services/NetworkingService.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

void NetworkingService::getRemoteImage(const QString& url,
                                       std::function<void(const QImage&)> onComplete,
                                       std::function<void(const RequestError&)> onError) {
    const QUrl parsed(url, QUrl::StrictMode);
    if (url.isEmpty() || !parsed.isValid() || parsed.isRelative()) {
        logger().log(QStringLiteral("getRemoteImage(_:onComplete:onError:) - Invalid url."),
                     LogLevel::error);
        if (onError) {
            onError(CustomRequestError{QStringLiteral("Invalid url")});
        }
        return;
    }
    ImageManager::sharedInstance().loadImage(parsed, [onComplete = std::move(onComplete),
                                                      onError = std::move(onError)](
                                                         const ImageManager::Result& result) {
        if (!result.error.isEmpty()) {
            logger().log(
                QStringLiteral(
                    "getRemoteImage(_:onComplete:onError:) - Error downloading remote image: ") +
                    result.error,
                LogLevel::error);
            if (onError) {
                onError(CustomRequestError{result.error});
            }
            return;
        }
        if (result.noData) {
            logger().log(
                QStringLiteral("getRemoteImage(_:onComplete:onError:) - No data in response."),
                LogLevel::error);
        }
        if (onComplete) {
            onComplete(result.image);
        }
    });
}

void NetworkingService::loadRemoteImage(FrameButtonView* button,
                                        ControlState /*state: only normal is kept*/,
                                        const QString& url, std::function<void()> onComplete,
                                        std::function<void(const RequestError&)> onError) {
    logger().log(QStringLiteral("loadRemoteImage(into:for:url:onComplete:onError:)"),
                 LogLevel::info);
    QPointer<FrameButtonView> target(button);
    // A recycled cell may ask for another picture before this one arrives; the newest wins.
    static const char* const kRequested = "lumoraRequestedImageUrl";
    if (button) {
        button->setProperty(kRequested, url);
    }
    getRemoteImage(
        url,
        [target, url, onComplete = std::move(onComplete)](const QImage& image) {
            if (target && target->property(kRequested).toString() == url) {
                target->setImage(image);
            }
            if (onComplete) {
                onComplete();
            }
        },
        std::move(onError));
}

}  // namespace LumoraSDK

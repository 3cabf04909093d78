// The content API requests of the facade: paths, bodies and the mapping of answers to results.
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include "Lumora.h"
#include "Models/Authorization.h"
#include "Models/ChannelList.h"
#include "Models/UserInput.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"
#include "Services/NetworkingService.h"

namespace LumoraSDK {

namespace {

RequestStatusError statusError(const std::optional<HttpResponse>& response) {
    return requestStatusError(response ? std::optional<int>(response->statusCode) : std::nullopt);
}

/// The shared shape of requests whose success carries nothing.
NetworkingService::Completion plainResult(Lumora::Completion onComplete,
                                          Lumora::ErrorCallback onError) {
    return [onComplete = std::move(onComplete), onError = std::move(onError)](
               const std::optional<HttpResponse>& response, const std::optional<QByteArray>&,
               bool ok) {
        if (!ok) {
            if (onError) {
                onError(statusError(response));
            }
            return;
        }
        if (onComplete) {
            onComplete();
        }
    };
}

}  // namespace

void Lumora::requestSetUserDetails(const UserInput& userInput, Completion onComplete,
                                   ErrorCallback onError) {
    DatabaseService& database = DatabaseService::sharedInstance();
    if (userInput.externalId) {
        database.setUserId(*userInput.externalId);
    }
    const auto base = baseApiUrl();
    QString path;
    if (base) {
        QUrl url = *base;
        url.setPath(url.path() +
                    (url.path().endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/")) +
                    LumoraSDK::path(RequestType::auth));
        path = url.toString(QUrl::FullyEncoded);
    }
    NetworkingService::sharedInstance().performPostRequest(
        path, userInput.serialize(), std::nullopt,
        [onComplete = std::move(onComplete), onError = std::move(onError)](
            const std::optional<HttpResponse>& response, const std::optional<QByteArray>& data,
            bool ok) {
            if (!ok) {
                if (onError) {
                    onError(statusError(response));
                }
                return;
            }
            std::optional<Authorization> authorization;
            if (data) {
                const QJsonDocument document = QJsonDocument::fromJson(*data);
                if (document.isObject()) {
                    authorization = Authorization::fromJson(document.object());
                }
            }
            if (!authorization) {
                logger().log(QStringLiteral("requestSetUserDetails(_:onComplete:onError:) - cannot "
                                            "convert data to Authorization."),
                             LogLevel::error);
                if (onError) {
                    onError(CustomRequestError{
                        QStringLiteral("Cannot convert json to Authorization entity.")});
                }
                return;
            }
            // An answer without a token removes the one held.
            DatabaseService::sharedInstance().userDefaults().setValue(
                DatabaseService::Key::accessToken,
                authorization->accessToken ? QVariant(*authorization->accessToken) : QVariant());
            if (onComplete) {
                onComplete();
            }
        });
}

void Lumora::requestUpdateUserDetails(const UserInput& userInput, Completion onComplete,
                                      ErrorCallback onError) {
    if (userInput.externalId) {
        DatabaseService::sharedInstance().setUserId(*userInput.externalId);
    }
    NetworkingService& network = NetworkingService::sharedInstance();
    network.performPostRequest(
        network.fullRequestPath(RequestType::user, QString(), RequestAction::updateExternalId),
        userInput.serialize(), std::nullopt,
        plainResult(std::move(onComplete), std::move(onError)));
}

void Lumora::requestGetChannels(std::function<void(const QList<Channel>&)> onComplete,
                                ErrorCallback onError) {
    NetworkingService& network = NetworkingService::sharedInstance();
    network.performGetRequest(
        network.fullRequestPath(RequestType::channel, QString(), RequestAction::channelsForUser),
        std::nullopt, std::nullopt,
        [onComplete = std::move(onComplete), onError = std::move(onError)](
            const std::optional<HttpResponse>& response, const std::optional<QByteArray>& data,
            bool ok) {
            if (!ok) {
                if (onError) {
                    onError(statusError(response));
                }
                return;
            }
            std::optional<QList<Channel>> channels = decodeChannelList(data.value_or(QByteArray()));
            if (!channels) {
                // A malformed list is not an error: the row simply shows nothing new.
                logger().log(
                    QStringLiteral("requestGetChannels(onComplete:onError:) - cannot convert "
                                   "data to JSON. Proceeding with empty collection."),
                    LogLevel::debug);
                channels.emplace();
            }
            if (onComplete) {
                onComplete(*channels);
            }
        });
}

void Lumora::requestRecordViewingHistory(const QString& pageId, const QString& channelId,
                                         Completion onComplete, ErrorCallback onError) {
    NetworkingService& network = NetworkingService::sharedInstance();
    // "ChannelStoryId" starts with a capital C in this body only.
    const QJsonObject body{{QStringLiteral("pageStoryId"), pageId},
                           {QStringLiteral("ChannelStoryId"), channelId}};
    network.performPostRequest(network.fullRequestPath(RequestType::viewingHistory, QString(),
                                                       RequestAction::recordViewingHistory),
                               body, std::nullopt,
                               plainResult(std::move(onComplete), std::move(onError)));
}

void Lumora::requestRecordActivity(ActivityType type, const QString& pageId,
                                   const QString& channelId, Completion onComplete,
                                   ErrorCallback onError) {
    NetworkingService& network = NetworkingService::sharedInstance();
    const QJsonObject body{{QStringLiteral("activityItemType"), rawValue(type)},
                           {QStringLiteral("pageStoryId"), pageId},
                           {QStringLiteral("channelStoryId"), channelId}};
    network.performPostRequest(
        network.fullRequestPath(RequestType::activity, QString(), RequestAction::recordActivity),
        body, std::nullopt, plainResult(std::move(onComplete), std::move(onError)));
}

}  // namespace LumoraSDK

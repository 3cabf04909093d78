#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

#include "Enums/Environment.h"
#include "Models/Channel.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class UserDefaults;

/// The SDK's persisted state, kept in the application's defaults store under "Lumora.<name>".
///
/// Creating the store clears the API key, environment and access token, so credentials never
/// outlive the process; the user id and the per-channel maps do.
class LUMORASDK_EXPORT DatabaseService {
public:
    struct Key {
        static const QString deviceId;
        static const QString environment;
        static const QString apiKey;
        static const QString accessToken;
        static const QString primaryColorHex;
        static const QString secondaryColorHex;
        static const QString hasShownInstructions;
        static const QString channelInitialPageMapping;
        static const QString channelIsReadMapping;
    };

    /// The process-wide store over UserDefaults::standard(), created on first use.
    static DatabaseService& sharedInstance();

    /// Registers the defaults with `store` and clears the session's credentials.
    explicit DatabaseService(UserDefaults& store);

    UserDefaults& userDefaults() const { return m_userDefaults; }
    /// The registered default of each key that has one.
    const QVariantMap& defaults() const { return m_defaults; }

    /// Stores the raw value; no environment removes it.
    void setEnvironment(std::optional<Environment> environment);
    /// Posts "user-id-did-change" first when the id differs from the stored one (missing counts
    /// as empty), then stores it in every case.
    void setUserId(const QString& userId);
    /// Writes every registered default back, removes the credentials, posts "user-id-did-change".
    void resetDefaults();

    /// The two per-channel maps (channel id -> page index / read flag). A missing map cannot
    /// happen while the defaults are registered; reading one stops the process.
    QVariantMap channelInitialPageMapping() const;
    void setChannelInitialPageMapping(const QVariantMap& mapping);
    QVariantMap channelIsReadMapping() const;
    void setChannelIsReadMapping(const QVariantMap& mapping);
    /// One channel's entry of the read map, written into the stored map in place.
    void setChannelIsRead(const QString& channelId, bool isRead);

    /// The channel list the row loaded last, shared with the player; kept in memory only.
    /// GUI thread only.
    const QList<Channel>& allChannelsData() const { return m_allChannelsData; }
    void setAllChannelsData(const QList<Channel>& channels) { m_allChannelsData = channels; }

private:
    UserDefaults& m_userDefaults;
    QList<Channel> m_allChannelsData;
    const QVariantMap m_defaults;
};

}  // namespace LumoraSDK

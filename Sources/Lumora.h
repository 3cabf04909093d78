#pragma once

#include <QList>
#include <QMutex>
#include <QString>
#include <QUrl>
#include <QVariantMap>
#include <functional>
#include <optional>

#include <LumoraSDK/Enums/ActivityType.h>
#include <LumoraSDK/Enums/Environment.h>
#include <LumoraSDK/Enums/RequestStatusError.h>
#include <LumoraSDK/Models/Channel.h>
#include <LumoraSDK/Models/UserInput.h>
#include <LumoraSDK/lumorasdk_export.h>

namespace LumoraSDK {

class Bundle;

/// The SDK's entry point. A host calls initialize() once per process with its API key, then
/// setUserDetails() for its signed-in user; logout() forgets the user.
///
///     Lumora::sharedInstance().initialize(QStringLiteral("my-key"), [] { /* ready */ });
class LUMORASDK_EXPORT Lumora {
public:
    /// A call-back without arguments: the operation succeeded.
    using Completion = std::function<void()>;
    /// A call-back with the error a request failed with.
    using ErrorCallback = std::function<void(const RequestError&)>;

    /// Names of the notifications the SDK posts on its notification centre: the SDK started,
    /// the user id changed, the player's channel changed, a page's media is ready. Only
    /// onChannelMediaReady carries user info ("mediaIndex", "isReady").
    ///@{
    static const QString sdkDidInit;
    static const QString userIdDidChange;
    static const QString openChannelDidChange;
    static const QString onChannelMediaReady;
    ///@}

    /// Prepares the process for the SDK's screens; call it first thing in main(), before the
    /// QGuiApplication is created. The web page viewer runs on Qt WebEngine, which must be
    /// initialised (and the OpenGL contexts shared) before the application object exists:
    ///
    ///     int main(int argc, char* argv[]) {
    ///         LumoraSDK::Lumora::prepareApplication();
    ///         QGuiApplication app(argc, argv);
    ///         ...
    ///
    /// Linking the SDK usually prepares Qt WebEngine as the library loads; this call makes it
    /// certain (a host that loads the SDK later, as a plugin, needs it). When Qt WebEngine was
    /// not prepared in time, the viewer logs why and closes at once instead of showing a page.
    static void prepareApplication();

    /// The process-wide instance; creating it installs the fonts packaged with the SDK.
    static Lumora& sharedInstance();

    /// Resolves the environment from the host's "LumoraEnvironment" property (default
    /// Production), stores the key, computes the API base URL and posts sdkDidInit. Calls
    /// onComplete synchronously; never fails, so onError is never called.
    void initialize(const QString& apiKey, const Completion& onComplete,
                    const ErrorCallback& onError = {});
    /// Registers the user and stores the access token. While a token is held, updates the
    /// user's external id instead, and then neither callback is called. Callbacks run on the
    /// network thread.
    void setUserDetails(const UserInput& userInput, Completion onComplete, ErrorCallback onError);
    /// Restores the registered defaults, clears the credentials, then calls onComplete.
    void logout(const Completion& onComplete);

    /// The SDK resource bundle's version; absent when missing or exactly "1.0.0".
    static std::optional<QString> version();
    /// The environment initialize() chose; absent before it ran in this process.
    static std::optional<Environment> currentEnvironment();
    /// The stored user id; the empty string when none is stored.
    static std::optional<QString> currentUserId();
    /// The key initialize() stored; absent before it ran in this process.
    static std::optional<QString> currentApiKey();
    /// True for a 9:16 screen (within 0.001).
    static bool isScreenStandardPortrait();
    /// Width over height of the primary screen; 0 without one.
    static double screenAspectRatio();
    /// The SDK's resource bundle: images, scenes and fonts.
    static std::optional<Bundle> resourceBundle();

    /// The API base URL: computed on first read, recomputed by initialize().
    std::optional<QUrl> baseApiUrl();
    /// The packaged "ApiBaseUrl" with a "dev." or "staging." host prefix for those
    /// environments; absent when it is missing or malformed.
    std::optional<QUrl> getBaseApiUrl() const;
    /// CFBundleName of the SDK's own info dictionary.
    std::optional<QString> bundleName();
    /// The SDK's properties: the on-disk bundle's Info-iOS.json when one exists next to the
    /// application (see getResourceBundlePathAsFramework()), else the packaged ones.
    std::optional<QVariantMap> getFrameworkProperties();
    /// The host's properties: Info.json next to the executable, which must exist.
    std::optional<QVariantMap> getAppProperties() const;
    /// `<application dir>/Frameworks/<bundleName>.framework/<bundleName>.bundle`.
    std::optional<QString> getResourceBundlePathAsFramework();
    /// Registers the fonts the SDK's properties list under "UIAppFonts" (done once, by
    /// sharedInstance()).
    void installBundledFonts();
    /// Registers one font file of `bundle` with the application; failures are ignored.
    static void installFont(const QString& name, const Bundle& bundle);

    /// How log lines name this object.
    static QString description() { return QStringLiteral("LumoraSDK.Lumora"); }

    /// Content API requests: register the user, change the user's external id, fetch the
    /// user's channels, record a viewed page and record an activity. Callbacks run on the
    /// network thread, except the immediate Unknown failure of a POST whose URL cannot be
    /// formed, which runs on the caller's thread.
    ///@{
    void requestSetUserDetails(const UserInput& userInput, Completion onComplete,
                               ErrorCallback onError);
    void requestUpdateUserDetails(const UserInput& userInput, Completion onComplete,
                                  ErrorCallback onError);
    void requestGetChannels(std::function<void(const QList<Channel>&)> onComplete,
                            ErrorCallback onError);
    void requestRecordViewingHistory(const QString& pageId, const QString& channelId,
                                     Completion onComplete, ErrorCallback onError);
    void requestRecordActivity(ActivityType type, const QString& pageId, const QString& channelId,
                               Completion onComplete, ErrorCallback onError);
    ///@}

private:
    Lumora();
    void updateUserDetails(const UserInput& userInput);
    static std::optional<Bundle> resourceBundleNamed(const std::optional<QString>& name);

    QMutex m_mutex;
    std::optional<std::optional<QUrl>> m_baseApiUrl;
    std::optional<std::optional<QString>> m_bundleName;
};

}  // namespace LumoraSDK

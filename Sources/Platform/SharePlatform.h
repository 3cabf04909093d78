#pragma once

#include <QImage>
#include <QList>
#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Answers to a request for access to the viewer's photos, numbered like the platform's.
enum class PhotoAuthorizationStatus {
    notDetermined = 0,
    restricted = 1,
    denied = 2,
    authorized = 3,
    limited = 4,
};

/// What a share hands over: a downloaded local file, and for a picture the decoded picture.
struct ShareItem {
    QUrl fileUrl;
    /// Null for a video.
    QImage image;
    /// The name a saved copy gets (before " (2)" and so on); empty: the file's own name.
    QString suggestedName;

    bool isImage() const { return !image.isNull(); }
    QString fileName() const {
        return suggestedName.isEmpty() ? fileUrl.fileName() : suggestedName;
    }
};

/// One thing the share sheet offers for an item.
struct ShareActivity {
    /// Identifies the activity in the sheet's completion, e.g. "lumora.activity.saveToPictures".
    QString type;
    QString title;
};

/// What became of a share: the activity chosen (none when the viewer closed the sheet), whether
/// it completed, and why not when it failed.
struct ShareResult {
    std::optional<QString> activityType;
    bool completed = false;
    std::optional<QString> error;
};

/// The platform's part of sharing: the photo-library permission, the settings address the
/// viewer is sent to when it was refused, and the activities a share sheet offers.
///
/// The process uses one, current(): a DesktopSharePlatform unless another is installed. A host
/// that shares in its own way installs a share handler; the SDK then hands it each item instead
/// of showing its own sheet.
class LUMORASDK_EXPORT SharePlatform {
public:
    using AuthorizationHandler = std::function<void(PhotoAuthorizationStatus)>;
    using ShareHandler =
        std::function<void(const ShareItem& item, std::function<void(const ShareResult&)> done)>;

    static constexpr const char* kSaveToPictures = "lumora.activity.saveToPictures";
    static constexpr const char* kSaveToVideos = "lumora.activity.saveToVideos";
    static constexpr const char* kCopyToClipboard = "lumora.activity.copyToClipboard";
    static constexpr const char* kOpenWithDefaultApplication =
        "lumora.activity.openWithDefaultApplication";
    static constexpr const char* kShowInFileManager = "lumora.activity.showInFileManager";

    virtual ~SharePlatform();

    static SharePlatform& current();
    /// Installs `platform` (not owned) for the process; nullptr puts the desktop one back.
    static void setCurrent(SharePlatform* platform);

    /// Asks for access to the viewer's photos. The answer may come on any thread.
    virtual void requestAuthorization(AuthorizationHandler handler) = 0;
    /// Sends the viewer to where the access is granted; answers whether anything opened.
    virtual bool openSettings() = 0;
    /// What the share sheet offers for `item`, in order.
    virtual QList<ShareActivity> activities(const ShareItem& item) const = 0;
    /// Carries out one of activities(item).
    virtual ShareResult perform(const QString& activityType, const ShareItem& item) = 0;

    /// Replaces the SDK's share sheet; empty (the default) keeps it.
    void setShareHandler(ShareHandler handler) { m_shareHandler = std::move(handler); }
    const ShareHandler& shareHandler() const { return m_shareHandler; }

private:
    ShareHandler m_shareHandler;
};

/// Sharing on a desktop. Access to the photos is always granted (a desktop asks nothing), and
/// answered from another thread as a platform's permission prompt would. The sheet offers: save
/// a copy to the Pictures (pictures) or Videos (videos) folder, never over an existing file;
/// copy the picture, or the file's address, to the clipboard; open the file with its default
/// application; show it in the file manager. Files and addresses open through
/// QDesktopServices::openUrl, so a handler installed there for a scheme sees them.
class LUMORASDK_EXPORT DesktopSharePlatform : public SharePlatform {
public:
    /// Copies give up after this many taken names ("name (2)" ... "name (999)").
    static constexpr int kMaximumCopyNumber = 999;

    /// The process's desktop platform: current() unless another one is installed.
    static DesktopSharePlatform& standard();

    void requestAuthorization(AuthorizationHandler handler) override;
    /// Opens settingsUrl(); with none, opens nothing.
    bool openSettings() override;
    QList<ShareActivity> activities(const ShareItem& item) const override;
    ShareResult perform(const QString& activityType, const ShareItem& item) override;

    /// The address "Open Settings" opens. None by default: desktops share no settings page for
    /// photo access, so the alert then only closes.
    std::optional<QUrl> settingsUrl() const { return m_settingsUrl; }
    void setSettingsUrl(std::optional<QUrl> url) { m_settingsUrl = std::move(url); }

    /// Copies `source` into `folder` as `fileName`, or as "name (2).ext" and so on when that is
    /// taken; never replaces a file. Answers the copy's path, or fills `error`.
    static std::optional<QString> saveCopy(const QString& source, const QString& folder,
                                           const QString& fileName, QString& error);

private:
    std::optional<QUrl> m_settingsUrl;
};

}  // namespace LumoraSDK

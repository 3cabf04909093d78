#include "SharePlatform.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QStandardPaths>
#include <QThreadPool>

#include "PlatformLog.h"

namespace LumoraSDK {

namespace {

SharePlatform* g_installed = nullptr;

ShareResult finished(const QString& type, bool completed, const QString& error = {}) {
    return {type, completed, error.isEmpty() ? std::nullopt : std::optional<QString>(error)};
}

}  // namespace

SharePlatform::~SharePlatform() = default;

SharePlatform& SharePlatform::current() {
    return g_installed ? *g_installed : DesktopSharePlatform::standard();
}

DesktopSharePlatform& DesktopSharePlatform::standard() {
    static DesktopSharePlatform desktop;
    return desktop;
}

void SharePlatform::setCurrent(SharePlatform* platform) {
    g_installed = platform;
}

void DesktopSharePlatform::requestAuthorization(AuthorizationHandler handler) {
    QThreadPool::globalInstance()->start(
        [handler = std::move(handler)] { handler(PhotoAuthorizationStatus::authorized); });
}

bool DesktopSharePlatform::openSettings() {
    if (!m_settingsUrl) {
        qCInfo(lcPlatform) << "no settings address to open";
        return false;
    }
    return QDesktopServices::openUrl(*m_settingsUrl);
}

QList<ShareActivity> DesktopSharePlatform::activities(const ShareItem& item) const {
    if (item.isImage()) {
        return {{QLatin1String(kSaveToPictures), QStringLiteral("Save to Pictures")},
                {QLatin1String(kCopyToClipboard), QStringLiteral("Copy Image")},
                {QLatin1String(kOpenWithDefaultApplication), QStringLiteral("Open")},
                {QLatin1String(kShowInFileManager), QStringLiteral("Show in Folder")}};
    }
    return {{QLatin1String(kSaveToVideos), QStringLiteral("Save to Videos")},
            {QLatin1String(kCopyToClipboard), QStringLiteral("Copy Link")},
            {QLatin1String(kOpenWithDefaultApplication), QStringLiteral("Open")},
            {QLatin1String(kShowInFileManager), QStringLiteral("Show in Folder")}};
}

ShareResult DesktopSharePlatform::perform(const QString& type, const ShareItem& item) {
    const QString file = item.fileUrl.toLocalFile();
    if (type == QLatin1String(kSaveToPictures) || type == QLatin1String(kSaveToVideos)) {
        const auto location = type == QLatin1String(kSaveToPictures)
                                  ? QStandardPaths::PicturesLocation
                                  : QStandardPaths::MoviesLocation;
        const QString folder = QStandardPaths::writableLocation(location);
        QString error;
        if (folder.isEmpty()) {
            error = QStringLiteral("no folder for saved media");
        } else if (const auto saved = saveCopy(file, folder, item.fileName(), error)) {
            return finished(type, true);
        }
        qCWarning(lcPlatform) << "cannot save a copy of" << file << ":" << error;
        return finished(type, false, error);
    }
    if (type == QLatin1String(kCopyToClipboard)) {
        auto* data = new QMimeData();
        if (item.isImage()) {
            data->setImageData(item.image);
        } else {
            data->setUrls({item.fileUrl});
            data->setText(item.fileUrl.toString());
        }
        QGuiApplication::clipboard()->setMimeData(data);
        return finished(type, true);
    }
    if (type == QLatin1String(kOpenWithDefaultApplication) ||
        type == QLatin1String(kShowInFileManager)) {
        // File managers have no common way to point at one file: its folder is opened.
        const QUrl target = type == QLatin1String(kOpenWithDefaultApplication)
                                ? item.fileUrl
                                : QUrl::fromLocalFile(QFileInfo(file).absolutePath());
        const bool opened = QDesktopServices::openUrl(target);
        return finished(type, opened,
                        opened ? QString() : QStringLiteral("cannot open ") + target.toString());
    }
    return finished(type, false, QStringLiteral("unknown activity ") + type);
}

std::optional<QString> DesktopSharePlatform::saveCopy(const QString& source, const QString& folder,
                                                      const QString& fileName, QString& error) {
    if (!QDir().mkpath(folder)) {
        error = QStringLiteral("cannot create ") + folder;
        return std::nullopt;
    }
    const QFileInfo name(fileName);
    const QString base = name.completeBaseName();
    const QString suffix = name.suffix().isEmpty() ? QString() : QLatin1Char('.') + name.suffix();
    for (int number = 1; number <= kMaximumCopyNumber; ++number) {
        const QString candidate =
            number == 1 ? fileName : QStringLiteral("%1 (%2)%3").arg(base).arg(number).arg(suffix);
        const QString target = QDir(folder).filePath(candidate);
        if (QFileInfo::exists(target)) {
            continue;
        }
        QFile input(source);
        // QFile::copy refuses an existing target, also one that appeared since the check above.
        if (input.copy(target)) {
            return target;
        }
        if (!QFileInfo::exists(target)) {
            error = input.errorString();
            return std::nullopt;
        }
    }
    error = QStringLiteral("every name is taken for ") + fileName;
    return std::nullopt;
}

}  // namespace LumoraSDK

#pragma once

#include <QString>
#include <QVariantMap>
#include <optional>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// A directory of resources with an optional info dictionary ("Info.json").
///
/// Property lists are JSON objects in files named "<name>.json". Three bundles matter:
/// - the SDK's own resources, compiled in under ":/LumoraSDK" (the bundle that contains the
///   `Lumora` class), with the resource bundle "LumoraSDK.bundle" inside it;
/// - the host application's main bundle: the application's directory;
/// - an on-disk copy of the SDK bundle at
///   "<application dir>/Frameworks/LumoraSDK.framework/LumoraSDK.bundle", which overrides the
///   compiled-in properties when present.
class LUMORASDK_EXPORT Bundle {
public:
    /// The bundle rooted at `path`, when that directory exists.
    static std::optional<Bundle> open(const QString& path);
    /// The bundle that contains the SDK's classes (compiled-in resources).
    static Bundle sdk();
    /// The main bundle's resource path: the application's directory, or the path set with
    /// setMainResourcePath. Absent when no application object exists.
    static std::optional<QString> mainResourcePath();
    /// Points the main bundle elsewhere (tests, and hosts whose resources live apart from the
    /// executable). An empty path restores the application's directory.
    static void setMainResourcePath(const QString& path);

    QString resourcePath() const { return m_path; }
    /// "<resourcePath>/<name>.<type>" (just "<name>" for an empty type) when that file exists.
    std::optional<QString> pathForResource(const QString& name, const QString& type) const;
    /// The bundle's "Info.json" as a dictionary; absent when missing or not a JSON object.
    std::optional<QVariantMap> infoDictionary() const;

    /// A JSON object file read as a dictionary; absent when unreadable or not an object.
    static std::optional<QVariantMap> readPropertyList(const QString& path);

private:
    explicit Bundle(QString path) : m_path(std::move(path)) {}
    QString m_path;
};

}  // namespace LumoraSDK

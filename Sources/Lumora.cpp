#include "Lumora.h"

#include <QtWebEngineQuick/qtwebenginequickglobal.h>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMutexLocker>
#include <QScreen>
#include <cmath>

#include "Models/UserInput.h"
#include "Platform/Bundle.h"
#include "Platform/NotificationCenter.h"
#include "Platform/UserDefaults.h"
#include "Services/DatabaseService.h"
#include "Services/Logger.h"

namespace LumoraSDK {

const QString Lumora::sdkDidInit = QStringLiteral("sdk-initialization-did-complete");
const QString Lumora::userIdDidChange = QStringLiteral("user-id-did-change");
const QString Lumora::openChannelDidChange = QStringLiteral("open-channel-did-change");
const QString Lumora::onChannelMediaReady = QStringLiteral("open-channel-media-ready");

namespace {
constexpr double kStandardPortraitRatio = 0.5625;  // 9:16
constexpr double kStandardPortraitTolerance = 0.001;

void debug(const QString& message) {
    logger().log(message, LogLevel::debug);
}
}  // namespace

Lumora& Lumora::sharedInstance() {
    static Lumora* instance = [] {
        auto* created = new Lumora();
        created->installBundledFonts();
        return created;
    }();
    return *instance;
}

Lumora::Lumora() = default;

void Lumora::prepareApplication() {
    if (QCoreApplication::instance()) {
        logger().log(description() + QStringLiteral(" - prepareApplication() was called after the "
                                                    "application object was created; web pages "
                                                    "may not show"),
                     LogLevel::error);
    }
    QtWebEngineQuick::initialize();
}

void Lumora::initialize(const QString& apiKey, const Completion& onComplete,
                        const ErrorCallback& /*onError: initialisation cannot fail*/) {
    Environment environment = Environment::Production;
    if (const auto properties = getAppProperties()) {
        const QVariant value = properties->value(QStringLiteral("LumoraEnvironment"));
        if (value.typeId() == QMetaType::QString) {
            if (const auto found = environmentFromRawValue(value.toString())) {
                environment = *found;
                debug(description() + QStringLiteral(" - found environment in plist, setting to ") +
                      rawValue(environment));
            }
        }
    }
    DatabaseService& database = DatabaseService::sharedInstance();
    database.setEnvironment(environment);
    database.userDefaults().setValue(DatabaseService::Key::apiKey, apiKey);
    const std::optional<QUrl> url = getBaseApiUrl();
    {
        QMutexLocker lock(&m_mutex);
        m_baseApiUrl = url;
    }
    debug(description() + QStringLiteral(" - initialize with key %1, environment %2")
                              .arg(apiKey, rawValue(environment)));
    // Stored a second time on purpose: the key must be in place whatever happened above.
    database.userDefaults().setValue(DatabaseService::Key::apiKey, apiKey);
    // The key is not checked against the server; the line only marks the step.
    debug(description() + QStringLiteral(" - requestValidateApiKey OK"));
    NotificationCenter::defaultCenter().post(sdkDidInit);
    if (onComplete) {
        onComplete();
    }
}

void Lumora::setUserDetails(const UserInput& userInput, Completion onComplete,
                            ErrorCallback onError) {
    debug(description() + QStringLiteral(" - setUserDetails with ") + userInput.description());
    const auto token =
        DatabaseService::sharedInstance().userDefaults().string(DatabaseService::Key::accessToken);
    if (token && !token->isEmpty()) {
        // A registered session only updates the external id; the caller hears nothing back.
        debug(description() +
              QStringLiteral(" - access token already exists, updateUserDetails instead"));
        updateUserDetails(userInput);
        return;
    }
    requestSetUserDetails(
        userInput,
        [onComplete = std::move(onComplete)] {
            debug(description() + QStringLiteral(" - requestSetUserDetails OK"));
            if (onComplete) {
                onComplete();
            }
        },
        [onError = std::move(onError)](const RequestError& error) {
            logger().log(
                description() + QStringLiteral(" - requestSetUserDetails error ") + describe(error),
                LogLevel::error);
            if (onError) {
                onError(error);
            }
        });
}

void Lumora::updateUserDetails(const UserInput& userInput) {
    debug(description() + QStringLiteral(" - updateUserDetails with ") + userInput.description());
    requestUpdateUserDetails(
        userInput, [] { debug(description() + QStringLiteral(" - updateUserDetails OK")); },
        [](const RequestError& error) {
            logger().log(
                description() + QStringLiteral(" - updateUserDetails error ") + describe(error),
                LogLevel::error);
        });
}

void Lumora::logout(const Completion& onComplete) {
    DatabaseService::sharedInstance().resetDefaults();
    if (onComplete) {
        onComplete();
    }
}

std::optional<QString> Lumora::version() {
    const auto bundle = resourceBundle();
    if (!bundle) {
        return std::nullopt;
    }
    const auto info = bundle->infoDictionary();
    if (!info) {
        return std::nullopt;
    }
    const QVariant value = info->value(QStringLiteral("CFBundleShortVersionString"));
    // A bundle still carrying the template version counts as having none.
    if (value.typeId() != QMetaType::QString || value.toString() == QLatin1String("1.0.0")) {
        return std::nullopt;
    }
    return value.toString();
}

std::optional<Environment> Lumora::currentEnvironment() {
    const auto stored =
        DatabaseService::sharedInstance().userDefaults().string(DatabaseService::Key::environment);
    return environmentFromRawValue(stored.value_or(QString()));
}

std::optional<QString> Lumora::currentUserId() {
    return DatabaseService::sharedInstance()
        .userDefaults()
        .string(DatabaseService::Key::deviceId)
        .value_or(QString());
}

std::optional<QString> Lumora::currentApiKey() {
    return DatabaseService::sharedInstance().userDefaults().string(DatabaseService::Key::apiKey);
}

double Lumora::screenAspectRatio() {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        return 0;
    }
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen || screen->geometry().height() == 0) {
        return 0;
    }
    return static_cast<double>(screen->geometry().width()) / screen->geometry().height();
}

bool Lumora::isScreenStandardPortrait() {
    return std::abs(screenAspectRatio() - kStandardPortraitRatio) < kStandardPortraitTolerance;
}

std::optional<Bundle> Lumora::resourceBundle() {
    return sharedInstance().resourceBundleNamed(sharedInstance().bundleName());
}

std::optional<Bundle> Lumora::resourceBundleNamed(const std::optional<QString>& name) {
    if (!name) {
        return std::nullopt;
    }
    return Bundle::open(Bundle::sdk().resourcePath() + QLatin1Char('/') + *name +
                        QStringLiteral(".bundle"));
}

std::optional<QUrl> Lumora::baseApiUrl() {
    QMutexLocker lock(&m_mutex);
    if (!m_baseApiUrl) {
        lock.unlock();
        const auto computed = getBaseApiUrl();
        lock.relock();
        if (!m_baseApiUrl) {
            m_baseApiUrl = computed;
        }
    }
    return *m_baseApiUrl;
}

std::optional<QUrl> Lumora::getBaseApiUrl() const {
    const auto properties = const_cast<Lumora*>(this)->getFrameworkProperties();
    if (!properties) {
        return std::nullopt;
    }
    const QVariant configured = properties->value(QStringLiteral("ApiBaseUrl"));
    const QString text =
        configured.typeId() == QMetaType::QString ? configured.toString() : QString();
    const QUrl parsed(text, QUrl::StrictMode);
    if (!parsed.isValid()) {
        return std::nullopt;
    }
    QUrl result;
    result.setScheme(parsed.scheme());
    QString host = parsed.host();
    const auto environment = currentEnvironment();
    if (environment == Environment::Dev || environment == Environment::Staging) {
        // api.<domain> becomes dev.api.<domain> or staging.api.<domain>.
        host = rawValue(*environment).toLower() + QLatin1Char('.') + host;
    }
    result.setHost(host);
    result.setPort(parsed.port());
    result.setPath(parsed.path());
    result.setQuery(parsed.query());
    if (!result.isValid()) {
        return std::nullopt;
    }
    return result;
}

std::optional<QString> Lumora::bundleName() {
    QMutexLocker lock(&m_mutex);
    if (!m_bundleName) {
        const auto info = Bundle::sdk().infoDictionary();
        const QVariant name = info ? info->value(QStringLiteral("CFBundleName")) : QVariant();
        m_bundleName = name.typeId() == QMetaType::QString ? std::optional<QString>(name.toString())
                                                           : std::nullopt;
    }
    return *m_bundleName;
}

std::optional<QString> Lumora::getResourceBundlePathAsFramework() {
    const auto main = Bundle::mainResourcePath();
    if (!main) {
        return std::nullopt;
    }
    const QString name = bundleName().value_or(QString());
    return *main + QStringLiteral("/Frameworks/") + name + QStringLiteral(".framework/") + name +
           QStringLiteral(".bundle");
}

std::optional<QVariantMap> Lumora::getFrameworkProperties() {
    const auto path = getResourceBundlePathAsFramework();
    if (!path) {
        qFatal(
            "LumoraSDK.Lumora - cannot locate the SDK bundle: the application has no resource "
            "directory (create the QCoreApplication before using the SDK)");
    }
    if (const auto onDisk = Bundle::open(*path)) {
        const auto file =
            onDisk->pathForResource(QStringLiteral("Info-iOS"), QStringLiteral("json"));
        if (!file) {
            qFatal("LumoraSDK.Lumora - the SDK bundle at %s has no Info-iOS.json",
                   qUtf8Printable(*path));
        }
        return Bundle::readPropertyList(*file);
    }
    return Bundle::sdk().infoDictionary();
}

std::optional<QVariantMap> Lumora::getAppProperties() const {
    const auto main = Bundle::mainResourcePath();
    if (!main) {
        qFatal(
            "LumoraSDK.Lumora - the application has no resource directory (create the "
            "QCoreApplication before using the SDK)");
    }
    if (const auto bundle = Bundle::open(*main)) {
        const auto file = bundle->pathForResource(QStringLiteral("Info"), QStringLiteral("json"));
        if (!file) {
            qFatal(
                "LumoraSDK.Lumora - the application's properties are missing: put an Info.json "
                "next to the executable in %s (an empty object {} will do)",
                qUtf8Printable(*main));
        }
        return Bundle::readPropertyList(*file);
    }
    return Bundle::sdk().infoDictionary();
}

void Lumora::installBundledFonts() {
    const auto properties = getFrameworkProperties();
    if (!properties) {
        return;
    }
    const QVariant fonts = properties->value(QStringLiteral("UIAppFonts"));
    if (fonts.typeId() != QMetaType::QVariantList) {
        return;
    }
    QStringList names;
    for (const QVariant& entry : fonts.toList()) {
        if (entry.typeId() != QMetaType::QString) {
            return;
        }
        names.append(entry.toString());
    }
    // An on-disk SDK bundle provides its own font files; otherwise the compiled-in one does.
    auto bundle = Bundle::open(getResourceBundlePathAsFramework().value_or(QString()));
    if (!bundle) {
        bundle = resourceBundleNamed(bundleName());
    }
    if (!bundle) {
        return;
    }
    for (const QString& name : names) {
        installFont(name, *bundle);
    }
}

void Lumora::installFont(const QString& name, const Bundle& bundle) {
    // Fonts need a GUI application; a missing file or a failed registration is ignored.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
        return;
    }
    const auto path = bundle.pathForResource(name, QString());
    if (!path) {
        return;
    }
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly)) {
        return;
    }
    QFontDatabase::addApplicationFontFromData(file.readAll());
}

}  // namespace LumoraSDK

// The store file loader: whatever the file holds, the store loads it, registers the SDK's
// defaults, answers reads, and writes back a file that parses.
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QVariantMap>
#include <cstdlib>

#include "FuzzSupport.h"
#include "UserDefaults.h"

using namespace LumoraSDK;

namespace {
QString g_path;

// The SDK's registered defaults, by JSON type.
const QVariantMap kDefaults{
    {QStringLiteral("Lumora.deviceId"), QString()},
    {QStringLiteral("Lumora.primaryColorHex"), QString()},
    {QStringLiteral("Lumora.secondaryColorHex"), QString()},
    {QStringLiteral("Lumora.hasShownInstructions"), false},
    {QStringLiteral("Lumora.channelInitialPageMapping"), QVariantMap()},
    {QStringLiteral("Lumora.channelIsReadMapping"), QVariantMap()},
};
}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    LumoraFuzz::silenceLogs();
    // Memory-backed when possible: the store syncs every write to disk.
    const QString base =
        QDir(QStringLiteral("/dev/shm")).exists() ? QStringLiteral("/dev/shm") : QDir::tempPath();
    g_path = base + QStringLiteral("/lumora-fuzz-store-%1/defaults.json")
                        .arg(QCoreApplication::applicationPid());
    std::atexit([] { QDir(QFileInfo(g_path).absolutePath()).removeRecursively(); });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    QDir(QFileInfo(g_path).absolutePath()).removeRecursively();
    QDir().mkpath(QFileInfo(g_path).absolutePath());
    {
        QFile file(g_path);
        if (!file.open(QIODevice::WriteOnly)) {
            return 0;
        }
        file.write(LumoraFuzz::bytes(data, size));
    }
    {
        UserDefaults store(g_path, 0);
        store.registerDefaults(kDefaults);
        for (const QString& key : {QStringLiteral("Lumora.channelInitialPageMapping"),
                                   QStringLiteral("Lumora.channelIsReadMapping")}) {
            // The registered default answers whatever the file held.
            if (!store.dictionary(key)) {
                std::abort();
            }
        }
        if (!store.string(QStringLiteral("Lumora.deviceId"))) {
            std::abort();
        }
        (void)store.dictionaryRepresentation();
        store.setValue(QStringLiteral("Lumora.deviceId"), QStringLiteral("fuzz"));
    }
    // What the store wrote back is a JSON object again.
    QFile written(g_path);
    if (!written.open(QIODevice::ReadOnly) ||
        !QJsonDocument::fromJson(written.readAll()).isObject()) {
        std::abort();
    }
    return 0;
}

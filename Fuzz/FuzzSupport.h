#pragma once

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtGlobal>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace LumoraFuzz {

/// The decoders log what they drop; a line per input would only slow the fuzzer down.
inline void silenceLogs() {
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg) {
            qFatal("%s", qPrintable(text));
        }
    });
}

inline QByteArray bytes(const uint8_t* data, size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), qsizetype(size));
}

/// The input as a JSON object, as the SDK's callers hand objects to the decoders.
inline std::optional<QJsonObject> object(const uint8_t* data, size_t size) {
    const QJsonDocument document = QJsonDocument::fromJson(bytes(data, size));
    if (!document.isObject()) {
        return std::nullopt;
    }
    return document.object();
}

}  // namespace LumoraFuzz

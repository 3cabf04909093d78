#pragma once

// List elements for the diff and collection view tests, each described by a short name.

#include <QString>

#include "Extensions/ChannelDiffAware.h"

/// An element whose identity (key) and content (version) differ, so replaces happen.
struct Versioned {
    QString key;
    int version = 1;
    friend bool operator==(const Versioned&, const Versioned&) = default;
};

template <>
struct LumoraSDK::DiffTraits<Versioned> {
    using DiffId = QString;
    static const QString& diffId(const Versioned& v) { return v.key; }
    static bool compareContent(const Versioned& a, const Versioned& b) {
        return a.version == b.version;
    }
};

inline QString nameOf(const QString& s) {
    return s;
}
inline QString nameOf(const Versioned& v) {
    return v.key + QString::number(v.version);
}
/// A channel by its title, or "?" without one.
inline QString nameOf(const LumoraSDK::Channel& c) {
    return c.title.value_or(QStringLiteral("?"));
}

#pragma once

#include <QHashFunctions>
#include <QString>

#include "Extensions/DiffExtensions.h"
#include "Models/Channel.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// A channel's diff key: the text "ChannelId(<decimal hash of the id>)", or "ChannelId(none)" for
/// a channel without an id. It is held as the number its text spells, so two keys are equal
/// exactly when their texts are, and a diff compares and hashes keys without forming a string
/// per element and pass. The hash only holds within one run of the program, which is all a diff
/// needs.
class LUMORASDK_EXPORT ChannelDiffId {
public:
    static ChannelDiffId forAbsentId() { return ChannelDiffId(); }
    static ChannelDiffId forId(const QString& id) { return ChannelDiffId(qHash(id)); }

    /// The key's text.
    QString toString() const;

    friend bool operator==(const ChannelDiffId&, const ChannelDiffId&) = default;
    friend size_t qHash(const ChannelDiffId& key, size_t seed = 0) noexcept {
        return qHashMulti(seed, key.m_hasId, key.m_idHash);
    }

private:
    ChannelDiffId() = default;
    explicit ChannelDiffId(size_t idHash) : m_hasId(true), m_idHash(idHash) {}

    bool m_hasId = false;
    size_t m_idHash = 0;
};

/// Channels are diffed by id alone: every channel without an id shares one key, so such channels
/// pair in order of occurrence. Content is compared by id too: a channel whose title or pages
/// changed is never reported as replaced (the row refreshes its cells by other means).
template <>
struct DiffTraits<Channel> {
    using DiffId = ChannelDiffId;
    static ChannelDiffId diffId(const Channel& channel) {
        return channel.id ? ChannelDiffId::forId(*channel.id) : ChannelDiffId::forAbsentId();
    }
    static bool compareContent(const Channel& a, const Channel& b) { return a.id == b.id; }
};

}  // namespace LumoraSDK

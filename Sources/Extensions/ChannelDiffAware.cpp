#include "Extensions/ChannelDiffAware.h"

namespace LumoraSDK {

QString ChannelDiffId::toString() const {
    // Never a wrapped hash, whose text is all digits.
    if (!m_hasId) {
        return QStringLiteral("ChannelId(none)");
    }
    return QStringLiteral("ChannelId(%1)").arg(m_idHash);
}

}  // namespace LumoraSDK

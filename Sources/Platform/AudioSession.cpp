#include "AudioSession.h"

namespace LumoraSDK {

AudioSession& AudioSession::sharedInstance() {
    static AudioSession session;
    return session;
}

void AudioSession::setCategory(Category category, Mode mode, int options) {
    m_category = category;
    m_mode = mode;
    m_options = options;
}

}  // namespace LumoraSDK

#pragma once

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The application's audio settings as the player sees them: a category, a mode and category
/// options. Desktop platforms have no system audio session, so this keeps the values and decides
/// from them whether video sound is heard: like a phone with its ringer switched off, video
/// plays muted until the viewer asks for sound (a volume key), which switches to Playback. The
/// player puts back what it found when it closes.
class LUMORASDK_EXPORT AudioSession {
public:
    enum class Category { SoloAmbient, Ambient, Playback };
    enum class Mode { Default, MoviePlayback };
    /// Category option bits.
    static constexpr int kMixWithOthers = 1;

    static AudioSession& sharedInstance();

    Category category() const { return m_category; }
    Mode mode() const { return m_mode; }
    int categoryOptions() const { return m_options; }
    bool isActive() const { return m_active; }

    void setCategory(Category category, Mode mode, int options);
    void setActive(bool active) { m_active = active; }

    /// The stand-in for a phone's ringer switch; on by default, since desktops have none and
    /// stories should not start out loud.
    bool isSilentModeOn() const { return m_silentMode; }
    void setSilentModeOn(bool on) { m_silentMode = on; }
    /// Whether video sound is heard: always in the Playback category, otherwise only with the
    /// silent mode off.
    bool isOutputAudible() const { return m_category == Category::Playback || !m_silentMode; }

private:
    Category m_category = Category::SoloAmbient;
    Mode m_mode = Mode::Default;
    int m_options = 0;
    bool m_active = false;
    bool m_silentMode = true;
};

}  // namespace LumoraSDK

#pragma once

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The application's audio settings as the player sees them: a category, a mode and category
/// options. Desktop platforms have no system audio session, so this only keeps the values; the
/// player changes them when the viewer asks for sound and puts back what it found when it closes.
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

private:
    Category m_category = Category::SoloAmbient;
    Mode m_mode = Mode::Default;
    int m_options = 0;
    bool m_active = false;
};

}  // namespace LumoraSDK

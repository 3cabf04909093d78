#pragma once

#include <QtQml/qqmlregistration.h>

#include "Views/FrameButtonView.h"

namespace LumoraSDK {

/// A button that, with `passthroughTouchEvents` set, is only drawn: presses on it go on to
/// whatever lies behind (an enlarged hit area, the player's touch layer) instead of clicking it.
class LUMORASDK_EXPORT PassthroughTouchButton : public LumoraSDK::FrameButtonView {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool passthroughTouchEvents MEMBER passthroughTouchEvents FINAL)

public:
    using FrameButtonView::FrameButtonView;

    bool passthroughTouchEvents = false;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void touchEvent(QTouchEvent* event) override;
};

}  // namespace LumoraSDK

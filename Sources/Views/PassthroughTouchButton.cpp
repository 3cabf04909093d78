#include "PassthroughTouchButton.h"

#include <QMouseEvent>
#include <QTouchEvent>

#include "Views/PassthroughTouchView.h"

namespace LumoraSDK {

void PassthroughTouchButton::mousePressEvent(QMouseEvent* event) {
    if (!passTouchThrough(passthroughTouchEvents, event)) {
        FrameButtonView::mousePressEvent(event);
    }
}

void PassthroughTouchButton::touchEvent(QTouchEvent* event) {
    if (!passTouchThrough(passthroughTouchEvents, event)) {
        FrameButtonView::touchEvent(event);
    }
}

}  // namespace LumoraSDK

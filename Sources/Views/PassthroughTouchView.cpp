#include "PassthroughTouchView.h"

#include <QMouseEvent>
#include <QTouchEvent>

namespace LumoraSDK {

bool passTouchThrough(bool passthroughTouchEvents, QEvent* event) {
    if (!passthroughTouchEvents) {
        return false;
    }
    event->ignore();
    return true;
}

PassthroughTouchView::PassthroughTouchView(QQuickItem* parent) : QQuickItem(parent) {
    setAcceptedMouseButtons(Qt::AllButtons);
    setAcceptTouchEvents(true);
}

void PassthroughTouchView::mousePressEvent(QMouseEvent* event) {
    if (!passTouchThrough(passthroughTouchEvents, event)) {
        event->accept();
    }
}

void PassthroughTouchView::touchEvent(QTouchEvent* event) {
    if (!passTouchThrough(passthroughTouchEvents, event)) {
        event->accept();
    }
}

}  // namespace LumoraSDK

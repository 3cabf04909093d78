#pragma once

#include <QtQml/qqmlregistration.h>
#include <QQuickItem>

#include "lumorasdk_export.h"

class QEvent;

namespace LumoraSDK {

/// The one rule both pass-through items follow, for a press that reached the item itself (a
/// child that takes its own touches gets them first): with `passthroughTouchEvents` set the press
/// is refused, so it goes on to whatever lies behind. Answers whether it was refused.
bool passTouchThrough(bool passthroughTouchEvents, QEvent* event);

/// A plain view that either keeps the touches landing on its empty parts from what lies behind
/// (the default) or, with `passthroughTouchEvents`, lets them fall through. Children that take
/// touches keep them either way.
class LUMORASDK_EXPORT PassthroughTouchView : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool passthroughTouchEvents MEMBER passthroughTouchEvents FINAL)

public:
    explicit PassthroughTouchView(QQuickItem* parent = nullptr);

    bool passthroughTouchEvents = false;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void touchEvent(QTouchEvent* event) override;
};

}  // namespace LumoraSDK

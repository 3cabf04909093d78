#pragma once

#include <QAccessible>
#include <QList>
#include <QString>

#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

class FrameButtonView;

/// Tells assistive technology what `item` is, as QML's `Accessible.role`, `.name` and
/// `.description` would: the item must come from a QML scene, whose imports name `Accessible`.
/// Returns false (and changes nothing) for an item made without one.
LUMORASDK_EXPORT bool setAccessible(QQuickItem* item, QAccessible::Role role, const QString& name,
                                    const QString& description = {});

/// `button` as assistive technology presses it: a Button whose press action clicks it. With
/// `focusable`, Tab stops on it and Return or Space click it.
LUMORASDK_EXPORT void makeAccessibleButton(FrameButtonView* button, const QString& name,
                                           const QString& description, bool focusable);

/// Tab and Shift+Tab move through `items` in this order and wrap around, never leaving them:
/// for an overlay that keeps the keyboard while it is up.
LUMORASDK_EXPORT void chainTabFocus(const QList<QQuickItem*>& items);

}  // namespace LumoraSDK

#include "Extensions/AccessibilityExtensions.h"

#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlProperty>
#include <QQuickItem>

#include "Views/FrameButtonView.h"

namespace LumoraSDK {

namespace {

/// `Attached.property` of an item from a QML scene (the attached object is made on first use).
QQmlProperty attachedProperty(QQuickItem* item, const QString& name) {
    QQmlContext* context = item ? qmlContext(item) : nullptr;
    return context ? QQmlProperty(item, name, context) : QQmlProperty();
}

}  // namespace

bool setAccessible(QQuickItem* item, QAccessible::Role role, const QString& name,
                   const QString& description) {
    QQmlProperty roleProperty = attachedProperty(item, QStringLiteral("Accessible.role"));
    if (!roleProperty.isValid()) {
        return false;
    }
    QObject* accessible = roleProperty.object();
    roleProperty.write(QVariant::fromValue(role));
    accessible->setProperty("name", name);
    accessible->setProperty("description", description);
    return true;
}

void makeAccessibleButton(FrameButtonView* button, const QString& name, const QString& description,
                          bool focusable) {
    if (!setAccessible(button, QAccessible::Button, name, description)) {
        return;
    }
    QObject* accessible = attachedProperty(button, QStringLiteral("Accessible.role")).object();
    // Connected once, however often the button's texts change.
    QObject::connect(accessible, SIGNAL(pressAction()), button, SIGNAL(clicked()),
                     Qt::UniqueConnection);
    button->setActiveFocusOnTab(focusable);
}

void chainTabFocus(const QList<QQuickItem*>& items) {
    for (qsizetype i = 0; i < items.size(); ++i) {
        QQuickItem* next = items.at((i + 1) % items.size());
        QQuickItem* previous = items.at((i + items.size() - 1) % items.size());
        attachedProperty(items.at(i), QStringLiteral("KeyNavigation.tab"))
            .write(QVariant::fromValue(next));
        attachedProperty(items.at(i), QStringLiteral("KeyNavigation.backtab"))
            .write(QVariant::fromValue(previous));
    }
}

}  // namespace LumoraSDK

#include "ViewControllers/AlertController.h"

#include <QPointer>
#include <QQuickItem>
#include <QVariantMap>

#include "Platform/Scheduler.h"

namespace LumoraSDK {

AlertController::AlertController(QObject* parent) : PresentableViewController(parent) {}

AlertController::~AlertController() = default;

void AlertController::viewWillAppear(bool animated) {
    PresentableViewController::viewWillAppear(animated);
    QVariantList actions;
    for (const AlertAction& action : m_actions) {
        actions.append(QVariantMap{{QStringLiteral("title"), action.title},
                                   {QStringLiteral("style"), int(action.style)}});
    }
    QQuickItem* root = view();
    root->setProperty("title", title);
    root->setProperty("message", message);
    root->setProperty("actions", actions);
    connect(root, SIGNAL(actionTriggered(int)), this, SLOT(onActionTriggered(int)),
            Qt::UniqueConnection);
    // The keyboard moves to the alert once it is on the window (on the next turn).
    QPointer<QQuickItem> alert(root);
    MainQueue::async([alert] {
        if (alert) {
            alert->forceActiveFocus();
        }
    });
}

void AlertController::onActionTriggered(int index) {
    if (m_chosen || index < 0 || index >= m_actions.size()) {
        return;
    }
    m_chosen = true;
    // A copy: the alert is released once it is gone.
    const std::function<void()> handler = m_actions[index].handler;
    dismiss(true, [handler] {
        if (handler) {
            handler();
        }
    });
}

}  // namespace LumoraSDK

#pragma once

#include <QList>
#include <QString>
#include <functional>

#include "ViewControllers/PresentableViewController.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// One button of an alert: its title, its look and what it does once the alert has closed.
struct AlertAction {
    /// Numbered like the platform's action styles.
    enum class Style { defaultStyle = 0, cancel = 1, destructive = 2 };

    QString title;
    Style style = Style::defaultStyle;
    std::function<void()> handler;
};

/// A small in-window dialog over the screen below: a title, a message and its actions side by
/// side in the order they were added, on a card over a dimmed backdrop. Choosing an action
/// closes the alert, then runs the action's handler. While it is up it takes the keyboard, so
/// no key reaches the screen below.
class LUMORASDK_EXPORT AlertController : public PresentableViewController {
    Q_OBJECT

public:
    explicit AlertController(QObject* parent = nullptr);
    ~AlertController() override;

    QString title;
    QString message;

    void addAction(AlertAction action) { m_actions.append(std::move(action)); }
    const QList<AlertAction>& actions() const { return m_actions; }

    void viewWillAppear(bool animated) override;

    /// Closes the alert and then runs the handler of action `index`, once: later choices while
    /// it closes are ignored.
    Q_SLOT void onActionTriggered(int index);

private:
    QList<AlertAction> m_actions;
    bool m_chosen = false;
};

}  // namespace LumoraSDK

#include "ViewControllers/PresentationStack.h"

#include <QQuickItem>
#include <QQuickWindow>

#include "Platform/ViewAnimation.h"

namespace LumoraSDK {

namespace {
/// The full-window item a presented screen sits in. It takes the presses, touches and wheel turns
/// that the screen's own items leave, so nothing under a presented screen reacts to them.
class PresentationContainer : public QQuickItem {
public:
    PresentationContainer() {
        setObjectName(QStringLiteral("presentationContainer"));
        setAcceptedMouseButtons(Qt::AllButtons);
        setAcceptTouchEvents(true);
        setFlag(ItemIsFocusScope);
    }

protected:
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }
    void mouseMoveEvent(QMouseEvent* event) override { event->accept(); }
    void mouseReleaseEvent(QMouseEvent* event) override { event->accept(); }
    void touchEvent(QTouchEvent* event) override { event->accept(); }
    void wheelEvent(QWheelEvent* event) override { event->accept(); }
};
}  // namespace

PresentationStack* PresentationStack::forWindow(QQuickWindow* window) {
    if (!window) {
        return nullptr;
    }
    if (auto* existing =
            window->findChild<PresentationStack*>(QString(), Qt::FindDirectChildrenOnly)) {
        return existing;
    }
    return new PresentationStack(window);
}

PresentationStack::PresentationStack(QQuickWindow* window) : QObject(window), m_window(window) {
    QQuickItem* content = window->contentItem();
    m_root = new PresentableViewController(this);
    m_root->m_view = content;
    m_root->m_ownsView = false;
    m_root->m_stack = this;
    m_root->loadViewIfNeeded();
    connect(content, &QQuickItem::widthChanged, this, &PresentationStack::layoutContainers);
    connect(content, &QQuickItem::heightChanged, this, &PresentationStack::layoutContainers);
}

QList<PresentableViewController*> PresentationStack::presentedViewControllers() const {
    QList<PresentableViewController*> controllers;
    for (const auto& entry : m_entries) {
        if (entry->controller) {
            controllers.append(entry->controller);
        }
    }
    return controllers;
}

QQuickItem* PresentationStack::containerOf(const PresentableViewController* controller) const {
    const auto entry = entryFor(controller);
    return entry ? entry->container.data() : nullptr;
}

std::shared_ptr<PresentationStack::Entry> PresentationStack::entryFor(
    const PresentableViewController* controller) const {
    for (const auto& entry : m_entries) {
        if (entry->controller == controller) {
            return entry;
        }
    }
    return nullptr;
}

void PresentationStack::layoutContainers() {
    if (!m_window) {
        return;
    }
    const QSizeF size = m_window->contentItem()->size();
    for (const auto& entry : std::as_const(m_entries)) {
        if (entry->container) {
            entry->container->setPosition(QPointF(0, 0));
            entry->container->setSize(size);
        }
        if (entry->controller && entry->controller->m_view) {
            const QRectF frame = entry->controller->presentationFrame
                                     ? entry->controller->presentationFrame(size)
                                     : QRectF(QPointF(0, 0), size);
            entry->controller->m_view->setPosition(frame.topLeft());
            entry->controller->m_view->setSize(frame.size());
        }
    }
}

void PresentationStack::present(PresentableViewController* presenting,
                                PresentableViewController* child, bool animated,
                                Completion completion) {
    QQuickItem* view = child->view();
    auto entry = std::make_shared<Entry>();
    entry->controller = child;
    if (!child->parent()) {
        child->setParent(this);
        entry->owned = true;
    }
    child->m_stack = this;
    child->m_presenting = presenting;
    presenting->m_presented = child;

    auto* container = new PresentationContainer();
    container->setParent(this);
    container->setZ(kPresentedZ + qreal(m_entries.size()));
    container->setOpacity(animated ? 0.0 : 1.0);
    view->setParentItem(container);
    entry->container = container;
    m_entries.append(entry);
    layoutContainers();

    entry->pendingAppearance = [child = QPointer(child), animated,
                                completion = std::move(completion)] {
        if (child) {
            child->viewDidAppear(animated);
        }
        if (completion) {
            completion();
        }
    };
    child->viewWillAppear(animated);
    container->setParentItem(m_window->contentItem());

    QPointer<PresentationStack> self(this);
    std::weak_ptr<Entry> weak = entry;
    entry->animation = fade(container, 1.0, animated, [self, weak] {
        if (const auto appearing = weak.lock(); appearing && self) {
            self->finishAppearance(appearing);
        }
    });
}

PresentationStack::Fade PresentationStack::fade(QQuickItem* container, qreal opacity, bool animated,
                                                std::function<void()> done) {
    Fade fade;
    if (!animated) {
        fade.frames = ViewAnimation::animate(0, {{container, "opacity", opacity}},
                                             [done = std::move(done)](bool) { done(); });
        return fade;
    }
    // Frames fall on the animation's own grid, which need not meet the duration exactly; the
    // end comes at the duration itself.
    fade.frames = ViewAnimation::animate(kPresentationDuration, {{container, "opacity", opacity}});
    fade.end = Scheduler::current().after(
        kPresentationDuration,
        [frames = fade.frames, target = QPointer(container), opacity, done = std::move(done)] {
            Timer(frames).invalidate();
            if (target) {
                target->setOpacity(opacity);
            }
            done();
        });
    return fade;
}

void PresentationStack::finishAppearance(const std::shared_ptr<Entry>& entry) {
    entry->animation.stop();
    if (!entry->pendingAppearance) {
        return;
    }
    const Completion appear = std::move(entry->pendingAppearance);
    entry->pendingAppearance = nullptr;
    appear();
}

void PresentationStack::dismiss(PresentableViewController* first, bool animated,
                                Completion completion) {
    const qsizetype index = m_entries.indexOf(entryFor(first));
    if (index < 0) {
        return;
    }
    const QList<std::shared_ptr<Entry>> leaving = m_entries.mid(index);
    for (const auto& entry : leaving) {
        if (entry->dismissing) {
            return;  // already on its way out
        }
    }
    // A screen still fading in has appeared, as far as its owner knows, before it goes.
    for (const auto& entry : leaving) {
        entry->dismissing = true;
        finishAppearance(entry);
    }
    for (auto it = leaving.crbegin(); it != leaving.crend(); ++it) {
        if ((*it)->controller) {
            (*it)->controller->viewWillDisappear(animated);
        }
    }
    // Only the top-most screen is seen leaving; the ones under it go at once.
    for (qsizetype i = 0; i + 1 < leaving.size(); ++i) {
        if (leaving[i]->container) {
            leaving[i]->container->setVisible(false);
        }
    }
    QPointer<PresentationStack> self(this);
    leaving.last()->animation =
        fade(leaving.last()->container, 0.0, animated,
             [self, leaving, animated, completion = std::move(completion)] {
                 if (self) {
                     for (auto it = leaving.crbegin(); it != leaving.crend(); ++it) {
                         self->remove(*it, animated, false);
                     }
                 }
                 if (completion) {
                     completion();
                 }
             });
}

void PresentationStack::dismissDestroyed(PresentableViewController* controller) {
    const qsizetype index = m_entries.indexOf(entryFor(controller));
    if (index < 0) {
        return;
    }
    const QList<std::shared_ptr<Entry>> leaving = m_entries.mid(index);
    for (auto it = leaving.crbegin(); it != leaving.crend(); ++it) {
        (*it)->dismissing = true;
        (*it)->animation.stop();
        const bool destroyed = (*it)->controller == controller;
        if (!destroyed && (*it)->controller) {
            (*it)->controller->viewWillDisappear(false);
        }
        remove(*it, false, destroyed);
    }
}

void PresentationStack::remove(const std::shared_ptr<Entry>& entry, bool animated, bool destroyed) {
    m_entries.removeOne(entry);
    PresentableViewController* controller = entry->controller;
    if (controller) {
        if (controller->m_presenting && controller->m_presenting->m_presented == controller) {
            controller->m_presenting->m_presented = nullptr;
        }
        controller->m_presenting = nullptr;
        controller->m_stack = nullptr;
        if (controller->m_view && controller->m_view->parentItem() == entry->container) {
            controller->m_view->setParentItem(nullptr);
        }
    }
    delete entry->container.data();
    if (controller && !destroyed) {
        controller->viewDidDisappear(animated);
        // The presentation held the screen; once it is gone, so is the screen.
        if (entry->owned && controller->parent() == this) {
            controller->deleteLater();
        }
    }
}

}  // namespace LumoraSDK

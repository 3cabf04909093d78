#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQuickWindow>
#include <functional>
#include <memory>

#include "Platform/Scheduler.h"
#include "ViewControllers/PresentableViewController.h"
#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

/// The screens presented over one window, bottom to top.
///
/// Each presented screen is a full-window item over the window's content item: it fills the
/// window (or the screen's presentation frame in it) and follows its size, stacks above the host's
/// own content and above every screen presented before it, and takes the pointer input that reaches
/// it, so nothing underneath is touched while a screen is up. The window's content itself belongs
/// to the root controller.
///
/// One stack exists per window, made on first use and owned by the window.
class LUMORASDK_EXPORT PresentationStack : public QObject {
    Q_OBJECT

public:
    using Completion = PresentableViewController::Completion;

    /// How long an animated presentation fades in, or a dismissal fades out.
    static constexpr double kPresentationDuration = 0.3;
    /// Stacking value of the first presented screen within the content item; each later screen
    /// stacks one higher. Well above what hosts give their own items.
    static constexpr qreal kPresentedZ = 10000;

    /// The window's stack, made on first use.
    static PresentationStack* forWindow(QQuickWindow* window);

    QQuickWindow* window() const { return m_window; }
    /// The controller whose view is the window's content item.
    PresentableViewController* rootViewController() const { return m_root; }
    /// The presented controllers, bottom to top.
    QList<PresentableViewController*> presentedViewControllers() const;
    /// The full-window item a presented controller's view sits in; nullptr when not presented.
    QQuickItem* containerOf(const PresentableViewController* controller) const;

private:
    friend class PresentableViewController;
    /// An opacity change of a container, at once or over kPresentationDuration.
    struct Fade {
        Timer frames;
        Timer end;
        void stop() {
            frames.invalidate();
            end.invalidate();
        }
    };
    struct Entry {
        QPointer<PresentableViewController> controller;
        QPointer<QQuickItem> container;
        Fade animation;
        Completion pendingAppearance;  // set while the fade-in runs
        bool owned = false;
        bool dismissing = false;
    };

    explicit PresentationStack(QQuickWindow* window);

    void present(PresentableViewController* presenting, PresentableViewController* child,
                 bool animated, Completion completion);
    void dismiss(PresentableViewController* first, bool animated, Completion completion);
    /// A presented controller is being destroyed: it and everything above it leave at once.
    void dismissDestroyed(PresentableViewController* controller);
    void remove(const std::shared_ptr<Entry>& entry, bool animated, bool destroyed);
    std::shared_ptr<Entry> entryFor(const PresentableViewController* controller) const;
    void finishAppearance(const std::shared_ptr<Entry>& entry);
    void layoutContainers();
    static Fade fade(QQuickItem* container, qreal opacity, bool animated,
                     std::function<void()> done);

    QPointer<QQuickWindow> m_window;
    PresentableViewController* m_root = nullptr;
    QList<std::shared_ptr<Entry>> m_entries;
};

}  // namespace LumoraSDK

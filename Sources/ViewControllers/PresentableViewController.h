#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <type_traits>

#include "Platform/Scheduler.h"
#include "lumorasdk_export.h"

class QQmlEngine;
class QQuickWindow;

namespace LumoraSDK {

class PresentationStack;

/// Base of every full-screen screen of the SDK.
///
/// A screen is a controller object that owns its view: the root item of the scene
/// "Layout-iOS/<identifier>.qml" in the SDK's resource bundle, where the identifier is the
/// controller's own class name. Subclasses find the scene's items by objectName with outlet<T>()
/// in their viewDidLoad(); a missing scene, a scene that does not load and a missing outlet are
/// programming errors that stop the process.
///
/// Screens are presented modally over a window (see PresentationStack): present() puts a screen
/// over the one it is called on, dismiss() takes it away again, getGlobalContext() finds the
/// screen to present from.
///
///     auto* screen =
///     PresentableViewController::instantiateFromStoryboard<WebViewController>(engine); screen->url
///     = link; PresentableViewController::getGlobalContext(window)->present(screen, true);
class LUMORASDK_EXPORT PresentableViewController : public QObject {
    Q_OBJECT

public:
    using Completion = std::function<void()>;

    /// Status bar appearances; only light content is used by the SDK's screens. Desktop windows
    /// have no status bar, so the value is kept for hosts that draw one.
    enum class StatusBarStyle { Default = 0, LightContent = 1 };

    explicit PresentableViewController(QObject* parent = nullptr);
    ~PresentableViewController() override;

    // Creation --------------------------------------------------------------------------------

    /// The controller's class name without its namespace, e.g. "ChannelsHostViewController"; it
    /// names the controller's scene.
    QString identifier() const;
    template <typename T>
    static QString identifier() {
        return identifierOf(T::staticMetaObject);
    }
    /// The folder of the SDK's resource bundle that holds one scene per screen class.
    static QString bundleStoryboard();
    /// The scene of the screen class named `identifier`.
    static QUrl sceneUrl(const QString& identifier);

    /// Creates a T with its view made from its scene in `engine`. The view's viewDidLoad() runs
    /// when the view is first asked for, so fields set right after creation are in place by then.
    template <typename T>
    static T* instantiateFromStoryboard(QQmlEngine& engine) {
        static_assert(std::is_base_of_v<PresentableViewController, T>);
        auto* controller = new T();
        controller->loadScene(engine);
        return controller;
    }
    /// The same in the QML engine of `window` (a QQuickView's, or the engine that made the
    /// window), or in the SDK's own engine when the window has none.
    template <typename T>
    static T* instantiateFromStoryboard(QQuickWindow* window) {
        return instantiateFromStoryboard<T>(*engineFor(window));
    }
    /// The same for the key window.
    template <typename T>
    static T* instantiateFromStoryboard() {
        return instantiateFromStoryboard<T>(keyWindow());
    }

    // The view ----------------------------------------------------------------------------------

    /// The controller's view, loaded (and viewDidLoad() run) on first use. A controller made
    /// without a scene gets an empty item.
    QQuickItem* view();
    bool isViewLoaded() const { return m_viewLoaded; }
    void loadViewIfNeeded() { view(); }
    /// The window the controller is presented on (or is the root of), if any.
    QQuickWindow* window() const;

    /// Removes the view's child items whose "restorationIdentifier" (absent: empty) is not listed.
    void removeAllSubViews(const QStringList& except = {});
    /// Hides or shows the view's child items whose "restorationIdentifier" is not listed.
    void toggleAllSubviews(bool hidden, const QStringList& except = {});

    virtual StatusBarStyle preferredStatusBarStyle() const { return StatusBarStyle::LightContent; }
    /// Whether the screen decides the status bar while presented; set by viewDidLoad().
    bool modalPresentationCapturesStatusBarAppearance() const {
        return m_capturesStatusBarAppearance;
    }

    // Lifecycle: overrides call the base first. -----------------------------------------------

    virtual void viewDidLoad();
    virtual void viewWillAppear(bool animated);
    virtual void viewDidAppear(bool animated);
    virtual void viewWillDisappear(bool animated);
    virtual void viewDidDisappear(bool animated);

    // Presentation ----------------------------------------------------------------------------

    /// Presents `child` over this controller's window, above everything presented so far.
    /// Animated, the child fades in over PresentationStack::kPresentationDuration; either way
    /// `completion` runs once the child has appeared, on a later turn of the main queue.
    /// Refused (logged, no completion) when this controller already presents a screen, is not
    /// on a window, or `child` is presented elsewhere. A child without a QObject parent is owned
    /// by the presentation until it is dismissed.
    void present(PresentableViewController* child, bool animated, Completion completion = {});
    /// Dismisses the screen this controller presents, or else this controller itself if it is
    /// presented, together with everything presented above it. `completion` runs once the
    /// screens are gone; with nothing to dismiss nothing happens and it is not called.
    virtual void dismiss(bool animated, Completion completion = {});
    /// Dismisses this presented controller itself together with everything presented above it,
    /// even when it presents a screen of its own. Nothing happens when it is not presented.
    void dismissWithPresented(bool animated, Completion completion = {});
    /// Presents this controller, animated, from getGlobalContext() of the key window.
    void presentSelf(Completion completion = {});

    /// Where the view sits while presented, given the window's size; unset, it fills the window.
    /// Either way the presentation takes the input of the whole window.
    std::function<QRectF(const QSizeF& window)> presentationFrame;

    PresentableViewController* presentedViewController() const { return m_presented; }
    PresentableViewController* presentingViewController() const { return m_presenting; }

    /// The controller to present from on `window`: the top-most presented screen, or the
    /// window's root controller (whose view is the window's content item) when none is
    /// presented. Without a window, an empty controller that is on no window.
    static PresentableViewController* getGlobalContext(QQuickWindow* window);
    /// The same for the key window: the focused Qt Quick window, else the first visible one.
    static PresentableViewController* getGlobalContext();
    static QQuickWindow* keyWindow();
    /// The engine scenes are made in for `window`.
    static QQmlEngine* engineFor(QQuickWindow* window);

protected:
    /// The scene's item named `objectName`, of type T. A missing item, or one of another type,
    /// stops the process naming the outlet and the scene.
    template <typename T = QQuickItem>
    T* outlet(const QString& objectName) {
        QObject* found = findOutlet(objectName);
        auto* typed = qobject_cast<T*>(found);
        if (!typed) {
            failOutlet(objectName, found, T::staticMetaObject.className());
        }
        return typed;
    }

private:
    friend class PresentationStack;

    static QString identifierOf(const QMetaObject& metaObject);
    void loadScene(QQmlEngine& engine);
    QObject* findOutlet(const QString& objectName);
    [[noreturn]] void failOutlet(const QString& objectName, QObject* found, const char* type);
    QString describe() const;

    QPointer<QQuickItem> m_view;
    bool m_ownsView = true;
    bool m_viewLoaded = false;
    bool m_capturesStatusBarAppearance = false;
    QUrl m_sceneUrl;
    QPointer<PresentationStack> m_stack;
    QPointer<PresentableViewController> m_presented;
    QPointer<PresentableViewController> m_presenting;
};

}  // namespace LumoraSDK

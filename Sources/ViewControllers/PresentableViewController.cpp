#include "ViewControllers/PresentableViewController.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickView>
#include <QQuickWindow>

#include "Extensions/ViewExtensions.h"
#include "Lumora.h"
#include "Platform/Bundle.h"
#include "Services/Logger.h"
#include "ViewControllers/PresentationStack.h"

namespace LumoraSDK {

namespace {
const QString kStoryboardName = QStringLiteral("Layout-iOS");

/// Scenes of windows that were not made by a QML engine are made in this one.
QQmlEngine* sharedEngine() {
    static QPointer<QQmlEngine> engine;
    if (!engine) {
        engine = new QQmlEngine(QCoreApplication::instance());
    }
    return engine;
}

QUrl urlForPath(const QString& path) {
    return path.startsWith(QStringLiteral(":/")) ? QUrl(QStringLiteral("qrc") + path)
                                                 : QUrl::fromLocalFile(path);
}

QObject* findByName(QObject* root, const QString& name) {
    if (auto* found = root->findChild<QObject*>(name)) {
        return found;
    }
    // Items placed by repeaters and loaders are children of the visual tree only.
    if (auto* item = qobject_cast<QQuickItem*>(root)) {
        for (QQuickItem* child : item->childItems()) {
            if (child->objectName() == name) {
                return child;
            }
            if (QObject* found = findByName(child, name)) {
                return found;
            }
        }
    }
    return nullptr;
}
}  // namespace

PresentableViewController::PresentableViewController(QObject* parent) : QObject(parent) {}

PresentableViewController::~PresentableViewController() {
    if (m_stack && m_presenting) {
        m_stack->dismissDestroyed(this);
    }
    if (m_ownsView) {
        delete m_view.data();
    }
}

// ---------------------------------------------------------------------------------------------
// Creation

QString PresentableViewController::identifierOf(const QMetaObject& metaObject) {
    const QString name = QString::fromLatin1(metaObject.className());
    const qsizetype scope = name.lastIndexOf(QStringLiteral("::"));
    return scope < 0 ? name : name.mid(scope + 2);
}

QString PresentableViewController::identifier() const {
    return identifierOf(*metaObject());
}

QString PresentableViewController::bundleStoryboard() {
    const auto bundle = Lumora::resourceBundle();
    return bundle ? bundle->resourcePath() + QLatin1Char('/') + kStoryboardName : QString();
}

QUrl PresentableViewController::sceneUrl(const QString& identifier) {
    const QString storyboard = bundleStoryboard();
    return storyboard.isEmpty()
               ? QUrl()
               : urlForPath(storyboard + QLatin1Char('/') + identifier + QStringLiteral(".qml"));
}

void PresentableViewController::loadScene(QQmlEngine& engine) {
    const QString id = identifier();
    const auto bundle = Lumora::resourceBundle();
    if (!bundle) {
        qFatal("%s - the SDK resource bundle is missing, cannot load the storyboard %s",
               qPrintable(id), qPrintable(kStoryboardName));
    }
    const auto path =
        bundle->pathForResource(kStoryboardName + QLatin1Char('/') + id, QStringLiteral("qml"));
    if (!path) {
        qFatal("%s - the storyboard %s has no scene %s (%s)", qPrintable(id),
               qPrintable(kStoryboardName), qPrintable(id), qPrintable(sceneUrl(id).toString()));
    }
    m_sceneUrl = urlForPath(*path);
    QQmlComponent component(&engine, m_sceneUrl, QQmlComponent::PreferSynchronous);
    QObject* object = component.isError() ? nullptr : component.beginCreate(engine.rootContext());
    if (!object) {
        qFatal("%s - the scene %s does not load: %s", qPrintable(id),
               qPrintable(m_sceneUrl.toString()), qPrintable(component.errorString()));
    }
    auto* item = qobject_cast<QQuickItem*>(object);
    if (!item) {
        qFatal("%s - the scene %s is a %s, not an item", qPrintable(id),
               qPrintable(m_sceneUrl.toString()), object->metaObject()->className());
    }
    // A scene that declares `property QtObject controller` can forward its events to it.
    if (item->metaObject()->indexOfProperty("controller") >= 0) {
        item->setProperty("controller", QVariant::fromValue<QObject*>(this));
    }
    component.completeCreate();
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    item->setParent(this);
    m_view = item;
    m_ownsView = true;
}

// ---------------------------------------------------------------------------------------------
// The view

QQuickItem* PresentableViewController::view() {
    if (!m_view) {
        m_view = new QQuickItem();
        m_view->setParent(this);
        m_ownsView = true;
    }
    if (!m_viewLoaded) {
        m_viewLoaded = true;
        viewDidLoad();
    }
    return m_view;
}

QQuickWindow* PresentableViewController::window() const {
    if (m_stack) {
        return m_stack->window();
    }
    return m_view ? m_view->window() : nullptr;
}

void PresentableViewController::removeAllSubViews(const QStringList& except) {
    LumoraSDK::removeAllSubViews(view(), except);
}

void PresentableViewController::toggleAllSubviews(bool hidden, const QStringList& except) {
    LumoraSDK::toggleAllSubviews(view(), hidden, except);
}

QObject* PresentableViewController::findOutlet(const QString& objectName) {
    return m_view ? findByName(m_view, objectName) : nullptr;
}

void PresentableViewController::failOutlet(const QString& objectName, QObject* found,
                                           const char* type) {
    const QString scene =
        m_sceneUrl.isEmpty() ? QStringLiteral("(no scene)") : m_sceneUrl.toString();
    if (found) {
        qFatal("%s - outlet \"%s\" in the scene %s is a %s, not a %s", qPrintable(identifier()),
               qPrintable(objectName), qPrintable(scene), found->metaObject()->className(), type);
    }
    qFatal("%s - missing outlet \"%s\" in the scene %s", qPrintable(identifier()),
           qPrintable(objectName), qPrintable(scene));
}

QString PresentableViewController::describe() const {
    return QStringLiteral("%1(0x%2)").arg(identifier()).arg(quintptr(this), 0, 16);
}

// ---------------------------------------------------------------------------------------------
// Lifecycle

void PresentableViewController::viewDidLoad() {
    m_capturesStatusBarAppearance = true;
}

void PresentableViewController::viewWillAppear(bool) {}
void PresentableViewController::viewDidAppear(bool) {}
void PresentableViewController::viewWillDisappear(bool) {}
void PresentableViewController::viewDidDisappear(bool) {}

// ---------------------------------------------------------------------------------------------
// Presentation

void PresentableViewController::present(PresentableViewController* child, bool animated,
                                        Completion completion) {
    if (!child || child == this) {
        return;
    }
    QQuickWindow* onWindow = window();
    if (!onWindow) {
        logger().log(describe() + QStringLiteral(" - cannot present ") + child->describe() +
                         QStringLiteral(": not on a window"),
                     LogLevel::error);
        return;
    }
    if (child->m_presenting || child->m_stack) {
        logger().log(describe() + QStringLiteral(" - cannot present ") + child->describe() +
                         QStringLiteral(": it is already presented"),
                     LogLevel::error);
        return;
    }
    // A screen inside another one (a page of the player) presents from the top of its window.
    PresentableViewController* presenting = this;
    if (!m_stack) {
        presenting = getGlobalContext(onWindow);
    }
    if (presenting->m_presented) {
        logger().log(describe() + QStringLiteral(" - cannot present ") + child->describe() +
                         QStringLiteral(": already presenting ") +
                         presenting->m_presented->describe(),
                     LogLevel::error);
        return;
    }
    PresentationStack::forWindow(onWindow)->present(presenting, child, animated,
                                                    std::move(completion));
}

void PresentableViewController::dismiss(bool animated, Completion completion) {
    PresentableViewController* first = m_presented    ? m_presented.data()
                                       : m_presenting ? this
                                                      : nullptr;
    if (first && first->m_stack) {
        first->m_stack->dismiss(first, animated, std::move(completion));
    }
}

void PresentableViewController::dismissWithPresented(bool animated, Completion completion) {
    if (m_presenting && m_stack) {
        m_stack->dismiss(this, animated, std::move(completion));
    }
}

void PresentableViewController::presentSelf(Completion completion) {
    getGlobalContext()->present(this, true, std::move(completion));
}

QQuickWindow* PresentableViewController::keyWindow() {
    if (auto* focused = qobject_cast<QQuickWindow*>(QGuiApplication::focusWindow())) {
        return focused;
    }
    for (QWindow* candidate : QGuiApplication::topLevelWindows()) {
        auto* quick = qobject_cast<QQuickWindow*>(candidate);
        if (quick && quick->isVisible()) {
            return quick;
        }
    }
    return nullptr;
}

PresentableViewController* PresentableViewController::getGlobalContext(QQuickWindow* window) {
    if (!window) {
        static QPointer<PresentableViewController> detached;
        if (!detached) {
            detached = new PresentableViewController(QCoreApplication::instance());
        }
        return detached;
    }
    PresentableViewController* context = PresentationStack::forWindow(window)->rootViewController();
    while (context->m_presented) {
        context = context->m_presented;
    }
    return context;
}

PresentableViewController* PresentableViewController::getGlobalContext() {
    return getGlobalContext(keyWindow());
}

QQmlEngine* PresentableViewController::engineFor(QQuickWindow* window) {
    if (auto* quickView = qobject_cast<QQuickView*>(window)) {
        return quickView->engine();
    }
    if (window) {
        if (QQmlEngine* engine = qmlEngine(window)) {
            return engine;
        }
    }
    return sharedEngine();
}

}  // namespace LumoraSDK

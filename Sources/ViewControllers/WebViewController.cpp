#include "ViewControllers/WebViewController.h"

#include <QCoreApplication>
#include <QMetaEnum>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <algorithm>

#include "Extensions/AccessibilityExtensions.h"
#include "Extensions/ColorExtensions.h"
#include "Extensions/ViewExtensions.h"
#include "Platform/Layers/ShapeLayer.h"
#include "Platform/ViewAnimation.h"
#include "Services/Logger.h"
#include "Views/FrameButtonView.h"

namespace LumoraSDK {

namespace {
constexpr qreal kTopBarCornerRadius = 10;
// Bars lighter than this get dark text and icons, darker ones white.
constexpr qreal kLightBarLuminance = 0.6;

// The web view, with its load events turned into the signals this screen listens to: progress
// as a fraction, and the start and end (success or not) of each navigation. It is a sandbox for a
// story's link: every navigation and new window is put to the screen (only http and https
// pages open, in this same view), permissions, downloads, file pickers, full screen and
// JavaScript dialogs are turned down, certificate errors are never overridden, and the page
// runs in its own off-the-record profile, so cookies and storage go with the view.
constexpr const char* kWebViewQml = R"(import QtQuick
import QtWebEngine
WebEngineView {
    id: view
    property QtObject sandbox
    signal estimatedProgressChanged(real progress)
    signal navigationStarted()
    signal navigationFinished()
    onLoadProgressChanged: estimatedProgressChanged(loadProgress / 100)
    onLoadingChanged: (loadingInfo) => {
        if (loadingInfo.status === WebEngineView.LoadStartedStatus)
            navigationStarted()
        else
            navigationFinished()
    }
    profile: WebEngineProfile {
        offTheRecord: true
        httpCacheType: WebEngineProfile.MemoryHttpCache
        persistentCookiesPolicy: WebEngineProfile.NoPersistentCookies
        onDownloadRequested: (download) => {
            download.cancel()
            view.sandbox.refused("download", download.url)
        }
    }
    settings.javascriptCanAccessClipboard: false
    settings.javascriptCanPaste: false
    settings.localContentCanAccessFileUrls: false
    settings.localContentCanAccessRemoteUrls: false
    settings.fullScreenSupportEnabled: false
    settings.screenCaptureEnabled: false
    settings.pluginsEnabled: false
    settings.allowWindowActivationFromJavaScript: false
    onNavigationRequested: (request) => {
        if (!sandbox.allowsNavigation(request.url))
            request.reject()
    }
    onNewWindowRequested: (request) => {
        if (sandbox.allowsNavigation(request.requestedUrl))
            url = request.requestedUrl
    }
    // Chromium turns down a web page's links to local files itself, before asking the view;
    // its console error is the only sign of the attempt. The page's own console stays out of
    // the host's log.
    onJavaScriptConsoleMessage: (level, message) => {
        const prefix = "Not allowed to load local resource: "
        if (level === WebEngineView.ErrorMessageLevel && message.startsWith(prefix))
            sandbox.allowsNavigation(message.slice(prefix.length))
    }
    onFeaturePermissionRequested: (origin, feature) => {
        grantFeaturePermission(origin, feature, false)
        sandbox.refusedPermission(feature, origin)
    }
    onJavaScriptDialogRequested: (request) => {
        request.accepted = true
        request.dialogReject()
        sandbox.refused("a JavaScript dialog", request.securityOrigin)
    }
    onCertificateError: (error) => {
        error.rejectCertificate()
        sandbox.rejectedCertificate(error.url, error.description)
    }
    onFileDialogRequested: (request) => {
        request.accepted = true
        request.dialogReject()
        sandbox.refused("a file picker", url)
    }
    onAuthenticationDialogRequested: (request) => {
        request.accepted = true
        request.dialogReject()
        sandbox.refused("a sign-in dialog", request.url)
    }
    onColorDialogRequested: (request) => {
        request.accepted = true
        request.dialogReject()
    }
    onFullScreenRequested: (request) => request.reject()
    onRegisterProtocolHandlerRequested: (request) => request.reject()
    onSelectClientCertificate: (selection) => selection.selectNone()
}
)";

/// The item's anchor lines: their margins are the layout constraints the screen moves.
QObject* anchorsOf(QQuickItem* item) {
    return item ? item->property("anchors").value<QObject*>() : nullptr;
}

QColor contentColorOn(const QColor& bar) {
    const qreal luminance = 0.2126 * bar.redF() + 0.7152 * bar.greenF() + 0.0722 * bar.blueF();
    return luminance > kLightBarLuminance ? QColor(0x1a, 0x1a, 0x1a) : QColor(Qt::white);
}
}  // namespace

const QString WebViewController::estimatedProgress = QStringLiteral("estimatedProgress");
// The bar takes the brand's primary colour, the progress its secondary one.
const Branding WebViewController::defaultBranding = Branding::defaultColors;

WebViewController::WebViewController(QObject* parent) : PresentableViewController(parent) {}

WebViewController::~WebViewController() {
    m_requestTimeout.invalidate();
    m_progressFade.invalidate();
    m_springBack.invalidate();
    stopObservingEstimatedProgress();
    delete m_webView.data();
}

QString WebViewController::description() const {
    return QStringLiteral("LumoraSDK.WebViewController");
}

bool WebViewController::canOpen(const QUrl& url) {
    const QString scheme = url.scheme();
    return url.isValid() && !url.host().isEmpty() &&
           (scheme == QLatin1String("http") || scheme == QLatin1String("https"));
}

bool WebViewController::allowsNavigation(const QUrl& url) const {
    if (canOpen(url)) {
        return true;
    }
    log(description() + QStringLiteral(" - refusing to open \"") + url.toString() +
            QStringLiteral("\": only http and https pages are shown"),
        LogLevel::error);
    return false;
}

void WebViewController::refused(const QString& what, const QUrl& origin) const {
    log(description() + QStringLiteral(" - refused ") + what + QStringLiteral(" from ") +
        origin.toString());
}

void WebViewController::refusedPermission(int feature, const QUrl& origin) const {
    // The names are the web view's own: its feature numbers differ from Qt WebEngine Core's.
    const QMetaObject* meta = m_webView ? m_webView->metaObject() : nullptr;
    const int index = meta ? meta->indexOfEnumerator("Feature") : -1;
    const char* name = index >= 0 ? meta->enumerator(index).valueToKey(feature) : nullptr;
    refused(QStringLiteral("the permission ") +
                (name ? QString::fromLatin1(name) : QString::number(feature)),
            origin);
}

void WebViewController::rejectedCertificate(const QUrl& url, const QString& reason) const {
    log(description() + QStringLiteral(" - rejected the certificate of ") + url.toString() +
            QStringLiteral(": ") + reason,
        LogLevel::error);
}

// ---------------------------------------------------------------------------------------------
// Lifecycle

void WebViewController::viewDidLoad() {
    PresentableViewController::viewDidLoad();
    m_topBarView = outlet(QStringLiteral("topBarView"));
    m_pageTitle = outlet(QStringLiteral("pageTitle"));
    m_pageUrl = outlet(QStringLiteral("pageUrl"));
    m_containerView = outlet(QStringLiteral("containerView"));
    m_progressBar = outlet(QStringLiteral("progressBar"));
    m_closeButton = outlet<FrameButtonView>(QStringLiteral("closeButton"));
    makeAccessibleButton(m_closeButton, tr("Close"), tr("Closes the web page"), false);
    m_topBarTopConstraint = anchorsOf(m_topBarView);
    m_progressBarTrailingConstraint = anchorsOf(m_progressBar);

    connect(m_closeButton, &FrameButtonView::clicked, this,
            &WebViewController::onCloseButtonPressed);
    // The bar's background is drawn at the bar's size, so it is redrawn when that changes.
    connect(m_topBarView, &QQuickItem::widthChanged, this,
            &WebViewController::applyTopBarBackground);
    connect(m_topBarView, &QQuickItem::heightChanged, this,
            &WebViewController::applyTopBarBackground);
}

void WebViewController::viewWillAppear(bool animated) {
    PresentableViewController::viewWillAppear(animated);
    setup(branding);
}

void WebViewController::setup(const std::optional<Branding>& branding) {
    loadViewIfNeeded();
    const Branding colors = branding.value_or(defaultBranding);
    m_topBarColor =
        colorFromHexString(colors.primaryColor.value_or(*defaultBranding.primaryColor), 1.0);
    applyTopBarBackground();
    view()->setProperty("barContentColor", contentColorOn(m_topBarColor));
    m_progressBar->setProperty(
        "color",
        colorFromHexString(colors.secondaryColor.value_or(*defaultBranding.secondaryColor), 1.0));

    if (!url || !allowsNavigation(*url) || !createWebView()) {
        stopObservingEstimatedProgress();
        // On the next turn, so that a presentation under way is in place before it is undone.
        QPointer<WebViewController> self(this);
        MainQueue::async([self] {
            if (self) {
                self->dismissAndNotify();
            }
        });
        return;
    }
    log(description() + QStringLiteral(" - loading ") + url->toString());
    m_webView->setProperty("url", *url);
    QPointer<WebViewController> self(this);
    m_requestTimeout = Scheduler::current().after(kRequestTimeout, [self] {
        if (self && self->m_webView && self->m_webView->property("loading").toBool()) {
            log(self->description() + QStringLiteral(" - the page did not load in time"),
                LogLevel::error);
            QMetaObject::invokeMethod(self->m_webView, "stop");
        }
    });
}

void WebViewController::applyTopBarBackground() {
    if (!m_topBarView || !m_topBarColor.isValid()) {
        return;
    }
    clearShapeLayers(m_topBarView);
    ShapeLayer* background =
        createBorder(m_topBarView, 0, Qt::transparent, m_topBarColor, kTopBarCornerRadius,
                     RectCorner::TopLeft | RectCorner::TopRight, std::nullopt);
    background->insertInto(m_topBarView, 0);
}

bool WebViewController::createWebView() {
    if (m_webView) {
        stopObservingEstimatedProgress();
        delete m_webView.data();
    }
    if (!QCoreApplication::testAttribute(Qt::AA_ShareOpenGLContexts)) {
        // Qt WebEngine was set up too late to share the scene's graphics (the SDK loaded after
        // the application object, for instance); a web view now could take the process down.
        log(description() +
                QStringLiteral(" - the web view is not available: Qt WebEngine was not prepared; "
                               "call Lumora::prepareApplication() before creating the "
                               "QGuiApplication"),
            LogLevel::error);
        return false;
    }
    QQmlEngine* engine = qmlEngine(view());
    if (!engine) {
        engine = engineFor(window());
    }
    QQmlComponent component(engine);
    component.setData(kWebViewQml, QUrl());
    QObject* object = component.create();
    auto* item = qobject_cast<QQuickItem*>(object);
    if (!item) {
        log(description() + QStringLiteral(" - the web view is not available: ") +
                component.errorString().trimmed(),
            LogLevel::error);
        delete object;
        return false;
    }
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    item->setProperty("sandbox", QVariant::fromValue<QObject*>(this));
    item->setParent(this);
    item->setParentItem(m_containerView);
    item->setSize(m_containerView->size());
    anchorsOf(item)->setProperty("fill", QVariant::fromValue<QQuickItem*>(m_containerView));
    connect(item, SIGNAL(navigationStarted()), this, SLOT(onNavigationStarted()));
    connect(item, SIGNAL(navigationFinished()), this, SLOT(onNavigationFinished()));
    m_progressObservation = connect(item, SIGNAL(estimatedProgressChanged(double)), this,
                                    SLOT(onEstimatedProgressChanged(double)));
    m_webView = item;
    return true;
}

void WebViewController::stopObservingEstimatedProgress() {
    if (m_progressObservation) {
        disconnect(m_progressObservation);
        m_progressObservation = {};
    }
}

void WebViewController::dismissAndNotify() {
    if (m_dismissing) {
        return;
    }
    m_dismissing = true;
    m_requestTimeout.invalidate();
    // A copy, so that it runs even when the presentation releases this screen on the way out.
    const std::function<void()> callback = onDismissed;
    if (!presentingViewController()) {
        // Not on screen: nothing to take away.
        if (callback) {
            callback();
        }
        return;
    }
    dismiss(true, [callback] {
        if (callback) {
            callback();
        }
    });
}

// ---------------------------------------------------------------------------------------------
// Progress and navigation

void WebViewController::observeValue(const QString& keyPath, double newValue) {
    if (keyPath != estimatedProgress || !m_progressBar) {
        return;
    }
    m_progressFade.invalidate();
    m_progressBar->setOpacity(1.0);
    setProgressBarTrailingConstraint((1.0 - newValue) * m_topBarView->width());
}

void WebViewController::onEstimatedProgressChanged(double progress) {
    observeValue(estimatedProgress, progress);
}

void WebViewController::onNavigationStarted() {
    webViewDidStartProvisionalNavigation();
}

void WebViewController::onNavigationFinished() {
    m_requestTimeout.invalidate();
    webViewDidFinish();
}

void WebViewController::webViewDidStartProvisionalNavigation() {
    setLabels();
}

void WebViewController::webViewDidFinish() {
    setLabels();
    if (m_progressBar) {
        m_progressFade =
            ViewAnimation::animate(kProgressFadeDuration, {{m_progressBar.data(), "opacity", 0.0}});
    }
}

void WebViewController::setLabels() {
    const QUrl current = m_webView ? m_webView->property("url").toUrl() : QUrl();
    m_pageTitle->setProperty("text",
                             m_webView ? m_webView->property("title").toString() : QString());
    m_pageUrl->setProperty("text", current.isEmpty() ? QString() : current.toString());
}

// ---------------------------------------------------------------------------------------------
// Gestures and buttons

void WebViewController::forwardPan(int state, qreal dy) {
    panGestureAction(static_cast<GestureState>(state), dy);
}

void WebViewController::panGestureAction(GestureState state, qreal dy) {
    QQuickItem* root = view();
    const qreal height = std::max<qreal>(root->height(), 1);
    const qreal alpha = std::max<qreal>(0, 1 - dy / height - kDragAlphaOffset);
    QColor background = root->property("color").value<QColor>();
    switch (state) {
        case GestureState::Changed:
            m_springBack.invalidate();
            // Dragging up never lifts the bar above its rest position.
            setTopBarTopConstraint(std::max<qreal>(dy, 0));
            background.setAlphaF(alpha);
            root->setProperty("color", background);
            break;
        case GestureState::Ended:
            if (alpha < kDismissAlphaThreshold) {
                background.setAlphaF(0);
                root->setProperty("color", background);
                stopObservingEstimatedProgress();
                dismissAndNotify();
            } else {
                // The background keeps the alpha the drag reached; only the bar returns.
                m_springBack = ViewAnimation::animate(kSpringBackDuration,
                                                      {{m_topBarTopConstraint, "topMargin", 0.0}});
            }
            break;
        default:
            log(QStringLiteral("panGestureAction - state ") + QString::number(int(state)));
            break;
    }
}

void WebViewController::onCloseButtonPressed() {
    stopObservingEstimatedProgress();
    dismissAndNotify();
}

// ---------------------------------------------------------------------------------------------
// Constraints

qreal WebViewController::topBarTopConstraint() const {
    return m_topBarTopConstraint ? m_topBarTopConstraint->property("topMargin").toReal() : 0;
}

void WebViewController::setTopBarTopConstraint(qreal constant) {
    if (m_topBarTopConstraint) {
        m_topBarTopConstraint->setProperty("topMargin", constant);
    }
}

qreal WebViewController::progressBarTrailingConstraint() const {
    return m_progressBarTrailingConstraint
               ? m_progressBarTrailingConstraint->property("rightMargin").toReal()
               : 0;
}

void WebViewController::setProgressBarTrailingConstraint(qreal constant) {
    if (m_progressBarTrailingConstraint) {
        m_progressBarTrailingConstraint->setProperty("rightMargin", constant);
    }
}

}  // namespace LumoraSDK

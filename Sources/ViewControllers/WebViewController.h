#pragma once

#include <QColor>
#include <QMetaObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <functional>
#include <optional>

#include "Models/Branding.h"
#include "Platform/GestureState.h"
#include "Platform/Scheduler.h"
#include "ViewControllers/PresentableViewController.h"
#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

class FrameButtonView;

/// A web page (a story page's swipe-up link) full screen over the player: a branded top bar with
/// the page's title and address, a thin load-progress bar along the bar's bottom edge, a close
/// button, and a downward drag on the bar that dismisses the screen.
///
/// The host creates it, sets `url`, `branding` and `onDismissed`, and presents it animated; the
/// page starts loading as the screen appears. Only http and https addresses are opened (see
/// canOpen); anything else, or no address at all, makes the screen go away at once.
/// onDismissed runs once the screen has gone, whichever way it was closed.
///
/// The web view is Qt WebEngine's WebEngineView, created when the screen appears; the host must
/// have called Lumora::prepareApplication() before creating its QGuiApplication.
class LUMORASDK_EXPORT WebViewController : public PresentableViewController {
    Q_OBJECT

public:
    /// The key path observed on the web view: its load progress as a fraction.
    static const QString estimatedProgress;
    /// Longest wait for a page before the load is given up.
    static constexpr double kRequestTimeout = 60.0;
    /// The progress bar fades out over this time once a page has finished loading.
    static constexpr double kProgressFadeDuration = 0.5;
    /// A drag that ends short of dismissing springs back over this time.
    static constexpr double kSpringBackDuration = 0.5;
    /// Background alpha at the rest position of a drag; it falls with the drag distance.
    static constexpr qreal kDragAlphaOffset = 0.2;
    /// A drag that ends with the background alpha below this dismisses the screen, that is one
    /// longer than 20% of the screen's height.
    static constexpr qreal kDismissAlphaThreshold = 0.6;
    /// Brand colours in force while none has been received.
    static const Branding defaultBranding;

    explicit WebViewController(QObject* parent = nullptr);
    ~WebViewController() override;

    std::optional<QUrl> url;
    std::optional<Branding> branding;
    std::function<void()> onDismissed = [] {};

    /// True for an http or https address with a host: the only pages this screen opens.
    static bool canOpen(const QUrl& url);

    /// Whether the page may go to `url` (a first address, a link, a redirect, a new window):
    /// only addresses canOpen accepts; any other is refused with a log line naming it.
    Q_INVOKABLE bool allowsNavigation(const QUrl& url) const;
    /// What the page asked for and did not get (a download, a dialog, a permission), logged.
    Q_INVOKABLE void refused(const QString& what, const QUrl& origin) const;
    Q_INVOKABLE void refusedPermission(int feature, const QUrl& origin) const;
    /// A page whose certificate does not verify is never shown; the reason is logged.
    Q_INVOKABLE void rejectedCertificate(const QUrl& url, const QString& reason) const;

    /// Colours the top bar and the progress bar, then starts loading `url`; without an address
    /// that can be opened, dismisses the screen at once (running onDismissed).
    void setup(const std::optional<Branding>& branding);

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;

    /// The pan on the top bar: `dy` is the vertical translation since the gesture began.
    void panGestureAction(GestureState state, qreal dy);
    /// The same, for the scene's pointer handler, with the state as its number.
    Q_INVOKABLE void forwardPan(int state, qreal dy);
    void onCloseButtonPressed();

    /// A change of an observed value of the web view; only estimatedProgress (0..1) is acted on.
    void observeValue(const QString& keyPath, double newValue);
    /// A navigation of the web view started / finished: the labels show its title and address.
    void webViewDidStartProvisionalNavigation();
    void webViewDidFinish();

    bool isObservingEstimatedProgress() const { return bool(m_progressObservation); }
    /// The web view, once setup() has made one.
    QQuickItem* webView() const { return m_webView; }
    QQuickItem* topBarView() const { return m_topBarView; }
    QQuickItem* containerView() const { return m_containerView; }
    QQuickItem* progressBar() const { return m_progressBar; }
    QQuickItem* pageTitle() const { return m_pageTitle; }
    QQuickItem* pageUrl() const { return m_pageUrl; }
    FrameButtonView* closeButton() const { return m_closeButton; }

    /// How far the top bar (and the page under it) is moved down from its rest position.
    qreal topBarTopConstraint() const;
    void setTopBarTopConstraint(qreal constant);
    /// The progress bar's inset from the top bar's right edge.
    qreal progressBarTrailingConstraint() const;
    void setProgressBarTrailingConstraint(qreal constant);

    QString description() const;

private slots:
    // What the web view reports, connected while it is observed / while it lives.
    void onEstimatedProgressChanged(double progress);
    void onNavigationStarted();
    void onNavigationFinished();

private:
    void applyTopBarBackground();
    bool createWebView();
    void stopObservingEstimatedProgress();
    /// Dismisses animated, then runs onDismissed; only the first call of a screen counts.
    void dismissAndNotify();
    void setLabels();

    QPointer<QQuickItem> m_pageTitle;
    QPointer<QQuickItem> m_pageUrl;
    QPointer<QQuickItem> m_topBarView;
    QPointer<QObject> m_topBarTopConstraint;
    QPointer<QQuickItem> m_containerView;
    QPointer<QQuickItem> m_progressBar;
    QPointer<QObject> m_progressBarTrailingConstraint;
    QPointer<FrameButtonView> m_closeButton;
    QPointer<QQuickItem> m_webView;

    QColor m_topBarColor;
    QMetaObject::Connection m_progressObservation;
    Timer m_requestTimeout;
    Timer m_progressFade;
    Timer m_springBack;
    bool m_dismissing = false;
};

}  // namespace LumoraSDK

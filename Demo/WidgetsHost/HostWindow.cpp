#include "HostWindow.h"

#include <LumoraSDK/Views/LumoraRowView.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QListWidget>
#include <QMenuBar>
#include <QPainter>
#include <QQuickItem>
#include <QQuickWidget>
#include <QStatusBar>
#include <QVBoxLayout>

using LumoraSDK::LumoraRowView;

namespace {
constexpr int kRowHeight = 112;
const QStringList kArticles{
    QStringLiteral("Morning briefing: what changed overnight"),
    QStringLiteral("Five trails for a long weekend"),
    QStringLiteral("The quiet comeback of the night train"),
    QStringLiteral("Ask the editors: your questions answered"),
    QStringLiteral("Recipes: one pan, twenty minutes"),
};
}  // namespace

HostWindow::HostWindow(QWidget* parent) : QMainWindow(parent) {
    setWindowTitle(tr("Lumora Widgets host"));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 8, 0, 0);

    auto* heading = new QLabel(tr("Stories"), central);
    heading->setStyleSheet(QStringLiteral("font-size: 18px; font-weight: 600; padding: 0 12px;"));
    layout->addWidget(heading);

    m_rowWidget = new QQuickWidget(central);
    m_rowWidget->setResizeMode(QQuickWidget::SizeRootObjectToView);
    m_rowWidget->setMinimumHeight(kRowHeight);
    m_rowWidget->setSource(QUrl(QStringLiteral("qrc:/widgets-host/Row.qml")));
    layout->addWidget(m_rowWidget, 0);

    auto* articlesHeading = new QLabel(tr("Latest articles"), central);
    articlesHeading->setStyleSheet(heading->styleSheet());
    auto* articles = new QListWidget(central);
    articles->addItems(kArticles);
    layout->addWidget(articlesHeading);
    layout->addWidget(articles, 1);
    m_hostContent = {heading, articlesHeading, articles};
    setCentralWidget(central);

    QMenu* menu = menuBar()->addMenu(tr("&Stories"));
    menu->addAction(tr("&Reload"), this, [this] {
        if (m_row) {
            m_row->reloadData();
        }
    });
    QAction* dark = menu->addAction(tr("&Dark style"));
    dark->setCheckable(true);
    connect(dark, &QAction::toggled, this, [this](bool on) {
        if (m_row) {
            m_row->setUiStyle(on ? QStringLiteral("dark") : QStringLiteral("light"));
        }
    });
    menu->addSeparator();
    menu->addAction(tr("&Quit"), qApp, &QApplication::quit);

    QQuickItem* root = m_rowWidget->rootObject();
    m_row = root ? root->findChild<LumoraRowView*>(QStringLiteral("row")) : nullptr;
    if (m_row) {
        m_row->setDelegate(this);
        connect(m_row, &LumoraRowView::isChannelHostActiveChanged, this,
                [this] { showPlayer(m_row->isChannelHostActive()); });
    } else {
        statusBar()->showMessage(
            tr("The story row did not load: %1").arg(m_rowWidget->errors().value(0).toString()));
    }
    resize(420, 640);
}

HostWindow::~HostWindow() {
    // The row outlives this delegate only for a moment; it must not call into it meanwhile.
    if (m_row) {
        m_row->setDelegate(nullptr);
    }
}

void HostWindow::onChannelsDataLoadStarted() {
    statusBar()->showMessage(tr("Loading stories…"));
}

void HostWindow::onChannelsDataLoadComplete(bool success,
                                            const std::optional<LumoraSDK::RequestError>& error,
                                            int dataCount) {
    if (!success) {
        statusBar()->showMessage(tr("Stories are not available: %1")
                                     .arg(error ? LumoraSDK::describe(*error) : QString()));
        return;
    }
    statusBar()->showMessage(tr("%n stories", nullptr, dataCount));
    if (onRowLoaded && dataCount > 0) {
        onRowLoaded(dataCount);
    }
}

void HostWindow::onChannelDismissed() {
    statusBar()->showMessage(tr("Back from the stories"), 3000);
}

void HostWindow::showPlayer(bool shown) {
    for (QWidget* widget : std::as_const(m_hostContent)) {
        widget->setVisible(!shown);
    }
    menuBar()->setEnabled(!shown);
    // Now, not on the next layout pass: the row announces the player before it builds it, and
    // the player takes the size of the scene it opens in.
    centralWidget()->layout()->activate();
}

QImage HostWindow::capture() {
    // The widgets draw themselves; the Qt Quick scene is read back from its own render target.
    QImage image = grab().toImage();
    QPainter painter(&image);
    painter.drawImage(m_rowWidget->mapTo(this, QPoint(0, 0)), m_rowWidget->grabFramebuffer());
    return image;
}

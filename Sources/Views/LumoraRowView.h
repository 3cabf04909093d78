#pragma once

#include <QColor>
#include <QList>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include "Enums/LumoraRowViewCellType.h"
#include "Enums/LumoraRowViewStyle.h"
#include "Enums/RequestStatusError.h"
#include "LumoraRowViewDelegate.h"
#include "Models/Branding.h"
#include "Models/Channel.h"
#include "Views/LumoraRowCollectionView.h"
#include "lumorasdk_export.h"

class QQmlEngine;

namespace LumoraSDK {

class LumoraRowViewDataSource;

/// The embeddable story row: a horizontal strip of round or square channel cells with a coloured
/// ring around unread channels. A tapped cell opens the full-screen player.
///
/// From QML:
///
///     import LumoraSDK
///     LumoraRowView {
///         height: 120; width: parent.width
///         uiStyle: "dark"; cellType: "square"
///         onChannelsDataLoadComplete: (success, error, count) => console.log(count)
///     }
///
/// A new row shows five placeholder cells. It loads the channels when the SDK finishes
/// initialising, when the user id changes, when uiStyle or cellType change, and on reloadData().
/// Changes between two loads are animated (moved, inserted and removed cells).
class LUMORASDK_EXPORT LumoraRowView : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QString uiStyle READ uiStyle WRITE setUiStyle NOTIFY uiStyleChanged FINAL)
    Q_PROPERTY(QString cellType READ cellType WRITE setCellType NOTIFY cellTypeChanged FINAL)
    Q_PROPERTY(qreal cellScale READ cellScale WRITE setCellScale NOTIFY cellScaleChanged FINAL)
    Q_PROPERTY(
        qreal cellSpacing READ cellSpacing WRITE setCellSpacing NOTIFY cellSpacingChanged FINAL)
    Q_PROPERTY(qreal leftInset READ leftInset WRITE setLeftInset NOTIFY leftInsetChanged FINAL)
    Q_PROPERTY(qreal rightInset READ rightInset WRITE setRightInset NOTIFY rightInsetChanged FINAL)
    Q_PROPERTY(QColor primaryColor READ primaryColor WRITE setPrimaryColor NOTIFY
                   primaryColorChanged FINAL)
    Q_PROPERTY(QColor secondaryColor READ secondaryColor WRITE setSecondaryColor NOTIFY
                   secondaryColorChanged FINAL)
    Q_PROPERTY(int currentlyOpenChannelIndex READ currentlyOpenChannelIndex WRITE
                   setCurrentlyOpenChannelIndex NOTIFY currentlyOpenChannelIndexChanged FINAL)
    Q_PROPERTY(bool isChannelHostActive READ isChannelHostActive WRITE setChannelHostActive NOTIFY
                   isChannelHostActiveChanged FINAL)

public:
    /// Cells shown until the first load succeeds.
    static constexpr int placeholderCount = 5;

    explicit LumoraRowView(QQuickItem* parent = nullptr);
    ~LumoraRowView() override;

    /// "auto", "light" or "dark". Written text is lower-cased; unknown text means "auto". A text
    /// that differs from the previous style's raw value rebuilds the strip and reloads.
    QString uiStyle() const;
    void setUiStyle(const QString& text);
    /// "round" or "square", with the same rules as uiStyle; unknown text means "round".
    QString cellType() const;
    void setCellType(const QString& text);
    /// Fraction of the row's height a cell takes. This and the spacing and insets take effect
    /// at the next rebuild (a change of uiStyle or cellType).
    qreal cellScale() const { return m_cellScale; }
    void setCellScale(qreal scale);
    qreal cellSpacing() const { return m_cellSpacing; }
    void setCellSpacing(qreal spacing);
    qreal leftInset() const { return m_leftInset; }
    void setLeftInset(qreal inset);
    qreal rightInset() const { return m_rightInset; }
    void setRightInset(qreal inset);
    /// The branding's colours (the defaults where the branding has none); writing stores the
    /// colour's hex text in the branding.
    QColor primaryColor() const;
    void setPrimaryColor(const QColor& color);
    QColor secondaryColor() const;
    void setSecondaryColor(const QColor& color);
    Branding branding() const { return m_branding; }
    /// Colours handed to the cells at the next rebuild; a missing colour means no coloured ring.
    void setBranding(const Branding& branding);

    /// The channel shown by the open player, -1 when none is open. Written by the player.
    int currentlyOpenChannelIndex() const { return m_currentlyOpenChannelIndex; }
    void setCurrentlyOpenChannelIndex(int index);
    /// True while a player opened from this row is on screen. Written by the player.
    bool isChannelHostActive() const { return m_isChannelHostActive; }
    void setChannelHostActive(bool active);
    /// Per channel index, the centre of its cell in window coordinates, when known. The player
    /// grows from it and shrinks back into it.
    QList<std::optional<QPointF>>& cellCenters();
    const QList<std::optional<QPointF>>& cellCenters() const;

    /// Not owned; unset it before destroying it.
    LumoraRowViewDelegate* delegate() const { return m_delegate; }
    void setDelegate(LumoraRowViewDelegate* delegate) { m_delegate = delegate; }

    /// The strip, from the row's interface file; null until the row is set up.
    LumoraRowCollectionView* collectionView() const { return m_collectionView; }
    LumoraRowViewDataSource* collectionDataSource() const { return m_collectionDataSource.get(); }

    /// Fetches the channels and shows them, telling the delegate when it starts and ends.
    Q_INVOKABLE void reloadData();
    /// Reloads, then scrolls to the channel with `id` (the first one when there is none) and
    /// opens the player from its cell.
    Q_INVOKABLE void openChannel(const QString& id, bool animated);

    /// How log lines name the row.
    static QString description() { return QStringLiteral("LumoraSDK.LumoraRowView"); }

Q_SIGNALS:
    void uiStyleChanged();
    void cellTypeChanged();
    void cellScaleChanged();
    void cellSpacingChanged();
    void leftInsetChanged();
    void rightInsetChanged();
    void primaryColorChanged();
    void secondaryColorChanged();
    void currentlyOpenChannelIndexChanged();
    void isChannelHostActiveChanged();
    /// The delegate's three events, for QML hosts.
    void channelsDataLoadStarted();
    void channelsDataLoadComplete(bool success, const QString& error, int dataCount);
    void channelDismissed();

protected:
    void componentComplete() override;

private:
    /// A debug line of this row's: its description, " - " and the operation.
    static void logOperation(const QString& operation);
    using ChannelsCompletion = std::function<void(const QList<Channel>&)>;
    using ErrorCompletion = std::function<void(const RequestError&)>;

    void setupIfNeeded();
    void loadViewFromInterfaceFile(QQmlEngine* engine);
    void addObservers();
    void setupCollectionView(std::function<void()> onComplete);
    void showPlaceholders();
    void getChannels(ChannelsCompletion onComplete, ErrorCompletion onError);
    void loadDataWithBatchUpdate(QList<Channel> newItems, bool animate);
    void channelContainerClosed(int index);
    void openChannelChanged();
    void openLoadedChannel(const QString& id, const QList<Channel>& channels, bool animated);
    void openChannelFromVisibleCell(int index);
    /// A written uiStyle or cellType takes effect: at once, or after set-up when QML is still
    /// building the row.
    void styleOrTypeDidChange();

    QPointer<LumoraRowCollectionView> m_collectionView;
    std::unique_ptr<LumoraRowViewDataSource> m_collectionDataSource;
    std::optional<QList<std::optional<QPointF>>> m_cellCenters;
    int m_currentlyOpenChannelIndex = -1;
    bool m_isChannelHostActive = false;
    LumoraRowViewDelegate* m_delegate = nullptr;
    LumoraRowViewStyle m_uiStyle = LumoraRowViewStyle::Auto;
    LumoraRowViewCellType m_cellType = LumoraRowViewCellType::Round;
    qreal m_cellScale = 1.0;
    qreal m_cellSpacing = 8.0;
    qreal m_leftInset = 0.0;
    qreal m_rightInset = 0.0;
    Branding m_branding = Branding::defaultColors;

    QPointer<QQuickItem> m_view;
    bool m_isSetUp = false;
    bool m_reloadAfterSetup = false;
};

}  // namespace LumoraSDK

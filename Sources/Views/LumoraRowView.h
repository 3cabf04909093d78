#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QList>
#include <QPointF>
#include <QPointer>
#include <QQuickItem>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

#include <LumoraSDK/Enums/LumoraRowViewCellType.h>
#include <LumoraSDK/Enums/LumoraRowViewStyle.h>
#include <LumoraSDK/Enums/RequestStatusError.h>
#include <LumoraSDK/LumoraRowViewDelegate.h>
#include <LumoraSDK/Models/Branding.h>
#include <LumoraSDK/Models/Channel.h>
#include <LumoraSDK/lumorasdk_export.h>

class QQmlEngine;

namespace LumoraSDK {

class LumoraRowCollectionView;
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
    QML_ELEMENT
    /// The labels' colour scheme: "auto", "light" or "dark" (see setUiStyle()).
    Q_PROPERTY(QString uiStyle READ uiStyle WRITE setUiStyle NOTIFY uiStyleChanged FINAL)
    /// The cells' shape: "round" or "square" (see setCellType()).
    Q_PROPERTY(QString cellType READ cellType WRITE setCellType NOTIFY cellTypeChanged FINAL)
    /// Fraction of the row's height a cell takes; 1.0 by default.
    Q_PROPERTY(qreal cellScale READ cellScale WRITE setCellScale NOTIFY cellScaleChanged FINAL)
    /// Space between neighbouring cells; 8 by default.
    Q_PROPERTY(
        qreal cellSpacing READ cellSpacing WRITE setCellSpacing NOTIFY cellSpacingChanged FINAL)
    /// Space before the first cell; 0 by default.
    Q_PROPERTY(qreal leftInset READ leftInset WRITE setLeftInset NOTIFY leftInsetChanged FINAL)
    /// Space after the last cell; 0 by default.
    Q_PROPERTY(qreal rightInset READ rightInset WRITE setRightInset NOTIFY rightInsetChanged FINAL)
    /// First colour of the unread ring's gradient.
    Q_PROPERTY(QColor primaryColor READ primaryColor WRITE setPrimaryColor NOTIFY
                   primaryColorChanged FINAL)
    /// Second colour of the unread ring's gradient.
    Q_PROPERTY(QColor secondaryColor READ secondaryColor WRITE setSecondaryColor NOTIFY
                   secondaryColorChanged FINAL)
    /// The channel the open player shows; -1 when none is open. Written by the player.
    Q_PROPERTY(int currentlyOpenChannelIndex READ currentlyOpenChannelIndex WRITE
                   setCurrentlyOpenChannelIndex NOTIFY currentlyOpenChannelIndexChanged FINAL)
    /// True while a player opened from this row is on screen. Written by the player.
    Q_PROPERTY(bool isChannelHostActive READ isChannelHostActive WRITE setChannelHostActive NOTIFY
                   isChannelHostActiveChanged FINAL)

public:
    /// Cells shown until the first load succeeds.
    static constexpr int placeholderCount = 5;

    /// A row with five placeholder cells; it sets itself up once QML has completed it, or on
    /// the next turn of the event loop when made in C++.
    explicit LumoraRowView(QQuickItem* parent = nullptr);
    ~LumoraRowView() override;

    /// "auto", "light" or "dark". Written text is lower-cased; unknown text means "auto". A text
    /// that differs from the previous style's raw value rebuilds the strip and reloads.
    ///@{
    QString uiStyle() const;
    void setUiStyle(const QString& text);
    ///@}
    /// "round" or "square", with the same rules as uiStyle; unknown text means "round".
    ///@{
    QString cellType() const;
    void setCellType(const QString& text);
    ///@}
    /// Layout of the strip: the fraction of the row's height a cell takes, the space between
    /// cells and before the first and after the last. They take effect at the next rebuild (a
    /// change of uiStyle or cellType); set them before the row is complete.
    ///@{
    qreal cellScale() const { return m_cellScale; }
    void setCellScale(qreal scale);
    qreal cellSpacing() const { return m_cellSpacing; }
    void setCellSpacing(qreal spacing);
    qreal leftInset() const { return m_leftInset; }
    void setLeftInset(qreal inset);
    qreal rightInset() const { return m_rightInset; }
    void setRightInset(qreal inset);
    ///@}
    /// The branding's colours (the defaults where the branding has none); writing stores the
    /// colour's hex text in the branding.
    ///@{
    QColor primaryColor() const;
    void setPrimaryColor(const QColor& color);
    QColor secondaryColor() const;
    void setSecondaryColor(const QColor& color);
    ///@}
    /// The colours handed to the cells.
    Branding branding() const { return m_branding; }
    /// Colours handed to the cells at the next rebuild; a missing colour means no coloured ring.
    void setBranding(const Branding& branding);

    /// The channel shown by the open player, -1 when none is open. Written by the player.
    ///@{
    int currentlyOpenChannelIndex() const { return m_currentlyOpenChannelIndex; }
    void setCurrentlyOpenChannelIndex(int index);
    ///@}
    /// True while a player opened from this row is on screen. Written by the player.
    ///@{
    bool isChannelHostActive() const { return m_isChannelHostActive; }
    void setChannelHostActive(bool active);
    ///@}
    /// Per channel index, the centre of its cell in window coordinates, when known. The player
    /// grows from it and shrinks back into it.
    ///@{
    QList<std::optional<QPointF>>& cellCenters();
    const QList<std::optional<QPointF>>& cellCenters() const;
    ///@}

    /// The host's listener, called on the GUI thread. Not owned; unset it before destroying it.
    ///@{
    LumoraRowViewDelegate* delegate() const { return m_delegate; }
    void setDelegate(LumoraRowViewDelegate* delegate) { m_delegate = delegate; }
    ///@}

    /// The strip, from the row's interface file; null until the row is set up.
    LumoraRowCollectionView* collectionView() const;
    /// What the strip shows; null until the row is set up.
    LumoraRowViewDataSource* collectionDataSource() const { return m_collectionDataSource.get(); }

    /// Fetches the channels and shows them, telling the delegate when it starts and ends.
    Q_INVOKABLE void reloadData();
    /// Reloads, then scrolls to the channel with `id` (the first one when there is none) and
    /// opens the player from its cell.
    Q_INVOKABLE void openChannel(const QString& id, bool animated);

    /// How log lines name the row.
    static QString description() { return QStringLiteral("LumoraSDK.LumoraRowView"); }

Q_SIGNALS:
    /// The property of the same name changed.
    ///@{
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
    ///@}
    /// A load of the channels started.
    void channelsDataLoadStarted();
    /// A load ended: `dataCount` channels on success; on failure the error's text and the
    /// number of channels the row still shows (0 while it shows placeholders).
    void channelsDataLoadComplete(bool success, const QString& error, int dataCount);
    /// The player opened from this row was closed and has shrunk back into its cell.
    void channelDismissed();

protected:
    /// Sets the row up once QML has applied the properties it was declared with.
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

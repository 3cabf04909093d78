#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QImage>
#include <QList>
#include <QPointer>
#include <QString>
#include <functional>
#include <optional>

#include "Enums/LumoraRowViewStyle.h"
#include "Models/Branding.h"
#include "Models/Channel.h"
#include "Platform/CollectionView/CollectionViewCell.h"
#include "Platform/Layers/GradientLayer.h"
#include "Views/FrameButtonView.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

class LumoraRowView;

/// A cell of the row's strip: one channel, or a placeholder while the channels load. It draws a
/// grey ring once the channel is read and a ring in the branding's colours while it is unread,
/// pops when tapped, and opens the full-screen player from itself.
///
/// Each variant comes from a QML interface file named after its class, whose root is the variant
/// and whose children carry the outlets' objectNames. A missing outlet stops the process.
class LUMORASDK_EXPORT LumoraRowViewCell : public LumoraSDK::CollectionViewCell {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("the base of the row's cells")
    Q_PROPERTY(bool isActive READ isActive NOTIFY activeChanged FINAL)
    Q_PROPERTY(bool isPlaceholder READ isPlaceholder NOTIFY placeholderChanged FINAL)

public:
    /// Opens the player for channel `index` of `row`; `onDismissed` gets the index back when the
    /// player closes. Replaceable so that the player can plug itself in; until then it only logs.
    using ChannelPresenter = std::function<void(int index, QPointer<LumoraRowView> row,
                                                std::function<void(int)> onDismissed)>;
    static ChannelPresenter channelPresenter;

    /// Each half of the pop (out, then back) takes this long, in seconds.
    static constexpr double kPopHalfDuration = 0.1;
    /// The read ring is this fraction of the frame's border width (times the row's scale).
    static constexpr qreal kInactiveRingWidthFactor = 0.5;
    static const QColor colorInactive;
    static const QColor textColorLabel;
    static const QColor textColorLabelNight;
    /// Both fully transparent black.
    static const QList<QColor> gradientColorsDefault;
    /// The bundle image a placeholder shows where the picture will be.
    static const QString placeholderImageName;
    /// That image, decoded once.
    static const QImage& placeholderImage();

    explicit LumoraRowViewCell(QQuickItem* parent = nullptr);
    ~LumoraRowViewCell() override;

    /// Fills the cell for channel `currentDataIndex`. The base takes the branding's colours and
    /// the label colour; the variants show the channel.
    virtual void setup(int currentDataIndex, const Channel& channel, const Branding& branding,
                       LumoraRowViewStyle style);
    /// Sets the label's colour for the style.
    virtual void applyUiStyle(LumoraRowViewStyle style);
    /// Scales the label's font with the row's height multiplier.
    virtual void adjustScale(qreal multiplier);
    /// Draws the rings around `view` (each made once).
    virtual void setupBorders(FrameButtonView* view);

    /// Pops the cell, then presents its channel; a cell without an index only pops.
    void openChannelsHost();
    /// Grows the content to animatePopScale and back (kPopHalfDuration each way, on the
    /// Scheduler's clock), then calls onComplete.
    void animatePop(std::function<void()> onComplete = {});
    /// Reports this cell's centre, in window coordinates, through onCenterPositionUpdated (real
    /// cells with an index only).
    void updateCenterPosition();
    /// The label's tap: the same as a tap on the picture, once the cell has been set up.
    Q_INVOKABLE void onLabelPressed();

    std::optional<int> currentIndex() const { return m_currentIndex; }
    bool isActive() const { return m_isActive; }
    /// Unread: shows the coloured ring and hides the grey one; read: the other way round.
    void setActive(bool active);
    bool isPlaceholder() const { return m_isPlaceholder; }
    /// Switches the placeholder look on or off.
    void setPlaceholder(bool placeholder);
    /// The row's height multiplier, as adjustScale last set it.
    qreal cellScale() const { return m_scale; }
    qreal animatePopScale() const { return m_animatePopScale; }
    std::optional<qreal> labelTextSize() const { return m_labelTextSize; }
    std::optional<QString> primaryColorActive() const { return m_primaryColorActive; }
    std::optional<QString> secondaryColorActive() const { return m_secondaryColorActive; }

    QPointer<LumoraRowView> rowInstance;
    /// Set by the data source to refresh the row's cell centres before the player opens.
    std::function<void()> onCellClicked = [] {};
    /// Set by the data source; called with the channel index when the player closes.
    std::function<void(int)> onChannelContainerDismissed = [](int) {};
    /// Set by the data source to keep the row's cellCenters: the channel index and the centre.
    std::function<void(int, QPointF)> onCenterPositionUpdated = [](int, QPointF) {};

    GradientLayer* activeGradientBorderLayer() const { return m_activeGradientBorderLayer; }
    GradientLayer* inactiveGradientBorderLayer() const { return m_inactiveGradientBorderLayer; }
    GradientLayer* placeholderBorderLayer() const { return m_placeholderBorderLayer; }
    FrameButtonView* borderTargetView() const { return m_borderTargetView; }

    /// The outlets every variant has.
    QQuickItem* label() const { return m_label; }
    QQuickItem* labelPlaceholder() const { return m_labelPlaceholder; }
    FrameButtonView* imageButton() const { return m_imageButton; }

    /// The centre of the content view in window coordinates.
    QPointF contentCenterInWindow() const;
    /// "LumoraSDK.<class name>", as log lines name the cell.
    QString description() const;

    /// Leaves no picture of the previous channel behind.
    void prepareForReuse() override;

    /// What assistive technology reads: the channel's title ("Loading" for a placeholder) ...
    QString accessibleName() const;
    /// ... and its read state, "Unread" or "Read".
    QString accessibleDescription() const;

Q_SIGNALS:
    void activeChanged();
    void placeholderChanged();

protected:
    /// Looks up the common outlets; variants look up theirs after calling this.
    void componentComplete() override;
    /// Return, Enter or Space open the player, like a tap.
    void keyPressEvent(QKeyEvent* event) override;
    /// A cell the keyboard reaches scrolls into view, bringing the next cell within reach.
    void focusInEvent(QFocusEvent* event) override;
    /// The child item named `name`, which must exist and be a T.
    template <typename T>
    T* outlet(const char* name) const;

    void setAnimatePopScale(qreal scale) { m_animatePopScale = scale; }
    void setBorderTargetView(FrameButtonView* view);
    void setCurrentIndex(std::optional<int> index) { m_currentIndex = index; }
    /// From now on a tap on the label opens the player.
    void enableLabelTap() { m_labelTapEnabled = true; }
    /// A channel without a status, or an unread one, is active; a read one is not.
    static bool isActiveChannel(const Channel& channel);
    /// Stores the label's current font size as its size at scale 1, the first time only.
    void captureLabelTextSize();
    void setLabelText(const QString& text);
    QString labelText() const;
    /// Called after the placeholder flag changed; the base shows or hides labelPlaceholder.
    virtual void placeholderDidChange();
    /// A gradient ring around `view`, its stroke kept inside the view so none of it is cut off.
    GradientLayer* makeRing(FrameButtonView* view, qreal width, const QList<QColor>& colors,
                            int stackIndex, bool visible);
    /// The line width of the unread (active) or read ring around `view` at the row's scale.
    qreal ringWidth(const FrameButtonView* view, bool active) const;

    QPointer<GradientLayer> m_placeholderBorderLayer;

private:
    void layoutRings();
    /// Hands the name and read state to assistive technology; Tab stops on real cells only.
    void updateAccessibility();
    QQuickItem* findOutlet(const char* name) const;

    std::optional<int> m_currentIndex;
    QString m_title;
    std::optional<qreal> m_labelTextSize;
    qreal m_animatePopScale = 1.1;
    bool m_isActive = false;
    bool m_isPlaceholder = false;
    bool m_labelTapEnabled = false;
    qreal m_scale = 1.0;
    std::optional<QString> m_primaryColorActive;
    std::optional<QString> m_secondaryColorActive;
    QPointer<GradientLayer> m_activeGradientBorderLayer;
    QPointer<GradientLayer> m_inactiveGradientBorderLayer;
    QPointer<FrameButtonView> m_borderTargetView;
    QPointer<QQuickItem> m_label;
    QPointer<QQuickItem> m_labelPlaceholder;
    QPointer<FrameButtonView> m_imageButton;
};

template <typename T>
T* LumoraRowViewCell::outlet(const char* name) const {
    auto* item = qobject_cast<T*>(findOutlet(name));
    if (!item) {
        qFatal("%s - outlet %s is missing from the interface file or has the wrong type",
               qPrintable(description()), name);
    }
    return item;
}

}  // namespace LumoraSDK

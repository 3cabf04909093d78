#pragma once

#include <QRectF>
#include <QSizeF>

#include "lumorasdk_export.h"

namespace LumoraSDK {

/// Where the full-screen player's parts go in a window: the card the channels play in, the
/// neighbouring channels beside it and the controls a pointer user clicks.
///
/// The pages are made for a phone's screen, and the card is that screen. A window of phone
/// proportions is the card itself, as on a phone. A wider window gets a 9:16 card as tall as it
/// allows with a margin, centred, with the previous and next channels as smaller cards at the
/// sides, arrow buttons between them and the card, and a close button in the window's corner.
/// Play/pause and sound buttons sit on the card, under its header, in either case.
///
/// Everything is in window coordinates except the buttons on the card, which are in the card's.
/// A rectangle that is empty is not shown. Edges fall on whole device pixels.
class LUMORASDK_EXPORT StageLayout {
public:
    static constexpr qreal kCardAspect = 9.0 / 16.0;
    /// Windows up to this width to height play in the whole window: every phone's screen is
    /// narrower, and a page cropped to it loses little.
    static constexpr qreal kFullWindowMaxAspect = 2.0 / 3.0;
    /// Space above and below the card.
    static constexpr qreal kCardMargin = 24;
    /// The arrows and the close button, and the space on each side of them.
    static constexpr qreal kButtonSize = 44;
    static constexpr qreal kButtonGap = 16;
    /// Neighbours are half the card; with less room they shrink, down to a quarter, and below
    /// that they are left out.
    static constexpr qreal kNeighbourScale = 0.5;
    static constexpr qreal kNeighbourMinimumScale = 0.25;
    /// The buttons on the card: their size, their distance from the card's right edge and
    /// from each other, and their top, clear of the header and the close button's touch area.
    static constexpr qreal kCardButtonSize = 36;
    static constexpr qreal kCardButtonInset = 12;
    static constexpr qreal kCardButtonSpacing = 8;
    static constexpr qreal kCardButtonsTop = 96;

    /// The layout of a window of `window` logical pixels at `devicePixelRatio`; the pointer
    /// controls show only when `hasPointer` (a mouse, touchpad or pen is attached).
    StageLayout(QSizeF window, qreal devicePixelRatio, bool hasPointer);

    /// Whether a mouse, touchpad or pen is attached: false only when every pointing device is a
    /// touch screen. A machine that reports none is taken for a desktop with a mouse.
    static bool hasPointerInput();

    bool isFullWindow = true;
    QRectF card;
    QRectF previousNeighbour;
    QRectF nextNeighbour;
    QRectF previousArrow;
    QRectF nextArrow;
    QRectF closeButton;
    /// On the card, in its coordinates.
    QRectF playPauseButton;
    QRectF soundButton;

private:
    QRectF snapped(const QRectF& rect) const;

    qreal m_devicePixelRatio;
};

}  // namespace LumoraSDK

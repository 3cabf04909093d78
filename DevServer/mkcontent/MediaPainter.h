#pragma once

#include <QColor>
#include <QImage>
#include <QString>

namespace LumoraSDK::DevServer {

/// Draws the still images of the demo content.
class MediaPainter {
public:
    static constexpr int kAvatarSize = 256;
    static constexpr int kPageWidth = 720;
    static constexpr int kPageHeight = 1280;

    /// A round avatar: `initials` on a disc of `color`, transparent around it.
    static QImage avatar(const QString& initials, const QColor& color);

    /// A full-screen page: a gradient from `from` to `to` (its angle varies with the page), the
    /// big "Channel X — page N" text, the channel title and the page's place in the channel.
    static QImage page(int channelNumber, int pageNumber, int pageCount, const QString& title,
                       const QColor& from, const QColor& to);

    /// A transparent overlay of `width` x `height` with a caption band, laid over a video.
    static QImage videoCaption(const QString& caption, const QString& title, int width, int height);

private:
    static QString fontFamily();
};

}  // namespace LumoraSDK::DevServer

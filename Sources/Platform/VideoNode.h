#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <memory>
#include <optional>

#include "lumorasdk_export.h"

class QAudioOutput;
class QMediaPlayer;
class QQmlEngine;
class QQuickItem;

namespace LumoraSDK {

class VideoNode;
class VideoPlayerItem;

/// Hears what a VideoNode's playback does.
class LUMORASDK_EXPORT VideoNodeDelegate {
public:
    virtual ~VideoNodeDelegate() = default;
    /// Playback reached `seconds`; at the end of the video, its full length.
    virtual void videoNodeDidPlayToTimeInterval(VideoNode& node, double seconds) = 0;
    /// Playback ran out of data at `seconds` and waits for more.
    virtual void videoNodeDidStallAtTimeInterval(VideoNode& node, double seconds) = 0;
};

/// Plays one prepared video (its asset) into a view of its own. The player keeps one node at a
/// time and makes a fresh one for every channel, so nothing of an earlier channel's playback
/// (outputs, delegate, pending reports) reaches the next.
///
/// The asset's media player may also sit in the prefetch cache; the node borrows it and hands it
/// back, paused and without outputs, when it goes away or takes another asset.
class LUMORASDK_EXPORT VideoNode : public QObject {
    Q_OBJECT

public:
    explicit VideoNode(QObject* parent = nullptr);
    ~VideoNode() override;

    void setAsset(std::shared_ptr<VideoPlayerItem> asset);
    const std::shared_ptr<VideoPlayerItem>& asset() const { return m_asset; }
    /// The asset's address as the page gave it (not the URL's normalised text), or empty
    /// without an asset.
    QString assetUrl() const;
    QMediaPlayer* player() const;
    /// The asset's length in seconds, when it is known.
    std::optional<double> currentItemDuration() const;

    /// The delegate is held weakly through `owner`, which must be the delegate object itself.
    template <typename T>
    void setDelegate(T* delegate) {
        m_delegate = delegate;
        m_delegateOwner = delegate;
    }
    void clearDelegate();
    VideoNodeDelegate* delegate() const { return m_delegateOwner ? m_delegate : nullptr; }

    /// The item video frames are drawn into, made on first use in `engine`.
    QQuickItem* view(QQmlEngine& engine);
    QQuickItem* existingView() const { return m_view; }

    /// Starts at once at normal speed, without waiting for a buffer to build up.
    void playImmediately();
    void pause();
    void seekToStart();
    bool isPlaying() const;
    void setMuted(bool muted);
    bool isMuted() const { return m_muted; }

private:
    void attach();
    void detach();
    void reportTime(double seconds);
    void onStatusChanged();

    std::shared_ptr<VideoPlayerItem> m_asset;
    VideoNodeDelegate* m_delegate = nullptr;
    QPointer<QObject> m_delegateOwner;
    QPointer<QQuickItem> m_view;
    QAudioOutput* m_audio;
    bool m_muted = false;
    bool m_reportedEnd = false;
};

}  // namespace LumoraSDK

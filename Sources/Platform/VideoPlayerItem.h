#pragma once

#include <QObject>
#include <QString>
#include <QUrl>
#include <functional>
#include <memory>

#include "lumorasdk_export.h"

class QMediaPlayer;

namespace LumoraSDK {

/// A video prepared for playback: a media player opened on one address whose basic properties
/// (playability, tracks, duration) have been loaded ahead of time. Whoever plays it attaches
/// its outputs to player().
class LUMORASDK_EXPORT VideoPlayerItem : public QObject {
    Q_OBJECT

public:
    enum class State { Loading, Ready, Failed };

    /// Starts preparing `url` at once; `onPrepared` runs once on the GUI thread when the
    /// address has loaded or failed to. `address` is the text the URL was made from; it names
    /// the video exactly, where the URL's own text may differ (a host in capitals, escapes).
    VideoPlayerItem(const QUrl& url, const QString& address, std::function<void()> onPrepared);
    VideoPlayerItem(const QUrl& url, std::function<void()> onPrepared);
    ~VideoPlayerItem() override;

    QUrl url() const { return m_url; }
    QString address() const { return m_address; }
    State state() const { return m_state; }
    /// Length in seconds once prepared; 0 when unknown.
    double duration() const;
    QMediaPlayer* player() const { return m_player; }
    /// How log lines print the item.
    QString description() const;

private:
    void finish(State state);

    QUrl m_url;
    QString m_address;
    QMediaPlayer* m_player;
    State m_state = State::Loading;
    std::function<void()> m_onPrepared;
};

}  // namespace LumoraSDK

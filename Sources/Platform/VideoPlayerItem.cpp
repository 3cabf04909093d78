#include "VideoPlayerItem.h"

#include <QMediaPlayer>

namespace LumoraSDK {

VideoPlayerItem::VideoPlayerItem(const QUrl& url, std::function<void()> onPrepared)
    : VideoPlayerItem(url, url.toString(), std::move(onPrepared)) {}

VideoPlayerItem::VideoPlayerItem(const QUrl& url, const QString& address,
                                 std::function<void()> onPrepared)
    : m_url(url)
    , m_address(address)
    , m_player(new QMediaPlayer(this))
    , m_onPrepared(std::move(onPrepared)) {
    connect(m_player, &QMediaPlayer::mediaStatusChanged, this,
            [this](QMediaPlayer::MediaStatus status) {
                switch (status) {
                    case QMediaPlayer::LoadedMedia:
                    case QMediaPlayer::BufferedMedia:
                    case QMediaPlayer::BufferingMedia:
                        finish(State::Ready);
                        break;
                    case QMediaPlayer::InvalidMedia:
                        finish(State::Failed);
                        break;
                    default:
                        break;
                }
            });
    connect(m_player, &QMediaPlayer::errorOccurred, this, [this] { finish(State::Failed); });
    m_player->setSource(url);
}

VideoPlayerItem::~VideoPlayerItem() = default;

void VideoPlayerItem::finish(State state) {
    if (m_state != State::Loading) {
        return;
    }
    m_state = state;
    if (auto done = std::move(m_onPrepared)) {
        m_onPrepared = nullptr;
        done();
    }
}

double VideoPlayerItem::duration() const {
    return static_cast<double>(m_player->duration()) / 1000.0;
}

QString VideoPlayerItem::description() const {
    static const char* const states[] = {"loading", "ready", "failed"};
    return QStringLiteral("<VideoPlayerItem: %1, %2, duration %3s>")
        .arg(m_address, QLatin1String(states[static_cast<int>(m_state)]))
        .arg(duration());
}

}  // namespace LumoraSDK

#include "VideoNode.h"

#include <QAudioOutput>
#include <QMediaPlayer>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>

#include "PlatformLog.h"
#include "VideoPlayerItem.h"

namespace LumoraSDK {

namespace {
// Fills the page like the still images do, cropping rather than letterboxing.
constexpr char kVideoOutputQml[] =
    "import QtMultimedia\nVideoOutput { fillMode: VideoOutput.PreserveAspectCrop }";
}  // namespace

VideoNode::VideoNode(QObject* parent) : QObject(parent), m_audio(new QAudioOutput(this)) {}

VideoNode::~VideoNode() {
    detach();
    delete m_view;
}

void VideoNode::setAsset(std::shared_ptr<VideoPlayerItem> asset) {
    if (asset == m_asset) {
        return;
    }
    detach();
    m_asset = std::move(asset);
    m_reportedEnd = false;
    attach();
}

QString VideoNode::assetUrl() const {
    return m_asset ? m_asset->address() : QString();
}

QMediaPlayer* VideoNode::player() const {
    return m_asset ? m_asset->player() : nullptr;
}

std::optional<double> VideoNode::currentItemDuration() const {
    if (!m_asset || m_asset->duration() <= 0) {
        return std::nullopt;
    }
    return m_asset->duration();
}

void VideoNode::clearDelegate() {
    m_delegate = nullptr;
    m_delegateOwner = nullptr;
}

QQuickItem* VideoNode::view(QQmlEngine& engine) {
    if (m_view) {
        return m_view;
    }
    QQmlComponent component(&engine);
    component.setData(kVideoOutputQml, QUrl());
    m_view = qobject_cast<QQuickItem*>(component.create());
    if (!m_view) {
        qCWarning(lcPlatform).noquote()
            << QStringLiteral("VideoNode - cannot make a video output: ") + component.errorString();
        return nullptr;
    }
    if (QMediaPlayer* mediaPlayer = player()) {
        mediaPlayer->setVideoOutput(m_view.data());
    }
    return m_view;
}

void VideoNode::attach() {
    QMediaPlayer* mediaPlayer = player();
    if (!mediaPlayer) {
        return;
    }
    m_audio->setMuted(m_muted);
    mediaPlayer->setAudioOutput(m_audio);
    if (m_view) {
        mediaPlayer->setVideoOutput(m_view.data());
    }
    connect(mediaPlayer, &QMediaPlayer::positionChanged, this, [this](qint64 position) {
        if (isPlaying()) {
            reportTime(double(position) / 1000.0);
        }
    });
    connect(mediaPlayer, &QMediaPlayer::mediaStatusChanged, this, &VideoNode::onStatusChanged);
}

void VideoNode::detach() {
    QMediaPlayer* mediaPlayer = player();
    if (!mediaPlayer) {
        return;
    }
    disconnect(mediaPlayer, nullptr, this, nullptr);
    mediaPlayer->pause();
    // Another node may already have taken the player over.
    if (mediaPlayer->audioOutput() == m_audio) {
        mediaPlayer->setAudioOutput(nullptr);
    }
    if (m_view && mediaPlayer->videoOutput() == m_view.data()) {
        mediaPlayer->setVideoOutput(nullptr);
    }
}

void VideoNode::onStatusChanged() {
    QMediaPlayer* mediaPlayer = player();
    switch (mediaPlayer->mediaStatus()) {
        case QMediaPlayer::EndOfMedia:
            // Positions rarely land on the last millisecond; the end is the full length.
            if (!std::exchange(m_reportedEnd, true)) {
                reportTime(m_asset->duration());
            }
            break;
        case QMediaPlayer::StalledMedia:
        case QMediaPlayer::BufferingMedia:
            if (isPlaying()) {
                if (VideoNodeDelegate* target = delegate()) {
                    target->videoNodeDidStallAtTimeInterval(*this,
                                                            double(mediaPlayer->position()) / 1000);
                }
            }
            break;
        default:
            break;
    }
}

void VideoNode::reportTime(double seconds) {
    if (VideoNodeDelegate* target = delegate()) {
        target->videoNodeDidPlayToTimeInterval(*this, seconds);
    }
}

void VideoNode::playImmediately() {
    if (QMediaPlayer* mediaPlayer = player()) {
        m_reportedEnd = false;
        mediaPlayer->setPlaybackRate(1.0);
        mediaPlayer->play();
    }
}

void VideoNode::pause() {
    if (QMediaPlayer* mediaPlayer = player()) {
        mediaPlayer->pause();
    }
}

void VideoNode::seekToStart() {
    if (QMediaPlayer* mediaPlayer = player()) {
        m_reportedEnd = false;
        mediaPlayer->setPosition(0);
    }
}

bool VideoNode::isPlaying() const {
    QMediaPlayer* mediaPlayer = player();
    return mediaPlayer && mediaPlayer->playbackState() == QMediaPlayer::PlayingState;
}

void VideoNode::setMuted(bool muted) {
    m_muted = muted;
    m_audio->setMuted(muted);
}

}  // namespace LumoraSDK

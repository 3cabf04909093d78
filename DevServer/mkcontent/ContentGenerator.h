#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

namespace LumoraSDK::DevServer {

/// Turns the content template into a content directory for lumora-devserver: avatars and page
/// images drawn here, videos and their play-card stills encoded with ffmpeg from its test
/// sources, the swipe-up web pages, and channels.json (written last).
class ContentGenerator {
public:
    static constexpr int kVideoWidth = 360;
    static constexpr int kVideoHeight = 640;
    static constexpr int kVideoFrameRate = 25;

    ContentGenerator(QString ffmpeg, QString outputDirectory);

    bool generate(const QJsonObject& contentTemplate);
    QString errorString() const { return m_error; }

private:
    bool prepareOutputDirectory();
    bool writeWebPage(const QJsonObject& webPage);
    bool writeChannel(const QJsonObject& channel, int channelNumber, QJsonArray& channels);
    bool writeImagePage(const QJsonObject& channel, int channelNumber, int pageNumber,
                        int pageCount, const QJsonObject& page, QJsonObject& output);
    bool writeVideoPage(const QJsonObject& channel, int channelNumber, int pageNumber,
                        const QJsonObject& page, QJsonObject& output);
    bool saveImage(const class QImage& image, const QString& relativePath, int quality = -1);
    QString path(const QString& relativePath) const;
    bool fail(const QString& message);

    QString m_ffmpeg;
    QString m_output;
    QString m_error;
};

}  // namespace LumoraSDK::DevServer

#include "ContentGenerator.h"

#include "MediaPainter.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

namespace LumoraSDK::DevServer {

namespace {

/// Marks a directory as made by this generator, so it may be wiped and made again.
constexpr auto kMarkerFile = ".lumora-mkcontent";
constexpr int kJpegQuality = 82;
constexpr int kFfmpegTimeoutMs = 120000;

QColor channelColor(const QJsonObject& channel, int index) {
    const auto colors = channel.value("colors").toArray();
    return QColor(colors.at(qMin(index, int(colors.size()) - 1)).toString("#888888"));
}

QString htmlPage(const QJsonObject& webPage) {
    const QString title = webPage.value("title").toString().toHtmlEscaped();
    const QString text = webPage.value("text").toString().toHtmlEscaped();
    const QString color = webPage.value("color").toString("#2563EB").toHtmlEscaped();
    return QStringLiteral(R"(<!doctype html>
<html lang="en"><head><meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>%1</title>
<style>
body{margin:0;font-family:Inter,sans-serif;background:#f8fafc;color:#0f172a}
header{background:%3;color:white;padding:48px 24px 32px}
h1{margin:0;font-size:28px}
main{padding:24px;font-size:18px;line-height:1.5}
</style></head>
<body><header><h1>%1</h1></header><main><p>%2</p>
<p>Served by lumora-devserver from its demo content.</p></main></body></html>
)")
        .arg(title, text, color);
}

}  // namespace

ContentGenerator::ContentGenerator(QString ffmpeg, QString outputDirectory)
    : m_ffmpeg(std::move(ffmpeg)), m_output(std::move(outputDirectory)) {}

bool ContentGenerator::fail(const QString& message) {
    m_error = message;
    return false;
}

QString ContentGenerator::path(const QString& relativePath) const {
    return QDir(m_output).filePath(relativePath);
}

bool ContentGenerator::prepareOutputDirectory() {
    QDir directory(m_output);
    if (directory.exists() &&
        !directory.isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden) &&
        !directory.exists(kMarkerFile)) {
        return fail(m_output + " holds files this generator did not make; not overwriting it");
    }
    // Start from nothing, so media of pages that left the template do not linger.
    if (directory.exists() && !directory.removeRecursively()) {
        return fail("cannot clear " + m_output);
    }
    QFile marker(path(kMarkerFile));
    if (!QDir().mkpath(m_output) || !marker.open(QIODevice::WriteOnly)) {
        return fail("cannot create " + m_output);
    }
    return true;
}

bool ContentGenerator::saveImage(const QImage& image, const QString& relativePath, int quality) {
    const QString file = path(relativePath);
    if (!QDir().mkpath(QFileInfo(file).absolutePath()) || !image.save(file, nullptr, quality)) {
        return fail("cannot write " + file);
    }
    return true;
}

bool ContentGenerator::generate(const QJsonObject& contentTemplate) {
    if (!prepareOutputDirectory()) {
        return false;
    }
    for (const auto& webPage : contentTemplate.value("webPages").toArray()) {
        if (!writeWebPage(webPage.toObject())) {
            return false;
        }
    }
    QJsonArray channels;
    int channelNumber = 0;
    for (const auto& channel : contentTemplate.value("channels").toArray()) {
        if (!writeChannel(channel.toObject(), ++channelNumber, channels)) {
            return false;
        }
    }
    QFile list(path("channels.json"));
    if (!list.open(QIODevice::WriteOnly) ||
        list.write(QJsonDocument(channels).toJson(QJsonDocument::Indented)) < 0) {
        return fail("cannot write " + list.fileName());
    }
    return true;
}

bool ContentGenerator::writeWebPage(const QJsonObject& webPage) {
    const QString name = webPage.value("name").toString();
    QFile file(path("pages/" + name + ".html"));
    if (name.isEmpty() || !QDir().mkpath(path("pages")) || !file.open(QIODevice::WriteOnly) ||
        file.write(htmlPage(webPage).toUtf8()) < 0) {
        return fail("cannot write the web page \"" + name + "\"");
    }
    return true;
}

bool ContentGenerator::writeChannel(const QJsonObject& channel, int channelNumber,
                                    QJsonArray& channels) {
    const QString id = channel.value("id").toString();
    if (id.isEmpty()) {
        return fail(QStringLiteral("channel %1 has no id").arg(channelNumber));
    }
    const QString avatar = "avatars/" + id + ".png";
    if (!saveImage(
            MediaPainter::avatar(channel.value("initials").toString(), channelColor(channel, 0)),
            avatar)) {
        return false;
    }
    const bool read = channel.value("status").toString() == "read";
    const auto pages = channel.value("pages").toArray();
    QJsonArray outputPages;
    for (int index = 0; index < pages.size(); ++index) {
        const QJsonObject page = pages.at(index).toObject();
        const int number = index + 1;
        QJsonObject output{
            {"id", QStringLiteral("%1-%2").arg(id).arg(number)},
            {"type", page.value("type").toString()},
            {"duration", page.value("duration").toInt(5)},
            {"sortOrder", number},
            {"status", read ? "read" : "unread"},
            {"skippable", page.value("skippable").toBool(true)},
            {"showSwipeUpUi", page.value("showSwipeUpUi").toBool(page.contains("swipeUpUrl"))}};
        if (page.contains("swipeUpUrl")) {
            output.insert("swipeUpText", page.value("swipeUpText").toString());
            output.insert("swipeUpUrl", "/pages/" + page.value("swipeUpUrl").toString() + ".html");
        }
        const bool written =
            page.value("type").toString() == "video"
                ? writeVideoPage(channel, channelNumber, number, page, output)
                : writeImagePage(channel, channelNumber, number, int(pages.size()), page, output);
        if (!written) {
            return false;
        }
        outputPages.append(output);
    }
    channels.append(QJsonObject{{"id", id},
                                {"title", channel.value("title").toString()},
                                {"initialPage", channel.value("initialPage").toInt(0)},
                                {"profilePictureUrl", avatar},
                                {"status", read ? "read" : "unread"},
                                {"pages", outputPages}});
    return true;
}

bool ContentGenerator::writeImagePage(const QJsonObject& channel, int channelNumber, int pageNumber,
                                      int pageCount, const QJsonObject& page, QJsonObject& output) {
    const bool png = page.value("format").toString() == "png";
    const QString file = QStringLiteral("%1/page-%2.%3")
                             .arg(channel.value("id").toString())
                             .arg(pageNumber)
                             .arg(png ? "png" : "jpg");
    output.insert("url", file);
    // An image page is its own still: cards that preview a channel show it.
    output.insert("playcardUrl", file);
    return saveImage(
        MediaPainter::page(channelNumber, pageNumber, pageCount, channel.value("title").toString(),
                           channelColor(channel, 0), channelColor(channel, 1)),
        file, png ? -1 : kJpegQuality);
}

bool ContentGenerator::writeVideoPage(const QJsonObject& channel, int channelNumber, int pageNumber,
                                      const QJsonObject& page, QJsonObject& output) {
    const QString base =
        QStringLiteral("%1/page-%2").arg(channel.value("id").toString()).arg(pageNumber);
    const int seconds = page.value("duration").toInt(5);
    QTemporaryDir scratch;
    const QString caption = scratch.filePath("caption.png");
    if (!scratch.isValid() ||
        !MediaPainter::videoCaption(
             QStringLiteral("Channel %1 \u2014 page %2").arg(channelNumber).arg(pageNumber),
             channel.value("title").toString(), kVideoWidth, kVideoHeight)
             .save(caption)) {
        return fail("cannot draw the caption of " + base);
    }
    if (!QDir().mkpath(QFileInfo(path(base)).absolutePath())) {
        return fail("cannot create the directory of " + base);
    }
    const QString source = QStringLiteral("testsrc2=size=%1x%2:rate=%3:duration=%4")
                               .arg(kVideoWidth)
                               .arg(kVideoHeight)
                               .arg(kVideoFrameRate)
                               .arg(seconds);
    const QString tone = QStringLiteral("sine=frequency=%1:sample_rate=44100:duration=%2")
                             .arg(220 * (1 + (channelNumber + pageNumber) % 4))
                             .arg(seconds);
    // One pass makes the video and its play card, the first frame with the caption on it.
    const QStringList arguments{
        "-hide_banner",
        "-loglevel",
        "error",
        "-y",
        "-f",
        "lavfi",
        "-i",
        source,
        "-f",
        "lavfi",
        "-i",
        tone,
        "-i",
        caption,
        "-filter_complex",
        "[0:v][2:v]overlay=0:0,format=yuv420p,split=2[video][card]",
        "-map",
        "[video]",
        "-map",
        "1:a",
        "-c:v",
        "libx264",
        "-preset",
        "veryfast",
        "-crf",
        "32",
        "-pix_fmt",
        "yuv420p",
        "-g",
        QString::number(kVideoFrameRate),
        "-c:a",
        "aac",
        "-b:a",
        "48k",
        "-movflags",
        "+faststart",
        "-shortest",
        path(base + ".mp4"),
        "-map",
        "[card]",
        "-frames:v",
        "1",
        "-update",
        "1",
        path(base + "-playcard.png"),
    };
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start(m_ffmpeg, arguments);
    if (!ffmpeg.waitForFinished(kFfmpegTimeoutMs) || ffmpeg.exitStatus() != QProcess::NormalExit ||
        ffmpeg.exitCode() != 0) {
        return fail("ffmpeg failed on " + base + ": " + ffmpeg.errorString() + "\n" +
                    QString::fromLocal8Bit(ffmpeg.readAll()));
    }
    output.insert("url", base + ".mp4");
    output.insert("playcardUrl", base + "-playcard.png");
    return true;
}

}  // namespace LumoraSDK::DevServer

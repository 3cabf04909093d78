// Video pages in the player, with real videos served by lumora-devserver: time updates fill the
// page's progress segment, the end of the video ends the page once, and
// a prefetched video starts from the cache. Playback itself runs for real; the page timers run
// on ManualScheduler.

#include <QMediaPlayer>

#include "Platform/AudioSession.h"
#include "Platform/VideoNode.h"
#include "Platform/VideoPlayerItem.h"
#include "PlayerTestSupport.h"
#include "Services/VideoPrefetchService.h"
#include "Views/ChannelMediaCollectionViewCell.h"
#include "Views/ChannelProgressCollectionViewCell.h"

using namespace LumoraSDK;
using namespace PlayerTest;
using RowTest::Fixture;

namespace {
/// A channel whose first page is the 6-second demo video "music/page-1.mp4" and whose second is
/// an image.
QJsonObject videoChannelJson(Fixture& env, const QString& id) {
    return withPage(imageChannelJson(env, id, "unread", 2, 5), 0,
                    {{"type", "video"},
                     {"duration", 6},
                     {"url", env.mediaUrl("music/page-1.mp4")},
                     {"playcardUrl", env.mediaUrl("music/page-1-playcard.png")}});
}

qreal segmentProgress(ChannelViewController& player, int index) {
    for (CollectionViewCell* cell : player.progressCollectionView()->visibleCells()) {
        auto* segment = qobject_cast<ChannelProgressCollectionViewCell*>(cell);
        if (segment && segment->progressIndex == index) {
            return segment->progressPercent;
        }
    }
    return -1;
}
}  // namespace

class VideoPagesTest : public HostTestCase {
    Q_OBJECT

    /// Opens a video channel and waits until its video plays in the page's video area.
    VideoNode* openPlaying(const QString& id, const std::function<bool()>& readyToTap = {}) {
        if (!m_h->openFromRow(QJsonArray{videoChannelJson(*m_env, id)}, 0, readyToTap)) {
            return nullptr;
        }
        m_h->advance(0.25);
        const bool playing = m_h->waitFor([&] {
            VideoNode* node = m_h->host() ? m_h->host()->videoNode.get() : nullptr;
            ChannelMediaCollectionViewCell* cell = m_h->player()->getVisibleMediaCell(0);
            return node && cell && cell->mediaReady() && node->isPlaying() &&
                   node->currentItemDuration() && node->existingView() &&
                   node->existingView()->parentItem() == m_h->player()->videoContainerView();
        });
        return playing ? m_h->host()->videoNode.get() : nullptr;
    }

private slots:
    // While a share is under way the video pauses instead: tst_share.
    void timeUpdatesFillTheSegment() {
        const double at = 0.25;
        VideoNode* node = openPlaying("v-time");
        QVERIFY(node);
        ChannelViewController& player = *m_h->player();
        QCOMPARE(player.getVideoNodeUrl(), m_env->mediaUrl("music/page-1.mp4"));
        player.videoNodeDidPlayToTimeInterval(*node, at * *node->currentItemDuration());
        // Updates queued by earlier real ticks run first; this one lands last.
        m_env->clock.runUntilIdle();
        QVERIFY(qAbs(segmentProgress(player, 0) - at) < 1e-9);
        QVERIFY(node->isPlaying());
        QCOMPARE(player.currentIndex(), 0);
    }

    void theVideosLengthEndsThePageOnce() {
        VideoNode* node = openPlaying("v-end");
        QVERIFY(node);
        int seen = int(eventLines(*m_env).size());
        // Close to the end, then the real playback runs out.
        const double length = *node->currentItemDuration();
        node->player()->setPosition(qint64(length * 1000) - 400);
        QVERIFY(m_h->waitFor([&] { return m_h->player()->currentIndex() == 1; }));
        QCOMPARE(node->delegate(), nullptr);
        // Later reports of the same node go nowhere: the page does not move again.
        node->player()->setPosition(qint64(length * 1000) - 300);
        node->playImmediately();
        QTRY_COMPARE_WITH_TIMEOUT(node->player()->mediaStatus(), QMediaPlayer::EndOfMedia, 10000);
        m_h->advance(0.05);
        QCOMPARE(m_h->player()->currentIndex(), 1);
        QCOMPARE(m_h->eventsSince(seen, 2),
                 QStringList({"completePage v-end v-end-2", "history v-end v-end-2"}));
        QCOMPARE(eventLines(*m_env).size(), seen);
    }

    void aVolumeKeyTurnsTheSoundOnUntilThePlayerCloses() {
        AudioSession& audio = AudioSession::sharedInstance();
        audio.setCategory(AudioSession::Category::SoloAmbient, AudioSession::Mode::Default, 0);
        VideoNode* node = openPlaying("v-sound");
        QVERIFY(node);
        QVERIFY(node->isMuted());  // silent until asked, like a phone with its ringer off
        QTest::keyClick(&m_h->scene()->window, Qt::Key_VolumeUp);
        QVERIFY(!node->isMuted());
        QCOMPARE(audio.category(), AudioSession::Category::Playback);
        QCOMPARE(audio.categoryOptions(), AudioSession::kMixWithOthers);
        m_h->closeHost();
        QCOMPARE(audio.category(), AudioSession::Category::SoloAmbient);
        QCOMPARE(audio.categoryOptions(), 0);
        QVERIFY(!audio.isOutputAudible());
    }

    void aPrefetchedVideoStartsFromTheCache() {
        // The row hands the resume page's video of each channel to the cache as it loads; the
        // viewer taps once it is ready.
        const QString url = m_env->mediaUrl(QStringLiteral("music/page-1.mp4"));
        LumoraTest::LogCapture log;
        VideoNode* node = openPlaying(
            "v-cache", [&] { return VideoPrefetchService::cachedVideoUrls().contains(url); });
        QVERIFY(node);
        QVERIFY(log.contains(QStringLiteral(" loadVideo - ") + url + " video is ready"));
        QVERIFY(!log.contains(QStringLiteral("no cached AVPlayerItem for ") + url));
    }
};

QTEST_MAIN(VideoPagesTest)
#include "tst_videopages.moc"

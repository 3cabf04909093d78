#pragma once

#include <QSizeF>
#include <functional>
#include <memory>
#include <optional>

#include "Platform/CollectionView/CollectionViewDataSource.h"
#include "Platform/Scheduler.h"
#include "lumorasdk_export.h"

namespace LumoraSDK {

/// The segmented progress bar over a channel's pages: one ChannelProgressCollectionViewCell per
/// page, side by side, and the repeating timer that measures how long an image page has shown.
///
/// Time is counted in hundredths of a second, although the fields end in "Ms": a run of d
/// seconds starts at d × 100 and every 0.05 s tick takes 5 off it. The page player pauses a run
/// by invalidating progressTimer and resumes it by setting isResumed and starting a new run of
/// the remaining time, so these fields are public.
class LUMORASDK_EXPORT ChannelProgressCollectionDataSource : public CollectionViewDataSource {
public:
    /// Seconds between ticks.
    static constexpr double kTimerInterval = 0.05;

    /// A bar of `count` segments, one per page.
    explicit ChannelProgressCollectionDataSource(int count);
    /// The bar needs its number of pages.
    ChannelProgressCollectionDataSource() = delete;
    ChannelProgressCollectionDataSource(const ChannelProgressCollectionDataSource&) = delete;
    ChannelProgressCollectionDataSource& operator=(const ChannelProgressCollectionDataSource&) =
        delete;
    /// Stops the running timer.
    ~ChannelProgressCollectionDataSource() override;

    /// Number of segments, one per page.
    int count = 1;
    /// Gap between segments, in points.
    const qreal itemSpacing = 4.0;
    /// The running tick source; an invalidated timer stays here until the next run replaces it.
    std::optional<Timer> progressTimer;
    /// What one tick takes off the remaining time.
    const double timerUpdateIntervalMs = 5.0;
    /// Length of the run started last.
    std::optional<double> timerCurrentTotalMs;
    /// Length of the page's whole run; a resumed run keeps it, so the fill goes on from where it
    /// stopped.
    std::optional<double> timerStartingTotalMs;
    /// What is left of the page's run; at or below zero once the run has finished.
    std::optional<double> timerRemainingMs;
    /// Called on the tick that uses up the run.
    std::function<void()> onTimerComplete = [] {};
    /// Called on every tick with the fraction of the page shown so far.
    std::function<void(qreal)> onTimerUpdate = [](qreal) {};
    /// True while the running timer continues an interrupted run.
    bool isResumed = false;

    /// Starts (or restarts) a run of `durationSeconds`. The first tick happens at once, inside
    /// this call, and every kTimerInterval after that.
    void startNewTimer(double durationSeconds, std::function<void(qreal)> onUpdate,
                       std::function<void()> onComplete);
    /// One tick: takes 5 off the remaining time, completes the run when nothing is left, and
    /// reports the fraction shown (after the completion, on the last tick).
    void timerUpdate();

    /// Sets the fill of the visible segment for page `index`; hidden segments are left alone.
    void updateProgress(CollectionView& view, int index, qreal progressPercent);
    /// Fills every visible segment before page `until` and empties the others.
    void completeProgress(CollectionView& view, int until);

    int numberOfItems(CollectionView& view, int section) override;
    QString reuseIdentifier(CollectionView& view, const IndexPath& indexPath) override;
    /// Tells the segment which page it stands for; its fill is left as it is.
    void configureCell(CollectionView& view, CollectionViewCell& cell,
                       const IndexPath& indexPath) override;
    /// An equal share of the bar's width less the spacing, by the bar's full height.
    QSizeF sizeForItem(CollectionView& view, const IndexPath& indexPath) override;
    qreal minimumLineSpacing(CollectionView& view, int section) override;

private:
    // Lets a tick notice that a callback destroyed the bar.
    std::shared_ptr<int> m_lifetime = std::make_shared<int>(0);
};

}  // namespace LumoraSDK

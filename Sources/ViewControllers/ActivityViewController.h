#pragma once

#include <QList>
#include <QPointer>
#include <functional>
#include <optional>

#include "Platform/ImageView.h"
#include "Platform/SharePlatform.h"
#include "ViewControllers/PresentableViewController.h"
#include "lumorasdk_export.h"

class QQuickItem;

namespace LumoraSDK {

/// The share sheet: a card at the bottom of the window, over a dimmed backdrop, that shows what
/// is shared (the picture, or the video file's name) and lists the platform's activities for it
/// (SharePlatform::activities) above a Cancel button. Choosing an activity carries it out, closes
/// the sheet and reports it; Cancel, a press on the backdrop or Escape closes it and reports no
/// activity.
class LUMORASDK_EXPORT ActivityViewController : public PresentableViewController {
    Q_OBJECT

public:
    /// The activity chosen (none when closed without one), whether it completed, the items it
    /// returned (none here) and the error that stopped it.
    using CompletionWithItemsHandler = std::function<void(
        const std::optional<QString>& activityType, bool completed,
        const std::optional<QList<ShareItem>>& returnedItems, const std::optional<QString>& error)>;

    explicit ActivityViewController(QObject* parent = nullptr);
    ~ActivityViewController() override;

    /// What is shared; the sheet offers the activities of the first item.
    QList<ShareItem> activityItems;
    /// Runs once the sheet has closed.
    CompletionWithItemsHandler completionWithItemsHandler;
    /// The control the sheet was opened from. A sheet across the bottom of the window needs no
    /// anchor; it is kept for a layout that places the sheet beside its control.
    QPointer<QQuickItem> sourceView;

    ImageView* previewImage() const { return m_previewImage; }

    void viewDidLoad() override;
    void viewWillAppear(bool animated) override;

    /// Carries out activity `index` of those offered and closes the sheet; -1 closes it without
    /// one. Only the first choice counts.
    Q_SLOT void onActivityChosen(int index);

private:
    void finish(const ShareResult& result);

    QPointer<ImageView> m_previewImage;
    QList<ShareActivity> m_activities;
    bool m_chosen = false;
};

}  // namespace LumoraSDK

#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "tavrolin/content_ui/notification_view.h"

namespace tavrolin {

/// A rich template: slots from top to bottom, and which of them the notification fills. Slots are
/// hidden until something is loaded into them.
///
/// Outlets: headerComponentContainer, ratingComponentContainer, actionButtonComponentContainer.
class CVNBaseLayoutView : public NotificationView {
public:
    void connect(ui::Connections& connections) override;

    void loadHeaderComponent();
    void loadRatingComponent();
    void loadActionButtonComponent();

protected:
    /// What every layout's `configureNotification` is: reads the notification, then loads slots.
    /// When that raises, the slots that are left stay as they are, and the message is logged.
    void compose(std::string_view operation, std::string_view message,
                 const std::function<void()>& loadSlots);

    // What the conditions ask.
    bool hasMediaFile() const { return cvnPayload().mediaURLPath.operator bool(); }
    bool hasMediaURL() const { return cvnPayload().mediaURL.operator bool(); }
    bool hasRating() const { return cvnUi().cvnRat != nullptr; }
    bool hasActionButtons() const { return recordCount(cvnPayload().actionButton) > 0; }
    bool hasReplyButton() const { return cvnPayload().replyButton != nullptr; }
    std::int64_t carouselCount() const { return recordCount(cvnPayload().carousel); }

    ui::View* headerComponentContainer_ = nullptr;

private:
    ui::View* ratingComponentContainer_ = nullptr;
    ui::View* actionButtonComponentContainer_ = nullptr;
};

/// A layout that has a slot for media too. Outlet: mediaComponentContainer.
class MediaLayoutView : public CVNBaseLayoutView {
public:
    void connect(ui::Connections& connections) override;

    virtual void loadMediaComponent();

protected:
    ui::View* mediaComponentContainer_ = nullptr;
};

}  // namespace tavrolin

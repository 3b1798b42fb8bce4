#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tavrolin/foundation/date.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/user_notification_center.h"
#include "tavrolin/ui/window.h"

namespace tavrolin::device {

/// What a phone shows around the view of a content extension: a card with the app's icon, its name
/// and the time above the view, the notification's own texts below it unless the extension hides
/// them, and the menu of its actions under the card. Main thread.
class Card {
public:
    struct Contents {
        platform::NotificationContent content;
        foundation::Date deliveredAt;
        foundation::Date now;
        std::vector<platform::NotificationAction> actions;
    };

    /// Around what the window shows, as it is then; both outlive it. `app` is the sample app's
    /// bundle.
    Card(ui::Window& expanded, const Contents& contents, const platform::Bundle& app,
         const ui::TraitCollection& traits);
    ~Card();
    Card(const Card&) = delete;
    Card& operator=(const Card&) = delete;

    ui::Window& window() { return *window_; }

private:
    class Controller;
    std::unique_ptr<Controller> controller_;
    std::unique_ptr<ui::Window> window_;
};

}  // namespace tavrolin::device

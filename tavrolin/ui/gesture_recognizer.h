#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "tavrolin/platform/geometry.h"

namespace tavrolin::ui {

class View;

/// Notices single taps on the view that it was added to, and on what is in it.
class TapGestureRecognizer {
public:
    using Action = std::function<void(View& view)>;

    explicit TapGestureRecognizer(Action action) : action_(std::move(action)) {}

    /// Asked before a tap is taken, with its place in the recogniser's view; a refused one goes on
    /// to the views further out. Without one all are taken.
    void setShouldReceiveTouch(std::function<bool(platform::Point)> should) {
        shouldReceiveTouch_ = std::move(should);
    }
    bool shouldReceiveTouch(platform::Point point) const {
        return !shouldReceiveTouch_ || shouldReceiveTouch_(point);
    }
    void fire(View& view) const {
        if (action_) action_(view);
    }

private:
    Action action_;
    std::function<bool(platform::Point)> shouldReceiveTouch_;
};

/// A tap at a point of the root. Goes to the innermost visible view there, and from it outwards to
/// the first that takes it: a control, or one with a recogniser that does. That view, or null. What
/// was hidden or removed in between gets nothing.
View* tap(View& root, platform::Point point);

}  // namespace tavrolin::ui

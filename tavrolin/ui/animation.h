#pragma once

#include <functional>

#include "tavrolin/foundation/date.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// A value on its way, on the clock of the dispatch port: slow, fast, slow again. It has no ticks:
/// whoever draws asks where it is.
class AnimatedValue {
public:
    explicit AnimatedValue(double value) : from_(value), to_(value) {}
    double target() const { return to_; }
    double present() const;
    void set(double value);                        // at once
    void animateTo(double value, double seconds);  // from where it is now

private:
    double from_;
    double to_;
    foundation::Date start_;
    double seconds_ = 0;
};

/// The length of a scroll and of a fade, in seconds.
inline constexpr double kAnimationDuration = 0.3;

/// Fades a view from what it shows to what `change` makes of it: the old content goes from full to
/// nothing while the new one comes. `completion` is called at the end, on the main queue, also when
/// the view is gone by then.
void crossFade(View& view, double seconds, const std::function<void()>& change,
               std::function<void()> completion = nullptr);

/// Brings a view's alpha to a value.
void animateAlpha(View& view, double alpha, double seconds,
                  std::function<void()> completion = nullptr);

}  // namespace tavrolin::ui

#pragma once

#include "tavrolin/foundation/date.h"

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

}  // namespace tavrolin::ui

#include "tavrolin/ui/animated_value.h"

#include <algorithm>
#include <cmath>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin::ui {

namespace {

// A timer of the same length may fire so much too early: moments are sums.
constexpr double kClockRounding = 1e-5;

}  // namespace

double AnimatedValue::present() const {
    if (!(seconds_ > 0)) return to_;
    const double elapsed = foundation::secondsBetween(start_, platform::current().dispatch->now());
    const double part = std::clamp(elapsed / seconds_, 0.0, 1.0);
    if (part >= 1 - kClockRounding) return to_;
    return from_ + (to_ - from_) * part * part * (3 - 2 * part);
}

void AnimatedValue::set(double value) {
    to_ = value;
    seconds_ = 0;
}

void AnimatedValue::animateTo(double value, double seconds) {
    if (!(seconds > 0) || !std::isfinite(seconds)) {
        set(value);
        return;
    }
    from_ = present();
    to_ = value;
    start_ = platform::current().dispatch->now();
    seconds_ = seconds;
}

}  // namespace tavrolin::ui

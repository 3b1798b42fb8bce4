#include "tavrolin/ui/scroll_view.h"

#include <algorithm>
#include <cmath>

#include "tavrolin/ui/value_text.h"

namespace tavrolin::ui {

namespace {

double finite(double number) {
    constexpr double kLargest = 1e7;
    return std::isnan(number) ? 0 : std::clamp(number, -kLargest, kLargest);
}

}  // namespace

ScrollView::ScrollView() {
    setClipsToBounds(true);
}

platform::Point ScrollView::contentOffset() const {
    return {x_.present(), y_.present()};
}

void ScrollView::setContentOffset(platform::Point offset, bool animated) {
    const double x = finite(offset.x);
    const double y = finite(offset.y);
    if (animated) {
        x_.animateTo(x, kAnimationDuration);
        y_.animateTo(y, kAnimationDuration);
    } else {
        x_.set(x);
        y_.set(y);
    }
}

void ScrollView::describe(foundation::Value& dictionary) const {
    View::describe(dictionary);
    const platform::Point offset = contentOffset();
    dictionary.set("contentOffset", numberList({offset.x, offset.y}));
}

}  // namespace tavrolin::ui

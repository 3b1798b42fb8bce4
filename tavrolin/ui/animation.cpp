#include "tavrolin/ui/animation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/view_root.h"

namespace tavrolin::ui {

namespace {

void callAfter(double seconds, std::function<void()> completion) {
    if (completion) platform::current().dispatch->afterMain(seconds, std::move(completion));
}

}  // namespace

void crossFade(View& view, double seconds, const std::function<void()>& change,
               std::function<void()> completion) {
    Drawing oldContent(view.traitCollection().displayScale);
    view.layoutIfNeeded();
    view.drawBody(oldContent, kEverywhere);
    const platform::Rect oldExtent = view.extent();
    if (change) change();
    if (view.animations_ == nullptr) view.animations_ = std::make_unique<View::Animations>();
    view.animations_->oldContent = std::move(oldContent);
    view.animations_->oldExtent = oldExtent;
    view.setNeedsDisplay();
    view.animations_->oldAlpha.set(1);
    view.animations_->oldAlpha.animateTo(0, seconds);
    callAfter(seconds, [weak = view.weak_from_this(), completion = std::move(completion)] {
        const auto faded = weak.lock();
        if (faded != nullptr && faded->animations_->oldAlpha.present() <= 0) {
            faded->animations_->oldContent = Drawing();
        }
        if (completion) completion();
    });
}

void animateAlpha(View& view, double alpha, double seconds, std::function<void()> completion) {
    if (view.animations_ == nullptr) view.animations_ = std::make_unique<View::Animations>();
    AnimatedValue& animated = view.animations_->alpha;
    if (animated.target() != view.alpha_) animated.set(view.alpha_);
    view.alpha_ = std::isnan(alpha) ? 0 : std::clamp(alpha, 0.0, 1.0);
    animated.animateTo(view.alpha_, seconds);
    callAfter(seconds, std::move(completion));
}

}  // namespace tavrolin::ui

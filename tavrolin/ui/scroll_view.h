#pragma once

#include "tavrolin/ui/animated_value.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// Shows a part of what is in it. Its subviews are placed by their frames, in its content's
/// coordinates, or by constraints to it, which then hold for a content of its own size. Clips.
class ScrollView : public View {
public:
    ScrollView();
    std::string_view className() const override { return "ScrollView"; }

    const platform::Size& contentSize() const { return contentSize_; }
    void setContentSize(const platform::Size& size) { contentSize_ = size; }
    bool isPagingEnabled() const { return isPagingEnabled_; }
    void setPagingEnabled(bool enabled) { isPagingEnabled_ = enabled; }
    /// Where it is at this moment of the clock.
    platform::Point contentOffset() const override;
    /// Where it is going, or has come to.
    platform::Point targetContentOffset() const { return {x_.target(), y_.target()}; }
    /// Taken as it is, also beyond the content. Animated: in `kAnimationDuration`.
    void setContentOffset(platform::Point offset, bool animated);

    void describe(foundation::Value& dictionary) const override;

private:
    platform::Size contentSize_;
    bool isPagingEnabled_ = false;
    AnimatedValue x_{0};
    AnimatedValue y_{0};
};

}  // namespace tavrolin::ui

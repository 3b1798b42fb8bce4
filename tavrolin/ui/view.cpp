#include "tavrolin/ui/view.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tavrolin/ui/property_values.h"
#include "tavrolin/ui/value_text.h"

namespace tavrolin::ui {

using platform::Point;
using platform::Rect;

namespace {

constexpr double kLargest = 1e7;
constexpr double kInvisible = 0.01;

double finite(double number) {
    return std::isnan(number) ? 0 : std::clamp(number, -kLargest, kLargest);
}

void addGradients(const Layer& layer, foundation::Value& list) {
    for (const auto& sublayer : layer.sublayers()) {
        if (const auto* gradient = dynamic_cast<const GradientLayer*>(sublayer.get())) {
            foundation::Value colors = foundation::Value::array();
            for (const platform::Color& color : gradient->gradient().colors)
                colors.append(hexText(color));
            const platform::Point start = gradient->gradient().start;
            const platform::Point end = gradient->gradient().end;
            list.append(foundation::Value::dictionary({{"colors", colors},
                                                       {"start", numberList({start.x, start.y})},
                                                       {"end", numberList({end.x, end.y})}}));
        }
        addGradients(*sublayer, list);
    }
}

}  // namespace

// --- The tree

View& View::top() {
    View* view = this;
    while (view->superview_ != nullptr)
        view = view->superview_;
    return *view;
}

const View& View::top() const {
    return const_cast<View*>(this)->top();
}

void View::addSubview(std::shared_ptr<View> view) {
    if (view == nullptr || isDescendantOf(*view)) return;
    view->removeFromSuperview();
    attach(std::move(view), subviews_.size());
}

void View::insertSubview(std::shared_ptr<View> view, std::size_t index) {
    if (view == nullptr || isDescendantOf(*view)) return;
    view->removeFromSuperview();
    attach(std::move(view), index);
}

void View::attach(std::shared_ptr<View> view, std::size_t index) {
    view->superview_ = this;
    view->endTree();
    const auto place = static_cast<std::ptrdiff_t>(std::min(index, subviews_.size()));
    subviews_.insert(subviews_.begin() + place, std::move(view));
    invalidateStructure();
    invalidateDisplay();
}

void View::removeFromSuperview() {
    if (superview_ != nullptr) std::exchange(superview_, nullptr)->detach(*this);
}

void View::detach(const View& view) {
    willRemoveSubview(view);
    const auto isView = [&](const auto& other) { return other.get() == &view; };
    const auto found = std::ranges::find_if(subviews_, isView);
    if (found == subviews_.end()) return;
    const auto kept = std::move(*found);  // until nothing here refers to it any more
    subviews_.erase(found);
    invalidateStructure();
    invalidateDisplay();
}

bool View::isDescendantOf(const View& view) const {
    for (const View* ancestor = this; ancestor != nullptr; ancestor = ancestor->superview_) {
        if (ancestor == &view) return true;
    }
    return false;
}

// --- Place

void View::setFrame(const Rect& frame) {
    const Rect within{finite(frame.x), finite(frame.y), std::max(0.0, finite(frame.width)),
                      std::max(0.0, finite(frame.height))};
    if (isPlacedByFrame_ && within == placedFrame_) return;
    isPlacedByFrame_ = true;
    placedFrame_ = within;
    place(within);
    invalidateStructure();
}

void View::setPlacedByFrame(bool placed) {
    if (placed == isPlacedByFrame_) return;
    isPlacedByFrame_ = placed;
    placedFrame_ = frame_;
    invalidateStructure();
}

void View::place(const Rect& frame) {
    frame_ = frame;
    layer_.setFrame(bounds());
}

Point View::convertPoint(Point point, const View& to) const {
    const auto fromRoot = [](const View& view) {
        Point sum;
        for (const View* v = &view; v->superview_ != nullptr; v = v->superview_) {
            const Point offset = v->superview_->contentOffset();
            sum.x += v->frame_.x - offset.x;
            sum.y += v->frame_.y - offset.y;
        }
        return sum;
    };
    const Point here = fromRoot(*this);
    const Point there = fromRoot(to);
    return {point.x + here.x - there.x, point.y + here.y - there.y};
}

Rect View::convertRect(const Rect& rect, const View& to) const {
    const Point origin = convertPoint(rect.origin(), to);
    return {origin.x, origin.y, rect.width, rect.height};
}

// --- Looks

void View::setHidden(bool hidden) {
    if (hidden == isHidden_) return;
    isHidden_ = hidden;
    if (isArranged_) invalidateStructure();
}

void View::setBackgroundColor(std::optional<DynamicColor> color) {
    backgroundColor_ = color;
    setNeedsDisplay();
}

void View::setCornerRadius(double radius) {
    cornerRadius_ = radius;
    setNeedsDisplay();
}

void View::setBorder(double width, const DynamicColor& color) {
    borderWidth_ = std::max(0.0, finite(width));
    borderColor_ = color;
    setNeedsDisplay();
}

void View::setClipsToBounds(bool clips) {
    clipsToBounds_ = clips;
    setNeedsDisplay();
}

// --- Layout

void View::setSemanticContentAttribute(SemanticContentAttribute attribute) {
    if (attribute == semantic_) return;
    semantic_ = attribute;
    invalidateStructure();
    invalidateDisplay();
}

LayoutDirection View::effectiveLayoutDirection() const {
    for (const View* view = this; view != nullptr; view = view->superview_) {
        if (view->semantic_ == SemanticContentAttribute::forceLeftToRight)
            return LayoutDirection::leftToRight;
        if (view->semantic_ == SemanticContentAttribute::forceRightToLeft)
            return LayoutDirection::rightToLeft;
    }
    return traitCollection().layoutDirection;
}

platform::Size View::intrinsicContentSize(double) const {
    return {kNoIntrinsicMetric, kNoIntrinsicMetric};
}

bool View::takesRoom() const {
    for (const View* view = this; view != nullptr; view = view->superview_) {
        if (view->isHidden_ && view->isArranged_) return false;
    }
    return true;
}

// --- Surroundings

const platform::Color& View::resolved(const DynamicColor& color) const {
    return color.resolved(traitCollection().userInterfaceStyle);
}

// --- Touches

void View::addGestureRecognizer(std::shared_ptr<TapGestureRecognizer> recognizer) {
    if (recognizer != nullptr) recognizers_.push_back(std::move(recognizer));
}

View* View::hitTest(Point point) {
    if (isHidden_ || alpha_ < kInvisible || !isUserInteractionEnabled_) return nullptr;
    if (!bounds().contains(point)) return nullptr;
    const Point offset = contentOffset();
    for (auto child = subviews_.rbegin(); child != subviews_.rend(); ++child) {
        const Rect& frame = (*child)->frame_;
        View* hit = (*child)->hitTest({point.x + offset.x - frame.x, point.y + offset.y - frame.y});
        if (hit != nullptr) return hit;
    }
    return this;
}

// --- Interface files

void View::describe(foundation::Value& dictionary) const {
    const UserInterfaceStyle style = traitCollection().userInterfaceStyle;
    foundation::Value gradients = foundation::Value::array();
    addGradients(layer_, gradients);
    dictionary.set("hidden", isHidden_);
    dictionary.set("alpha", numberValue(presentAlpha()));
    dictionary.set("tag", tag_);
    dictionary.set("backgroundColor", hexValue(backgroundColor_, style));
    dictionary.set("gradients", gradients);
    dictionary.set("cornerRadius", numberValue(cornerRadius_));
}

bool View::setProperty(std::string_view name, const foundation::Value& value) {
    using namespace property;
    if (name == "hidden") {
        setHidden(boolean(value));
    } else if (name == "alpha") {
        setAlpha(number(value));
    } else if (name == "tag") {
        setTag(integer(value));
    } else if (name == "backgroundColor") {
        setBackgroundColor(optionalColor(value));
    } else if (name == "cornerRadius") {
        setCornerRadius(length(value));
    } else if (name == "borderWidth") {
        setBorder(length(value), borderColor_);
    } else if (name == "borderColor") {
        setBorder(borderWidth_, color(value));
    } else if (name == "clipsToBounds") {
        setClipsToBounds(boolean(value));
    } else if (name == "userInteractionEnabled") {
        setUserInteractionEnabled(boolean(value));
    } else if (name == "semanticContentAttribute") {
        setSemanticContentAttribute(oneOf<SemanticContentAttribute>(
            value, {{"unspecified", SemanticContentAttribute::unspecified},
                    {"forceLeftToRight", SemanticContentAttribute::forceLeftToRight},
                    {"forceRightToLeft", SemanticContentAttribute::forceRightToLeft}}));
    } else if (name == "hugging") {
        const auto [horizontal, vertical] = numbers<2>(value);
        horizontalPriorities_.hugging = horizontal;
        verticalPriorities_.hugging = vertical;
    } else if (name == "compressionResistance") {
        const auto [horizontal, vertical] = numbers<2>(value);
        horizontalPriorities_.compressionResistance = horizontal;
        verticalPriorities_.compressionResistance = vertical;
    } else {
        return false;
    }
    return true;
}

}  // namespace tavrolin::ui

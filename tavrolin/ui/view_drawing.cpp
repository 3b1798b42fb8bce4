// How a tree is drawn, and what of it must be drawn anew.
#include <cmath>
#include <utility>

#include "tavrolin/ui/view_root.h"

namespace tavrolin::ui {

using platform::Point;
using platform::Rect;

namespace {

bool meets(const Rect& a, const Rect& b) {
    return !a.intersection(b).isEmpty();
}

}  // namespace

// Scrolled by whole pixels, so that what lies side by side shows no seam while it moves.
Point View::originOf(const View& child) const {
    const Point offset = contentOffset();
    if (offset == Point()) return {child.frame_.x, child.frame_.y};
    const double scale = traitCollection().displayScale;
    return {child.frame_.x - std::round(offset.x * scale) / scale,
            child.frame_.y - std::round(offset.y * scale) / scale};
}

double View::presentOldAlpha() const {
    return animations_ == nullptr ? 0 : animations_->oldAlpha.present();
}

// Without its subviews.
Rect View::ownExtent() const {
    Rect all = bounds().united(contentExtent());
    for (const auto& layer : layer_.sublayers())
        all = all.united(layer->extent());
    if (presentOldAlpha() > 0) all = all.united(animations_->oldExtent);
    return all;
}

// With what is shown of them, as if it were itself shown.
Rect View::extent() const {
    Rect all = ownExtent();
    if (clips()) return presentOldAlpha() > 0 ? all : all.intersection(bounds());
    for (const auto& child : subviews_) {
        if (child->isHidden_) continue;
        const Point origin = originOf(*child);
        all = all.united(child->extent().movedBy(origin.x, origin.y));
    }
    return all;
}

// --- Drawing

void View::draw(platform::Canvas& canvas) const {
    if (!isHidden_) drawIn(canvas, kEverywhere);
}

// At its own origin; what lies beyond `visible` may be left out.
void View::drawIn(platform::Canvas& canvas, const Rect& visible) const {
    const double alpha = presentAlpha();
    if (alpha <= 0) return;
    if (alpha < 1) canvas.beginGroup();
    drawBody(canvas, visible);
    const double oldAlpha = presentOldAlpha();
    if (oldAlpha > 0) {
        // Over the new content: where both are opaque nothing shines through.
        canvas.beginGroup();
        animations_->oldContent.draw(canvas);
        canvas.endGroup(oldAlpha);
    }
    if (alpha < 1) canvas.endGroup(alpha);
}

void View::drawBody(platform::Canvas& canvas, const Rect& visible) const {
    const Rect here = bounds();
    canvas.save();
    if (clips()) canvas.clip(here, cornerRadius_);
    if (meets(here, visible) || meets(ownExtent(), visible)) drawSelf(canvas);
    drawSubviews(canvas, clips() ? visible.intersection(here) : visible);
    if (borderWidth_ > 0) {
        const platform::Color& color = resolved(borderColor_);
        if (color.alpha > 0) canvas.stroke(here, cornerRadius_, borderWidth_, color);
    }
    canvas.restore();
}

void View::drawSelf(platform::Canvas& canvas) const {
    if (backgroundColor_) {
        const platform::Color& color = resolved(*backgroundColor_);
        if (color.alpha > 0) canvas.fill(bounds(), clips() ? 0 : cornerRadius_, color);
    }
    for (const auto& layer : layer_.sublayers())
        layer->draw(canvas);
    drawContent(canvas);
}

void View::drawSubviews(platform::Canvas& canvas, const Rect& visible) const {
    for (const auto& child : subviews_) {
        if (child->isHidden_) continue;
        const Point origin = originOf(*child);
        const Rect seen = visible.movedBy(-origin.x, -origin.y);
        // The pages of a scroll view that are not seen need no pictures either.
        if (!meets(child->bounds(), seen) && !meets(child->extent(), seen)) continue;
        canvas.save();
        canvas.translate(origin.x, origin.y);
        child->drawIn(canvas, seen);
        canvas.restore();
    }
}

// --- What must be drawn anew

void View::invalidateDisplay() {
    View& root = top();
    if (root.root_ != nullptr) root.root_->needsDisplay = true;
}

struct View::Surroundings {
    Point origin;  // of the view, from the root
    Rect visible;  // what is not clipped, from the root
    bool isSeen;   // all views around it are
    bool isDirty;  // one of them comes out differently as a whole
};

void View::collectDirty(const Surroundings& surroundings, Rect& dirty) {
    const Display before = display_;
    Display now;
    now.alpha = surroundings.isSeen && !isHidden_ ? presentAlpha() : 0;
    if (now.alpha <= 0 && before.alpha <= 0) return;
    now.oldAlpha = presentOldAlpha();
    now.layerChange = layer_.lastChange();
    now.frame = bounds().movedBy(surroundings.origin.x, surroundings.origin.y);
    const bool isFaded = now.alpha != before.alpha;
    const bool isChanged = isFaded || now.oldAlpha != before.oldAlpha || needsDisplay_ ||
                           now.layerChange != before.layerChange || now.frame != before.frame ||
                           isPlaying() || layer_.isPlaying();
    if (now.alpha > 0) {
        now.extent = isChanged ? ownExtent().movedBy(now.frame.x, now.frame.y) : before.extent;
        now.visible = now.extent.intersection(surroundings.visible);
    }
    const bool isDirty = surroundings.isDirty || isFaded;
    if (isDirty || isChanged || now.visible != before.visible) {
        dirty = dirty.united(before.visible).united(now.visible);
    }
    display_ = now;
    needsDisplay_ = false;
    const Rect visible =
        clips() ? surroundings.visible.intersection(now.frame) : surroundings.visible;
    for (const auto& child : subviews_) {
        const Point origin = originOf(*child);
        child->collectDirty(
            {{now.frame.x + origin.x, now.frame.y + origin.y}, visible, now.alpha > 0, isDirty},
            dirty);
    }
}

Rect View::takeDirtyRect() {
    Rect dirty;
    collectDirty({{}, kEverywhere, true, false}, dirty);
    return std::exchange(root().needsDisplay, false) ? extent() : dirty;
}

}  // namespace tavrolin::ui

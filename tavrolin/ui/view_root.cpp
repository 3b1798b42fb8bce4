#include "tavrolin/ui/view_root.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavrolin::ui {

namespace {

// What is laid out again and again, since each pass asks for another one, ends here.
constexpr int kMostPasses = 6;

// Says that a pass is on its way, to its end, also by an exception.
class PassMark {
public:
    explicit PassMark(bool& isOn) : isOn_(isOn) { isOn_ = true; }
    ~PassMark() { isOn_ = false; }
    PassMark(const PassMark&) = delete;
    PassMark& operator=(const PassMark&) = delete;

private:
    bool& isOn_;
};

double alphaWithin(double alpha) {
    return std::isnan(alpha) ? 0 : std::clamp(alpha, 0.0, 1.0);
}

}  // namespace

View::View() = default;

View::~View() {
    for (const auto& child : subviews_)
        child->superview_ = nullptr;
}

View::Root& View::root() {
    if (root_ == nullptr) root_ = std::make_unique<Root>();
    return *root_;
}

void View::endTree() {
    root_.reset();
}

// --- Layout

void View::setNeedsLayout() {
    View& root = top();
    if (root.root_ != nullptr) root.root_->needsCalls = true;
    askForLayout();
}

void View::askForLayout() {
    View& root = top();
    if (root.root_ == nullptr || root.root_->needsLayout) return;  // a new one needs it anyway
    root.root_->needsLayout = true;
    if (root.root_->needsLayoutBlock) root.root_->needsLayoutBlock();
}

void View::invalidateStructure() {
    View& root = top();
    if (root.root_ == nullptr) return;
    root.root_->structureChanged = true;
    askForLayout();
}

void View::invalidateIntrinsicContentSize() {
    intrinsicSizeChanged_ = true;
    askForLayout();
}

void View::layoutIfNeeded() {
    View& view = top();
    Root& tree = view.root();
    const auto layOut = [&] {
        tree.needsLayout = false;
        const bool structureChanged = std::exchange(tree.structureChanged, false);
        if (tree.engine.layOut(view, tree.surroundings, structureChanged)) tree.needsCalls = true;
    };
    if (!tree.needsLayout) return;
    if (tree.isLayingOut) {  // asked for in the middle of a pass: frames now, calls with the next
        layOut();
        tree.needsLayout = true;
        return;
    }
    const auto kept = view.weak_from_this().lock();
    const PassMark mark(tree.isLayingOut);
    for (int pass = 0; pass < kMostPasses && tree.needsLayout; ++pass) {
        layOut();
        if (!std::exchange(tree.needsCalls, false)) continue;
        view.layOutSubtree();
        if (tree.didLayOutBlock) tree.didLayOutBlock();
    }
    if (tree.needsLayout) layOut();
}

void View::layOutSubtree() {
    layoutSubviews();
    const auto children = subviews_;  // `layoutSubviews` may take some out
    for (const auto& child : children) {
        if (child->superview_ != this || (child->isHidden_ && child->isArranged_)) continue;
        child->layOutSubtree();
    }
}

const TraitCollection& View::traitCollection() const {
    static const TraitCollection standard;
    const View& root = top();
    return root.root_ == nullptr ? standard : root.root_->surroundings.traits;
}

// --- What is on its way

void View::setAlpha(double alpha) {
    alpha_ = alphaWithin(alpha);
    if (animations_ != nullptr) animations_->alpha.set(alpha_);
}

double View::presentAlpha() const {
    // A fade that was begun may have come to its end; an alpha that was set since then counts.
    if (animations_ == nullptr || animations_->alpha.target() != alpha_) return alpha_;
    return animations_->alpha.present();
}

}  // namespace tavrolin::ui

// What constraints have to do with the views that keep them: the header knows no views.
#include "tavrolin/ui/layout_constraint.h"

#include <algorithm>

#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

namespace {

std::weak_ptr<View> weak(View* view) {
    return view == nullptr ? std::weak_ptr<View>() : view->weak_from_this();
}

}  // namespace

std::shared_ptr<LayoutConstraint> LayoutConstraint::make(
    View& first, LayoutAttribute firstAttribute, LayoutRelation relation, View* second,
    LayoutAttribute secondAttribute, double multiplier, double constant, LayoutPriority priority) {
    std::shared_ptr<LayoutConstraint> made(new LayoutConstraint);
    made->first_ = {weak(&first), firstAttribute};
    made->second_ = {weak(second), second == nullptr ? LayoutAttribute::none : secondAttribute};
    made->relation_ = relation;
    made->multiplier_ = multiplier;
    made->constant_ = constant;
    made->priority_ = priority;
    return made;
}

std::shared_ptr<LayoutConstraint> LayoutConstraint::make(View& first, LayoutAttribute attribute,
                                                         LayoutRelation relation, double constant,
                                                         LayoutPriority priority) {
    return make(first, attribute, relation, nullptr, LayoutAttribute::none, 1, constant, priority);
}

void LayoutConstraint::setConstant(double constant) {
    if (constant == constant_) return;
    constant_ = constant;
    if (!isActive_) return;
    if (const auto view = first_.view.lock()) view->askForLayout();
}

void LayoutConstraint::setActive(bool active) {
    if (active == isActive_) return;
    const auto view = first_.view.lock();
    if (view == nullptr) return;
    isActive_ = active;
    auto& kept = view->constraints_;
    const auto isThis = [this](const auto& other) { return other.get() == this; };
    const auto found = std::find_if(kept.begin(), kept.end(), isThis);
    view->invalidateStructure();
    if (active) {
        static std::uint64_t activations = 0;
        order_ = ++activations;
        if (found == kept.end()) kept.push_back(shared_from_this());
    } else if (!isKept_ && found != kept.end()) {
        kept.erase(found);  // may be the end of this object
    }
}

void pinEdgesToSuperview(View& view) {
    View* superview = view.superview();
    if (superview == nullptr) return;
    for (const LayoutAttribute edge : {LayoutAttribute::leading, LayoutAttribute::trailing,
                                       LayoutAttribute::top, LayoutAttribute::bottom}) {
        LayoutConstraint::make(view, edge, LayoutRelation::equal, superview, edge)->setActive(true);
    }
}

}  // namespace tavrolin::ui

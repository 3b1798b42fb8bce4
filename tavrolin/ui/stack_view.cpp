#include "tavrolin/ui/stack_view.h"

#include <algorithm>

#include "tavrolin/ui/property_values.h"

namespace tavrolin::ui {

void StackView::addArrangedSubview(std::shared_ptr<View> view) {
    insertArrangedSubview(std::move(view), arranged_.size());
}

void StackView::insertArrangedSubview(std::shared_ptr<View> view, std::size_t index) {
    if (view == nullptr || isDescendantOf(*view)) return;
    View* member = view.get();
    if (member->superview() == this) {
        forget(*member);
        invalidateStructure();
    } else {
        addSubview(std::move(view));
    }
    const auto place = static_cast<std::ptrdiff_t>(std::min(index, arranged_.size()));
    arranged_.insert(arranged_.begin() + place, member);
    member->isArranged_ = true;
}

void StackView::forget(const View& view) {
    const auto found = std::ranges::find(arranged_, &view);
    if (found == arranged_.end()) return;
    (*found)->isArranged_ = false;
    arranged_.erase(found);
}

void StackView::setAxis(Axis axis) {
    if (axis == axis_) return;
    axis_ = axis;
    invalidateStructure();
}

void StackView::setSpacing(double spacing) {
    if (spacing == spacing_) return;
    spacing_ = spacing;
    invalidateStructure();
}

void StackView::setDistribution(StackDistribution distribution) {
    if (distribution == distribution_) return;
    distribution_ = distribution;
    invalidateStructure();
}

void StackView::setAlignment(StackAlignment alignment) {
    if (alignment == alignment_) return;
    alignment_ = alignment;
    invalidateStructure();
}

void StackView::setMargins(const Margins& margins) {
    margins_ = margins;
    invalidateStructure();
}

bool StackView::setProperty(std::string_view name, const foundation::Value& value) {
    using namespace property;
    if (name == "axis") {
        setAxis(
            oneOf<Axis>(value, {{"horizontal", Axis::horizontal}, {"vertical", Axis::vertical}}));
    } else if (name == "spacing") {
        setSpacing(number(value));
    } else if (name == "distribution") {
        setDistribution(oneOf<StackDistribution>(
            value,
            {{"fill", StackDistribution::fill}, {"fillEqually", StackDistribution::fillEqually}}));
    } else if (name == "alignment") {
        setAlignment(oneOf<StackAlignment>(value, {{"fill", StackAlignment::fill},
                                                   {"leading", StackAlignment::leading},
                                                   {"center", StackAlignment::center},
                                                   {"trailing", StackAlignment::trailing}}));
    } else if (name == "margins") {
        setMargins(edges<Margins>(value));
    } else {
        return View::setProperty(name, value);
    }
    return true;
}

}  // namespace tavrolin::ui

#include "tavrolin/ui/layout_engine.h"

#include <algorithm>
#include <cmath>

#include "tavrolin/ui/scroll_view.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

namespace {

constexpr std::uint32_t kNowhere = UINT32_MAX;
// Beyond any screen; keeps hostile numbers out of the arithmetic.
constexpr double kLargest = 1e7;
constexpr double kLargestMultiplier = 1e4;
// What a tree asks for by itself comes after what it is told, in the order of the tree.
constexpr std::uint64_t kImplicit = std::uint64_t{1} << 62U;
// Widths depend on heights where shapes are kept; more than this are not followed.
constexpr int kMostMeasurings = 5;

double bounded(double number, double largest) {
    if (std::isnan(number)) return 0;
    return std::clamp(number, -largest, largest);
}

bool isHorizontal(LayoutAttribute attribute) {
    switch (attribute) {
        case LayoutAttribute::left:
        case LayoutAttribute::right:
        case LayoutAttribute::leading:
        case LayoutAttribute::trailing:
        case LayoutAttribute::width:
        case LayoutAttribute::centerX:
            return true;
        default:
            return false;
    }
}

// Depends on where text runs to.
bool isReading(LayoutAttribute attribute) {
    return attribute == LayoutAttribute::leading || attribute == LayoutAttribute::trailing;
}

bool isSize(LayoutAttribute attribute) {
    return attribute == LayoutAttribute::width || attribute == LayoutAttribute::height;
}

}  // namespace

bool LayoutEngine::layOut(View& root, const Surroundings& surroundings, bool structureChanged) {
    surroundings_ = surroundings;
    const Changes changes = structureChanged || !isSetUp_ ? Changes::structure : takeUpChanges();
    if (changes == Changes::none) return false;
    if (changes == Changes::structure) setUp(root);
    solve(root);
    apply();
    return true;
}

// --- The tree

void LayoutEngine::setUp(View& root) {
    solver_.clear();
    records_.clear();
    uses_.clear();
    goals_.clear();
    terms_.clear();
    implicitOrder_ = kImplicit;
    collect(root, kNowhere, 0,
            surroundings_.traits.layoutDirection == LayoutDirection::rightToLeft);
    for (const Record& record : records_)
        addConstraints(record);
    for (Record& record : records_) {
        if (const auto* stack = dynamic_cast<const StackView*>(record.view)) {
            addStack(record, *stack);
        }
        addNaturalSize(record, Axis::horizontal);
        addNaturalSize(record, Axis::vertical);
    }
    reachGoals();
    addDefaults();
    isSetUp_ = true;
}

void LayoutEngine::collect(View& view, std::uint32_t parent, std::uint32_t depth,
                           bool isRightToLeft) {
    const auto index = static_cast<std::uint32_t>(records_.size());
    view.layoutIndex_ = index;
    Record& record = records_.emplace_back();
    record.view = &view;
    record.parent = parent;
    record.depth = depth;
    const SemanticContentAttribute semantic = view.semantic_;
    if (semantic != SemanticContentAttribute::unspecified) {
        isRightToLeft = semantic == SemanticContentAttribute::forceRightToLeft;
    }
    record.isRightToLeft = isRightToLeft;
    setUpSide(record, Axis::horizontal);
    setUpSide(record, Axis::vertical);
    measure(record);
    for (const auto& child : view.subviews_) {
        if (child->isArranged_ && child->isHidden_) {
            child->place({});
        } else {
            collect(*child, index, depth + 1, isRightToLeft);
        }
    }
}

void LayoutEngine::setUpSide(Record& record, Axis axis) {
    Side& side = record.side(axis);
    const View& view = *record.view;
    const bool isRoot = record.parent == kNowhere;
    const bool isHorizontalAxis = axis == Axis::horizontal;
    const platform::Rect& frame = view.placedFrame_;
    const Side* outer = isRoot ? nullptr : &records_[record.parent].side(axis);
    if (view.isPlacedByFrame_) {
        side.size = bounded(isHorizontalAxis ? frame.width : frame.height, kLargest);
        if (outer != nullptr) {
            side.originVariable = outer->originVariable;
            side.origin = bounded(outer->origin + (isHorizontalAxis ? frame.x : frame.y), kLargest);
        }
    } else {
        if (!isRoot) side.originVariable = solver_.addVariable(LayoutSolver::Kind::unbounded);
        if (isRoot && isHorizontalAxis && surroundings_.rootWidth >= 0) {
            side.size = std::min(surroundings_.rootWidth, kLargest);
        } else {
            side.sizeVariable = solver_.addVariable(LayoutSolver::Kind::notNegative);
        }
    }
    const ContentPriorities& priorities =
        isHorizontalAxis ? view.horizontalPriorities_ : view.verticalPriorities_;
    side.hugging = priorities.hugging;
    side.compressionResistance = priorities.compressionResistance;
}

// The natural size, for the width that came out the last time. Of what didn't fit into that width
// then, and doesn't now, it is enough to know that it is wider: the same width comes out.
void LayoutEngine::measure(Record& record) {
    View& view = *record.view;
    view.intrinsicSizeChanged_ = false;
    const double width = view.measuredWidth_;
    const bool isLimited = width > 0;
    const platform::Size natural =
        view.intrinsicContentSize(isLimited ? width : platform::kUnlimitedWidth);
    Side& horizontal = record.horizontal;
    horizontal.isLeast = isLimited && natural.width > width;
    horizontal.current =
        natural.width < 0 ? -1 : roundedUp(horizontal.isLeast ? width + pixel() : natural.width);
    record.vertical.current = natural.height < 0 ? -1 : roundedUp(natural.height);
}

// True when there is room for more than the least, so that the natural width counts after all.
bool LayoutEngine::measureExactly(Record& record) {
    Side& side = record.horizontal;
    if (!side.isLeast || value(side.sizeVariable, side.size) < side.current - pixel() / 2) {
        return false;
    }
    side.isLeast = false;
    side.current = roundedUp(record.view->intrinsicContentSize(platform::kUnlimitedWidth).width);
    if (side.parameter != LayoutSolver::kNone) {
        solver_.setParameter(side.parameter, side.current - side.natural);
    }
    return true;
}

// --- Goals

void LayoutEngine::beginGoal() {
    goals_.emplace_back();
    goals_.back().firstTerm = terms_.size();
    constant_ = 0;
}

void LayoutEngine::endGoal(LayoutRelation relation, double priority, std::uint64_t order) {
    Goal& goal = goals_.back();
    goal.termCount = terms_.size() - goal.firstTerm;
    goal.constant = bounded(constant_, kLargest);
    goal.relation = relation;
    goal.priority = priority;
    goal.order = order;
}

void LayoutEngine::addOrigin(const Record& record, Axis axis, double factor) {
    const Side& side = record.side(axis);
    if (side.originVariable != LayoutSolver::kNone) terms_.push_back({side.originVariable, factor});
    constant_ += factor * side.origin;
}

void LayoutEngine::addSize(const Record& record, Axis axis, double factor) {
    const Side& side = record.side(axis);
    if (side.sizeVariable != LayoutSolver::kNone) terms_.push_back({side.sizeVariable, factor});
    constant_ += factor * side.size;
}

void LayoutEngine::addEdge(const Record& record, Axis axis, bool isEnd, double factor) {
    addOrigin(record, axis, factor);
    if (isEnd) addSize(record, axis, factor);
}

std::uint32_t LayoutEngine::indexOf(const View* view) const {
    if (view == nullptr || view->layoutIndex_ >= records_.size()) return kNowhere;
    return records_[view->layoutIndex_].view == view ? view->layoutIndex_ : kNowhere;
}

std::uint32_t LayoutEngine::commonAncestor(std::uint32_t first, std::uint32_t second) const {
    while (first != second) {
        if (records_[first].depth >= records_[second].depth) {
            first = records_[first].parent;
        } else {
            second = records_[second].parent;
        }
    }
    return first;
}

void LayoutEngine::addConstraints(const Record& record) {
    for (const auto& constraint : record.view->constraints_) {
        if (constraint->isActive_) addConstraint(*constraint);
    }
}

void LayoutEngine::addConstraint(LayoutConstraint& constraint) {
    const auto& [firstView, firstAttribute] = constraint.first_;
    const auto& [secondView, secondAttribute] = constraint.second_;
    const std::uint32_t first = indexOf(firstView.lock().get());
    if (first == kNowhere || firstAttribute == LayoutAttribute::none) return;
    const bool isSingle = secondAttribute == LayoutAttribute::none;
    const std::uint32_t second = isSingle ? kNowhere : indexOf(secondView.lock().get());
    if (!isSingle && second == kNowhere) return;
    if (!(constraint.priority_ > 0)) return;
    const double multiplier = bounded(constraint.multiplier_, kLargestMultiplier);

    const std::uint32_t parent = records_[first].parent;
    const std::uint32_t common =
        !isSingle ? commonAncestor(first, second) : (parent == kNowhere ? first : parent);
    // Where text runs from the right, places are counted from there, to the left.
    const bool isMirrored =
        records_[common].isRightToLeft && (isReading(firstAttribute) || isReading(secondAttribute));
    const double sign = isMirrored ? -1 : 1;
    beginGoal();
    addItem(first, firstAttribute, isSize(firstAttribute) ? 1 : sign, common);
    if (!isSingle) {
        addItem(second, secondAttribute, -multiplier * (isSize(secondAttribute) ? 1 : sign),
                common);
    }
    // Places are counted from the view that holds both.
    const double rest =
        (isSize(firstAttribute) ? 0 : 1) - (isSingle || isSize(secondAttribute) ? 0 : multiplier);
    if (rest != 0) {
        const Axis axis = isHorizontal(firstAttribute) ? Axis::horizontal : Axis::vertical;
        addEdge(records_[common], axis, isMirrored, -rest * sign);
    }
    const double constant = bounded(constraint.constant_, kLargest);
    Use use{&constraint, constant, constant, LayoutSolver::kNone};
    constant_ -= use.constant;
    if (constraint.isChangeable_) {
        use.parameter = solver_.addVariable(LayoutSolver::Kind::parameter);
        terms_.push_back({use.parameter, -1});
    }
    uses_.push_back(use);
    endGoal(constraint.relation_, std::min(constraint.priority_, priority::required),
            constraint.order_);
}

void LayoutEngine::addItem(std::uint32_t index, LayoutAttribute attribute, double factor,
                           std::uint32_t common) {
    Record& record = records_[index];
    const Axis axis = isHorizontal(attribute) ? Axis::horizontal : Axis::vertical;
    if (isSize(attribute)) {
        addSize(record, axis, factor);
        return;
    }
    const bool isReversed = records_[common].isRightToLeft;
    double share = 0;  // of the size
    if (attribute == LayoutAttribute::centerX || attribute == LayoutAttribute::centerY) {
        share = 0.5;
    } else if (attribute == LayoutAttribute::right || attribute == LayoutAttribute::bottom ||
               attribute == (isReversed ? LayoutAttribute::leading : LayoutAttribute::trailing)) {
        share = 1;
    }
    addOrigin(record, axis, factor);
    if (share == 0) return;
    // What is in a scroll view holds to its content.
    if (index == common && dynamic_cast<ScrollView*>(record.view) != nullptr) {
        record.hasContent = true;
        Side& side = record.side(axis);
        if (side.contentVariable == LayoutSolver::kNone) {
            side.contentVariable = solver_.addVariable(LayoutSolver::Kind::notNegative);
        }
        terms_.push_back({side.contentVariable, factor * share});
    } else {
        addSize(record, axis, factor * share);
    }
}

void LayoutEngine::addNaturalSize(Record& record, Axis axis) {
    Side& side = record.side(axis);
    side.natural = side.current;
    if (side.natural < 0 || side.sizeVariable == LayoutSolver::kNone) return;
    side.parameter = solver_.addVariable(LayoutSolver::Kind::parameter);
    const auto add = [&](LayoutRelation relation, double priority) {
        if (!(priority > 0)) return;
        beginGoal();
        addSize(record, axis, 1);
        terms_.push_back({side.parameter, -1});
        constant_ -= side.natural;
        endGoal(relation, std::min(priority, priority::required), implicitOrder_++);
    };
    add(LayoutRelation::greaterThanOrEqual, side.compressionResistance);
    add(LayoutRelation::lessThanOrEqual, side.hugging);
}

void LayoutEngine::addSmallest(const Record& record, Axis axis, double size) {
    if (record.side(axis).sizeVariable == LayoutSolver::kNone) return;
    beginGoal();
    addSize(record, axis, 1);
    constant_ -= size;
    endGoal(LayoutRelation::equal, priority::fittingSize, implicitOrder_++);
}

void LayoutEngine::addStack(const Record& record, const StackView& stack) {
    std::vector<std::uint32_t> members;
    for (const View* view : stack.arrangedSubviews()) {
        const std::uint32_t index = indexOf(view);
        if (index != kNowhere && !view->isPlacedByFrame_) members.push_back(index);
    }
    const StackView::Margins& margins = stack.margins();
    const Axis along = stack.axis();
    const Axis across = along == Axis::horizontal ? Axis::vertical : Axis::horizontal;
    addAlongAxis(record, stack, members);
    for (const std::uint32_t member : members)
        addAcrossAxis(record, stack, records_[member]);
    const auto room = [&](Axis axis) {
        return axis == Axis::horizontal ? margins.leading + margins.trailing
                                        : margins.top + margins.bottom;
    };
    if (members.empty()) addSmallest(record, along, room(along));
    addSmallest(record, across, room(across));
}

void LayoutEngine::addAlongAxis(const Record& record, const StackView& stack,
                                const std::vector<std::uint32_t>& members) {
    if (members.empty()) return;
    const Axis axis = stack.axis();
    const StackView::Margins& margins = stack.margins();
    const bool isReversed = axis == Axis::horizontal && record.isRightToLeft;
    const double sign = isReversed ? -1 : 1;
    const auto require = [&] {
        endGoal(LayoutRelation::equal, priority::required, implicitOrder_++);
    };
    beginGoal();
    addEdge(records_[members.front()], axis, isReversed, sign);
    addEdge(record, axis, isReversed, -sign);
    constant_ -= bounded(axis == Axis::horizontal ? margins.leading : margins.top, kLargest);
    require();
    for (std::size_t i = 1; i < members.size(); ++i) {
        beginGoal();
        addEdge(records_[members[i]], axis, isReversed, sign);
        addEdge(records_[members[i - 1]], axis, !isReversed, -sign);
        constant_ -= bounded(stack.spacing(), kLargest);
        require();
    }
    if (stack.distribution() == StackDistribution::fillEqually) {
        for (std::size_t i = 1; i < members.size(); ++i) {
            beginGoal();
            addSize(records_[members[i]], axis, 1);
            addSize(records_[members.front()], axis, -1);
            require();
        }
    }
    beginGoal();
    addEdge(record, axis, !isReversed, sign);
    addEdge(records_[members.back()], axis, !isReversed, -sign);
    constant_ -= bounded(axis == Axis::horizontal ? margins.trailing : margins.bottom, kLargest);
    require();
}

void LayoutEngine::addAcrossAxis(const Record& record, const StackView& stack,
                                 const Record& member) {
    const Axis axis = stack.axis() == Axis::horizontal ? Axis::vertical : Axis::horizontal;
    const StackView::Margins& margins = stack.margins();
    const bool isReversed = axis == Axis::horizontal && record.isRightToLeft;
    const double low = bounded(axis == Axis::vertical ? margins.top
                               : isReversed           ? margins.trailing
                                                      : margins.leading,
                               kLargest);
    const double high = bounded(axis == Axis::vertical ? margins.bottom
                                : isReversed           ? margins.leading
                                                       : margins.trailing,
                                kLargest);
    const auto edge = [&](bool isEnd, LayoutRelation relation) {
        beginGoal();
        const double sign = isEnd ? -1 : 1;
        addEdge(member, axis, isEnd, sign);
        addEdge(record, axis, isEnd, -sign);
        constant_ -= isEnd ? high : low;
        endGoal(relation, priority::required, implicitOrder_++);
    };
    const auto equal = LayoutRelation::equal;
    const auto within = LayoutRelation::greaterThanOrEqual;
    switch (stack.alignment()) {
        case StackAlignment::fill:
            edge(false, equal);
            edge(true, equal);
            break;
        case StackAlignment::leading:
        case StackAlignment::trailing: {
            const bool isEnd = (stack.alignment() == StackAlignment::trailing) != isReversed;
            edge(isEnd, equal);
            edge(!isEnd, within);
            break;
        }
        case StackAlignment::center:
            beginGoal();
            addOrigin(member, axis, 1);
            addSize(member, axis, 0.5);
            addOrigin(record, axis, -1);
            addSize(record, axis, -0.5);
            constant_ -= (low - high) / 2;
            endGoal(equal, priority::required, implicitOrder_++);
            edge(false, within);
            edge(true, within);
            break;
    }
}

void LayoutEngine::reachGoals() {
    addSmallest(records_.front(), Axis::horizontal, 0);
    addSmallest(records_.front(), Axis::vertical, 0);
    for (Record& record : records_) {
        for (const Axis axis : {Axis::horizontal, Axis::vertical}) {
            const Variable content = record.side(axis).contentVariable;
            if (content == LayoutSolver::kNone) continue;
            beginGoal();
            terms_.push_back({content, 1});
            endGoal(LayoutRelation::equal, priority::fittingSize, implicitOrder_++);
        }
    }
    std::ranges::sort(goals_, [](const Goal& a, const Goal& b) {
        return a.priority != b.priority ? a.priority > b.priority : a.order < b.order;
    });
    for (const Goal& goal : goals_) {
        solver_.addGoal(std::span(terms_).subspan(goal.firstTerm, goal.termCount), goal.constant,
                        goal.relation, goal.priority >= priority::required);
    }
}

// A view that nothing places stands where its superview begins.
void LayoutEngine::addDefaults() {
    for (const Record& record : records_) {
        if (record.parent == kNowhere) continue;
        for (const Axis axis : {Axis::horizontal, Axis::vertical}) {
            terms_.clear();
            constant_ = 0;
            addOrigin(record, axis, 1);
            addOrigin(records_[record.parent], axis, -1);
            solver_.addDefault(terms_, constant_);
        }
    }
}

// --- Solving

LayoutEngine::Changes LayoutEngine::takeUpChanges() {
    Changes changes = Changes::none;
    const auto take = [&](Changes change) { changes = std::max(changes, change); };
    for (Use& use : uses_) {
        const double constant = bounded(use.constraint->constant_, kLargest);
        if (constant == use.current) continue;
        use.current = constant;
        if (use.parameter != LayoutSolver::kNone) {
            solver_.setParameter(use.parameter, constant - use.constant);
            take(Changes::values);
        } else {
            use.constraint->isChangeable_ = true;
            take(Changes::structure);
        }
    }
    for (Record& record : records_) {
        const View& view = *record.view;
        const auto differs = [](const Side& side, const ContentPriorities& now) {
            return side.hugging != now.hugging ||
                   side.compressionResistance != now.compressionResistance;
        };
        if (differs(record.horizontal, view.horizontalPriorities_) ||
            differs(record.vertical, view.verticalPriorities_)) {
            take(Changes::structure);
        }
        if (view.intrinsicSizeChanged_) take(takeUpNaturalSize(record));
    }
    return changes;
}

LayoutEngine::Changes LayoutEngine::takeUpNaturalSize(Record& record) {
    const Record before = record;
    measure(record);
    Changes changes = Changes::none;
    for (const Axis axis : {Axis::horizontal, Axis::vertical}) {
        const Side& side = record.side(axis);
        const Side& last = before.side(axis);
        if (side.current == last.current && side.isLeast == last.isLeast) continue;
        const bool isKnown = (side.current < 0) == (side.natural < 0);
        changes = std::max(changes, isKnown ? Changes::values : Changes::structure);
        if (side.parameter != LayoutSolver::kNone) {
            solver_.setParameter(side.parameter, side.current - side.natural);
        }
    }
    return changes;
}

void LayoutEngine::solve(View& root) {
    for (int i = 0; i < kMostMeasurings; ++i) {
        if (!solver_.solve()) {
            setUp(root);
            solver_.solve();
        }
        if (!measureForWidths()) return;
    }
    solver_.solve();
}

// Whether a height changed with a width, or a natural width counts that was not known.
bool LayoutEngine::measureForWidths() {
    bool hasChanged = false;
    for (Record& record : records_) {
        View& view = *record.view;
        hasChanged |= measureExactly(record);
        Side& vertical = record.vertical;
        if (vertical.natural < 0 || vertical.parameter == LayoutSolver::kNone) {
            view.measuredWidth_ = -1;
            continue;
        }
        const Side& horizontal = record.horizontal;
        double width = std::floor(value(horizontal.sizeVariable, horizontal.size) *
                                      surroundings_.traits.displayScale +
                                  1e-4) /
                       surroundings_.traits.displayScale;
        if (!(width > 0) || width >= horizontal.current) width = -1;
        if (width == view.measuredWidth_) continue;
        view.measuredWidth_ = width;
        const double available = width < 0 ? platform::kUnlimitedWidth : width;
        const double height = std::max(0.0, roundedUp(view.intrinsicContentSize(available).height));
        if (height == vertical.current) continue;
        vertical.current = height;
        solver_.setParameter(vertical.parameter, height - vertical.natural);
        hasChanged = true;
    }
    return hasChanged;
}

double LayoutEngine::value(Variable variable, double constant) const {
    return variable == LayoutSolver::kNone ? constant : solver_.value(variable) + constant;
}

double LayoutEngine::snapped(double length) const {
    const double scale = surroundings_.traits.displayScale;
    // Halves go the same way wherever they are, also those that fall a little short.
    return bounded(std::floor(length * scale + 0.5 + 1e-4) / scale, kLargest);
}

double LayoutEngine::roundedUp(double length) const {
    const double scale = surroundings_.traits.displayScale;
    return bounded(std::ceil(bounded(length, kLargest) * scale - 1e-4) / scale, kLargest);
}

void LayoutEngine::apply() {
    for (Record& record : records_) {
        View& view = *record.view;
        const bool isRoot = record.parent == kNowhere;
        const platform::Point outer = isRoot ? platform::Point() : records_[record.parent].origin;
        if (view.isPlacedByFrame_) {
            const platform::Rect& frame = view.placedFrame_;
            record.origin =
                isRoot ? platform::Point() : platform::Point{outer.x + frame.x, outer.y + frame.y};
            view.place(frame);
        } else {
            const Side& horizontal = record.horizontal;
            const Side& vertical = record.vertical;
            const double x = value(horizontal.originVariable, horizontal.origin);
            const double y = value(vertical.originVariable, vertical.origin);
            const double right = x + value(horizontal.sizeVariable, horizontal.size);
            const double bottom = y + value(vertical.sizeVariable, vertical.size);
            record.origin = {snapped(x), snapped(y)};
            view.place({record.origin.x - outer.x, record.origin.y - outer.y,
                        std::max(0.0, snapped(right) - record.origin.x),
                        std::max(0.0, snapped(bottom) - record.origin.y)});
        }
        if (record.hasContent) {
            auto& scrollView = static_cast<ScrollView&>(view);
            const auto length = [&](const Side& side, double shown) {
                return side.contentVariable == LayoutSolver::kNone
                           ? shown
                           : snapped(solver_.value(side.contentVariable));
            };
            scrollView.setContentSize({length(record.horizontal, view.frame_.width),
                                       length(record.vertical, view.frame_.height)});
        }
    }
}

}  // namespace tavrolin::ui

#pragma once

#include <cstdint>
#include <vector>

#include "tavrolin/platform/geometry.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/layout_solver.h"
#include "tavrolin/ui/stack_view.h"
#include "tavrolin/ui/traits.h"

namespace tavrolin::ui {

/// Gives the views of one tree their frames: turns constraints, natural sizes and stacks into goals
/// for the solver, measures again what wraps, and puts the result onto the pixel grid. What was set
/// up is kept, so that another constant or another text takes no new search.
///
/// Horizontal and vertical places are counted from the root, so that edges of views at the same
/// place fall on the same pixel.
class LayoutEngine {
public:
    struct Surroundings {
        TraitCollection traits;
        double rootWidth = -1;  // none when negative: the root's own is asked for
    };

    /// `structureChanged`: more than constants and natural sizes may differ from the last time.
    /// False when all frames stay as they were.
    bool layOut(View& root, const Surroundings& surroundings, bool structureChanged);

private:
    using Variable = LayoutSolver::Variable;
    using Term = LayoutSolver::Term;

    // Where a view begins and how long it is, along one axis: a variable, or none, and a constant.
    struct Side {
        Variable originVariable = LayoutSolver::kNone;
        double origin = 0;
        Variable sizeVariable = LayoutSolver::kNone;
        double size = 0;
        Variable contentVariable = LayoutSolver::kNone;  // the content's length in a scroll view
        Variable parameter = LayoutSolver::kNone;  // the natural size's difference from `natural`
        double natural = -1;                       // what the goals were set up with; none below 0
        double current = -1;                       // what it is now, or the least that it may be
        bool isLeast = false;
        double hugging = 0;
        double compressionResistance = 0;
    };
    struct Record {
        View* view = nullptr;
        std::uint32_t parent = 0;
        std::uint32_t depth = 0;
        bool isRightToLeft = false;
        bool hasContent = false;  // a constraint asks for the content of this scroll view
        platform::Point origin;   // on the pixel grid, from the root
        Side horizontal;
        Side vertical;

        Side& side(Axis axis) { return axis == Axis::horizontal ? horizontal : vertical; }
        const Side& side(Axis axis) const {
            return axis == Axis::horizontal ? horizontal : vertical;
        }
    };
    // A constraint that takes part, with what it was set up with.
    struct Use {
        LayoutConstraint* constraint = nullptr;
        double constant = 0;
        double current = 0;  // what it is now
        Variable parameter = LayoutSolver::kNone;
    };
    struct Goal {
        double priority = 0;
        std::uint64_t order = 0;
        std::size_t firstTerm = 0;
        std::size_t termCount = 0;
        double constant = 0;
        LayoutRelation relation = LayoutRelation::equal;
    };

    void setUp(View& root);
    void collect(View& view, std::uint32_t parent, std::uint32_t depth, bool isRightToLeft);
    void setUpSide(Record& record, Axis axis);
    void addConstraints(const Record& record);
    void addConstraint(LayoutConstraint& constraint);
    void addItem(std::uint32_t index, LayoutAttribute attribute, double factor,
                 std::uint32_t common);
    void addNaturalSize(Record& record, Axis axis);
    void addStack(const Record& record, const StackView& stack);
    void addAlongAxis(const Record& record, const StackView& stack,
                      const std::vector<std::uint32_t>& members);
    void addAcrossAxis(const Record& record, const StackView& stack, const Record& member);
    void addSmallest(const Record& record, Axis axis, double size);
    void addDefaults();
    void reachGoals();

    void beginGoal();
    void endGoal(LayoutRelation relation, double priority, std::uint64_t order);
    void addOrigin(const Record& record, Axis axis, double factor);
    void addSize(const Record& record, Axis axis, double factor);
    void addEdge(const Record& record, Axis axis, bool isEnd, double factor);
    std::uint32_t indexOf(const View* view) const;
    std::uint32_t commonAncestor(std::uint32_t first, std::uint32_t second) const;

    void measure(Record& record);
    bool measureExactly(Record& record);
    enum class Changes : std::uint8_t { none, values, structure };
    Changes takeUpChanges();
    Changes takeUpNaturalSize(Record& record);
    bool measureForWidths();
    void solve(View& root);
    void apply();
    double value(Variable variable, double constant) const;
    double pixel() const { return 1 / surroundings_.traits.displayScale; }
    double snapped(double length) const;
    double roundedUp(double length) const;

    Surroundings surroundings_;
    LayoutSolver solver_;
    std::vector<Record> records_;
    std::vector<Use> uses_;
    std::vector<Goal> goals_;
    std::vector<Term> terms_;  // of the goals
    double constant_ = 0;      // of the goal at work
    std::uint64_t implicitOrder_ = 0;
    bool isSetUp_ = false;
};

}  // namespace tavrolin::ui

#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "tavrolin/ui/layout_constraint.h"

namespace tavrolin::ui {

/// Finds values for variables, goal by goal: each goal, `sum of terms + constant (<=, =, >=) 0`, is
/// reached or, where those before it leave no room, come as near to as they let it; what was
/// reached once stays so. So the order of the goals is their importance.
///
/// It is a simplex method over sparse rows. A variable without bounds, such as a position, never
/// enters the rows: the first goal that it occurs in defines it by the others. A goal that was
/// reached is a row whose basic variable is how far it is beyond; a goal that was missed fixes the
/// variables that would take it further away again.
///
/// Parameters are numbers in the goals that may change afterwards: then the values follow without a
/// new search, as long as the same goals are reached.
class LayoutSolver {
public:
    using Variable = std::uint32_t;
    static constexpr Variable kNone = UINT32_MAX;

    enum class Kind : std::uint8_t { unbounded, notNegative, parameter };

    struct Term {
        Variable variable = 0;
        double coefficient = 0;
    };

    /// Forgets everything but its memory.
    void clear();
    Variable addVariable(Kind kind);
    /// False when it could not be reached; a required one then has no effect at all.
    bool addGoal(std::span<const Term> terms, double constant, LayoutRelation relation,
                 bool isRequired);
    /// The same as an equation, if that only fixes a variable that was open.
    void addDefault(std::span<const Term> terms, double constant);

    /// 0 at first.
    void setParameter(Variable parameter, double value) { columns_[parameter].value = value; }
    /// Works the values out. False when the parameters lead to other goals being reached: then
    /// all must be set up anew.
    bool solve();
    double value(Variable variable) const { return columns_[variable].value; }

private:
    enum class State : std::uint8_t { open, basic, defined, fixed };  // fixed: at 0

    struct Column {
        double value = 0;
        Kind kind = Kind::unbounded;
        State state = State::open;
        std::uint32_t row = 0;            // in `rows_` when basic, in `definitions_` when defined
        std::vector<std::uint32_t> rows;  // those that it occurs in, and some that it did
    };
    struct Row {  // variable = constant + sum of terms
        Variable variable = kNone;
        double constant = 0;
        std::vector<Term> terms;
    };
    enum class Needs : std::uint8_t { zero, notNegative, negative };
    struct Condition {  // of parameters only
        Needs needs = Needs::zero;
        double constant = 0;
        std::vector<Term> terms;
    };

    Row& append(std::vector<Row>& rows, std::size_t& count);
    void accumulate(Variable variable, double coefficient);
    void reduce(std::span<const Term> terms, double constant);
    bool define(LayoutRelation relation);
    bool settle(LayoutRelation relation);
    bool reach(bool isEquation, bool isRequired);
    void keepAtZero();
    void giveUp(bool isRequired);
    void remember(Needs needs, double constant, std::span<const Term> terms);
    std::uint32_t leavingRow(Variable entering, std::uint32_t except, double& limit);
    void pivot(std::uint32_t row, Variable entering, bool keepsLeaving);
    void substitute(std::uint32_t row, Variable variable, const Row& by);
    void fix(Variable variable);
    double coefficientIn(const Row& row, Variable variable);
    double valueOf(const Row& row) const;
    bool isActive(const Term& term) const {
        return columns_[term.variable].kind != Kind::parameter;
    }

    std::vector<Column> columns_;
    std::size_t columnCount_ = 0;
    std::vector<Row> rows_;
    std::size_t rowCount_ = 0;
    std::vector<Row> definitions_;
    std::size_t definitionCount_ = 0;
    std::vector<Condition> conditions_;
    Row goal_;                           // the one at work, over open variables and parameters
    std::vector<std::uint32_t> places_;  // of variables in the row at work, from 1; else 0
    std::uint64_t steps_ = 0;            // terms that were looked at
};

}  // namespace tavrolin::ui

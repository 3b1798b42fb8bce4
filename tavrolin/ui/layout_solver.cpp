#include "tavrolin/ui/layout_solver.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tavrolin::ui {

namespace {

constexpr double kTiny = 1e-9;     // a coefficient that is none
constexpr double kNothing = 1e-6;  // a distance that is none
// What a hostile tree may cost, in terms that are looked at: about a quarter of a second. 150
// stacks within one another take 68 million.
constexpr std::uint64_t kMostSteps = 500'000'000;

void dropTiny(std::vector<LayoutSolver::Term>& terms) {
    std::erase_if(terms, [](const auto& term) { return std::abs(term.coefficient) < kTiny; });
}

}  // namespace

void LayoutSolver::clear() {
    for (std::size_t i = 0; i < columnCount_; ++i)
        columns_[i].rows.clear();
    columnCount_ = 0;
    rowCount_ = 0;
    definitionCount_ = 0;
    conditions_.clear();
    steps_ = 0;
}

LayoutSolver::Variable LayoutSolver::addVariable(Kind kind) {
    if (columnCount_ == columns_.size()) {
        columns_.emplace_back();
        places_.push_back(0);
    }
    Column& column = columns_[columnCount_];
    column.value = 0;
    column.kind = kind;
    column.state = State::open;
    return static_cast<Variable>(columnCount_++);
}

LayoutSolver::Row& LayoutSolver::append(std::vector<Row>& rows, std::size_t& count) {
    if (count == rows.size()) rows.emplace_back();
    return rows[count++];
}

// --- A goal in terms of open variables

void LayoutSolver::accumulate(Variable variable, double coefficient) {
    ++steps_;
    const Column& column = columns_[variable];
    switch (column.state) {
        case State::fixed:
            return;
        case State::open: {
            std::uint32_t& place = places_[variable];
            if (place == 0) {
                goal_.terms.push_back({variable, 0});
                place = static_cast<std::uint32_t>(goal_.terms.size());
            }
            goal_.terms[place - 1].coefficient += coefficient;
            return;
        }
        case State::basic:
        case State::defined:
            break;
    }
    const Row& row = column.state == State::basic ? rows_[column.row] : definitions_[column.row];
    goal_.constant += coefficient * row.constant;
    for (const Term& term : row.terms)
        accumulate(term.variable, coefficient * term.coefficient);
}

void LayoutSolver::reduce(std::span<const Term> terms, double constant) {
    goal_.terms.clear();
    goal_.constant = constant;
    for (const Term& term : terms)
        accumulate(term.variable, term.coefficient);
    for (const Term& term : goal_.terms)
        places_[term.variable] = 0;
    dropTiny(goal_.terms);
}

bool LayoutSolver::addGoal(std::span<const Term> terms, double constant, LayoutRelation relation,
                           bool isRequired) {
    if (steps_ > kMostSteps) return false;
    reduce(terms, constant);
    if (relation == LayoutRelation::lessThanOrEqual ||
        (relation == LayoutRelation::equal && goal_.constant > 0)) {
        goal_.constant = -goal_.constant;
        for (Term& term : goal_.terms)
            term.coefficient = -term.coefficient;
    }
    if (define(relation)) return true;
    if (std::none_of(goal_.terms.begin(), goal_.terms.end(),
                     [this](const Term& term) { return isActive(term); })) {
        return settle(relation);
    }
    return reach(relation == LayoutRelation::equal, isRequired);
}

void LayoutSolver::addDefault(std::span<const Term> terms, double constant) {
    if (steps_ > kMostSteps) return;
    reduce(terms, constant);
    define(LayoutRelation::equal);
}

// An unbounded variable takes up the goal by itself.
bool LayoutSolver::define(LayoutRelation relation) {
    std::size_t found = goal_.terms.size();
    for (std::size_t i = 0; i < goal_.terms.size(); ++i) {
        const Variable variable = goal_.terms[i].variable;
        if (columns_[variable].kind != Kind::unbounded) continue;
        if (found == goal_.terms.size() || variable > goal_.terms[found].variable) found = i;
    }
    if (found == goal_.terms.size()) return false;

    const Term own = goal_.terms[found];
    const double factor = -1 / own.coefficient;
    const Variable beyond =
        relation == LayoutRelation::equal ? kNone : addVariable(Kind::notNegative);
    columns_[own.variable].state = State::defined;
    columns_[own.variable].row = static_cast<std::uint32_t>(definitionCount_);
    Row& row = append(definitions_, definitionCount_);
    row.variable = own.variable;
    row.constant = goal_.constant * factor;
    row.terms.clear();
    for (const Term& term : goal_.terms) {
        if (term.variable != own.variable) {
            row.terms.push_back({term.variable, term.coefficient * factor});
        }
    }
    if (beyond != kNone) row.terms.push_back({beyond, -factor});
    return true;
}

// Nothing can be done about it any more: it is reached or not.
bool LayoutSolver::settle(LayoutRelation relation) {
    const bool isEquation = relation == LayoutRelation::equal;
    const bool isReached = goal_.constant > -kNothing;  // an equation's is not above 0
    const Needs reached = isEquation ? Needs::zero : Needs::notNegative;
    remember(isReached ? reached : Needs::negative, goal_.constant, goal_.terms);
    return isReached;
}

void LayoutSolver::remember(Needs needs, double constant, std::span<const Term> terms) {
    Condition condition{needs, constant, {}};
    for (const Term& term : terms) {
        if (!isActive(term)) condition.terms.push_back(term);
    }
    if (!condition.terms.empty()) conditions_.push_back(std::move(condition));
}

// --- Simplex

// Brings `goal_`, of bounded variables, up to 0 or above.
bool LayoutSolver::reach(bool isEquation, bool isRequired) {
    const auto isParameter = [this](const Term& term) { return !isActive(term); };
    if (!isEquation && goal_.constant > -kNothing &&
        std::none_of(goal_.terms.begin(), goal_.terms.end(), isParameter)) {
        const auto raises = [](const Term& term) { return term.coefficient > 0; };
        if (std::all_of(goal_.terms.begin(), goal_.terms.end(), raises)) return true;
        if (goal_.constant < kNothing &&
            std::none_of(goal_.terms.begin(), goal_.terms.end(), raises)) {
            for (const Term& term : goal_.terms)
                fix(term.variable);
            return true;
        }
    }

    const auto index = static_cast<std::uint32_t>(rowCount_);
    const Variable beyond = addVariable(Kind::notNegative);
    Row& added = append(rows_, rowCount_);
    added.variable = beyond;
    added.constant = goal_.constant;
    added.terms.assign(goal_.terms.begin(), goal_.terms.end());
    columns_[beyond].state = State::basic;
    columns_[beyond].row = index;
    for (const Term& term : added.terms)
        columns_[term.variable].rows.push_back(index);

    while (rows_[index].constant < -kNothing) {
        if (steps_ > kMostSteps) {
            giveUp(true);
            return false;
        }
        // The one of least number, by which the search never goes round in a circle; rather one
        // that ends it.
        Variable entering = kNone;
        Variable last = kNone;
        std::uint32_t leaving = index;
        for (const Term& term : rows_[index].terms) {
            if (term.coefficient < kTiny || !isActive(term)) continue;
            double limit = std::numeric_limits<double>::max();
            const std::uint32_t row = leavingRow(term.variable, index, limit);
            if (limit >= -rows_[index].constant / term.coefficient) {
                if (last == kNone || term.variable > last) last = term.variable;
            } else if (entering == kNone || term.variable < entering) {
                entering = term.variable;
                leaving = row;
            }
        }
        if (last != kNone) {
            pivot(index, last, !isEquation);
            return true;
        }
        if (entering == kNone) {
            giveUp(isRequired);
            return false;
        }
        pivot(leaving, entering, true);
    }
    rows_[index].constant = isEquation ? 0 : std::max(0.0, rows_[index].constant);
    if (isEquation) keepAtZero();
    return true;
}

// The last row, whose variable is 0, is to stay there.
void LayoutSolver::keepAtZero() {
    const auto index = static_cast<std::uint32_t>(rowCount_ - 1);
    Variable entering = kNone;
    for (const Term& term : rows_[index].terms) {
        if (!isActive(term)) continue;
        const auto uses = [this](Variable variable) { return columns_[variable].rows.size(); };
        if (entering == kNone || uses(term.variable) < uses(entering) ||
            (uses(term.variable) == uses(entering) && term.variable > entering)) {
            entering = term.variable;
        }
    }
    if (entering != kNone) {
        pivot(index, entering, false);
        return;
    }
    remember(Needs::zero, rows_[index].constant, rows_[index].terms);
    columns_[rows_[index].variable].state = State::fixed;
    --rowCount_;
}

// The last row's variable is as large as it gets, and below 0.
void LayoutSolver::giveUp(bool isRequired) {
    const Row row = std::move(rows_[--rowCount_]);
    columns_[row.variable].state = State::fixed;
    remember(Needs::negative, row.constant, row.terms);
    if (isRequired) return;
    for (const Term& term : row.terms) {
        if (isActive(term)) fix(term.variable);
    }
}

// Which row's variable comes down to 0 first as the entering one grows.
std::uint32_t LayoutSolver::leavingRow(Variable entering, std::uint32_t except, double& limit) {
    std::uint32_t found = except;
    for (const std::uint32_t index : columns_[entering].rows) {
        if (index == except || index >= rowCount_) continue;
        const double coefficient = coefficientIn(rows_[index], entering);
        if (coefficient > -kTiny) continue;
        const double ratio = std::max(0.0, rows_[index].constant) / -coefficient;
        const bool isTie = found != except && std::abs(ratio - limit) < kTiny;
        if (isTie ? rows_[index].variable < rows_[found].variable : ratio < limit) {
            limit = ratio;
            found = index;
        }
    }
    return found;
}

void LayoutSolver::pivot(std::uint32_t index, Variable entering, bool keepsLeaving) {
    Row& row = rows_[index];
    const double factor = -1 / coefficientIn(row, entering);
    const Variable leaving = row.variable;
    columns_[leaving].state = keepsLeaving ? State::open : State::fixed;
    std::erase_if(row.terms, [&](const Term& term) { return term.variable == entering; });
    row.variable = entering;
    row.constant *= factor;
    for (Term& term : row.terms)
        term.coefficient *= factor;
    if (keepsLeaving) {
        row.terms.push_back({leaving, -factor});
        columns_[leaving].rows.assign(1, index);
    }
    if (std::abs(row.constant) < kTiny) row.constant = 0;
    columns_[entering].state = State::basic;
    columns_[entering].row = index;

    std::vector<std::uint32_t> others;
    others.swap(columns_[entering].rows);
    for (const std::uint32_t other : others) {
        if (other != index && other < rowCount_) substitute(other, entering, rows_[index]);
    }
    others.clear();
    columns_[entering].rows.swap(others);
}

void LayoutSolver::substitute(std::uint32_t index, Variable variable, const Row& by) {
    Row& row = rows_[index];
    const double factor = coefficientIn(row, variable);
    if (factor == 0) return;
    steps_ += row.terms.size() + by.terms.size();
    std::erase_if(row.terms, [&](const Term& term) { return term.variable == variable; });
    for (std::size_t i = 0; i < row.terms.size(); ++i)
        places_[row.terms[i].variable] = static_cast<std::uint32_t>(i + 1);
    row.constant += factor * by.constant;
    if (std::abs(row.constant) < kTiny) row.constant = 0;
    for (const Term& term : by.terms) {
        const std::uint32_t place = places_[term.variable];
        if (place != 0) {
            row.terms[place - 1].coefficient += factor * term.coefficient;
        } else {
            row.terms.push_back({term.variable, factor * term.coefficient});
            columns_[term.variable].rows.push_back(index);
        }
    }
    for (const Term& term : row.terms)
        places_[term.variable] = 0;
    dropTiny(row.terms);
}

void LayoutSolver::fix(Variable variable) {
    Column& column = columns_[variable];
    column.state = State::fixed;
    for (const std::uint32_t index : column.rows) {
        if (index >= rowCount_) continue;
        steps_ += rows_[index].terms.size();
        std::erase_if(rows_[index].terms,
                      [&](const Term& term) { return term.variable == variable; });
    }
    column.rows.clear();
}

double LayoutSolver::coefficientIn(const Row& row, Variable variable) {
    steps_ += row.terms.size();
    for (const Term& term : row.terms) {
        if (term.variable == variable) return term.coefficient;
    }
    return 0;
}

// --- Values

double LayoutSolver::valueOf(const Row& row) const {
    double value = row.constant;
    for (const Term& term : row.terms)
        value += term.coefficient * columns_[term.variable].value;
    return value;
}

bool LayoutSolver::solve() {
    for (const Condition& condition : conditions_) {
        double value = condition.constant;
        for (const Term& term : condition.terms)
            value += term.coefficient * columns_[term.variable].value;
        const bool holds = condition.needs == Needs::zero          ? std::abs(value) <= kNothing
                           : condition.needs == Needs::notNegative ? value >= -kNothing
                                                                   : value < kNothing;
        if (!holds) return false;
    }
    for (std::size_t i = 0; i < columnCount_; ++i) {
        Column& column = columns_[i];
        if (column.kind != Kind::parameter) column.value = 0;
    }
    // Rows and definitions are over open variables, which are 0, and parameters; a definition also
    // over variables that got a row or a definition after it.
    for (std::size_t i = 0; i < rowCount_; ++i) {
        const double value = valueOf(rows_[i]);
        if (value < -kNothing) return false;
        columns_[rows_[i].variable].value = value;
    }
    for (std::size_t i = definitionCount_; i-- > 0;)
        columns_[definitions_[i].variable].value = valueOf(definitions_[i]);
    return true;
}

}  // namespace tavrolin::ui

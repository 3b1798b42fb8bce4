#pragma once

#include <cstdint>
#include <memory>

namespace tavrolin::ui {

class View;

/// Leading and trailing are left and right, or the other way about in a view that runs right to
/// left. `none` stands where a constraint has no second item.
enum class LayoutAttribute : std::int8_t {
    none,
    left,
    right,
    leading,
    trailing,
    top,
    bottom,
    width,
    height,
    centerX,
    centerY
};

enum class LayoutRelation : std::int8_t { lessThanOrEqual, equal, greaterThanOrEqual };

/// Above 0, at most 1000, which is required.
using LayoutPriority = double;
namespace priority {
inline constexpr LayoutPriority required = 1000;
inline constexpr LayoutPriority defaultHigh = 750;
inline constexpr LayoutPriority defaultLow = 250;
inline constexpr LayoutPriority fittingSize = 50;
}  // namespace priority

/// first.attribute (<=, =, >=) multiplier * second.attribute + constant.
///
/// The views are not owned. A constraint holds as long as both are in one tree and it is active;
/// as long as either is gone or elsewhere it is passed over. All constraints of a tree are solved
/// together, the ones of higher priority first; a required one that contradicts those that were
/// there before it is passed over. Main thread.
class LayoutConstraint : public std::enable_shared_from_this<LayoutConstraint> {
public:
    struct Item {
        std::weak_ptr<View> view;
        LayoutAttribute attribute = LayoutAttribute::none;
    };

    /// Made inactive. Activating it hands it to the first item's view, which keeps it.
    static std::shared_ptr<LayoutConstraint> make(View& first, LayoutAttribute firstAttribute,
                                                  LayoutRelation relation, View* second,
                                                  LayoutAttribute secondAttribute,
                                                  double multiplier = 1, double constant = 0,
                                                  LayoutPriority priority = priority::required);
    /// The same for a constant only, such as a width.
    static std::shared_ptr<LayoutConstraint> make(View& first, LayoutAttribute attribute,
                                                  LayoutRelation relation, double constant,
                                                  LayoutPriority priority = priority::required);

    const Item& first() const { return first_; }
    const Item& second() const { return second_; }
    LayoutRelation relation() const { return relation_; }
    double multiplier() const { return multiplier_; }
    LayoutPriority priority() const { return priority_; }
    double constant() const { return constant_; }
    void setConstant(double constant);
    bool isActive() const { return isActive_; }
    /// A deactivated one is the caller's to keep, but for those of an interface file.
    void setActive(bool active);

private:
    friend class InterfaceFile;
    friend class LayoutEngine;
    LayoutConstraint() = default;

    Item first_;
    Item second_;
    LayoutRelation relation_ = LayoutRelation::equal;
    double multiplier_ = 1;
    double constant_ = 0;
    LayoutPriority priority_ = priority::required;
    bool isActive_ = false;
    bool isKept_ = false;        // by its view also when it is not active
    bool isChangeable_ = false;  // its constant has changed before
    std::uint64_t order_ = 0;    // of activation
};

/// Pins leading, trailing, top and bottom of the view to those of its superview (multiplier 1,
/// constant 0) and activates the four.
void pinEdgesToSuperview(View& view);

}  // namespace tavrolin::ui

#pragma once

#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

enum class Axis : std::int8_t { horizontal = 0, vertical = 1 };

/// How members share the room along the axis: by their natural sizes, the one that holds to its
/// own least taking what is left; or all alike.
enum class StackDistribution : std::int8_t { fill, fillEqually };

/// Where members stand across the axis.
enum class StackAlignment : std::int8_t { fill, leading, center, trailing };

/// Lines its members up. A hidden member takes no room, nor does the space beside it; constraints
/// to it and to what is in it are passed over. Members are subviews; other subviews stand where
/// their constraints say, and so does a member that is placed by its frame.
///
/// Properties of interface files: axis, spacing, distribution, alignment, margins ([top, leading,
/// bottom, trailing]).
class StackView : public View {
public:
    std::string_view className() const override { return "StackView"; }

    const std::vector<View*>& arrangedSubviews() const { return arranged_; }
    void addArrangedSubview(std::shared_ptr<View> view);
    void insertArrangedSubview(std::shared_ptr<View> view, std::size_t index);

    Axis axis() const { return axis_; }
    void setAxis(Axis axis);
    double spacing() const { return spacing_; }
    void setSpacing(double spacing);
    StackDistribution distribution() const { return distribution_; }
    void setDistribution(StackDistribution distribution);
    StackAlignment alignment() const { return alignment_; }
    void setAlignment(StackAlignment alignment);
    struct Margins {
        double top = 0;
        double leading = 0;
        double bottom = 0;
        double trailing = 0;
    };
    const Margins& margins() const { return margins_; }
    void setMargins(const Margins& margins);

    bool setProperty(std::string_view name, const foundation::Value& value) override;

protected:
    void willRemoveSubview(const View& view) override { forget(view); }

private:
    void forget(const View& view);  // it is no member any more

    std::vector<View*> arranged_;
    Axis axis_ = Axis::horizontal;
    double spacing_ = 0;
    StackDistribution distribution_ = StackDistribution::fill;
    StackAlignment alignment_ = StackAlignment::fill;
    Margins margins_;
};

}  // namespace tavrolin::ui

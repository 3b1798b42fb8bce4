#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/canvas.h"
#include "tavrolin/platform/geometry.h"
#include "tavrolin/ui/layer.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/traits.h"

namespace tavrolin::ui {

class Connections;
class LayoutEngine;
class TapGestureRecognizer;

/// Decides about leading and trailing in a view. The numbers are the platform's.
enum class SemanticContentAttribute : std::int8_t {
    unspecified = 0,  // as the superview
    forceLeftToRight = 3,
    forceRightToLeft = 4
};

/// A side that a view has no natural size for.
inline constexpr double kNoIntrinsicMetric = -1;

/// How strongly a view holds to its natural size, each way.
struct ContentPriorities {
    LayoutPriority hugging = priority::defaultLow;
    LayoutPriority compressionResistance = priority::defaultHigh;
};

/// A rectangle of the tree. Its superview owns it. A view takes its place by the constraints of the
/// tree, or by the frame that `setFrame` gave it; which of the two, the last word decides.
///
/// Main thread. Nothing raises but what says so.
class View : public std::enable_shared_from_this<View> {
public:
    View();
    virtual ~View();
    View(const View&) = delete;
    View& operator=(const View&) = delete;

    /// The class's name as it is found by and printed, without a namespace.
    virtual std::string_view className() const { return "View"; }
    /// The field of the interface file's owner that holds it; empty without one.
    const std::string& outlet() const { return outlet_; }
    void setOutlet(std::string_view outlet) { outlet_ = outlet; }
    std::int64_t tag() const { return tag_; }
    void setTag(std::int64_t tag) { tag_ = tag; }

    // --- The tree

    View* superview() const { return superview_; }
    const std::vector<std::shared_ptr<View>>& subviews() const { return subviews_; }
    /// Takes it out of where it was first.
    virtual void addSubview(std::shared_ptr<View> view);
    void insertSubview(std::shared_ptr<View> view, std::size_t index);
    virtual void removeFromSuperview();
    bool isDescendantOf(const View& view) const;  // itself too

    // --- Place

    const platform::Rect& frame() const { return frame_; }
    /// Places the view by this frame from now on.
    void setFrame(const platform::Rect& frame);
    bool isPlacedByFrame() const { return isPlacedByFrame_; }
    /// True: by the frame it has. False: by constraints again.
    void setPlacedByFrame(bool placed);
    platform::Rect bounds() const { return {0, 0, frame_.width, frame_.height}; }
    /// Where subviews are shifted to: (0, 0) but for scroll views.
    virtual platform::Point contentOffset() const { return {}; }
    /// From this view's coordinates into the other's, which is in the same tree.
    platform::Point convertPoint(platform::Point point, const View& to) const;
    platform::Rect convertRect(const platform::Rect& rect, const View& to) const;

    // --- Looks

    bool isHidden() const { return isHidden_; }
    virtual void setHidden(bool hidden);
    double alpha() const { return alpha_; }  // where it is going, or has come to
    void setAlpha(double alpha);             // 0 to 1
    double presentAlpha() const;             // at this moment of the clock
    const std::optional<DynamicColor>& backgroundColor() const { return backgroundColor_; }
    void setBackgroundColor(std::optional<DynamicColor> color);
    double cornerRadius() const { return cornerRadius_; }
    void setCornerRadius(double radius);
    double borderWidth() const { return borderWidth_; }
    void setBorder(double width, const DynamicColor& color);
    bool clipsToBounds() const { return clipsToBounds_; }
    void setClipsToBounds(bool clips);
    /// Its sublayers are drawn between the background and the content. Its frame is the bounds.
    Layer& layer() { return layer_; }
    const Layer& layer() const { return layer_; }

    // --- Layout

    SemanticContentAttribute semanticContentAttribute() const { return semantic_; }
    void setSemanticContentAttribute(SemanticContentAttribute attribute);
    LayoutDirection effectiveLayoutDirection() const;

    /// The constraints that this view keeps; each is also found by its outlet.
    const std::vector<std::shared_ptr<LayoutConstraint>>& constraints() const {
        return constraints_;
    }
    /// What its content takes by itself where there is so much width, in points; a side may have
    /// none. A width above the available one says that it would take more, not how much.
    virtual platform::Size intrinsicContentSize(double availableWidth) const;
    ContentPriorities& horizontalPriorities() { return horizontalPriorities_; }
    ContentPriorities& verticalPriorities() { return verticalPriorities_; }
    const ContentPriorities& horizontalPriorities() const { return horizontalPriorities_; }
    const ContentPriorities& verticalPriorities() const { return verticalPriorities_; }
    /// Whether it takes up room: a hidden member of a stack view doesn't, nor what is in it.
    bool takesRoom() const;

    /// Asks for a layout pass of the whole tree, with its calls of `layoutSubviews`; it comes with
    /// the next `layoutIfNeeded`, in a window also on the main queue. What changes the layout asks
    /// by itself; where no frame can have changed after all, nothing is called.
    void setNeedsLayout();
    /// Lays out the whole tree now, if it was asked for.
    void layoutIfNeeded();
    /// Called once its frame and its subviews' are known, from the outside in. What is changed in
    /// it is taken up at once, a few times at most.
    virtual void layoutSubviews() {}

    // --- Surroundings

    /// The root's, which the window sets.
    const TraitCollection& traitCollection() const;

    // --- Touches

    /// Disabled: neither it nor what is in it takes taps. True at start but for labels and images.
    bool isUserInteractionEnabled() const { return isUserInteractionEnabled_; }
    void setUserInteractionEnabled(bool enabled) { isUserInteractionEnabled_ = enabled; }
    void addGestureRecognizer(std::shared_ptr<TapGestureRecognizer> recognizer);
    const std::vector<std::shared_ptr<TapGestureRecognizer>>& gestureRecognizers() const {
        return recognizers_;
    }
    /// The innermost visible view at the point (this view's coordinates), the front one first; null
    /// outside of it.
    virtual View* hitTest(platform::Point point);
    /// A view that takes taps itself, such as a button, does what it does and says true.
    virtual bool takeTap(platform::Point) { return false; }

    // --- Drawing

    /// Itself and what is in it, at the canvas' origin. As it is at this moment of the clock.
    void draw(platform::Canvas& canvas) const;

    // --- Interface files

    /// Sets what an interface file says. Raises `foundation::Exception` for a value that makes no
    /// sense; false when there is no such property.
    virtual bool setProperty(std::string_view name, const foundation::Value& value);
    /// Names the fields and operations that the file that it is the root of is to be connected to.
    virtual void connect(Connections&) {}
    /// Once all of the file is there.
    virtual void awakeFromNib() {}

    /// What the printed tree says of it beside class, outlet, frame and children.
    virtual void describe(foundation::Value& dictionary) const;

protected:
    virtual void willRemoveSubview(const View&) {}
    /// In its own coordinates, above its background and below its subviews.
    virtual void drawContent(platform::Canvas&) const {}
    /// What `drawContent` draws on beside the bounds.
    virtual platform::Rect contentExtent() const { return {}; }
    /// `drawContent` draws something else from moment to moment, without anything being set.
    virtual bool isPlaying() const { return false; }
    /// `drawContent` draws something else than it did. What the properties of `View` change is
    /// noticed without it.
    void setNeedsDisplay() { needsDisplay_ = true; }
    const platform::Color& resolved(const DynamicColor& color) const;
    /// The natural size, or what it depends on, is another one.
    void invalidateIntrinsicContentSize();
    /// What stands in the tree is laid out in another way.
    void invalidateStructure();

private:
    friend class InterfaceFile;
    friend class LayoutConstraint;
    friend class LayoutEngine;
    friend class StackView;
    friend class Window;
    friend void crossFade(View& view, double seconds, const std::function<void()>& change,
                          std::function<void()> completion);
    friend void animateAlpha(View& view, double alpha, double seconds,
                             std::function<void()> completion);
    struct Root;
    struct Animations;

    View& top();
    const View& top() const;
    Root& root();         // the root's; made when it is first asked for
    void askForLayout();  // and for calls only where frames may change
    void endTree();       // it becomes a part of another one
    void attach(std::shared_ptr<View> view, std::size_t index);
    void detach(const View& view);
    void place(const platform::Rect& frame);
    void layOutSubtree();
    bool clips() const { return clipsToBounds_ || layer_.masksToBounds(); }
    platform::Point originOf(const View& child) const;
    double presentOldAlpha() const;
    platform::Rect ownExtent() const;
    platform::Rect extent() const;
    void drawIn(platform::Canvas& canvas, const platform::Rect& visible) const;
    void drawBody(platform::Canvas& canvas, const platform::Rect& visible) const;
    void drawSelf(platform::Canvas& canvas) const;
    void drawSubviews(platform::Canvas& canvas, const platform::Rect& visible) const;
    struct Surroundings;
    void collectDirty(const Surroundings& surroundings, platform::Rect& dirty);
    void invalidateDisplay();        // of the whole tree
    platform::Rect takeDirtyRect();  // of the root, in its coordinates

    // How it was when the dirty part of its tree was last taken.
    struct Display {
        double alpha = 0;  // 0: not to be seen
        double oldAlpha = 0;
        std::uint64_t layerChange = 0;
        platform::Rect frame;    // from the root
        platform::Rect extent;   // its own, from the root
        platform::Rect visible;  // what is not clipped of the extent
    };

    platform::Rect frame_;
    platform::Rect placedFrame_;  // what `setFrame` was given
    View* superview_ = nullptr;
    std::vector<std::shared_ptr<View>> subviews_;
    std::vector<std::shared_ptr<LayoutConstraint>> constraints_;
    std::vector<std::shared_ptr<TapGestureRecognizer>> recognizers_;
    Layer layer_;
    std::string outlet_;
    std::int64_t tag_ = 0;
    std::optional<DynamicColor> backgroundColor_;
    DynamicColor borderColor_ = platform::Color::clear();
    ContentPriorities horizontalPriorities_;
    ContentPriorities verticalPriorities_;
    double alpha_ = 1;
    double cornerRadius_ = 0;
    double borderWidth_ = 0;
    SemanticContentAttribute semantic_ = SemanticContentAttribute::unspecified;
    std::uint32_t layoutIndex_ = UINT32_MAX;  // the layout engine's
    double measuredWidth_ = -1;               // that its height was measured for; none below 0
    bool intrinsicSizeChanged_ = true;
    bool needsDisplay_ = true;
    bool isArranged_ = false;  // a member of the stack view that is its superview
    bool isPlacedByFrame_ = false;
    bool isHidden_ = false;
    bool clipsToBounds_ = false;
    bool isUserInteractionEnabled_ = true;
    Display display_;
    std::unique_ptr<Animations> animations_;
    std::unique_ptr<Root> root_;  // of the root only: its surroundings, and whether it needs layout
};

}  // namespace tavrolin::ui

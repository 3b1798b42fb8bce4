#pragma once

#include <memory>

#include "tavrolin/platform/canvas.h"
#include "tavrolin/ui/traits.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// Keeps a view and hears what becomes of it. Main thread.
class ViewController {
public:
    virtual ~ViewController() = default;

    /// Made when it is first asked for.
    View& view();
    bool isViewLoaded() const { return view_ != nullptr; }

    virtual void viewDidLoad() {}
    /// After every layout pass.
    virtual void viewDidLayoutSubviews() {}
    virtual void viewWillDisappear(bool /*animated*/) {}
    /// `previous`: what it was before; null at first.
    virtual void traitCollectionDidChange(const TraitCollection* /*previous*/) {}
    const TraitCollection& traitCollection() const { return traits_; }

protected:
    /// The view that it is to have.
    virtual std::shared_ptr<View> loadView() { return std::make_shared<View>(); }

private:
    friend class Window;
    std::shared_ptr<View> view_;
    TraitCollection traits_;
};

/// What shows a controller's view: as wide as it is told, as high as the view wants to be. Lays out
/// on the main queue when that was asked for. Main thread; ends before the dispatch port does.
class Window {
public:
    /// The controller outlives it. `width` in points, not negative.
    Window(ViewController& controller, double width, const TraitCollection& traits);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    void setTraitCollection(const TraitCollection& traits);
    void layoutIfNeeded();
    /// The view's; lays out first. Never beyond 16,384 pixels high: what is longer is cut off.
    platform::Size size();
    void draw(platform::Canvas& canvas);  // lays out first
    /// What looks different since it was last asked for, on whole pixels and as one rectangle; at
    /// first all, and empty when nothing does. Lays out first. Of pictures and films that play it
    /// always counts what they cover.
    platform::Rect takeDirtyRect();
    /// The part of it in a rectangle, on a canvas where nothing is drawn yet: what it is in the
    /// whole, but for what the canvas rounds at the edge of a clip. Lays out first.
    void draw(platform::Canvas& canvas, const platform::Rect& rect);
    View* tap(platform::Point point);  // lays out first
    /// Tells the controller that it is going; once.
    void disappear();

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace tavrolin::ui

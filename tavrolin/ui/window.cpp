#include "tavrolin/ui/window.h"

#include <algorithm>
#include <cmath>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/view_root.h"

namespace tavrolin::ui {

namespace {

// In pixels, where a point has several; what is further down is never shown. A canvas takes twice
// as many, which leaves room for what is drawn around.
constexpr double kLargestHeight = 16'384;
constexpr double kSmallestScale = 0.01;

TraitCollection checked(TraitCollection traits) {
    if (!(traits.displayScale >= kSmallestScale) || !std::isfinite(traits.displayScale)) {
        traits.displayScale = 1;
    }
    return traits;
}

}  // namespace

View& ViewController::view() {
    if (view_ == nullptr) {
        view_ = loadView();
        if (view_ == nullptr) view_ = std::make_shared<View>();
        viewDidLoad();
    }
    return *view_;
}

struct Window::State : std::enable_shared_from_this<Window::State> {
    explicit State(ViewController& shown) : controller(shown) {}

    ViewController& controller;
    bool isScheduled = false;
    bool hasDisappeared = false;

    void schedule() {
        if (isScheduled) return;
        isScheduled = true;
        platform::current().dispatch->asyncMain([weak = weak_from_this()] {
            const auto state = weak.lock();
            if (state == nullptr) return;
            state->isScheduled = false;
            state->controller.view().layoutIfNeeded();
        });
    }
};

Window::Window(ViewController& controller, double width, const TraitCollection& traits)
    : state_(std::make_shared<State>(controller)) {
    controller.traits_ = checked(traits);
    View& view = controller.view();
    view.removeFromSuperview();
    view.setPlacedByFrame(false);
    View::Root& root = view.root();
    root.surroundings.rootWidth = std::isfinite(width) ? std::max(0.0, width) : 0;
    root.surroundings.traits = controller.traits_;
    root.structureChanged = true;
    root.needsLayout = true;
    root.needsDisplay = true;
    root.needsLayoutBlock = [state = state_.get()] { state->schedule(); };
    root.didLayOutBlock = [state = state_.get()] { state->controller.viewDidLayoutSubviews(); };
    controller.traitCollectionDidChange(nullptr);
    state_->schedule();
}

Window::~Window() {
    View::Root& root = state_->controller.view().root();
    root.needsLayoutBlock = nullptr;
    root.didLayOutBlock = nullptr;
}

void Window::setTraitCollection(const TraitCollection& traits) {
    ViewController& controller = state_->controller;
    const TraitCollection previous = controller.traits_;
    controller.traits_ = checked(traits);
    if (controller.traits_ == previous) return;
    View& view = controller.view();
    View::Root& root = view.root();
    root.surroundings.traits = controller.traits_;
    view.invalidateStructure();
    view.invalidateDisplay();
    controller.traitCollectionDidChange(&previous);
}

void Window::layoutIfNeeded() {
    state_->controller.view().layoutIfNeeded();
}

platform::Size Window::size() {
    layoutIfNeeded();
    const platform::Rect& frame = state_->controller.view().frame();
    const double scale = std::max(1.0, state_->controller.traits_.displayScale);
    return {frame.width, std::min(frame.height, kLargestHeight / scale)};
}

void Window::draw(platform::Canvas& canvas) {
    const platform::Size shown = size();
    const View& view = state_->controller.view();
    const bool isCutOff = view.frame().height > shown.height;
    if (isCutOff) {
        canvas.save();
        canvas.clip({0, 0, shown.width, shown.height}, 0);
    }
    view.draw(canvas);
    if (isCutOff) canvas.restore();
}

platform::Rect Window::takeDirtyRect() {
    const platform::Size shown = size();
    const double scale = state_->controller.traits_.displayScale;
    const platform::Rect dirty = state_->controller.view().takeDirtyRect();
    if (dirty.isEmpty()) return {};
    // A pixel more, for what is drawn between pixels.
    const double left = std::floor(dirty.x * scale - 1) / scale;
    const double top = std::floor(dirty.y * scale - 1) / scale;
    const double right = std::ceil(dirty.maxX() * scale + 1) / scale;
    const double bottom = std::ceil(dirty.maxY() * scale + 1) / scale;
    return platform::Rect{left, top, right - left, bottom - top}.intersection(
        {0, 0, shown.width, shown.height});
}

void Window::draw(platform::Canvas& canvas, const platform::Rect& rect) {
    const platform::Size shown = size();
    const View& view = state_->controller.view();
    const platform::Rect part = rect.intersection({0, 0, shown.width, shown.height});
    if (view.isHidden() || part.isEmpty()) return;
    canvas.save();
    canvas.clip(part, 0);
    view.drawIn(canvas, part);
    canvas.restore();
}

View* Window::tap(platform::Point point) {
    layoutIfNeeded();
    return ui::tap(state_->controller.view(), point);
}

void Window::disappear() {
    if (std::exchange(state_->hasDisappeared, true)) return;
    state_->controller.viewWillDisappear(false);
}

}  // namespace tavrolin::ui

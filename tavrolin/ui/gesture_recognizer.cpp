#include "tavrolin/ui/gesture_recognizer.h"

#include <vector>

#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

namespace {

bool isShownIn(const View& root, const View& view) {
    for (const View* ancestor = &view; ancestor != nullptr; ancestor = ancestor->superview()) {
        if (ancestor->isHidden()) return false;
        if (ancestor == &root) return true;
    }
    return false;
}

bool takesTap(View& view, platform::Point point) {
    if (view.takeTap(point)) return true;
    const auto recognizers = view.gestureRecognizers();  // what they do may add others
    for (const auto& recognizer : recognizers) {
        if (!recognizer->shouldReceiveTouch(point)) continue;
        recognizer->fire(view);
        return true;
    }
    return false;
}

}  // namespace

View* tap(View& root, platform::Point point) {
    std::vector<std::shared_ptr<View>> outwards;  // kept, whatever is removed on the way
    for (View* view = root.hitTest(point); view != nullptr; view = view->superview()) {
        outwards.push_back(view->weak_from_this().lock());
        if (view == &root) break;
    }
    for (const auto& view : outwards) {
        if (view == nullptr || !isShownIn(root, *view)) continue;
        if (takesTap(*view, root.convertPoint(point, *view))) return view.get();
    }
    return nullptr;
}

}  // namespace tavrolin::ui

#include "tavrolin/ui/tree_text.h"

#include <vector>

#include "tavrolin/ui/value_text.h"

namespace tavrolin::ui {

using foundation::Value;

namespace {

bool shows(const View& view, std::string_view text) {
    Value described;
    view.describe(described);
    return foundation::stringOrEmpty(described["text"]) == text;
}

}  // namespace

Value describeTree(const View& root) {
    const platform::Rect& frame = root.frame();
    Value tree = Value::dictionary();
    tree.set("class", root.className());
    tree.set("outlet", root.outlet().empty() ? Value::null() : Value(root.outlet()));
    tree.set("frame", numberList({frame.x, frame.y, frame.width, frame.height}));
    root.describe(tree);
    Value children = Value::array();
    for (const auto& child : root.subviews())
        children.append(describeTree(*child));
    tree.set("children", std::move(children));
    return tree;
}

View* findView(View& root, std::string_view outletOrText) {
    std::vector<View*> inwards;
    if (!root.isHidden()) inwards.push_back(&root);
    for (std::size_t i = 0; i < inwards.size(); ++i) {
        for (const auto& child : inwards[i]->subviews()) {
            if (!child->isHidden()) inwards.push_back(child.get());
        }
    }
    for (View* view : inwards) {
        if (!view->outlet().empty() && view->outlet() == outletOrText) return view;
    }
    for (View* view : inwards) {
        if (!outletOrText.empty() && shows(*view, outletOrText)) return view;
    }
    return nullptr;
}

}  // namespace tavrolin::ui

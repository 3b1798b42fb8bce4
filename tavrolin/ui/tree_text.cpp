#include "tavrolin/ui/tree_text.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "tavrolin/ui/layer.h"

namespace tavrolin::ui {

using foundation::Value;

namespace {

void addGradients(const Layer& layer, Value& list) {
    for (const auto& sublayer : layer.sublayers()) {
        if (const auto* gradient = dynamic_cast<const GradientLayer*>(sublayer.get())) {
            Value colors = Value::array();
            for (const platform::Color& color : gradient->gradient().colors)
                colors.append(hexText(color));
            const platform::Point start = gradient->gradient().start;
            const platform::Point end = gradient->gradient().end;
            list.append(Value::dictionary({{"colors", colors},
                                           {"start", numberList({start.x, start.y})},
                                           {"end", numberList({end.x, end.y})}}));
        }
        addGradients(*sublayer, list);
    }
}

bool shows(const View& view, std::string_view text) {
    Value described;
    view.describe(described);
    return foundation::stringOrEmpty(described["text"]) == text;
}

}  // namespace

void View::describe(Value& dictionary) const {
    const UserInterfaceStyle style = traitCollection().userInterfaceStyle;
    Value gradients = Value::array();
    addGradients(layer_, gradients);
    dictionary.set("hidden", isHidden_);
    dictionary.set("alpha", numberValue(presentAlpha()));
    dictionary.set("tag", tag_);
    dictionary.set("backgroundColor", hexValue(backgroundColor_, style));
    dictionary.set("gradients", gradients);
    dictionary.set("cornerRadius", numberValue(cornerRadius_));
}

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

Value numberValue(double number) {
    constexpr double kLargest = 1e15;  // of which every thousandth is still exact enough
    if (!std::isfinite(number) || std::abs(number) > kLargest) return 0;
    const double rounded = std::round(number * 1000) / 1000;
    if (rounded == std::trunc(rounded)) return static_cast<std::int64_t>(rounded);
    return rounded;
}

Value numberList(std::initializer_list<double> numbers) {
    Value list = Value::arrayWithCapacity(numbers.size());
    for (const double number : numbers)
        list.append(numberValue(number));
    return list;
}

std::string hexText(const platform::Color& color) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text = "#";
    for (const double component : {color.red, color.green, color.blue, color.alpha}) {
        const double within = component > 0 ? std::min(component, 1.0) : 0;  // not a number: 0
        const auto byte = static_cast<unsigned>(std::lround(within * 255));
        text += {kDigits[byte >> 4U], kDigits[byte & 15U]};
    }
    return text;
}

Value hexValue(const std::optional<DynamicColor>& color, UserInterfaceStyle style) {
    return color ? Value(hexText(color->resolved(style))) : Value::null();
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

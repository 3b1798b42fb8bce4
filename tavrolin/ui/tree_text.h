#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/traits.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// A tree of dictionaries: "class", "outlet" (null without one), "frame" [x, y, width, height] in
/// the parent, "hidden", "alpha", "tag", "backgroundColor", "gradients" [{"colors", "start",
/// "end"}], "cornerRadius", what the class adds to that, and "children". As it is at this moment of
/// the clock; hidden views are there too. Numbers are rounded to thousandths.
foundation::Value describeTree(const View& root);

/// "#RRGGBBAA".
std::string hexText(const platform::Color& color);
/// The same; null for none.
foundation::Value hexValue(const std::optional<DynamicColor>& color, UserInterfaceStyle style);

/// Rounded to thousandths, whole ones as integers.
foundation::Value numberValue(double number);
foundation::Value numberList(std::initializer_list<double> numbers);

/// The first view with that outlet or else that shows this text, from the outside in; null when
/// there is none. Hidden ones don't count.
View* findView(View& root, std::string_view outletOrText);

}  // namespace tavrolin::ui

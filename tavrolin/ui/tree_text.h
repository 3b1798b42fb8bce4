#pragma once

#include <string_view>

#include "tavrolin/foundation/value.h"
#include "tavrolin/ui/value_text.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

/// A tree of dictionaries: "class", "outlet" (null without one), "frame" [x, y, width, height] in
/// the parent, "hidden", "alpha", "tag", "backgroundColor", "gradients" [{"colors", "start",
/// "end"}], "cornerRadius", what the class adds to that, and "children". As it is at this moment of
/// the clock; hidden views are there too. Numbers are rounded to thousandths.
foundation::Value describeTree(const View& root);

/// The first view with that outlet or else that shows this text, from the outside in; null when
/// there is none. Hidden ones don't count.
View* findView(View& root, std::string_view outletOrText);

}  // namespace tavrolin::ui

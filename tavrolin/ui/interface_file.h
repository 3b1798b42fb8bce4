#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/ui/layout_constraint.h"
#include "tavrolin/ui/view.h"

namespace tavrolin::ui {

// Interface files are JSON, one object, in UTF-8, at most 1 MB, 64 levels, 2,000 views and 10,000
// constraints:
//
//     {"root": {"class": "CVNLayout01", "backgroundColor": "#FFFFFF",
//               "subviews": [{"class": "StackView", "id": "column", "axis": "vertical",
//                             "arranged": [{"class": "Label", "outlet": "title", "fontSize": 15},
//                                          {"class": "View", "outlet": "mediaContainer"}]}]},
//      "constraints": ["column.leading = self.leading + 16",
//                      "title.width <= 0.5 * self.width - 8 @750",
//                      {"outlet": "mediaHeight", "constraint": "mediaContainer.height = 0",
//                       "active": false}]}
//
// A view has a class (of this room, or one that is registered with the ClassRegistry<View>),
// "subviews", in a stack view also "arranged", "outlet" or "id" (unique in the file), "onTap" (the
// name of an operation that the root offers: taps lead there), and the properties of its class:
//
// - View: hidden, alpha, tag, backgroundColor, cornerRadius, borderWidth, borderColor,
//   clipsToBounds, userInteractionEnabled, semanticContentAttribute ("unspecified",
//   "forceLeftToRight", "forceRightToLeft"), hugging and compressionResistance ([horizontal,
//   vertical]); what the others have, their headers say.
// - Colours are "#RRGGBB", "#RRGGBBAA", {"light": …, "dark": …}, "clear", or a name of the palette.
//   Modes and the like go by the names that the code has for them.
// - In constraints `self` is the root; an item is an outlet, an id or `self`, and an attribute
//   (left, right, leading, trailing, top, bottom, width, height, centerX, centerY). `superview` is
//   the first item's. "@" gives the priority.
//
// Whatever is wrong in a file (an unknown class, property, outlet or item included) makes it a
// broken one: none of it is used. An asset that is missing is no fault: there is no picture then.

class InterfaceFile;

/// What the root of an interface file wants to be connected to.
class Connections {
public:
    /// A view of the file, of that class or one derived from it.
    template <class T>
    void view(std::string_view outlet, T*& field) {
        field = dynamic_cast<T*>(find(outlet));
        if (field == nullptr) missing(outlet);
    }
    void constraint(std::string_view outlet, LayoutConstraint*& field);
    /// What actions and "onTap" of that name lead to.
    void action(std::string_view name, std::function<void(View& sender)> action);

private:
    friend class InterfaceFile;
    explicit Connections(InterfaceFile& file) : file_(file) {}
    View* find(std::string_view outlet) const;
    [[noreturn]] static void missing(std::string_view outlet);

    InterfaceFile& file_;
};

/// Makes the tree that the file "NAME.json" of the bundle describes, and connects its root. Raises
/// `foundation::Exception`, with the file's name and what is wrong where, when there is no such
/// file or it is a broken one.
std::shared_ptr<View> loadInterfaceFile(std::string_view name, const platform::Bundle& bundle);

}  // namespace tavrolin::ui

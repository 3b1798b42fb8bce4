#include "tavrolin/ui/interface_file.h"

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/constraint_text.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/property_values.h"
#include "tavrolin/ui/scroll_view.h"
#include "tavrolin/ui/stack_view.h"

namespace tavrolin::ui {

using foundation::Exception;
using foundation::Value;

namespace {

constexpr std::size_t kMostBytes = 1'000'000;
constexpr int kMostLevels = 64;
constexpr std::size_t kMostViews = 2'000;
constexpr std::size_t kMostConstraints = 10'000;

[[noreturn]] void raise(std::string reason) {
    Exception::raise(Exception::kInvalidArgument, std::move(reason));
}

std::string quoted(std::string_view text) {
    return "\"" + std::string(text) + "\"";
}

template <class T>
std::shared_ptr<View> makeView() {
    return std::make_shared<T>();
}

std::shared_ptr<View> viewOfClass(std::string_view name) {
    using Make = std::shared_ptr<View> (*)();
    static constexpr std::pair<std::string_view, Make> kOwn[] = {
        {"View", makeView<View>},
        {"Label", makeView<Label>},
        {"Button", makeView<Button>},
        {"ImageView", makeView<ImageView>},
        {"StackView", makeView<StackView>},
        {"ScrollView", makeView<ScrollView>},
        {"Slider", makeView<Slider>},
        {"ProgressView", makeView<ProgressView>},
        {"PageControl", makeView<PageControl>},
    };
    for (const auto& [own, make] : kOwn) {
        if (own == name) return make();
    }
    return foundation::ClassRegistry<View>::makeInstance(name);
}

// Puts the place in front of what an operation complains about.
template <class Body>
void at(const std::string& place, Body body) {
    try {
        body();
    } catch (const Exception& exception) {
        raise(place + ": " + exception.reason());
    }
}

}  // namespace

/// A file while it is made into a tree.
class InterfaceFile {
public:
    explicit InterfaceFile(const Value& contents) {
        if (!contents.isDictionary()) raise("an object expected");
        for (const auto& [key, value] : contents.entries()) {
            if (key.string() != "root" && key.string() != "constraints") {
                raise("unknown key " + quoted(key.string()));
            }
        }
        root_ = view(contents["root"], "root", 0);
        constraints(contents["constraints"]);
        connect();
    }

    std::shared_ptr<View> root() const { return root_; }

private:
    friend class Connections;

    struct Tap {
        View* view = nullptr;
        std::string operation;
        std::string place;
    };

    std::shared_ptr<View> view(const Value& description, const std::string& place, int level) {
        if (!description.isDictionary()) raise(place + ": an object expected");
        if (level >= kMostLevels) raise(place + ": more than 64 levels");
        if (++viewCount_ > kMostViews) raise(place + ": more than 2,000 views");
        const std::string_view className = foundation::stringOrEmpty(description["class"]);
        std::shared_ptr<View> made = viewOfClass(className);
        if (made == nullptr) raise(place + ": unknown class " + quoted(className));
        for (const auto& [key, value] : description.entries())
            entry(*made, key.string(), value, place, level);
        if (auto* control = dynamic_cast<Control*>(made.get())) {
            if (!control->actionName().empty()) {
                taps_.push_back({control, control->actionName(), place + ".action"});
            }
        }
        return made;
    }

    void entry(View& made, std::string_view key, const Value& value, const std::string& place,
               int level) {
        const std::string here = place + "." + std::string(key);
        if (key == "class") return;
        if (key == "subviews" || key == "arranged") {
            children(made, key == "arranged", value, here, level);
        } else if (key == "outlet" || key == "id") {
            name(made, key == "outlet", value, here);
        } else if (key == "onTap") {
            at(here, [&] { taps_.push_back({&made, std::string(property::text(value)), here}); });
        } else {
            bool isKnown = false;
            at(here, [&] { isKnown = made.setProperty(key, value); });
            if (!isKnown) {
                raise(place + ": " + std::string(made.className()) + " has no property " +
                      quoted(key));
            }
        }
    }

    void children(View& made, bool areArranged, const Value& list, const std::string& place,
                  int level) {
        auto* stack = dynamic_cast<StackView*>(&made);
        if (areArranged && stack == nullptr) raise(place + ": only a StackView has these");
        if (!list.isArray()) raise(place + ": an array expected");
        std::size_t index = 0;
        for (const Value& child : list.items()) {
            auto subview = view(child, place + "[" + std::to_string(index++) + "]", level + 1);
            if (areArranged) {
                stack->addArrangedSubview(std::move(subview));
            } else {
                made.addSubview(std::move(subview));
            }
        }
    }

    void name(View& made, bool isOutlet, const Value& value, const std::string& place) {
        const std::string_view text = foundation::stringOrEmpty(value);
        if (text.empty()) raise(place + ": a name expected");
        if (text == "self" || text == "superview" ||
            !views_.emplace(std::string(text), &made).second) {
            raise(place + ": the name " + quoted(text) + " is taken");
        }
        if (isOutlet) made.setOutlet(text);
    }

    void constraints(const Value& list) {
        if (list.isNil()) return;
        if (!list.isArray()) raise("constraints: an array expected");
        if (list.count() > kMostConstraints) raise("constraints: more than 10,000");
        std::size_t index = 0;
        for (const Value& item : list.items()) {
            at("constraints[" + std::to_string(index++) + "]", [&] { constraint(item); });
        }
    }

    void constraint(const Value& item) {
        if (item.isString()) {
            constraintWithText(item.string())->setActive(true);
            return;
        }
        if (!item.isDictionary()) property::refuse("a constraint", item);
        bool isActive = true;
        std::string_view outlet;
        for (const auto& [key, value] : item.entries()) {
            if (key.string() == "active") {
                isActive = property::boolean(value);
            } else if (key.string() == "outlet") {
                outlet = property::text(value);
            } else if (key.string() != "constraint") {
                raise("unknown key " + quoted(key.string()));
            }
        }
        const auto made = constraintWithText(property::text(item["constraint"]));
        if (!outlet.empty() && !constraints_.emplace(std::string(outlet), made.get()).second) {
            raise("the outlet " + quoted(outlet) + " is taken");
        }
        made->isKept_ = true;
        made->setActive(true);
        made->setActive(isActive);
    }

    std::shared_ptr<LayoutConstraint> constraintWithText(std::string_view text) {
        ConstraintText parsed;
        at(quoted(text), [&] { parsed = ConstraintText::parse(text); });
        View& first = item(parsed.firstItem, nullptr, text);
        View* second = parsed.secondItem.empty() ? nullptr : &item(parsed.secondItem, &first, text);
        return LayoutConstraint::make(first, parsed.firstAttribute, parsed.relation, second,
                                      parsed.secondAttribute, parsed.multiplier, parsed.constant,
                                      parsed.priority);
    }

    View& item(std::string_view name, const View* first, std::string_view text) {
        if (name == "self") return *root_;
        if (name == "superview" && first != nullptr && first->superview() != nullptr) {
            return *first->superview();
        }
        const auto found = views_.find(name);
        if (found == views_.end()) raise(quoted(text) + ": unknown item " + quoted(name));
        return *found->second;
    }

    void connect() {
        Connections connections(*this);
        root_->connect(connections);
        for (const Tap& tap : taps_) {
            const auto operation = operations_.find(tap.operation);
            if (operation == operations_.end()) {
                raise(tap.place + ": unknown operation " + quoted(tap.operation));
            }
            if (auto* control = dynamic_cast<Control*>(tap.view)) {
                control->setAction(operation->second);
            } else {
                tap.view->setUserInteractionEnabled(true);
                tap.view->addGestureRecognizer(
                    std::make_shared<TapGestureRecognizer>(operation->second));
            }
        }
    }

    std::shared_ptr<View> root_;
    std::map<std::string, View*, std::less<>> views_;
    std::map<std::string, LayoutConstraint*, std::less<>> constraints_;
    std::map<std::string, std::function<void(View&)>, std::less<>> operations_;
    std::vector<Tap> taps_;
    std::size_t viewCount_ = 0;
};

void Connections::constraint(std::string_view outlet, LayoutConstraint*& field) {
    const auto found = file_.constraints_.find(outlet);
    if (found == file_.constraints_.end()) missing(outlet);
    field = found->second;
}

void Connections::action(std::string_view name, std::function<void(View& sender)> action) {
    file_.operations_.insert_or_assign(std::string(name), std::move(action));
}

View* Connections::find(std::string_view outlet) const {
    const auto found = file_.views_.find(outlet);
    return found == file_.views_.end() ? nullptr : found->second;
}

void Connections::missing(std::string_view outlet) {
    raise("the outlet " + quoted(outlet) + " is missing or of another class");
}

std::shared_ptr<View> loadInterfaceFile(std::string_view name, const platform::Bundle& bundle) {
    std::shared_ptr<View> root;
    at(std::string(name) + ".json", [&] {
        const auto path = bundle.pathForResource(name, "json");
        if (!path) raise("there is no such interface file");
        const auto bytes = platform::current().files->contents(*path);
        if (!bytes) raise(bytes.error().localizedDescription);
        if (bytes->size() > kMostBytes) raise("more than 1 MB");
        const std::string_view text(reinterpret_cast<const char*>(bytes->data()), bytes->size());
        const auto contents = platform::current().json->parse(text);
        if (!contents) raise(contents.error().localizedDescription);
        root = InterfaceFile(*contents).root();
    });
    root->awakeFromNib();
    return root;
}

}  // namespace tavrolin::ui

#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/ui/constraint_text.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/stack_view.h"
#include "tavrolin/ui/window.h"
#include "tests/support/outlets.h"

namespace tavrolin::ui {

inline void PrintTo(const View* view, std::ostream* out) {
    *out << (view == nullptr ? std::string("no view") : "view " + view->outlet());
}

}  // namespace tavrolin::ui

namespace tavrolin::platform {

inline void PrintTo(const Rect& rect, std::ostream* out) {
    *out << rect.x << "," << rect.y << " " << rect.width << "x" << rect.height;
}

}  // namespace tavrolin::platform

namespace tavrolin::tests {

/// A tree in memory: a root of 300 points with views "a", "b", … at most one level deep, unless a
/// test makes it deeper.
class UITest : public testing::Test {
protected:
    UITest() { platform::install(memory.platform()); }

    class Controller : public ui::ViewController {
    public:
        std::shared_ptr<ui::View> root = std::make_shared<ui::View>();
        std::vector<std::string> calls;
        void viewDidLoad() override { calls.emplace_back("viewDidLoad"); }
        void viewDidLayoutSubviews() override { calls.emplace_back("viewDidLayoutSubviews"); }
        void viewWillDisappear(bool) override { calls.emplace_back("viewWillDisappear"); }
        void traitCollectionDidChange(const ui::TraitCollection* previous) override {
            calls.emplace_back(previous == nullptr ? "traits at first" : "traits changed");
        }

    protected:
        std::shared_ptr<ui::View> loadView() override { return root; }
    };

    template <class T = ui::View>
    std::shared_ptr<T> add(std::string_view name, ui::View& to) {
        auto view = std::make_shared<T>();
        view->setOutlet(name);
        to.addSubview(view);
        return view;
    }

    std::shared_ptr<ui::Label> label(std::string_view text, int lines = 1) {
        auto made = std::make_shared<ui::Label>();
        made->setFont(platform::Font::systemFontOfSize(10));  // 5 wide, 12 high
        made->setNumberOfLines(lines);
        made->setText(text);
        return made;
    }

    /// Activates a constraint between views of the tree, by their outlets.
    std::shared_ptr<ui::LayoutConstraint> constrain(ui::View& root, std::string_view text) {
        const auto parsed = ui::ConstraintText::parse(text);
        const auto find = [&](std::string_view name) {
            return name == "self" ? &root : name.empty() ? nullptr : outlet(root, name);
        };
        auto made = ui::LayoutConstraint::make(*find(parsed.firstItem), parsed.firstAttribute,
                                               parsed.relation, find(parsed.secondItem),
                                               parsed.secondAttribute, parsed.multiplier,
                                               parsed.constant, parsed.priority);
        made->setActive(true);
        return made;
    }

    adapters::memory::MemoryPlatform& memory = *new adapters::memory::MemoryPlatform;
};

}  // namespace tavrolin::tests

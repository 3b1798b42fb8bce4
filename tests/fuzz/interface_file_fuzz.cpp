#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "adapters/memory/memory_platform.h"
#include "adapters/memory/recording_canvas.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/ui/constraint_text.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/interface_file.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/tree_text.h"
#include "tavrolin/ui/window.h"

namespace {

using tavrolin::adapters::memory::MemoryPlatform;
using tavrolin::adapters::memory::RecordingCanvas;
using tavrolin::foundation::Exception;
namespace ui = tavrolin::ui;

void require(bool condition) {
    if (!condition) std::abort();
}

// An item is a name of the text, and every number is one. Nothing when it is no constraint.
std::optional<ui::ConstraintText> parsedConstraint(std::string_view text) {
    try {
        const auto parsed = ui::ConstraintText::parse(text);
        require(!parsed.firstItem.empty() && parsed.firstAttribute != ui::LayoutAttribute::none);
        require(parsed.secondItem.empty() == (parsed.secondAttribute == ui::LayoutAttribute::none));
        require(std::isfinite(parsed.multiplier) && std::isfinite(parsed.constant));
        require(parsed.priority > 0 && parsed.priority <= ui::priority::required);
        return parsed;
    } catch (const Exception& exception) {
        require(exception.reason().starts_with("column "));
        return std::nullopt;
    }
}

void requireFrames(const ui::View& view) {
    const auto& frame = view.frame();
    require(std::isfinite(frame.x) && std::isfinite(frame.y));
    require(frame.width >= 0 && std::isfinite(frame.width));
    require(frame.height >= 0 && std::isfinite(frame.height));
    for (const auto& each : view.subviews())
        requireFrames(*each);
}

class Controller final : public ui::ViewController {
public:
    explicit Controller(std::shared_ptr<ui::View> root) : root_(std::move(root)) {}

protected:
    std::shared_ptr<ui::View> loadView() override { return root_; }

private:
    std::shared_ptr<ui::View> root_;
};

// What loads can be laid out, drawn, printed and touched.
void show(const std::shared_ptr<ui::View>& root) {
    Controller controller(root);
    ui::Window window(controller, 320, {});
    window.layoutIfNeeded();
    requireFrames(*root);
    RecordingCanvas canvas;
    root->draw(canvas);
    require(canvas.isBalanced());
    const auto tree = ui::describeTree(*root);
    require(tree["children"].count() == root->subviews().size());
    ui::tap(*root, {160, 10});
}

void load(MemoryPlatform& memory, std::string_view text) {
    const auto& bundle = memory.bundles.libraryBundle;
    memory.files.write(*bundle.pathForResource("File", "json"), text);
    std::shared_ptr<ui::View> root;
    try {
        root = ui::loadInterfaceFile("File", bundle);
    } catch (const Exception& exception) {
        require(exception.reason().starts_with("File.json: "));
        return;
    }
    show(root);
}

// A small tree under the constraints of the lines.
void solve(std::string_view text) {
    auto root = std::make_shared<ui::View>();
    auto box = std::make_shared<ui::View>();
    auto label = std::make_shared<ui::Label>();
    auto inner = std::make_shared<ui::View>();
    label->setText("some words to wrap");
    label->setNumberOfLines(0);
    root->addSubview(box);
    root->addSubview(label);
    box->addSubview(inner);
    const auto item = [&](std::string_view name) -> ui::View* {
        const std::pair<std::string_view, ui::View*> items[] = {
            {"self", root.get()}, {"a", box.get()}, {"b", label.get()}, {"c", inner.get()}};
        for (const auto& [known, view] : items) {
            if (name == known) return view;
        }
        return nullptr;
    };
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const auto parsed = parsedConstraint(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        ui::View* first = parsed ? item(parsed->firstItem) : nullptr;
        if (first == nullptr) continue;
        ui::LayoutConstraint::make(*first, parsed->firstAttribute, parsed->relation,
                                   item(parsed->secondItem), parsed->secondAttribute,
                                   parsed->multiplier, parsed->constant, parsed->priority)
            ->setActive(true);
    }
    show(root);
}

MemoryPlatform& installed() {
    auto& memory = *new MemoryPlatform;
    memory.bundles.libraryBundle.setResource("File", "json", {});
    tavrolin::platform::install(memory.platform());
    return memory;
}

}  // namespace

// A file, or constraints line by line.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static MemoryPlatform& memory = installed();
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    if (text.starts_with('{')) {
        load(memory, text);
    } else {
        solve(text.substr(0, 4'000));
    }
    memory.dispatch.runUntilIdle();
    return 0;
}

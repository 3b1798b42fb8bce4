// What a pass of layout costs: a notification of 25 views and 120 constraints, set up anew, with
// one constant or one text changed, and with nothing to do; beside the setting of its texts alone.

#include <memory>
#include <string>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "adapters/memory/recording_canvas.h"
#include "benchmarks/ratios.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/window.h"

namespace tavrolin {
namespace {

using ui::LayoutAttribute;
using ui::LayoutConstraint;
using ui::LayoutRelation;
using ui::View;

constexpr int kCards = 6;  // of four views each

class Controller : public ui::ViewController {
public:
    std::shared_ptr<View> root = std::make_shared<View>();
    std::vector<std::shared_ptr<ui::Label>> labels;
    std::shared_ptr<LayoutConstraint> pictureHeight;
    std::vector<std::shared_ptr<LayoutConstraint>> constraints;

    Controller() {
        View* above = nullptr;
        for (int i = 0; i < kCards; ++i)
            above = &addCard(above);
        pin(*above, LayoutAttribute::bottom, *root, -16);
    }

protected:
    std::shared_ptr<View> loadView() override { return root; }

private:
    void keep(std::shared_ptr<LayoutConstraint> constraint) {
        constraint->setActive(true);
        constraints.push_back(std::move(constraint));
    }
    void pin(View& view, LayoutAttribute attribute, View& to, double constant,
             LayoutRelation relation = LayoutRelation::equal) {
        keep(LayoutConstraint::make(view, attribute, relation, &to, attribute, 1, constant));
    }

    // A picture at the left of two texts, 20 constraints.
    View& addCard(View* above) {
        using enum LayoutAttribute;
        const auto card = std::make_shared<View>();
        const auto picture = std::make_shared<View>();
        root->addSubview(card);
        card->addSubview(picture);
        pin(*card, leading, *root, 16);
        pin(*card, trailing, *root, -16);
        if (above == nullptr) {
            pin(*card, top, *root, 16);
        } else {
            keep(LayoutConstraint::make(*card, top, LayoutRelation::equal, above, bottom, 1, 8));
        }
        pin(*picture, leading, *card, 8);
        pin(*picture, centerY, *card, 0);
        pin(*picture, top, *card, 8, LayoutRelation::greaterThanOrEqual);
        pin(*picture, bottom, *card, -8, LayoutRelation::lessThanOrEqual);
        keep(LayoutConstraint::make(*picture, width, LayoutRelation::equal, card.get(), width,
                                    0.25));
        pictureHeight =
            LayoutConstraint::make(*picture, LayoutAttribute::height, LayoutRelation::equal, 48);
        keep(pictureHeight);
        keep(LayoutConstraint::make(*card, LayoutAttribute::height,
                                    LayoutRelation::greaterThanOrEqual, 40));
        ui::Label* title = nullptr;
        for (const char* text : {"A title of a few words",
                                 "And a text below it that needs two lines "
                                 "or three where it stands"}) {
            const auto label = std::make_shared<ui::Label>();
            labels.push_back(label);
            label->setNumberOfLines(title == nullptr ? 1 : 0);
            label->setText(text);
            card->addSubview(label);
            keep(LayoutConstraint::make(*label, leading, LayoutRelation::equal, picture.get(),
                                        trailing, 1, 12));
            pin(*label, trailing, *card, -12);
            if (title == nullptr) {
                pin(*label, top, *card, 8);
                title = label.get();
                pin(*label, bottom, *card, -8, LayoutRelation::lessThanOrEqual);
                keep(LayoutConstraint::make(*label, width, LayoutRelation::greaterThanOrEqual, 20));
            } else {
                keep(LayoutConstraint::make(*label, top, LayoutRelation::equal, title, bottom, 1,
                                            4));
                pin(*label, bottom, *card, -8);
                keep(LayoutConstraint::make(*label, width, LayoutRelation::equal, title, width));
            }
        }
        return *card;
    }
};

struct Shown {
    Controller controller;
    ui::Window window{controller, 375, {}};
};

void textsAlone(benchmark::State& state) {
    Shown shown;
    shown.window.layoutIfNeeded();
    int turn = 0;
    for (auto _ : state) {
        ui::Label& label = *shown.controller.labels.back();
        label.setText("00:00:0" + std::to_string(++turn % 10));
        benchmark::DoNotOptimize(label.intrinsicContentSize(platform::kUnlimitedWidth));
    }
}
BENCHMARK(textsAlone);

void setUpAnew(benchmark::State& state) {
    Shown shown;
    shown.window.layoutIfNeeded();
    LayoutConstraint& constraint = *shown.controller.constraints.front();
    for (auto _ : state) {
        constraint.setActive(false);
        constraint.setActive(true);
        shown.window.layoutIfNeeded();
    }
    state.counters["constraints"] = static_cast<double>(shown.controller.constraints.size());
}
BENCHMARK(setUpAnew);

void anotherConstant(benchmark::State& state) {
    Shown shown;
    double height = 48;
    for (auto _ : state) {
        height = height < 90 ? height + 1 : 48;
        shown.controller.pictureHeight->setConstant(height);
        shown.window.layoutIfNeeded();
    }
}
BENCHMARK(anotherConstant);

// As a timer does each second, its width another one each time.
void anotherText(benchmark::State& state) {
    Shown shown;
    int turn = 0;
    for (auto _ : state) {
        shown.controller.labels.back()->setText(++turn % 2 == 0 ? "00:00:11" : "00:00:1");
        shown.window.layoutIfNeeded();
    }
}
BENCHMARK(anotherText);

void nothingToDo(benchmark::State& state) {
    Shown shown;
    for (auto _ : state) {
        shown.controller.root->setNeedsLayout();
        shown.window.layoutIfNeeded();
        shown.controller.labels.back()->setNeedsLayout();
    }
}
BENCHMARK(nothingToDo);

void drawing(benchmark::State& state) {
    Shown shown;
    for (auto _ : state) {
        adapters::memory::RecordingCanvas canvas;
        shown.window.draw(canvas);
        benchmark::DoNotOptimize(canvas.lines().data());
    }
}
BENCHMARK(drawing);

}  // namespace
}  // namespace tavrolin

int main(int argc, char** argv) {
    using namespace tavrolin;
    adapters::memory::MemoryPlatform memory;
    platform::install(memory.platform());
    return benchmarks::runWithRatios(argc, argv,
                                     {{"anotherConstant", "setUpAnew", 0.3},
                                      {"anotherText", "setUpAnew", 0.6},
                                      {"nothingToDo", "setUpAnew", 0.1}});
}

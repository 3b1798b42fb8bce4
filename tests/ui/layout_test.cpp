#include <cmath>
#include <functional>
#include <limits>

#include "adapters/memory/recording_canvas.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/scroll_view.h"
#include "tests/ui/ui_test.h"

namespace tavrolin::tests {
namespace {

using platform::Rect;
using ui::View;

class LayoutTest : public UITest {
protected:
    struct Case {
        std::string name;
        std::vector<std::string> constraints;
        std::vector<std::pair<std::string, Rect>> frames;
    };
};

// A root of 300 by 200 that holds a and b; b holds c.
TEST_F(LayoutTest, ConstraintsPlaceViews) {
    const std::vector<Case> cases = {
        {"edges",
         {"a.left = self.left + 10", "a.right = self.right - 20", "a.top = self.top + 5",
          "a.bottom = self.bottom"},
         {{"a", {10, 5, 270, 195}}}},
        {"centre and size",
         {"a.width = 100", "a.height = 50", "a.centerX = self.centerX", "a.centerY = self.centerY"},
         {{"a", {100, 75, 100, 50}}}},
        {"shape",
         {"a.width = self.width / 2", "a.height = 0.5 * a.width"},
         {{"a", {0, 0, 150, 75}}}},
        {"of two priorities the higher one counts, whatever comes first",
         {"a.width = 100 @200", "a.width = 120 @300", "a.width = 140 @100"},
         {{"a", {0, 0, 120, 0}}}},
        {"a wish that can't be had is come near to",
         {"a.width = 400 @500", "a.width <= self.width - 50"},
         {{"a", {0, 0, 250, 0}}}},
        {"a required one that contradicts those before it is passed over",
         {"a.width = 100", "a.height = 10", "a.width = 200", "b.width = a.width"},
         {{"a", {0, 0, 100, 10}}, {"b", {0, 0, 100, 0}}}},
        {"no side is below 0",
         {"a.width = 0 - 50", "b.left = self.left + 200", "b.right = self.right - 150"},
         {{"a", {0, 0, 0, 0}}, {"b", {200, 0, 0, 0}}}},
        {"beyond",
         {"a.top = self.top", "a.width = 80", "a.height = 20", "b.top >= a.bottom + 8",
          "b.top = self.top @10", "b.width >= 30", "b.width = 0 @100"},
         {{"b", {0, 28, 30, 0}}}},
        {"across the tree",
         {"b.left = self.left + 50", "b.width = 100", "b.top = self.top + 50", "b.height = 60",
          "a.left = self.left", "a.top = self.top", "a.height = 10", "a.right = c.right",
          "c.left = b.left + 5", "c.width = 30", "c.centerY = 0.5 * b.centerY", "c.height = 10"},
         {{"a", {0, 0, 85, 10}}, {"c", {5, 10, 30, 10}}}},
        {"later definitions of earlier places",
         {"a.left = b.right + 8", "b.right = c.right", "c.right = self.right - 100",
          "a.right = self.right", "b.width = 40", "c.width = 10"},
         {{"a", {208, 0, 92, 0}}, {"b", {160, 0, 40, 0}}, {"c", {30, 0, 10, 0}}}},
        {"on the pixels",
         {"a.left = self.left + 0.3", "a.width = 10.3", "a.top = self.top + 0.25",
          "b.left = a.right", "b.width = 10.3", "b.top = self.top", "a.height = 1"},
         {{"a", {0.5, 0.5, 10, 1}}, {"b", {10.5, 0, 10.5, 0}}}},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.name);
        const auto held = std::make_shared<View>();
        View& root = *held;
        root.setFrame({0, 0, 300, 200});
        add("a", root);
        add("c", *add("b", root));
        for (const std::string& text : each.constraints)
            constrain(root, text);
        root.layoutIfNeeded();
        for (const auto& [name, frame] : each.frames)
            EXPECT_EQ(outlet(root, name)->frame(), frame) << name;
    }
}

TEST_F(LayoutTest, ChangedConstantsAndActivityAreTakenUp) {
    const auto held = std::make_shared<View>();
    View& root = *held;
    root.setFrame({0, 0, 300, 200});
    add("a", root);
    add("b", root);
    constrain(root, "a.left = self.left");
    const auto height = constrain(root, "a.height = 10");
    const auto width = constrain(root, "a.width = 50 @900");
    constrain(root, "a.width <= 100");
    constrain(root, "b.top = a.bottom");
    const auto& a = *outlet(root, "a");
    const auto expect = [&](double w, double h, double top) {
        root.layoutIfNeeded();
        EXPECT_EQ(a.frame(), (Rect{0, 0, w, h}));
        EXPECT_EQ(outlet(root, "b")->frame().y, top);
    };
    expect(50, 10, 10);
    for (const double constant : {20.0, 30.0, 0.0, 25.0}) {
        height->setConstant(constant);
        expect(50, constant, constant);
    }
    // From a goal that is reached to one that is not, and back.
    for (const double constant : {60.0, 90.0, 150.0, 120.0, 80.0, 0.0, -5.0, 70.0}) {
        width->setConstant(constant);
        expect(std::clamp(constant, 0.0, 100.0), 25, 25);
    }
    height->setActive(false);
    width->setActive(false);
    expect(0, 0, 0);
    height->setActive(true);
    expect(0, 25, 25);
}

TEST_F(LayoutTest, LeadingIsOnTheRightWhereTextRunsFromThere) {
    const auto held = std::make_shared<View>();
    View& root = *held;
    root.setFrame({0, 0, 300, 200});
    auto a = add("a", root);
    auto row = add<ui::StackView>("row", root);
    row->addArrangedSubview(label("one"));
    row->addArrangedSubview(label("three"));
    constrain(root, "a.leading = self.leading + 10");
    constrain(root, "a.width = 50");
    constrain(root, "row.leading = self.leading");
    root.layoutIfNeeded();
    EXPECT_EQ(a->frame().x, 10);
    EXPECT_EQ(row->subviews()[1]->frame().x, 15);
    root.setSemanticContentAttribute(ui::SemanticContentAttribute::forceRightToLeft);
    root.layoutIfNeeded();
    EXPECT_EQ(a->frame().x, 240);
    EXPECT_EQ(row->frame().x, 260);
    EXPECT_EQ(row->subviews()[0]->frame().x, 25);
    EXPECT_EQ(row->subviews()[1]->frame().x, 0);
}

TEST_F(LayoutTest, StackViewsLineUpWhatIsShown) {
    auto column = std::make_shared<ui::StackView>();
    column->setAxis(ui::Axis::vertical);
    column->setSpacing(8);
    column->setMargins({4, 10, 6, 20});
    std::vector<std::shared_ptr<ui::Label>> labels;
    for (const char* text : {"first", "second", "third"})
        column->addArrangedSubview(labels.emplace_back(label(text)));
    const auto heights = [&] {
        column->layoutIfNeeded();
        std::vector<double> tops;
        for (const auto& each : labels)
            tops.push_back(each->frame().y);
        tops.push_back(column->frame().height);
        return tops;
    };
    using testing::ElementsAre;
    EXPECT_THAT(heights(), ElementsAre(4, 24, 44, 62));
    EXPECT_EQ(labels[1]->frame(), (Rect{10, 24, 30, 12}));
    labels[1]->setHidden(true);
    EXPECT_THAT(heights(), ElementsAre(4, 0, 24, 42));
    labels[0]->setHidden(true);
    labels[2]->setHidden(true);
    EXPECT_EQ(heights().back(), 10);
    labels[1]->setHidden(false);
    EXPECT_THAT(heights(), ElementsAre(0, 4, 0, 22));
    labels[0]->setHidden(false);
    labels[1]->removeFromSuperview();
    EXPECT_EQ(heights().back(), 22);
    EXPECT_EQ(column->arrangedSubviews().size(), 2U);
    for (const auto& [alignment, x] :
         {std::pair{ui::StackAlignment::leading, 10.0}, std::pair{ui::StackAlignment::center, 47.5},
          std::pair{ui::StackAlignment::trailing, 85.0}}) {
        column->setFrame({0, 0, 130, 22});
        column->setAlignment(alignment);
        column->layoutIfNeeded();
        EXPECT_EQ(labels[0]->frame(), (Rect{x, 4, 25, 12}));
    }
}

TEST_F(LayoutTest, RowsShareTheirWidth) {
    const auto held = std::make_shared<ui::StackView>();
    ui::StackView& row = *held;
    row.setFrame({0, 0, 200, 20});
    row.setSpacing(10);
    std::vector<std::shared_ptr<ui::Label>> labels;
    for (const char* text : {"ab", "abcd", "abcdefgh"})
        row.addArrangedSubview(labels.emplace_back(label(text)));
    const auto widths = [&] {
        row.layoutIfNeeded();
        std::vector<double> all;
        for (const auto& each : labels)
            all.push_back(each->frame().width);
        return all;
    };
    using testing::ElementsAre;
    EXPECT_THAT(widths(), ElementsAre(10, 20, 150));
    labels[1]->horizontalPriorities().hugging = 100;
    row.setNeedsLayout();
    EXPECT_THAT(widths(), ElementsAre(10, 130, 40));
    row.setDistribution(ui::StackDistribution::fillEqually);
    EXPECT_THAT(widths(), ElementsAre(60, 60, 60));
    labels[0]->setHidden(true);
    EXPECT_THAT(widths(), ElementsAre(0, 95, 95));
    // Too narrow: what resists least gives way.
    row.setDistribution(ui::StackDistribution::fill);
    row.setFrame({0, 0, 45, 20});
    labels[2]->horizontalPriorities().compressionResistance = 800;
    EXPECT_THAT(widths(), ElementsAre(0, 0, 35));
}

TEST_F(LayoutTest, WrappedTextsMakeTheWindowHigher) {
    Controller controller;
    auto column = std::make_shared<ui::StackView>();
    column->setAxis(ui::Axis::vertical);
    column->setMargins({8, 8, 8, 8});
    auto text = label("twelve chars twelve chars twelve chars", 0);
    auto below = label("x");
    column->addArrangedSubview(text);
    column->addArrangedSubview(below);
    controller.root->addSubview(column);
    pinEdgesToSuperview(*column);
    ui::Window window(controller, 81, {});
    EXPECT_EQ(window.size(), (platform::Size{81, 16 + 4 * 12}));
    EXPECT_EQ(below->frame().y, 8 + 36);
    text->setText("short");
    EXPECT_EQ(window.size().height, 16 + 24);
    text->setText("twelve chars twelve chars twelve");
    EXPECT_EQ(window.size().height, 16 + 4 * 12);
    text->setNumberOfLines(2);
    EXPECT_EQ(window.size().height, 16 + 3 * 12);
    auto other = std::make_shared<ui::Window>(controller, 300, ui::TraitCollection{});
    EXPECT_EQ(other->size().height, 16 + 24);
}

// While there is no room for it, nobody asks how wide a text would be.
TEST_F(LayoutTest, ATextThatWrappedTakesItsOwnWidthOnceThereIsRoom) {
    Controller controller;
    auto text = label("one two three", 0);
    text->setOutlet("text");
    controller.root->addSubview(text);
    constrain(*controller.root, "text.leading = self.leading");
    constrain(*controller.root, "text.top = self.top");
    const auto room = constrain(*controller.root, "text.trailing <= self.trailing - 260");
    ui::Window window(controller, 300, {});
    window.layoutIfNeeded();
    EXPECT_EQ(text->frame(), Rect(0, 0, 40, 24));
    for (const auto& [words, expected] :
         {std::pair("four five six", 65.0), std::pair("7\n8", 5.0), std::pair("nine", 20.0)}) {
        text->setText(words);
        window.layoutIfNeeded();
        EXPECT_EQ(text->frame().width, std::min(expected, 40.0)) << words;
        room->setConstant(0);
        window.layoutIfNeeded();
        EXPECT_EQ(text->frame().width, expected) << words;
        room->setConstant(-260);
        window.layoutIfNeeded();
        EXPECT_EQ(text->frame().width, std::min(expected, 40.0)) << words;
    }
}

TEST_F(LayoutTest, WhatIsPlacedByFrameStaysThere) {
    const auto held = std::make_shared<View>();
    View& root = *held;
    auto scroll = add<ui::ScrollView>("scroll", root);
    constrain(root, "scroll.left = self.left");
    constrain(root, "scroll.right = self.right");
    constrain(root, "scroll.top = self.top");
    constrain(root, "scroll.bottom = self.bottom");
    const auto height = constrain(root, "scroll.height = 40");
    auto page = add("page", *scroll);
    auto inner = add("inner", *page);
    page->setFrame({320.25, 0, 100, 30});
    ui::pinEdgesToSuperview(*inner);
    root.layoutIfNeeded();
    EXPECT_EQ(page->frame(), (Rect{320.25, 0, 100, 30}));
    EXPECT_EQ(inner->frame().width, 100);
    EXPECT_EQ(root.frame().height, 40);
    height->setConstant(60);
    page->setFrame({10, 0, 50, 30});
    root.layoutIfNeeded();
    EXPECT_EQ(root.frame().height, 60);
    EXPECT_EQ(inner->frame().width, 50);
    page->setPlacedByFrame(false);
    constrain(root, "page.left = scroll.left + 5");
    constrain(root, "page.right = scroll.right");
    constrain(root, "page.width = 400");
    root.layoutIfNeeded();
    EXPECT_EQ(scroll->contentSize().width, 405);
}

// A view that asks again in each pass, and one that is only then told its size.
TEST_F(LayoutTest, PassesFollowEachOtherButEnd) {
    class Insatiable : public View {
    public:
        int passes = 0;
        void layoutSubviews() override {
            ++passes;
            setNeedsLayout();
        }
    };
    class Shaped : public View {
    public:
        std::shared_ptr<ui::LayoutConstraint> height;
        void layoutSubviews() override { height->setConstant(frame().width / 2); }
    };
    Controller controller;
    auto shaped = std::make_shared<Shaped>();
    controller.root->addSubview(shaped);
    pinEdgesToSuperview(*shaped);
    shaped->height = ui::LayoutConstraint::make(*shaped, ui::LayoutAttribute::height,
                                                ui::LayoutRelation::equal, 0);
    shaped->height->setActive(true);
    ui::Window window(controller, 100, {});
    EXPECT_EQ(window.size().height, 50);
    EXPECT_THAT(controller.calls,
                testing::ElementsAre("viewDidLoad", "traits at first", "viewDidLayoutSubviews",
                                     "viewDidLayoutSubviews"));
    auto insatiable = std::make_shared<Insatiable>();
    controller.root->addSubview(insatiable);
    memory.dispatch.runUntilIdle();
    EXPECT_GT(insatiable->passes, 1);
    EXPECT_LT(insatiable->passes, 20);
}

TEST_F(LayoutTest, APassThatRaisesIsOver) {
    class Raising : public View {
    public:
        int passes = 0;
        void layoutSubviews() override {
            if (++passes == 1) foundation::Exception::raise("TestException", "not now");
        }
    };
    auto root = std::make_shared<Raising>();
    EXPECT_THROW(root->layoutIfNeeded(), foundation::Exception);
    root->setNeedsLayout();
    root->layoutIfNeeded();
    EXPECT_EQ(root->passes, 2);
}

// The solver gives up on what would take too long; no real tree is among that.
TEST_F(LayoutTest, DeepTreesAreLaidOutWhole) {
    constexpr int kDepth = 100;
    Controller controller;
    auto outer = add<ui::StackView>("column", *controller.root);
    pinEdgesToSuperview(*outer);
    for (int i = 0; i < kDepth; ++i) {
        outer->setAxis(i % 2 == 0 ? ui::Axis::vertical : ui::Axis::horizontal);
        outer->addArrangedSubview(label("text"));
        auto inner = std::make_shared<ui::StackView>();
        outer->addArrangedSubview(inner);
        outer = inner;
    }
    outer->addArrangedSubview(label("text"));
    ui::Window window(controller, 2000, {});
    EXPECT_EQ(window.size().height, 12 * (kDepth / 2 + 1));
}

// The same as a fresh set-up would give, whatever was changed before.
TEST_F(LayoutTest, ChangesLeadToWhatAFreshTreeHas) {
    struct Tree {
        std::shared_ptr<ui::StackView> column = std::make_shared<ui::StackView>();
        std::vector<std::shared_ptr<ui::Label>> labels;
    };
    const auto make = [&](const std::vector<std::string>& texts) {
        Tree tree;
        tree.column->setAxis(ui::Axis::vertical);
        for (std::size_t i = 0; i < texts.size(); i += 2) {
            auto row = std::make_shared<ui::StackView>();
            row->setSpacing(3);
            for (std::size_t j = i; j < i + 2; ++j)
                row->addArrangedSubview(tree.labels.emplace_back(label(texts[j], j % 3 == 0)));
            tree.column->addArrangedSubview(row);
        }
        tree.column->setFrame({0, 0, 117, 400});
        return tree;
    };
    std::vector<std::string> texts(8, "some text");
    const Tree kept = make(texts);
    unsigned random = 7;
    for (int step = 0; step < 60; ++step) {
        random = random * 1'664'525U + 1'013'904'223U;
        const std::size_t which = random >> 8U & 7U;
        texts[which] = std::string((random >> 16U) % 40, 'x') + " y";
        kept.labels[which]->setText(texts[which]);
        kept.column->layoutIfNeeded();
        const Tree fresh = make(texts);
        fresh.column->layoutIfNeeded();
        for (std::size_t i = 0; i < texts.size(); ++i)
            ASSERT_EQ(kept.labels[i]->frame(), fresh.labels[i]->frame()) << step << " " << i;
    }
}

// What takes the room that it took before costs no layout.
TEST_F(LayoutTest, NothingIsCalledWhereNoFrameCanHaveChanged) {
    Controller controller;
    auto column = add<ui::StackView>("column", *controller.root);
    column->setAxis(ui::Axis::vertical);
    pinEdgesToSuperview(*column);
    const auto title = label("title");
    const auto countdown = label("10:00");
    platform::Font figures = countdown->font();
    figures.tabularFigures = true;
    countdown->setFont(figures);
    column->addArrangedSubview(title);
    column->addArrangedSubview(countdown);
    const auto height = constrain(*controller.root, "column.height >= 20");
    ui::Window window(controller, 100, {});
    window.layoutIfNeeded();
    const auto callsAfter = [&](const std::function<void()>& change) {
        controller.calls.clear();
        change();
        window.layoutIfNeeded();
        return controller.calls.size();
    };
    EXPECT_EQ(callsAfter([&] { title->setText("other"); }), 0U);
    EXPECT_EQ(callsAfter([&] { height->setConstant(21); }), 1U);
    EXPECT_EQ(callsAfter([&] { height->setConstant(22); }), 1U);
    EXPECT_EQ(callsAfter([&] { title->setText("title"); }), 0U);
    EXPECT_EQ(callsAfter([&] { title->setText("longer than it was"); }), 1U);
    EXPECT_EQ(callsAfter([&] { countdown->setText("09:59"); }), 0U);
    EXPECT_EQ(callsAfter([&] { countdown->setText("9:58"); }), 1U);
    EXPECT_EQ(callsAfter([&] { column->setNeedsLayout(); }), 1U);
    EXPECT_EQ(countdown->intrinsicContentSize(100).width, 20);
    for (const char* time : {"9:57", "9:56"}) {
        countdown->setText(time);
        adapters::memory::RecordingCanvas canvas;
        window.draw(canvas);
        EXPECT_THAT(canvas.lines(), testing::Contains(testing::HasSubstr(time)));
    }
}

TEST_F(LayoutTest, HostileNumbersAndTextsGiveFiniteFrames) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::string> texts = {
        std::string(100'000, 'x'),  std::string(50'000, ' ') + "x",
        "\xCC\x81\xCC\x81\xCC\x81", "\xFF\xFE",
        std::string(20'000, '\n'),  ""};
    for (const double scale : {0.5, 4.0, nan}) {
        for (const double width : {0.0, 10'000.0, nan}) {
            for (const double number : {nan, -infinity, 1e300}) {
                Controller controller;
                View& root = *controller.root;
                auto column = add<ui::StackView>("column", root);
                column->setAxis(ui::Axis::vertical);
                column->setSpacing(number);
                pinEdgesToSuperview(*column);
                for (const std::string& text : texts)
                    column->addArrangedSubview(label(text, 0));
                add("a", root)->setFrame({number, number, number, number});
                add("b", root);
                ui::LayoutConstraint::make(*outlet(root, "b"), ui::LayoutAttribute::width,
                                           ui::LayoutRelation::equal, outlet(root, "a"),
                                           ui::LayoutAttribute::left, number, number)
                    ->setActive(true);
                ui::Window window(controller, width, {.displayScale = scale});
                const platform::Size size = window.size();
                EXPECT_TRUE(std::isfinite(size.width) && std::isfinite(size.height));
                EXPECT_LE(size.height, 16'384);
                for (const auto& view : root.subviews()) {
                    const Rect& frame = view->frame();
                    EXPECT_TRUE(std::isfinite(frame.maxX()) && std::isfinite(frame.maxY()));
                    EXPECT_GE(std::min(frame.width, frame.height), 0);
                }
            }
        }
    }
}

}  // namespace
}  // namespace tavrolin::tests

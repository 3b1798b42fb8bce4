#include <algorithm>
#include <cmath>
#include <limits>

#include "adapters/memory/recording_canvas.h"
#include "tavrolin/ui/animation.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/scroll_view.h"
#include "tavrolin/ui/text_direction.h"
#include "tavrolin/ui/tree_text.h"
#include "tests/ui/ui_test.h"

namespace tavrolin::tests {
namespace {

using adapters::memory::MemoryImageSource;
using adapters::memory::RecordingCanvas;
using platform::Color;
using platform::Point;
using platform::Rect;
using testing::Contains;
using testing::ElementsAre;
using ui::View;

class ViewTest : public UITest {
protected:
    template <class T = View>
    std::shared_ptr<T> placed(std::string_view name, View& to, const Rect& frame) {
        auto view = add<T>(name, to);
        view->setFrame(frame);
        return view;
    }

    static std::vector<std::string> drawn(const View& view) {
        RecordingCanvas canvas;
        view.draw(canvas);
        EXPECT_TRUE(canvas.isBalanced());
        return canvas.lines();
    }

    static std::shared_ptr<View> rooted() {
        auto root = std::make_shared<View>();
        root->setFrame({0, 0, 300, 200});
        return root;
    }
};

TEST_F(ViewTest, ATreeNeverHoldsAViewTwiceOrWithinItself) {
    auto root = rooted();
    auto a = add("a", *root);
    auto b = add("b", *root);
    root->addSubview(a);
    EXPECT_THAT(root->subviews(), ElementsAre(b, a));
    b->insertSubview(a, 99);
    EXPECT_EQ(a->superview(), b.get());
    a->addSubview(root);
    a->addSubview(a);
    a->addSubview(nullptr);
    EXPECT_TRUE(a->subviews().empty());
    EXPECT_EQ(root->superview(), nullptr);
    root->removeFromSuperview();
    b->removeFromSuperview();
    EXPECT_TRUE(root->subviews().empty());
    EXPECT_TRUE(a->isDescendantOf(*b));
}

TEST_F(ViewTest, TapsGoToTheInnermostViewThatTakesThem) {
    auto root = rooted();
    root->setOutlet("root");
    auto scroll = placed<ui::ScrollView>("scroll", *root, {0, 100, 300, 100});
    auto page = placed("page", *scroll, {300, 0, 300, 100});
    scroll->setContentOffset({300, 0}, false);
    auto card = placed("card", *root, {10, 10, 100, 80});
    auto button = placed<ui::Button>("button", *card, {0, 0, 50, 20});
    placed<ui::Label>("label", *card, {0, 40, 50, 20});
    auto cover = placed("cover", *root, {90, 10, 50, 50});
    auto slider = placed<ui::Slider>("slider", *root, {200, 0, 100, 32});
    std::vector<std::string> taken;
    const auto recognise = [&](View& view) {
        view.addGestureRecognizer(std::make_shared<ui::TapGestureRecognizer>(
            [&](View& sender) { taken.push_back(sender.outlet()); }));
    };
    recognise(*root);
    recognise(*card);
    recognise(*page);
    button->setAction([&](View& sender) { taken.push_back("press " + sender.outlet()); });
    slider->setAction([&](View&) { taken.push_back(std::to_string(slider->value())); });
    const auto tapAt = [&](double x, double y) {
        taken.clear();
        ui::tap(*root, {x, y});
        return taken.empty() ? std::string() : taken.back();
    };
    EXPECT_EQ(tapAt(20, 15), "press button");
    EXPECT_EQ(tapAt(20, 55), "card");
    EXPECT_EQ(tapAt(100, 20), "root");  // the cover hides the card
    EXPECT_EQ(tapAt(150, 150), "page");
    EXPECT_EQ(tapAt(250, 10), "0.500000");
    EXPECT_EQ(tapAt(299, 10), "1.000000");
    EXPECT_EQ(ui::tap(*root, {300, 10}), nullptr);
    cover->setHidden(true);
    EXPECT_EQ(tapAt(100, 20), "card");
    button->setEnabled(false);
    EXPECT_EQ(tapAt(20, 15), "card");
    card->setUserInteractionEnabled(false);
    EXPECT_EQ(ui::tap(*root, {20, 15}), root.get());
    card->setUserInteractionEnabled(true);
    // A view that a refusing recogniser removes gets nothing, nor does anything crash.
    auto refusing = std::make_shared<ui::TapGestureRecognizer>([](View&) { FAIL(); });
    refusing->setShouldReceiveTouch([&](Point) {
        card->removeFromSuperview();
        return false;
    });
    auto inner = placed("inner", *card, {60, 60, 10, 10});
    inner->addGestureRecognizer(refusing);
    EXPECT_EQ(ui::tap(*root, {75, 75}), root.get());
}

TEST_F(ViewTest, DrawsFromTheBackToTheFront) {
    auto root = rooted();
    root->setBackgroundColor(ui::palette::background);
    auto card = placed("card", *root, {10, 10, 100, 50});
    card->setBackgroundColor(Color::rgba(0xFF0000FF));
    card->setCornerRadius(8);
    card->setBorder(1, Color::black());
    card->setAlpha(0.5);
    auto gradient = std::make_shared<ui::GradientLayer>();
    gradient->setFrame({0, 0, 100, 25});
    gradient->setGradient({{Color::black(), Color::white()}, {0, 0}, {0, 1}});
    card->layer().addSublayer(gradient);
    auto text = label("hi");
    card->addSubview(text);
    text->setFrame({5, 4, 40, 20});
    auto scroll = placed<ui::ScrollView>("scroll", *root, {0, 100, 50, 50});
    placed("gone", *scroll, {60, 0, 10, 10})->setBackgroundColor(Color::black());
    placed("hidden", *root, {0, 0, 9, 9})->setHidden(true);
    root->layoutIfNeeded();
    EXPECT_THAT(
        drawn(*root),
        ElementsAre("fill 0,0 300x200 #FFFFFFFF", "group 0.5 {",
                    "fill 10,10 100x50 radius 8 #FF0000FF",
                    "gradient 10,10 100x25 #000000FF #FFFFFFFF", "text \"hi\" at 15,18 #000000FF",
                    "stroke 10,10 100x50 radius 8 width 1 #000000FF", "}", "clip 0,100 50x50"));
}

TEST_F(ViewTest, AnimationsFollowTheClock) {
    auto root = rooted();
    auto scroll = placed<ui::ScrollView>("scroll", *root, {0, 0, 100, 50});
    auto page = placed("page", *scroll, {0, 0, 20, 20});
    page->setBackgroundColor(Color::rgba(0xFF0000FF));
    scroll->setContentOffset({100, 0}, true);
    EXPECT_EQ(scroll->contentOffset().x, 0);
    EXPECT_EQ(scroll->targetContentOffset().x, 100);
    memory.dispatch.advance(0.15);
    EXPECT_NEAR(scroll->contentOffset().x, 50, 0.001);
    scroll->setContentOffset({0, 0}, true);  // turns round where it is
    EXPECT_NEAR(scroll->contentOffset().x, 50, 0.001);
    memory.dispatch.advance(0.3);
    EXPECT_EQ(scroll->contentOffset().x, 0);
    scroll->setContentOffset({2.3, 0}, false);
    EXPECT_THAT(drawn(*root), Contains("fill -2.5,0 20x20 #FF0000FF")) << "by whole pixels";
    scroll->setContentOffset({0, 0}, false);

    std::vector<std::string> ends;
    ui::crossFade(
        *page, 0.3, [&] { page->setBackgroundColor(Color::rgba(0x00FF00FF)); },
        [&] { ends.emplace_back("faded"); });
    memory.dispatch.advance(0.15);
    EXPECT_THAT(drawn(*page), ElementsAre("fill 0,0 20x20 #00FF00FF", "group 0.5 {",
                                          "fill 0,0 20x20 #FF0000FF", "}"));
    ui::animateAlpha(*scroll, 0, 0.2, [&] { ends.emplace_back("gone"); });
    memory.dispatch.advance(0.1);
    EXPECT_NEAR(scroll->presentAlpha(), 0.5, 0.001);
    EXPECT_EQ(scroll->alpha(), 0);
    page.reset();
    root.reset();
    scroll.reset();
    memory.dispatch.runUntilIdle();
    EXPECT_THAT(ends, ElementsAre("faded", "gone"));
}

// The old content's texts outlive the label that they were set for.
TEST_F(ViewTest, AFadeKeepsWhatIsGone) {
    auto root = rooted();
    auto text = label("old");
    root->addSubview(text);
    ui::crossFade(*root, 1, [&] {
        text->removeFromSuperview();
        text.reset();
    });
    EXPECT_THAT(drawn(*root), Contains("text \"old\" at 0,0 #000000FF"));
    memory.dispatch.runUntilIdle();
    EXPECT_TRUE(drawn(*root).empty());
}

TEST_F(ViewTest, AFadeDecodesWhatIsGoneOnlyWhereItIsSeen) {
    auto root = rooted();
    auto view = placed<ui::ImageView>("image", *root, {0, 0, 4, 2});
    const auto source =
        std::make_shared<MemoryImageSource>(std::vector<MemoryImageSource::Frame>{{4, 2}, {8, 4}});
    for (const bool isSeen : {false, true}) {
        view->setImage(ui::Image::animated(source, {0}, 0, "old"));
        ui::crossFade(*root, 1, [&] { view->setImage(nullptr); });
        if (isSeen) {
            EXPECT_THAT(drawn(*root), Contains(testing::HasSubstr("image 4x2 at 0,0 4x2")));
        }
        memory.dispatch.runUntilIdle();
        EXPECT_EQ(source->takeRequests().size(), isSeen ? 1U : 0U);
    }
}

TEST_F(ViewTest, PicturesAreShownInTheirShapeAndTime) {
    auto root = rooted();
    auto view = placed<ui::ImageView>("image", *root, {0, 0, 100, 100});
    const auto source = std::make_shared<MemoryImageSource>(
        std::vector<MemoryImageSource::Frame>{{4, 2}, {2, 2}, {1, 2}});
    view->setImage(ui::Image::animated(source, {0, 1, 1, 2}, 4, "a.gif"));
    const auto shown = [&] { return drawn(*view).back(); };
    for (const auto& [mode, at] : {std::pair{ui::ContentMode::scaleToFill, "0,0 100x100"},
                                   std::pair{ui::ContentMode::scaleAspectFit, "0,25 100x50"},
                                   std::pair{ui::ContentMode::scaleAspectFill, "-50,0 200x100"},
                                   std::pair{ui::ContentMode::center, "48,49 4x2"}}) {
        view->setContentMode(mode);
        EXPECT_EQ(shown(), std::string("image 4x2 at ") + at);
    }
    for (const char* size : {"2x2", "2x2", "1x2", "4x2"}) {
        memory.dispatch.advance(1);
        EXPECT_THAT(shown(), testing::StartsWith(std::string("image ") + size));
    }
    EXPECT_THAT(source->takeRequests(), ElementsAre("0: 4x2", "1: 4x2", "2: 4x2", "0: 4x2"));
    view->setImage(ui::Image::animated(source, {2, 1}, 0, "still"));
    memory.dispatch.advance(7);
    EXPECT_THAT(shown(), testing::StartsWith("image 1x2"));
    EXPECT_EQ(ui::Image::animated(source, {}, 1, "none"), nullptr);
    EXPECT_EQ(ui::Image::animated(nullptr, {0}, 1, "none"), nullptr);
    EXPECT_EQ(ui::Image::withSource(nullptr, "none"), nullptr);
}

// Once for a size, and only from the file that is enough.
TEST_F(ViewTest, PicturesAreDecodedAtTheSizeThatIsShown) {
    auto root = rooted();
    auto view = placed<ui::ImageView>("image", *root, {0, 0, 100, 50});
    auto opened = std::make_unique<MemoryImageSource>(
        std::vector<MemoryImageSource::Frame>{{60'000, 30'000}});
    MemoryImageSource& source = *opened;
    view->setImage(ui::Image::withSource(std::move(opened), "large"));
    EXPECT_THAT(source.takeRequests(), ElementsAre());
    drawn(*view);
    drawn(*view);
    view->setFrame({0, 0, 30.2, 50});
    drawn(*view);
    EXPECT_THAT(source.takeRequests(), ElementsAre("0: 200x100", "0: 61x100"));
    const std::weak_ptr<const platform::Image> pixels = view->image()->pixels({61, 100}, 0);
    view->image()->forgetPixels();
    EXPECT_TRUE(pixels.expired());
    drawn(*view);
    EXPECT_THAT(source.takeRequests(), ElementsAre("0: 61x100"));
}

TEST_F(ViewTest, ControlsKeepToTheirBounds) {
    ui::Slider slider;
    slider.setMaximumValue(10);
    slider.setValue(20);
    EXPECT_EQ(slider.value(), 10);
    slider.setMinimumValue(50);
    EXPECT_EQ(slider.value(), 50);
    slider.setValue(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(slider.value(), 50);
    ui::ProgressView progress;
    for (const auto& [given, kept] : {std::pair{0.3, 0.3}, std::pair{-1.0, 0.0},
                                      std::pair{7.0, 1.0}, std::pair{std::nan(""), 0.0}}) {
        progress.setProgress(given);
        EXPECT_EQ(progress.progress(), kept);
    }
    auto pages = std::make_shared<ui::PageControl>();
    pages->setNumberOfPages(4);
    pages->setCurrentPage(9);
    EXPECT_EQ(pages->currentPage(), 3);
    pages->setFrame({0, 0, 40, 26});  // two of four dots
    EXPECT_THAT(drawn(*pages),
                ElementsAre("fill 8,9 8x8 radius 4 #78788033", "fill 24,9 8x8 radius 4 #000000FF"));
    pages->setNumberOfPages(-3);
    EXPECT_EQ(pages->currentPage(), 0);
    pages->setNumberOfPages(std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(drawn(*pages).size(), 2U);
}

TEST_F(ViewTest, LabelsShowWhatFits) {
    auto root = rooted();
    auto text = label("one two three four", 0);
    root->addSubview(text);
    const auto lines = [&](double width, double height) {
        text->setFrame({0, 0, width, height});
        return drawn(*text);
    };
    EXPECT_THAT(lines(40, 36),
                ElementsAre("text \"one two\" at 0,0 #000000FF", "text \"three\" at 0,12 #000000FF",
                            "text \"four\" at 0,24 #000000FF"));
    EXPECT_THAT(lines(40, 30), ElementsAre("text \"one two\" at 0,3 #000000FF",
                                           "text \"three…\" at 0,15 #000000FF"));
    text->setTextAlignment(platform::TextAlignment::center);
    EXPECT_THAT(lines(200, 12), ElementsAre("text \"one two three four\" at 55,0 #000000FF"));
    text->setAttributedText(
        platform::StyledText::plain("red", {.font = {}, .color = Color::rgba(0xFF0000FF)}));
    EXPECT_EQ(text->text(), "red");
    text->setText("plain");
    EXPECT_FALSE(text->attributedText());
    EXPECT_THAT(lines(200, 12), ElementsAre("text \"plain\" at 87.5,0 #000000FF"));
}

TEST_F(ViewTest, ATextsFirstLetterTellsItsDirection) {
    using ui::TextDirection;
    struct Case {
        TextDirection direction;
        std::vector<const char*> texts;
    };
    const Case cases[] = {
        {TextDirection::rightToLeft,
         {"שלום", "  42 – «שלום» hello", "🎉 سلام", "٣ كتب", "ދިވެހި", "𞤀𞤁", "\u200F42",
          "\uFEB3"}},
        {TextDirection::leftToRight, {"hello שלום", "é", "日本 שלום", "🎉 Привет", "ª", "𝐀"}},
        {TextDirection::none, {"", "123", "«42» — 🎉🏽❤️", "\u0301", "٣", "\xD7"}}};
    for (const Case& each : cases) {
        for (const char* text : each.texts)
            EXPECT_EQ(ui::directionOf(text), each.direction) << text;
    }
    // Where the text says nothing, the surroundings do.
    const auto shown = label("", 0);
    const auto alignment = [&](const char* text) {
        shown->setText(text);
        foundation::Value described;
        shown->describe(described);
        return std::string(described["alignment"].string());
    };
    EXPECT_EQ(alignment("42"), "left");
    shown->setSemanticContentAttribute(ui::SemanticContentAttribute::forceRightToLeft);
    EXPECT_EQ(alignment("42"), "right");
    EXPECT_EQ(alignment("hello"), "left");
}

// Setting a text takes most of a pass' time.
TEST_F(ViewTest, ATextIsSetOnceAndDrawnWhereItIsAligned) {
    class Counting final : public platform::Typesetter {
    public:
        std::unique_ptr<platform::TextLayout> layout(const platform::StyledText& text,
                                                     const platform::TextFrame& frame) override {
            ++count;
            return memory.layout(text, frame);
        }
        double lineHeight(const platform::Font& font) override { return memory.lineHeight(font); }
        std::vector<std::pair<char32_t, char32_t>> charactersOfFont(std::string_view) override {
            return {};
        }
        int count = 0;
        adapters::memory::MemoryTypesetter memory;
    };
    static Counting typesetter;
    platform::Platform ports = memory.platform();
    ports.drawing.typesetter = &typesetter;
    platform::install(ports);

    Controller controller;
    const auto wrapped = label("one two three four", 0);
    const auto centered = label("short", 1);
    centered->setTextAlignment(platform::TextAlignment::center);
    const auto right = label("short", 1);
    right->setTextAlignment(platform::TextAlignment::right);
    auto column = add<ui::StackView>("column", *controller.root);
    column->setAxis(ui::Axis::vertical);
    for (const char* edge : {"leading", "trailing", "top", "bottom"})
        constrain(*controller.root, "column." + std::string(edge) + " = self." + edge);
    for (const auto& text : {wrapped, centered, right})
        column->addArrangedSubview(text);
    ui::Window window(controller, 60, {});
    adapters::memory::RecordingCanvas first;
    window.draw(first);
    typesetter.count = 0;
    wrapped->setText("five six seven eight");
    centered->setText("brief");
    right->setText("tiny");
    adapters::memory::RecordingCanvas canvas;
    window.draw(canvas);
    EXPECT_EQ(typesetter.count, 3);
    EXPECT_THAT(canvas.lines(),
                testing::IsSupersetOf({testing::HasSubstr("text \"five six\" at 0,0"),
                                       testing::HasSubstr("text \"brief\" at 17.5,24"),
                                       testing::HasSubstr("text \"tiny\" at 40,36")}));
}

TEST_F(ViewTest, TheTreeIsPrintedAsItIsShown) {
    Controller controller;
    View& root = *controller.root;
    root.setOutlet("root");
    auto title = label("שלום");
    title->setOutlet("title");
    root.addSubview(title);
    auto button = placed<ui::Button>("", root, {0, 50, 100.12345, 20});
    button->setTitle("Go");
    auto scroll = placed<ui::ScrollView>("scroll", root, {0, 0, 50, 50});
    scroll->setContentOffset({12.5, 0}, false);
    scroll->setHidden(true);
    auto gradient = std::make_shared<ui::GradientLayer>();
    gradient->setGradient({{Color::black()}, {0, 0}, {1, 0.5}});
    scroll->layer().addSublayer(gradient);
    ui::Window window(controller, 300, {.userInterfaceStyle = ui::UserInterfaceStyle::dark});
    window.layoutIfNeeded();
    const auto text = platform::current().json->serialise(ui::describeTree(root),
                                                          platform::JSONText::Style::compact);
    EXPECT_EQ(
        *text,
        R"({"class":"View","outlet":"root","frame":[0,0,300,0],"hidden":false,"alpha":1,"tag":0,)"
        R"("backgroundColor":null,"gradients":[],"cornerRadius":0,"children":[)"
        R"({"class":"Label","outlet":"title","frame":[0,0,20,12],"hidden":false,"alpha":1,"tag":0,)"
        R"("backgroundColor":null,"gradients":[],"cornerRadius":0,"text":"שלום","lines":1,)"
        R"("alignment":"right","textColor":"#FFFFFFFF","children":[]},)"
        R"({"class":"Button","outlet":null,"frame":[0,50,100.123,20],"hidden":false,"alpha":1,)"
        R"("tag":0,"backgroundColor":null,"gradients":[],"cornerRadius":0,"text":"Go",)"
        R"("textColor":"#409CFFFF","image":null,"children":[]},)"
        R"({"class":"ScrollView","outlet":"scroll","frame":[0,0,50,50],"hidden":true,"alpha":1,)"
        R"("tag":0,"backgroundColor":null,)"
        R"("gradients":[{"colors":["#000000FF"],"start":[0,0],"end":[1,0.5]}],"cornerRadius":0,)"
        R"("contentOffset":[12.5,0],"children":[]}]})");
    EXPECT_EQ(ui::findView(root, "Go"), button.get());
    EXPECT_EQ(ui::findView(root, "title"), title.get());
    EXPECT_EQ(ui::findView(root, "scroll"), nullptr);
    EXPECT_EQ(ui::findView(root, ""), nullptr);
}

TEST_F(ViewTest, AWindowTellsItsController) {
    Controller controller;
    auto window = std::make_unique<ui::Window>(controller, 100, ui::TraitCollection{});
    controller.calls.clear();
    window->setTraitCollection({.displayScale = 3});
    window->setTraitCollection({.displayScale = 3});
    window->disappear();
    window->disappear();
    EXPECT_THAT(controller.calls, ElementsAre("traits changed", "viewWillDisappear"));
    memory.dispatch.runReady();
    EXPECT_EQ(controller.calls.back(), "viewDidLayoutSubviews");
    controller.calls.clear();
    constrain(*controller.root, "self.height = 20000");
    memory.dispatch.runReady();  // asked for by itself
    EXPECT_THAT(controller.calls, ElementsAre("viewDidLayoutSubviews"));
    for (const double scale : {0.5, 1.0, 4.0}) {  // no canvas takes more, whatever the picture says
        window->setTraitCollection({.displayScale = scale});
        EXPECT_EQ(window->size(), (platform::Size{100, 16'384 / std::max(1.0, scale)}));
    }
    memory.dispatch.runReady();
    controller.calls.clear();
    controller.root->setNeedsLayout();
    window.reset();
    memory.dispatch.runUntilIdle();  // it is gone, and nothing happens
    EXPECT_TRUE(controller.calls.empty());
}

}  // namespace
}  // namespace tavrolin::tests

#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "adapters/memory/recording_canvas.h"
#include "tavrolin/content_ui/components/carousel_overlay.h"
#include "tavrolin/content_ui/components/landscape_carousel_component.h"
#include "tavrolin/content_ui/components/portrait_carousel_component.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/foundation/exception.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kScrollWidth = 268;  // of a portrait carousel, with its margins
constexpr double kStep = (kScrollWidth - 16) / 2 + 16;

// Counts what components ask for.
class Listener final : public CVNCustomPushNotificationInteractionDelegate {
public:
    std::vector<std::int64_t> interactions;

    void handleCustomPushNotificationInteraction(const Value& data) override {
        interactions.push_back(data["eventData"].integerValue());
    }
};

// A picture that says how large it was asked for, until it is told to forget it.
class CountedPicture final : public ui::Image {
public:
    CountedPicture() : Image("counted") {}
    platform::Size size() const override { return {40, 20}; }
    platform::ImageRef pixels(platform::Size, double) override {
        isHeld = true;
        return nullptr;
    }
    void forgetPixels() override { isHeld = false; }

    bool isHeld = false;
};

class CarouselsTest : public ContentUITest {
protected:
    CarouselsTest() {
        memory_.imageDecoder.setFrames({{.width = 40, .height = 20}});
        memory_.files.write("/media/wide.pic", "GIF89a");
        CVNNotificationViewHelper::setCustomNotificationDelegate(listener_);
    }

    static Value item(const Value& title = {}, const Value& path = "/media/wide.pic") {
        Value item = Value::dictionary();
        item.setIfPresent("imgTitle", title);
        item.setIfPresent("imgUrlPath", path);
        return item;
    }
    static Value items(std::int64_t count) {
        Value list = Value::array();
        for (std::int64_t i = 0; i < count; ++i)
            list.append(item("item"));
        return list;
    }
    static Value edgeToEdge(const Value& lui = {}, const Value& cs = {}) {
        Value ui = Value::dictionary({{"lid", 72}});
        ui.setIfPresent("lui", lui);
        ui.setIfPresent("cs", cs);
        return ui;
    }
    /// Shows a carousel of these items in the window, set up.
    template <class T>
    T& showCarousel(const Value& items, const Value& ui = {}) {
        Value section = Value::dictionary({{"type", "Carousel"}});
        section.set("carousel", items);
        show(section, ui);
        constexpr bool kIsPortrait = std::is_same_v<T, CVNPortraitCarouselComponent>;
        carousel_ =
            load<T>(kIsPortrait ? "CVNPortraitCarouselComponent" : "CVNLandscapeCarouselComponent");
        controller_.view().addSubview(container_);
        ui::pinEdgesToSuperview(*container_);
        window_.layoutIfNeeded();
        wait(0.05);
        return static_cast<T&>(*carousel_);
    }
    void wait(double seconds) {
        memory_.dispatch.advance(seconds);
        window_.layoutIfNeeded();
    }
    ui::ScrollView& scrollView() { return outletOf<ui::ScrollView>(*carousel_, "scrollView"); }
    double offset() { return scrollView().contentOffset().x; }
    double height() { return window_.size().height; }
    void tapOn(const ui::View& view) {
        window_.tap(view.convertPoint({view.bounds().width / 2, view.bounds().height / 2},
                                      controller_.view()));
    }

    std::shared_ptr<Listener> listener_ = std::make_shared<Listener>();
    std::shared_ptr<NotificationView> carousel_;
    ui::ViewController controller_;
    ui::Window window_{controller_, kWidth, {}};
};

// --- Two items side by side

TEST_F(CarouselsTest, PortraitItemsStandSideBySideWithACopyOfTheFirstAtTheEnd) {
    for (const std::int64_t count : {1, 2, 3}) {
        auto& carousel = showCarousel<CVNPortraitCarouselComponent>(items(count));
        ASSERT_EQ(carousel.pageStackViews().size(), static_cast<std::size_t>(count));
        const auto& shown = scrollView().subviews();
        ASSERT_EQ(shown.size(), static_cast<std::size_t>(count > 1 ? count + 1 : count));
        for (std::size_t i = 0; i < shown.size(); ++i) {
            EXPECT_NEAR(shown[i]->frame().x, static_cast<double>(i) * kStep, 0.3);
            EXPECT_EQ(shown[i]->frame().y, 0);
            EXPECT_EQ(shown[i]->frame().width, kStep - 16);
            EXPECT_EQ(shown[i]->tag(), static_cast<std::int64_t>(i) % count);
        }
        EXPECT_FALSE(scrollView().isPagingEnabled());
        EXPECT_TRUE(outlet(carousel, "pageControl")->isHidden());
    }
}

TEST_F(CarouselsTest, PortraitStepsGoRoundByTheCopyOfTheFirst) {
    auto& carousel = showCarousel<CVNPortraitCarouselComponent>(items(3));
    const auto press = [&](const char* identifier) {
        carousel.didReceiveCarouselButtonResponse(identifier);
    };
    press("0");
    EXPECT_EQ(offset(), 0) << "it is only setting out";
    wait(0.15);
    EXPECT_GT(offset(), 0);
    EXPECT_LT(offset(), kStep);
    wait(0.15);
    EXPECT_EQ(offset(), kStep);
    press("0");
    wait(0.3);
    EXPECT_EQ(carousel.potraitIndex(), 2);
    press("0");
    EXPECT_EQ(carousel.potraitIndex(), 3);
    wait(0.29);
    EXPECT_GT(offset(), 2.9 * kStep) << "the copy is at the left";
    wait(0.01);
    EXPECT_EQ(carousel.potraitIndex(), 0);
    EXPECT_EQ(offset(), 0);
    EXPECT_THAT(carousel.indexesForWindowAtIndex(2), ElementsAre(2, 0));

    press("1");
    EXPECT_EQ(carousel.potraitIndex(), 2);
    EXPECT_EQ(offset(), 3 * kStep) << "it sets out from the copy";
    wait(0.3);
    EXPECT_EQ(offset(), 2 * kStep);
    press("2");
    press("");
    press("next");
    EXPECT_EQ(carousel.potraitIndex(), 2);

    // Faster than it can move.
    for (int i = 0; i < 1000; ++i)
        press("0");
    press("1");
    wait(0.2);
    EXPECT_LE(offset(), 3 * kStep) << "never beyond what there is";
    wait(1);
    EXPECT_EQ(carousel.potraitIndex(), 0);
    EXPECT_EQ(offset(), 0);
}

TEST_F(CarouselsTest, TwoPortraitItemsStayWhereTheyAre) {
    auto& carousel = showCarousel<CVNPortraitCarouselComponent>(items(2));
    carousel.nextItem();
    carousel.previousItem();
    wait(1);
    EXPECT_EQ(carousel.potraitIndex(), 0);
    EXPECT_EQ(offset(), 0);
    EXPECT_THROW(CVNPortraitCarouselComponent().indexesForWindowAtIndex(0), foundation::Exception);
}

TEST_F(CarouselsTest, APortraitCarouselIsAsHighAsTheHigherItemOfTheTwo) {
    const std::string lines = "word word word word word word word word";
    const Value list = Value::array({item(lines), item("two"), item("three"), item("four")});
    auto& carousel = showCarousel<CVNPortraitCarouselComponent>(list);
    const double high = carousel.pageStackViews()[0]->bounds().height;
    const double low = carousel.pageStackViews()[1]->bounds().height;
    EXPECT_LT(low, high);
    EXPECT_EQ(height(), 16 + high + 16);
    for (const double now : {low, low, high, high}) {
        carousel.nextItem();
        EXPECT_EQ(scrollView().bounds().height, now) << carousel.potraitIndex();
    }
    wait(1);
    EXPECT_EQ(scrollView().bounds().height, high) << "the first two again";
    showCarousel<CVNPortraitCarouselComponent>(
        list, Value::dictionary({{"tim", Value::dictionary({{"ty", 1}})}}));
    EXPECT_EQ(height(), high + 16) << "the texts above it have a margin of their own";
}

// --- A page each

TEST_F(CarouselsTest, LandscapePagesAreAsWideAsTheViewAndHighAsTheyAre) {
    auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(
        Value::array({item("one"), item({}, {}), item({}), item(5, 7)}));
    const auto& pages = carousel.pageStackViews();
    for (std::size_t i = 0; i < pages.size(); ++i) {
        EXPECT_EQ(pages[i]->frame().x, static_cast<double>(i) * kWidth);
        EXPECT_EQ(pages[i]->frame().width, kWidth);
    }
    EXPECT_TRUE(scrollView().isPagingEnabled());
    EXPECT_GT(height(), kWidth / 2) << "a picture, and a text below it";
    carousel.nextItem();
    EXPECT_EQ(height(), kWidth / 2) << "a place where the picture would be";
    carousel.nextItem();
    EXPECT_EQ(height(), kWidth / 2);
    carousel.nextItem();
    EXPECT_EQ(height(), kWidth / 2) << "what is no text is none";
    for (const auto& [size, shown] :
         {std::pair{platform::Size{10, 1000}, 2 * kWidth}, {{1000, 10}, kWidth / 4}}) {
        memory_.imageDecoder.setFrames({{.width = static_cast<std::uint32_t>(size.width),
                                         .height = static_cast<std::uint32_t>(size.height)}});
        showCarousel<CVNLandscapeCarouselComponent>(Value::array({item()}));
        EXPECT_EQ(height(), shown) << "in part";
    }
}

TEST_F(CarouselsTest, AnItemSaysItsTextsInHTMLOrPlain) {
    const Value text = Value::dictionary({{"imgTitle", "Plain"}, {"imgMsg", "words"}});
    Value html = text;
    html.set("htT", "<b>Title</b>");
    html.set("htB", "<i>message</i>");
    const Value all = Value::array({text, html, Value::dictionary()});
    auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(all);
    const auto& pages = carousel.pageStackViews();
    EXPECT_EQ(pages[0]->titleLabel().textColor(),
              ui::DynamicColor(platform::Color::rgba(0x737678FF)));
    EXPECT_EQ(pages[0]->titleLabel().numberOfLines(), 1);
    EXPECT_EQ(pages[0]->titleLabel().text(), "Plain");
    EXPECT_EQ(pages[0]->messageLabel().text(), "words");
    const auto styled = [](const ui::Label& label) {
        return label.attributedText() ? label.attributedText()->string : "none";
    };
    EXPECT_EQ(styled(pages[1]->titleLabel()), "Title");
    EXPECT_EQ(styled(pages[1]->messageLabel()), "message");
    auto& edgeless = showCarousel<CVNLandscapeCarouselComponent>(all, edgeToEdge());
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_EQ(edgeless.pageStackViews()[i]->subviews()[1]->isHidden(), i == 2);
}

TEST_F(CarouselsTest, ANarrowerViewKeepsWhatIsShown) {
    constexpr double kNarrow = 132;
    ui::ViewController other;
    ui::Window narrow(other, kNarrow, {});
    const auto move = [&](NotificationView& carousel) {
        carousel.loadWithSuperView(other.view());
        narrow.layoutIfNeeded();
    };
    const Value gradient = Value::array({"1", "FFFFFF", "000000", "180"});
    const Value entries = Value::array({Value::dictionary({{"i", "1"}, {"olgc", gradient}})});
    auto& landscape = showCarousel<CVNLandscapeCarouselComponent>(
        items(3), edgeToEdge(Value::dictionary({{"colc", entries}})));
    landscape.nextItemWithoutAnimation();
    move(landscape);
    EXPECT_EQ(offset(), kNarrow);
    const ui::View& overlay = *landscape.pageStackViews()[1]->subviews()[1];
    EXPECT_EQ(overlay.layer().sublayers().at(0)->frame().width, kNarrow);
    auto& portrait = showCarousel<CVNPortraitCarouselComponent>(items(3));
    portrait.nextItem();
    wait(1);
    move(portrait);
    EXPECT_EQ(offset(), (kNarrow - 32 - 16) / 2 + 16);
}

TEST_F(CarouselsTest, LandscapeStepsWrap) {
    struct Case {
        std::int64_t count;
        const char* presses;
        std::vector<std::int64_t> pages;
    };
    const Case cases[] = {
        {1, "01", {0, 0}}, {2, "00", {1, 0}}, {3, "11110", {2, 1, 0, 2, 0}}, {3, "023", {1, 1, 1}}};
    for (const Case& each : cases) {
        auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(items(each.count));
        for (std::size_t i = 0; i < each.pages.size(); ++i) {
            carousel.didReceiveCarouselButtonResponse(std::string(1, each.presses[i]));
            EXPECT_EQ(carousel.landscapeIndex(), each.pages[i]) << each.presses << i;
            wait(0.3);
            EXPECT_EQ(offset(), static_cast<double>(each.pages[i]) * kWidth);
        }
    }
}

TEST_F(CarouselsTest, ThePayloadChoosesHowAPageComes) {
    struct Case {
        Value cs;
        const char* at;  // where it is after the half of it: "half", "fading" or "there"
    };
    const Case cases[] = {{Value::dictionary({{"te", 1}}), "half"},
                          {Value::dictionary({{"te", "1"}}), "half"},
                          {Value::dictionary({{"te", 2}}), "fading"},
                          {Value::dictionary({{"te", 2.9}}), "fading"},
                          {Value::dictionary({{"te", 3}}), "there"},
                          {Value::dictionary({{"te", Value::array({2})}}), "there"},
                          {Value::dictionary(), "there"},
                          {"text", "there"},
                          {{}, "there"}};
    for (const Case& each : cases) {
        for (const bool isNext : {true, false}) {
            auto& carousel =
                showCarousel<CVNLandscapeCarouselComponent>(items(3), edgeToEdge({}, each.cs));
            tapOn(*outlet(carousel, isNext ? "nextImageView" : "previousImageView"));
            const std::int64_t page = isNext ? 1 : 2;
            EXPECT_EQ(carousel.landscapeIndex(), page);
            EXPECT_EQ(outletOf<ui::PageControl>(carousel, "pageControl").currentPage(), page);
            wait(0.15);
            adapters::memory::RecordingCanvas canvas;
            window_.draw(canvas);
            const bool isFading = testing::Value(canvas.lines(), testing::Contains("group 0.5 {"));
            EXPECT_EQ(isFading, each.at == std::string("fading")) << each.cs.description();
            const double there = static_cast<double>(page) * kWidth;
            EXPECT_NEAR(offset(), each.at == std::string("half") ? there / 2 : there, 1)
                << each.cs.description();
            wait(0.15);
            EXPECT_EQ(offset(), there);
        }
    }
    EXPECT_THAT(listener_->interactions, IsEmpty()) << "arrows open nothing";
}

TEST_F(CarouselsTest, PagesTurnByThemselvesOnTheEdgeToEdgeLayoutOnly) {
    struct Case {
        std::int64_t layoutId;
        Value speed;
        bool hasCollapsedState;
        std::int64_t pagesAfterSeven;  // seconds
    };
    const Case cases[] = {{71, 3, true, 0},       {72, 3, true, 2},  {72, 3, false, 0},
                          {72, "3", true, 2},     {72, 0, true, 0},  {72, -1, true, 0},
                          {72, "text", true, 0},  {72, {}, true, 0}, {72, Value::array(), true, 0},
                          {72, 1000000, true, 0}, {72, 3.9, true, 2}};
    for (const Case& each : cases) {
        Value ui = Value::dictionary({{"lid", each.layoutId}});
        ui.set("lui", Value::dictionary());
        if (each.speed) ui.set("lui", Value::dictionary({{"spd", each.speed}}));
        if (each.hasCollapsedState) ui.set("cs", Value::dictionary());
        auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(items(9), ui);
        wait(7);
        EXPECT_EQ(carousel.landscapeIndex(), each.pagesAfterSeven)
            << each.layoutId << " " << each.speed.description();
        carousel.stopCarouselTimer();
    }
}

TEST_F(CarouselsTest, AnArrowBeginsTheIntervalAnew) {
    auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(
        items(9), edgeToEdge(Value::dictionary({{"spd", 3}}), Value::dictionary()));
    wait(2);
    tapOn(*outlet(carousel, "nextImageView"));
    wait(2);
    EXPECT_EQ(carousel.landscapeIndex(), 1);
    wait(1);
    EXPECT_EQ(carousel.landscapeIndex(), 2);
    wait(1);
    tapOn(*outlet(carousel, "previousImageView"));
    wait(2.9);
    EXPECT_EQ(carousel.landscapeIndex(), 1);
    carousel.stopCarouselTimer();
    wait(60);
    EXPECT_EQ(carousel.landscapeIndex(), 1);
}

TEST_F(CarouselsTest, ArrowsAndDotsAreForTheEdgeToEdgeLayout) {
    for (const bool isDark : {false, true}) {
        CVNSharedUtility::setIsDarkMode(isDark);
        auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(items(3), edgeToEdge());
        for (const char* name : {"previousImageView", "nextImageView"}) {
            const auto& arrow = outletOf<ui::ImageView>(carousel, name);
            EXPECT_FALSE(arrow.isHidden());
            ASSERT_NE(arrow.image(), nullptr);
            EXPECT_EQ(arrow.cornerRadius(), arrow.bounds().height / 2);
        }
        const auto& dots = outletOf<ui::PageControl>(carousel, "pageControl");
        EXPECT_FALSE(dots.isHidden());
        EXPECT_EQ(dots.numberOfPages(), 3);
        EXPECT_EQ(dots.cornerRadius(), 7);
        EXPECT_EQ(dots.backgroundColor(),
                  ui::DynamicColor(platform::Color::rgba(isDark ? 0x00000050 : 0xFFFFFF50)));
        adapters::memory::RecordingCanvas canvas;
        dots.draw(canvas);
        EXPECT_THAT(canvas.lines(),
                    testing::Contains(testing::EndsWith(isDark ? " #FFFFFFFF" : " #000000FF")));
    }
    auto& carousel =
        showCarousel<CVNLandscapeCarouselComponent>(items(3), Value::dictionary({{"lid", 71}}));
    for (const char* name : {"previousImageView", "nextImageView", "pageControl"})
        EXPECT_TRUE(outlet(carousel, name)->isHidden()) << name;
}

// --- Colours of pages

TEST_F(CarouselsTest, EntriesNameThePagesThatTheyColour) {
    struct Case {
        std::vector<Value> pages;  // of the entries; their colours are "0", "1", …
        const char* colors;        // of three pages, "-" for none
    };
    const Case cases[] = {
        {{"0-2"}, "0-0"}, {{"1"}, "-0-"},  {{"0-1", "1-2"}, "011"}, {{"0-0"}, "0--"},
        {{"3"}, "---"},   {{"-1"}, "-0-"},  // two names, one of them empty
        {{"01"}, "---"},  {{""}, "---"},   {{{}}, "---"},           {{"0", "0"}, "1--"}};
    for (const Case& each : cases) {
        Value entries = Value::array();
        for (std::size_t i = 0; i < each.pages.size(); ++i) {
            Value entry = Value::dictionary({{"olc", std::to_string(i)}});
            entry.setIfPresent("i", each.pages[i]);
            entries.append(entry);
        }
        std::vector<Value> properties;
        readOverlayProperties(entries, 3, properties);
        std::string colors;
        for (std::size_t i = 0; i < properties.size(); ++i) {
            colors += properties[i]["olc"] ? properties[i]["olc"].string() : "-";
            EXPECT_EQ(properties[i]["i"], Value(std::to_string(i)));
        }
        EXPECT_EQ(colors, each.colors) << entries.description();
    }
}

TEST_F(CarouselsTest, AnEntryThatCannotBeReadLeavesTheOthersAsFarAsTheyWere) {
    const Value entries = Value::array({Value::dictionary({{"i", "0"}, {"olc", "FF0000"}}),
                                        Value::dictionary({{"i", 1}, {"olc", "00FF00"}}),
                                        Value::dictionary({{"i", "2"}, {"olc", "0000FF"}})});
    memory_.logSink.clear();
    auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(
        items(3), edgeToEdge(Value::dictionary({{"colc", entries}})));
    EXPECT_TRUE(memory_.logSink.contains(
        "(FATAL) CVNLandscapeCarouselComponent: Invalid argument while fetching carousel index  "));
    const auto colorOf = [&](std::size_t page) {
        const auto& overlay = *carousel.pageStackViews()[page]->subviews()[1];
        return overlay.backgroundColor();
    };
    EXPECT_EQ(colorOf(0), ui::DynamicColor(platform::Color::rgba(0xFF0000FF)));
    EXPECT_EQ(colorOf(1), ui::DynamicColor(platform::Color::clear())) << "a veil";
    EXPECT_EQ(colorOf(2), ui::DynamicColor(platform::Color::clear()));
}

TEST_F(CarouselsTest, TextsReadOnTheColourBehindThem) {
    using platform::Color;
    struct Case {
        Value property;
        bool isDark;
        Color text;
    };
    const Value gradient = Value::array({"1", "FFFFFF", "000000", "180"});
    const Case cases[] = {
        {Value::dictionary({{"olc", "1B5E20"}}), false, Color::white()},
        {Value::dictionary({{"olc", "FFEB3B80"}}), true, Color::black()},
        {Value::dictionary({{"olgc", gradient}}), false, Color::white()},
        {Value::dictionary({{"olc", "FFFFFF"}, {"tc", "C62828"}}), false, Color::rgba(0xC62828FF)},
        {Value::dictionary(), false, Color::white()},
        {Value::dictionary(), true, Color::white()},
    };
    for (const Case& each : cases) {
        CVNSharedUtility::setIsDarkMode(each.isDark);
        auto& carousel = showCarousel<CVNLandscapeCarouselComponent>(Value::array({item("plain")}),
                                                                     edgeToEdge());
        CarouselItemView& page = *carousel.pageStackViews()[0];
        const Color own = Color::rgba(0x123456FF);
        const Color plain = each.isDark ? Color::white() : Color::black();
        platform::StyledText html;
        html.append("plain", {.font = {}, .color = plain});
        html.append("own", {.font = {}, .color = own});
        page.messageLabel().setAttributedText(html);
        page.setOverlayColors(each.property);
        EXPECT_EQ(page.titleLabel().textColor(), ui::DynamicColor(each.text));
        const auto& runs = page.messageLabel().attributedText()->runs;
        EXPECT_EQ(runs[0].attributes.color, each.text);
        EXPECT_EQ(runs[1].attributes.color, own) << "what the campaign chose";
        window_.layoutIfNeeded();
        EXPECT_EQ(page.subviews()[1]->layer().sublayers().size(), each.property["olc"] ? 0U : 1U)
            << "a gradient";
    }
}

// --- Both

TEST_F(CarouselsTest, ATapStoresTheItemAndOpensTheApp) {
    auto& portrait = showCarousel<CVNPortraitCarouselComponent>(items(5));
    for (int i = 0; i < 4; ++i) {
        portrait.nextItem();
        wait(0.3);
    }
    tapOn(*portrait.pageStackViews()[4]);
    EXPECT_EQ(CVNPushPreferencesManager::getCarouselIndex().integerValue(), 4);
    tapOn(*scrollView().subviews().back());
    EXPECT_EQ(CVNPushPreferencesManager::getCarouselIndex().integerValue(), 0) << "the copy";
    auto& landscape = showCarousel<CVNLandscapeCarouselComponent>(items(3), edgeToEdge());
    landscape.nextItemWithoutAnimation();
    tapOn(scrollView());
    EXPECT_EQ(CVNPushPreferencesManager::getCarouselIndex().integerValue(), 1);
    EXPECT_THAT(listener_->interactions, ElementsAre(1, 1, 1));
}

TEST_F(CarouselsTest, PicturesAreReadOnTheQueueWithAnotherInTheirPlaceMeanwhile) {
    std::vector<std::function<void()>> work;
    const auto queue = std::make_shared<foundation::OperationQueue>(
        [&](std::function<void()> block) { work.push_back(std::move(block)); });
    auto& landscape = showCarousel<CVNLandscapeCarouselComponent>(items(1));
    const auto nameOf = [](const CarouselItemView& page) {
        return page.picture() ? page.picture()->name() : "none";
    };
    Value section = Value::dictionary({{"type", "Carousel"}});
    section.set("carousel",
                Value::array({item("a"), item("b", "/media/missing.pic"), item("c", {})}));
    const Payload payload = show(section);
    landscape.didReceiveCarouselPayload(payload, queue, "cvn-pn-audio-play");
    wait(0.05);
    const auto& pages = landscape.pageStackViews();
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_EQ(nameOf(*pages[0]), "cvn-pn-audio-play");
    ASSERT_EQ(work.size(), 2U);
    for (const auto& each : work)
        each();
    wait(0);
    EXPECT_EQ(nameOf(*pages[0]), "wide.pic");
    EXPECT_EQ(nameOf(*pages[1]), "cvn-pn-audio-play") << "there is none to come";
    EXPECT_EQ(nameOf(*pages[2]), "cvn-pn-audio-play");

    auto& portrait = showCarousel<CVNPortraitCarouselComponent>(items(2));
    work.clear();
    portrait.didReceiveCarouselPayload(payload, queue, std::nullopt);
    wait(1);
    EXPECT_EQ(portrait.pageStackViews().size(), 2U) << "it waits for its pictures";
    for (const auto& each : work)
        each();
    wait(0.05);
    EXPECT_EQ(portrait.pageStackViews().size(), 3U);
}

TEST_F(CarouselsTest, AnotherPayloadBeginsAtItsFirstItem) {
    auto& landscape = showCarousel<CVNLandscapeCarouselComponent>(
        items(3), edgeToEdge(Value::dictionary({{"spd", 3}}), Value::dictionary()));
    landscape.updateCarousel();
    const Value list = Value::array({item("a", {}), item("b", {})});
    landscape.didReceiveCarouselPayload(
        show(Value::dictionary({{"type", "Carousel"}, {"carousel", list}})), nullptr, std::nullopt);
    wait(0.049);
    ASSERT_EQ(landscape.pageStackViews().size(), 3U) << "those before, for a moment";
    EXPECT_NE(landscape.pageStackViews()[0]->picture(), nullptr) << "with their own pictures";
    wait(0.001);
    ASSERT_EQ(landscape.pageStackViews().size(), 2U);
    EXPECT_EQ(landscape.pageStackViews()[1]->frame().x, kWidth);
    EXPECT_EQ(landscape.landscapeIndex(), 0);
    EXPECT_EQ(offset(), 0);
    EXPECT_EQ(outletOf<ui::PageControl>(landscape, "pageControl").currentPage(), 0);
    wait(2.9);
    EXPECT_EQ(landscape.landscapeIndex(), 0) << "its own three seconds";
}

TEST_F(CarouselsTest, APayloadWithoutItemsTakesThoseBeforeAway) {
    const auto test = [&](auto& carousel) {
        carousel.nextItem();
        carousel.didReceiveCarouselPayload(show(Value::dictionary({{"type", "Carousel"}})), nullptr,
                                           std::nullopt);
        // While they are still there.
        carousel.setNeedsLayout();
        window_.layoutIfNeeded();
        if constexpr (requires { carousel.scrollToPage(0); }) carousel.scrollToPage(0);
        wait(0.05);
        EXPECT_THAT(carousel.pageStackViews(), IsEmpty());
        EXPECT_THAT(scrollView().subviews(), IsEmpty());
        carousel.nextItem();
        wait(1);
    };
    test(showCarousel<CVNPortraitCarouselComponent>(items(3)));
    test(showCarousel<CVNLandscapeCarouselComponent>(items(3)));
}

TEST_F(CarouselsTest, PicturesThatAreFarTakeNoMemory) {
    std::vector<std::shared_ptr<CountedPicture>> pictures;
    const auto count = [&](auto& carousel) {
        pictures.clear();
        for (const auto& page : carousel.pageStackViews()) {
            pictures.push_back(std::make_shared<CountedPicture>());
            page->setPicture(pictures.back());
        }
    };
    const auto held = [&] {
        adapters::memory::RecordingCanvas canvas;
        window_.draw(canvas);
        std::string marks;
        for (const auto& picture : pictures)
            marks += picture->isHeld ? "x" : "-";
        return marks;
    };
    auto& landscape = showCarousel<CVNLandscapeCarouselComponent>(items(6), edgeToEdge());
    count(landscape);
    EXPECT_EQ(held(), "x-----");
    for (const char* marks : {"xx----", "-xx---"}) {
        landscape.nextItemWithoutAnimation();
        EXPECT_EQ(held(), marks);
    }
    landscape.previousItemWithoutAnimation();
    for (const char* marks : {"xx----", "x----x"}) {  // the last one is beside the first
        landscape.previousItemWithoutAnimation();
        EXPECT_EQ(held(), marks);
    }
    auto& portrait = showCarousel<CVNPortraitCarouselComponent>(items(6));
    count(portrait);
    EXPECT_EQ(held(), "xx----");
    for (const char* marks : {"xxx---", "-xxx--"}) {  // those on their way out are still seen
        portrait.nextItem();
        wait(0.3);
        EXPECT_EQ(held(), marks);
    }
}

TEST_F(CarouselsTest, ACarouselThatIsGoneDoesNothing) {
    showCarousel<CVNLandscapeCarouselComponent>(
        items(3), edgeToEdge(Value::dictionary({{"spd", 1}}), Value::dictionary({{"te", 2}})));
    carousel_->removeFromSuperview();
    carousel_ = nullptr;
    wait(10);
    auto& portrait = showCarousel<CVNPortraitCarouselComponent>(items(3));
    for (int i = 0; i < 3; ++i)
        portrait.nextItem();
    portrait.removeFromSuperview();
    carousel_ = nullptr;
    wait(1);
    EXPECT_THAT(container_->subviews(), IsEmpty());
}

}  // namespace
}  // namespace tavrolin::tests

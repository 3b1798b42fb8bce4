#include <gmock/gmock.h>

#include "tavrolin/content_ui/components/media_component.h"
#include "tavrolin/content_ui/layouts/carousel_layouts.h"
#include "tavrolin/content_ui/layouts/overlay_layout.h"
#include "tavrolin/content_ui/layouts/side_by_side_layout.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/ui/layer.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;

// A component whose interface file is missing.
class BrokenComponent final : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "BrokenComponent"; }
};

// A component that needs no interface file.
class BareComponent final : public CVNBaseComponentView {
public:
    std::string_view className() const override { return "BareComponent"; }
    std::shared_ptr<ui::View> initWithNib() override { return shared_from_this(); }
};

class LayoutsTest : public ContentUITest {
protected:
    static Value items(std::int64_t count) {
        Value list = Value::array();
        for (std::int64_t i = 0; i < count; ++i)
            list.append(Value::dictionary({{"imgUrl", "u"}}));
        return list;
    }
    /// Puts a notification on screen that has these: "file", "url", "rating", "button", "reply",
    /// "lt1", "items1" to "items3".
    void showWith(std::string_view features) {
        const auto has = [&](std::string_view feature) {
            return features.find(feature) != std::string_view::npos;
        };
        Value section = Value::dictionary({{"type", "Simple"}});
        Value settings = Value::dictionary({{"lid", 1}});
        if (has("file")) section.set("mediaURLPath", "/nothing.png");
        if (has("url")) section.set("mediaUrl", "https://a.example/x");
        if (has("button")) section.set("actionButton", Value::array({Value::dictionary()}));
        if (has("reply")) section.set("rbtn", Value::dictionary({{"name", "Reply"}}));
        if (has("items")) section.set("carousel", items(has("items3") ? 3 : has("items2") ? 2 : 1));
        if (has("rating")) settings.set("rat", Value::dictionary({{"ty", 1}}));
        if (has("lt1")) settings.set("lui", Value::dictionary({{"lt", 1}}));
        show(section, settings);
    }
    /// The slots that are shown, from top to bottom.
    static std::string slots(ui::View& layout) {
        std::string shown;
        for (const char* slot : {"header", "media", "rating", "actionButton"}) {
            const ui::View* view = outlet(layout, std::string(slot) + "ComponentContainer");
            if (view != nullptr && !view->isHidden())
                shown.append(shown.empty() ? "" : " ") += slot;
        }
        return shown;
    }
    static std::size_t gradientsOf(const ui::View& view) { return view.layer().sublayers().size(); }
};

TEST_F(LayoutsTest, FillTheirSlotsByTheNotification) {
    struct Case {
        const char* layout;
        const char* features;
        const char* slots;
    };
    const Case cases[] = {
        {"CVNLayout01", "file url", "header"},
        {"CVNLayout01", "rating reply", "header rating actionButton"},
        {"CVNLayout21", "url", "header"},
        {"CVNLayout21", "file reply", "header media actionButton"},
        {"CVNLayout23", "url button", "header actionButton"},
        {"CVNLayout23", "file rating reply", "header media rating actionButton"},
        {"CVNLayout24", "file reply", "header media"},
        {"CVNLayout24", "rating button", "header rating actionButton"},
        {"CVNLayout41", "reply", "header media actionButton"},
        {"CVNLayout51", "file rating", "header rating"},
        {"CVNLayout51", "url reply", "header media actionButton"},
        {"CVNLayout61", "file", "header"},
        {"CVNLayout61", "url button", "header media actionButton"},
        {"CVNLayout71", "items1 button reply", "header media"},
        {"CVNLayout71", "items2 rating", "header media rating actionButton"},
        {"CVNLayout72", "items3 reply", "header media"},
        {"CVNLayout72", "button", "header media actionButton"},
        {"CVNLayout91", "items2 button", "header media"},
        {"CVNLayout91", "items3", "header media actionButton"},
        {"CVNLayout92", "items3 lt1", "media actionButton"},
        {"CVNLayout92", "items2 rating", "header media rating"},
    };
    registerClass<BareComponent>("CVNRatingComponent");
    registerClass<BareComponent>("CVNActionButtonComponent");
    for (const Case& each : cases) {
        showWith(each.features);
        const auto layout = load<CVNBaseLayoutView>(each.layout);
        EXPECT_EQ(slots(*layout), each.slots) << each.layout << " with " << each.features;
        ASSERT_EQ(container_->subviews().size(), 1U) << "it takes the place of the one before";
    }
    EXPECT_FALSE(memory_.logSink.contains("Could not load layout"));
}

TEST_F(LayoutsTest, StopAtWhatRaisesWithAMessageOfTheirOwn) {
    registerClass<BrokenComponent>("CVNRatingComponent");
    const std::pair<const char*, const char*> cases[] = {
        {"CVNLayout01", "layout01"}, {"CVNLayout21", "layout21"}, {"CVNLayout23", "layout22"},
        {"CVNLayout24", "layout22"}, {"CVNLayout41", "layout21"}, {"CVNLayout51", "layout21"},
        {"CVNLayout61", "layout21"}, {"CVNLayout71", "layout71"}, {"CVNLayout72", "layout72"},
        {"CVNLayout91", "layout21"}, {"CVNLayout92", "layout21"},
    };
    for (const auto& [name, named] : cases) {
        showWith("file url rating button items3");
        memory_.logSink.clear();
        const auto layout = load<CVNBaseLayoutView>(name);
        EXPECT_EQ(slots(*layout),
                  name == std::string("CVNLayout01") ? "header rating" : "header media rating")
            << name;
        EXPECT_TRUE(memory_.logSink.contains("(FATAL) " + std::string(name) + ": Could not load " +
                                             named + " due to exception  "))
            << name;
    }
}

TEST_F(LayoutsTest, TheOverlaysHeaderIsPaintedOnEachPass) {
    struct Case {
        Value settings;
        bool dark;
        unsigned long rgba;
    };
    const Case cases[] = {
        {Value::dictionary({{"olc", "11223344"}, {"olgc", Value::array()}}), true, 0x11223344},
        {Value::dictionary(), true, 0x00000050},
        {Value::dictionary(), false, 0xFFFFFF50},
    };
    for (const Case& each : cases) {
        show({}, Value::dictionary({{"lui", each.settings}}));
        CVNSharedUtility::setIsDarkMode(each.dark);
        const auto layout = load("CVNLayout23");
        layout->layoutSubviews();
        EXPECT_EQ(outlet(*layout, "headerComponentContainer")->backgroundColor(),
                  ui::DynamicColor(platform::Color::rgba(each.rgba)));
    }

    const Value gradient = Value::array({"1", "FF0000", "00FF00", "45"});
    show({}, Value::dictionary({{"lui", Value::dictionary({{"olgc", gradient}})}}));
    const auto layout = load("CVNLayout23");
    ui::View& header = *outlet(*layout, "headerComponentContainer");
    layout->layoutSubviews();
    EXPECT_EQ(gradientsOf(header), 0U) << "it waits until the header has its size";
    layout->layoutSubviews();
    header.setFrame({0, 0, 70, 30});
    run();
    ASSERT_EQ(gradientsOf(header), 1U);
    EXPECT_EQ(header.layer().sublayers()[0]->frame(), header.bounds());

    // One that is too short is told, and ends nothing.
    show({}, Value::dictionary({{"lui", Value::dictionary({{"olgc", Value::array()}})}}));
    load("CVNLayout23")->layoutSubviews();
    memory_.logSink.clear();
    run();
    EXPECT_TRUE(memory_.logSink.contains("Could not load layout22 due to exception  "));
    // And a layout that is gone by then is none any more.
    load("CVNLayout23")->layoutSubviews();
    container_ = std::make_shared<ui::View>();
    run();
}

TEST_F(LayoutsTest, TheOverlaysTextsStandOnAVeilWhereThePayloadSaysNothing) {
    struct Case {
        bool hasFile;
        bool hasSettings;
        bool veil;
    };
    for (const Case& each :
         {Case{true, false, true}, Case{true, true, false}, Case{false, false, false}}) {
        Value section = Value::dictionary();
        Value settings = Value::dictionary();
        if (each.hasFile) section.set("mediaURLPath", "/nothing.png");
        if (each.hasSettings) settings.set("lui", Value::dictionary());
        show(section, settings);
        const auto layout = load("CVNLayout23");
        layout->layoutSubviews();
        EXPECT_EQ(outlet(*layout, "veil")->isHidden(), !each.veil);
        EXPECT_EQ(outlet(*layout, "headerComponentContainer")->backgroundColor().has_value(),
                  each.hasSettings);
    }
}

TEST_F(LayoutsTest, TheOverlaysHeaderStaysAtTheTopOnlyWithoutAPicture) {
    for (const bool hasFile : {true, false}) {
        showWith(hasFile ? "file" : "");
        const auto layout = load("CVNLayout23");
        bool topIsActive = false;
        for (const auto& each : outlet(*layout, "headerComponentContainer")->constraints()) {
            topIsActive |= each->isActive() && each->relation() == ui::LayoutRelation::equal &&
                           each->first().attribute == ui::LayoutAttribute::top;
        }
        EXPECT_EQ(topIsActive, !hasFile);
    }
}

TEST_F(LayoutsTest, ASmallPictureStandsWhereThePayloadWantsIt) {
    for (const Value& place : {Value(2), Value("2"), Value(1), Value()}) {
        Value image = Value::dictionary();
        image.setIfPresent("p", place);
        show({}, Value::dictionary({{"lui", Value::dictionary({{"img", image}})}}));
        const auto layout = load("CVNLayout24");
        EXPECT_EQ(outlet(*layout, "horizontalStackView")->semanticContentAttribute() ==
                      ui::SemanticContentAttribute::forceRightToLeft,
                  place.integerValue() == 2)
            << place.description();
    }
    show({}, Value::dictionary({{"lui", Value::dictionary({{"img", "left"}})}}));
    memory_.logSink.clear();
    load("CVNLayout24");
    EXPECT_TRUE(memory_.logSink.contains("(FATAL) CVNLayout24: Could not load layout22"));
}

TEST_F(LayoutsTest, TheMediaSlotTakesTheComponentOfTheType) {
    for (const char* name : {"CVNImageComponent", "CVNGifComponent", "CVNAudioComponent",
                             "CVNVideoComponent", "CVNMultiImageComponent"})
        registerClass<BareComponent>(name);
    for (const char* name : {"CVNLandscapeCarouselComponent", "CVNPortraitCarouselComponent"})
        registerClass<RecordingCarousel>(name);
    struct Case {
        const char* type;
        std::int64_t layout, items;
        bool hasFile;
        const char* chosen;
        bool shown;
    };
    const Case cases[] = {
        {"Image", 21, 0, true, "BareComponent", true},
        {"Image", 21, 0, false, "BareComponent", false},
        {"Gif", 41, 0, true, "BareComponent", true},
        {"Audio", 51, 0, false, "BareComponent", false},
        {"Video", 61, 0, true, "BareComponent", true},
        {"CarouselLandscape", 71, 1, false, "RecordingCarousel", true},
        {"CarouselLandscape", 71, 0, true, "", false},
        {"CarouselPortrait", 92, 1, false, "BareComponent", true},
        {"CarouselPortrait", 91, 1, false, "RecordingCarousel", true},
        {"CarouselPortrait", 91, 0, false, "", false},
        {"Simple", 1, 3, true, "", false},
    };
    for (const Case& each : cases) {
        Value section = Value::dictionary({{"type", each.type}, {"carousel", items(each.items)}});
        if (each.hasFile) section.set("mediaURLPath", "/x");
        show(section, Value::dictionary({{"lid", each.layout}}));
        memory_.logSink.clear();
        const auto media = load<CVNMediaComponent>("CVNMediaComponent");
        const auto chosen = media->baseContainerView();
        EXPECT_EQ(chosen ? chosen->className() : "", each.chosen) << each.type;
        ui::View& slot = *outlet(*media, "mediaContainer");
        EXPECT_EQ(slot.isHidden(), !each.shown) << each.type;
        EXPECT_EQ(slot.subviews().size(), each.shown ? 1U : 0U) << each.type;
        EXPECT_EQ(
            memory_.logSink.contains("(INFO) CVNMediaComponent: A new media type is introduced "
                                     "which is not supported in current version."),
            chosen == nullptr)
            << each.type;
    }
    memory_.bundles.libraryBundle.setResource("CorvalenPushSDKConfig", "plist",
                                              Value::dictionary());
    show(Value::dictionary({{"type", "CarouselPortrait"}, {"carousel", items(1)}}),
         Value::dictionary({{"lid", 92}}));
    EXPECT_EQ(load<CVNMediaComponent>("CVNMediaComponent")->baseContainerView()->className(),
              "RecordingCarousel")
        << "the type may not be shown as a row";
    registerClass<BrokenComponent>("CVNImageComponent");
    show(Value::dictionary({{"type", "Image"}}));
    memory_.logSink.clear();
    load("CVNMediaComponent");
    EXPECT_TRUE(memory_.logSink.contains(
        "(FATAL) CVNMediaComponent: Could not load header component due to exception  "));
}

TEST_F(LayoutsTest, PressesReachACarouselWhoseButtonsTheyAre) {
    registerClass<RecordingCarousel>("CVNLandscapeCarouselComponent");
    registerClass<RecordingCarousel>("CVNPortraitCarouselComponent");
    struct Case {
        const char* layout;
        std::int64_t layoutId;
        const char* type;
        bool forwarded;
    };
    // On layout 72 they are the layout's own, unless the type may not be shown with it.
    const Case cases[] = {{"CVNLayout71", 71, "CarouselLandscape", true},
                          {"CVNLayout72", 72, "CarouselLandscape", false},
                          {"CVNLayout91", 91, "CarouselPortrait", true},
                          {"CVNLayout92", 92, "CarouselLandscape", true},
                          {"CVNLayout72", 500, "CarouselLandscape", true}};
    for (const Case& each : cases) {
        show(Value::dictionary({{"type", each.type}, {"carousel", items(2)}}),
             Value::dictionary({{"lid", each.layoutId}}));
        const auto layout = load<CarouselLayoutView>(each.layout);
        const auto carousel = std::dynamic_pointer_cast<RecordingCarousel>(
            layout->mediaComponent()->baseContainerView());
        ASSERT_NE(carousel, nullptr);
        layout->didReceiveCarouselButtonResponse("1");
        EXPECT_EQ(carousel->calls.size(), each.forwarded ? 1U : 0U)
            << each.layout << " " << each.layoutId;
    }
}

}  // namespace
}  // namespace tavrolin::tests

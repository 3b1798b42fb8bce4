#include <gmock/gmock.h>

#include "adapters/memory/memory_extension_context.h"
#include "tavrolin/content_ui/components/action_button_component.h"
#include "tavrolin/content_ui/components/multi_image_component.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Le;

class Reports final : public CVNCustomPushNotificationInteractionDelegate {
public:
    void handleCustomPushNotificationInteraction(const Value& data) override {
        interactions.push_back(data[kCustomPNButtonInteraction].integerValue());
    }
    std::vector<std::int64_t> interactions;
};

class PicturesAndButtonsTest : public ContentUITest {
protected:
    static constexpr double kWidth = 424;

    PicturesAndButtonsTest() {
        memory_.files.write("/media/a.pic", "GIF89a");
        memory_.files.write("/media/broken.pic", "x");
        controller_.view().addSubview(container_);
        ui::pinEdgesToSuperview(*container_);
        CVNNotificationViewHelper::setCustomNotificationDelegate(reports_);
        CVNNotificationViewHelper::setNotificationExtenstionContent(context_);
    }
    void showItems(const Value& items, const Value& settings) {
        Value ui = Value::dictionary({{"lid", 92}});
        ui.setIfPresent("lui", settings);
        show(Value::dictionary({{"type", "CarouselPortrait"}, {"carousel", items}}), ui);
    }
    static Value items(std::int64_t count, const Value& path = "/media/a.pic") {
        Value list = Value::array();
        for (std::int64_t i = 0; i < count; ++i)
            list.append(Value::dictionary({{"imgUrlPath", path}}));
        return list;
    }
    static Value positionOf(const Value& position) {
        Value settings = Value::dictionary();
        settings.setIfPresent("pos", position);
        return settings;
    }
    static Value button(const Value& name, const Value& type) {
        return Value::dictionary({{"actionName", name}, {"aTyp", type}});
    }
    static Value buttons(std::int64_t count) {
        Value list = Value::array();
        for (std::int64_t i = 0; i < count; ++i)
            list.append(button("Button " + std::to_string(i), 1));
        return list;
    }
    std::shared_ptr<CVNActionButtonComponent> showButtons(Value list, const Value& styles = {}) {
        Value ui = Value::dictionary({{"lid", 24}});
        if (styles) ui.set("lui", Value::dictionary({{"btn", styles}}));
        show(Value::dictionary({{"type", "Image"}, {"actionButton", std::move(list)}}), ui);
        const auto component = load<CVNActionButtonComponent>("CVNActionButtonComponent");
        window_.layoutIfNeeded();
        return component;
    }
    /// The buttons in the view.
    std::vector<ui::Button*> shownButtons() {
        std::vector<ui::Button*> found;
        collect(*container_, found);
        return found;
    }
    static void collect(ui::View& view, std::vector<ui::Button*>& found) {
        if (auto* const each = dynamic_cast<ui::Button*>(&view)) found.push_back(each);
        for (const auto& subview : view.subviews())
            collect(*subview, found);
    }
    /// Background, title colour and corner radius.
    static std::string lookOf(const ui::View& view) {
        Value tree = Value::dictionary();
        view.describe(tree);
        return tree["backgroundColor"].description() + " " + tree["textColor"].description() + " " +
               tree["cornerRadius"].description();
    }
    platform::Rect placeOf(const ui::View& view) {
        return view.convertRect(view.bounds(), controller_.view());
    }
    void tapOn(const ui::View& view) {
        const platform::Rect place = placeOf(view);
        ui::tap(controller_.view(), {place.x + place.width / 2, place.y + place.height / 2});
    }
    ui::ImageView& slot(std::int64_t tag) {
        return outletOf<ui::ImageView>(*container_, "imageSlot" + std::to_string(tag));
    }

    ui::ViewController controller_;
    ui::Window window_{controller_, kWidth, {}};
    std::shared_ptr<Reports> reports_ = std::make_shared<Reports>();
    std::shared_ptr<adapters::memory::MemoryExtensionContext> context_ =
        std::make_shared<adapters::memory::MemoryExtensionContext>();
};

TEST_F(PicturesAndButtonsTest, PicturesStandTogetherWhereThePayloadWantsThem) {
    const double pixel = 0.5;
    for (const Value& position :
         {Value(1), Value(3), Value(2), Value(7), Value("3"), Value(), Value::dictionary()}) {
        const std::int64_t side = foundation::integerOrZero(position);
        for (std::int64_t count = 1; count <= 7; ++count) {
            showItems(items(count), positionOf(position));
            const auto row = load<CVNMultiImageComponent>("CVNMultiImageComponent");
            const std::string where = position.description() + ", " + std::to_string(count);
            EXPECT_DOUBLE_EQ(row->imageItemWidthForStackView(), 65.6) << where;
            window_.layoutIfNeeded();
            const std::int64_t filled = std::min<std::int64_t>(count, 5);
            const platform::Rect stack = placeOf(*outlet(*row, "horizontalImageStack"));
            for (std::int64_t tag = 0; tag < 5; ++tag) {
                const platform::Rect place = placeOf(slot(tag));
                EXPECT_EQ(slot(tag).image() != nullptr, tag < filled) << where;
                EXPECT_THAT(place.x, AllOf(Ge(stack.x), Le(stack.x + stack.width - place.width)))
                    << where;
                EXPECT_NEAR(place.height, 65.6, pixel) << where;
                if (tag >= filled) continue;
                EXPECT_NEAR(place.width, 65.6, pixel) << where;
                EXPECT_NEAR(place.x - placeOf(slot(0)).x, 73.6 * static_cast<double>(tag), pixel)
                    << where;
            }
            const double left = placeOf(slot(0)).x;
            const double right = kWidth - left - 73.6 * static_cast<double>(filled) + 8;
            if (side == 1) {
                EXPECT_EQ(left, 16) << where;
            } else if (side == 3) {
                EXPECT_NEAR(right, 16, pixel) << where;
            } else {
                EXPECT_NEAR(left, right, 2 * pixel) << where;
            }
        }
    }
}

TEST_F(PicturesAndButtonsTest, ThePositionIsTheMiddleWhereThePayloadHasNone) {
    const auto position = [&](const Value& settings) {
        showItems(items(1), settings);
        const auto row = load<CVNMultiImageComponent>("CVNMultiImageComponent");
        memory_.logSink.clear();
        return row->getPositionOfMultiImageFromPayload();
    };
    const std::string info = "(INFO) CVNMultiImageComponent: MultiImage: ";
    EXPECT_EQ(position(positionOf(7)), 7);
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr(info + "Position found in payload: 7 ")));
    EXPECT_EQ(position(positionOf({})), 2);
    EXPECT_THAT(takeLog(),
                ElementsAre(HasSubstr(info + "No position found in payload, using default: 2 ")));
    for (const Value& none : {Value(), Value("text")}) {
        EXPECT_EQ(position(none), 2);
        EXPECT_THAT(takeLog(),
                    ElementsAre(HasSubstr(
                        info + "No cvnLui found in payload, using default position: 2 ")));
    }
}

TEST_F(PicturesAndButtonsTest, APictureThatCannotBeReadLeavesAQuietBox) {
    for (const Value& path : {Value("/media/broken.pic"), Value("/media/missing.pic"),
                              Value("relative.pic"), Value(7), Value::null()}) {
        showItems(items(2, path), {});
        load("CVNMultiImageComponent");
        window_.layoutIfNeeded();
        for (std::int64_t tag = 0; tag < 5; ++tag) {
            EXPECT_EQ(slot(tag).image(), nullptr) << path.description();
            EXPECT_EQ(slot(tag).backgroundColor().has_value(), tag < 2) << path.description();
        }
        EXPECT_NEAR(placeOf(slot(0)).width, 65.6, 0.5) << path.description();
    }
    EXPECT_FALSE(memory_.logSink.contains("(FATAL)"));
}

TEST_F(PicturesAndButtonsTest, ATapOnAPictureRemembersItAndOpensTheApp) {
    using Preferences = CVNPushPreferencesManager;
    for (const std::int64_t count : {2, 3}) {
        showItems(items(count), positionOf(2));
        load("CVNMultiImageComponent");
        window_.layoutIfNeeded();
        for (std::int64_t tag = count; tag < 5; ++tag)
            tapOn(slot(tag));
        if (count == 2) tapOn(*outlet(*container_, "halfSlot"));
        EXPECT_TRUE(Preferences::getCarouselIndex().isNil());
    }
    EXPECT_THAT(reports_->interactions, IsEmpty());
    tapOn(slot(2));
    EXPECT_EQ(Preferences::getCarouselIndex(), Value("2"));
    EXPECT_THAT(reports_->interactions, ElementsAre(1));
}

TEST_F(PicturesAndButtonsTest, TheSystemsButtonsComeFromThePayload) {
    struct Case {
        const char* type;
        std::int64_t layout;
        Value buttons;
        bool hasReply;
        std::vector<std::string> shown;
    };
    const Value three = Value::array({button("A", 1), button("B", 3), button("C", "4")});
    const Value odd = Value::array({button("A", 5), button(7, Value::dictionary()), Value("x")});
    const std::vector<std::string> carousel = {"0:Next:4", "1:Previous:4"};
    const Case cases[] = {
        {"Simple", 1, three, false, {"0:A:4", "1:B:2", "2:C:4"}},
        {"Simple", 1, three, true, {"3:Reply:5:Reply:Words", "0:A:4", "1:B:2", "2:C:4"}},
        {"Simple", 1, odd, false, {"1::4"}},
        {"Simple", 500, three, false, {"0:A:4", "1:B:2", "2:C:4"}},
        {"CarouselLandscape", 71, three, true, carousel},
        {"CarouselPortrait", 91, three, false, carousel},
        {"CarouselPortrait", 500, three, true, carousel},
        {"CarouselLandscape", 72, three, false, {}},
        {"CarouselLandscape", 72, buttons(1), true, {"1:Reply:5:Reply:Words", "0:Button 0:4"}},
        {"CarouselPortrait", 92, buttons(1), false, {"0:Button 0:4"}},
        {"Simple", 1, Value::array(), true, {"before::0"}},
    };
    const auto texts = [&] {
        std::vector<std::string> result;
        for (const auto& each : context_->notificationActions()) {
            result.push_back(each.identifier + ":" + each.title + ":" +
                             std::to_string(each.options));
            if (each.textInput)
                result.back() +=
                    ":" + each.textInput->buttonTitle + ":" + each.textInput->placeholder;
        }
        return result;
    };
    const auto showCase = [&](const Case& each) {
        context_->setNotificationActions({{.identifier = "before", .title = ""}});
        Value section = Value::dictionary({{"type", each.type}, {"actionButton", each.buttons}});
        if (each.hasReply)
            section.set("rbtn",
                        Value::dictionary({{"name", "Reply"}, {"aTyp", 5}, {"pht", "Words"}}));
        show(section, Value::dictionary({{"lid", each.layout}}));
        load("CVNActionButtonComponent");
    };
    for (const Case& each : cases) {
        showCase(each);
        EXPECT_EQ(texts(), each.shown) << each.type << " " << each.layout;
    }
    window_.layoutIfNeeded();
    EXPECT_EQ(window_.size().height, 0) << "nothing of its own";
    install(11);
    showCase(cases[0]);
    EXPECT_THAT(texts(), ElementsAre("before::0"));
    CVNNotificationViewHelper::setNotificationExtenstionContent(nullptr);
    install(17);
    showCase(cases[0]);
    EXPECT_FALSE(memory_.logSink.contains("Could not set action button"));
}

TEST_F(PicturesAndButtonsTest, ButtonsInTheViewAreStyledByTheirPlace) {
    const auto style = [](const Value& index) {
        return Value::dictionary({{"i", index}, {"bgc", "112233"}, {"tc", "445566"}, {"br", 20}});
    };
    // An entry for two, one with a bad radius, one for the title only, one of other kinds, none.
    const Value styles =
        Value::array({style("0-1"), Value::dictionary({{"i", 9}, {"bgc", "778899"}, {"br", -3}}),
                      Value::dictionary({{"tc", "AABBCC"}, {"br", "text"}}),
                      Value::dictionary({{"i", Value::array()},
                                         {"bgc", 7},
                                         {"tc", Value::array()},
                                         {"br", Value::dictionary()}}),
                      "text"});
    showButtons(buttons(7), styles);
    const char* const looks[] = {"#112233FF #445566FF 20", "#112233FF #445566FF 20",
                                 "#778899FF #000000FF 0",  "<null> #AABBCCFF 0",
                                 "#E4E4E6FF #000000FF 8",  "#E4E4E6FF #000000FF 8",
                                 "#E4E4E6FF #000000FF 8"};
    const auto shown = shownButtons();
    ASSERT_EQ(shown.size(), 7U);
    for (std::size_t i = 0; i < shown.size(); ++i) {
        EXPECT_EQ(lookOf(*shown[i]), looks[i]) << i;
        EXPECT_EQ(shown[i]->tag(), static_cast<std::int64_t>(i));
    }
    window_.setTraitCollection({.userInterfaceStyle = ui::UserInterfaceStyle::dark});
    EXPECT_EQ(lookOf(*shown[6]), "#98989DFF #000000FF 8") << "black can be read on it";
    window_.setTraitCollection({});
    for (const Value& other : {Value("text"), Value::dictionary(), Value::array()}) {
        showButtons(buttons(2), other);
        EXPECT_EQ(lookOf(*shownButtons().at(1)), looks[6]) << other.description();
    }
    EXPECT_FALSE(memory_.logSink.contains("(FATAL)"));
    // More pieces than there are buttons cost nothing.
    showButtons(buttons(2), Value::array({style(std::string(1'000'000, '-'))}));
    EXPECT_EQ(lookOf(*shownButtons().at(1)), looks[0]);
}

TEST_F(PicturesAndButtonsTest, ButtonsInTheViewShareTheirRow) {
    const auto component = showButtons(buttons(1));
    EXPECT_EQ(window_.size().height, 40 + 16);
    const platform::Rect alone = placeOf(*shownButtons().at(0));
    EXPECT_EQ(alone.x, 16);
    const auto words = std::make_shared<ui::Label>();
    words->setText("Button 0");
    words->setFont({.size = 15});
    EXPECT_EQ(alone.width, words->intrinsicContentSize(kWidth).width + 2 * 10) << "its own width";
    EXPECT_EQ(alone.height, 40);
    component->configureNotification();
    EXPECT_EQ(shownButtons().size(), 1U) << "the ones before go";

    showButtons(Value::array({button(std::string(1'000, 'w'), 1)}));
    EXPECT_EQ(placeOf(*shownButtons().at(0)).width, kWidth - 32);

    for (const std::int64_t count : {2, 5, 50}) {
        showButtons(buttons(count));
        const auto shown = shownButtons();
        ASSERT_EQ(shown.size(), static_cast<std::size_t>(count));
        const double step = (kWidth - 32 + 4) / static_cast<double>(count);
        for (std::size_t i = 0; i < shown.size(); ++i) {
            const platform::Rect place = placeOf(*shown[i]);
            EXPECT_NEAR(place.x, 16 + step * static_cast<double>(i), 0.5) << count;
            EXPECT_NEAR(place.width, step - 4, 0.5) << count;
        }
    }
    showButtons(Value::array({Value::dictionary(), button(Value::null(), "x")}));
    EXPECT_EQ(shownButtons().at(1)->title(), "");
}

TEST_F(PicturesAndButtonsTest, ATapOnAButtonRemembersItAndOpensTheApp) {
    showButtons(buttons(2));
    tapOn(*shownButtons().at(1));
    EXPECT_EQ(CVNPushPreferencesManager::getActionButtonIndex(), Value("1"));
    EXPECT_THAT(reports_->interactions, ElementsAre(1));
}

}  // namespace
}  // namespace tavrolin::tests

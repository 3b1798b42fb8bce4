#include "tavrolin/content_ui/layout_utility.h"

#include <gmock/gmock.h>

#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;

class LayoutUtilityTest : public ContentUITest {
protected:
    void setLayoutConfig(const Value& types) {
        memory_.bundles.libraryBundle.setResource("CorvalenPushSDKConfig", "plist",
                                                  Value::dictionary({{"LayoutConfig", types}}));
    }
};

TEST_F(LayoutUtilityTest, ChoosesByTheShippedConfiguration) {
    struct Case {
        Value layoutId, fallback;
        const char* type;
        const char* result;
    };
    const Case cases[] = {
        {1, 1, "Simple", "CVNLayout01"},
        {21, 1, "Simple", "CVNLayout01"},
        {22, 24, "Image", "CVNLayout21"},  // remapped before the fallback is asked
        {5, 24, "Image", "CVNLayout24"},
        {5, 6, "Image", "CVNLayout21"},
        {{}, {}, "Image", "CVNLayout21"},
        {21, 23, "Gif", "CVNLayout41"},
        {42, 1, "Gif", "CVNLayout41"},
        {72.0, 71, "CarouselLandscape", "CVNLayout72"},
        {92, 91, "CarouselPortrait", "CVNLayout92"},
        {3, 4, "Unknown", "CVNLayout01"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutId(each.layoutId, each.fallback, each.type),
                  each.result)
            << each.type << each.layoutId.description();
    }
    // Every layout and every type by default has a class and an interface file.
    for (const char* type :
         {"Simple", "Image", "Gif", "Audio", "Video", "CarouselLandscape", "CarouselPortrait"}) {
        for (const Value& id :
             CVNLayoutUtility::getSupportedLayoutIdsFromLayoutId({}, type).items()) {
            const std::string name = CVNLayoutUtility::getSupportedLayoutId(id, {}, type);
            EXPECT_EQ(name, "CVNLayout" + std::string(id.integerValue() < 10 ? "0" : "") +
                                id.description());
            EXPECT_NE(makeNotificationView<CVNBaseLayoutView>(name), nullptr) << name;
        }
    }
}

TEST_F(LayoutUtilityTest, TakesAStrangeConfigurationAsFarAsItGoes) {
    const Value one = Value::array({1});
    setLayoutConfig(Value::dictionary(
        {{"Similar", Value::dictionary({{"supportedLayouts", Value::array({21})},
                                        {"similarLayouts", Value::dictionary({{"21", 41}})}})},
         {"Bare", Value::dictionary({{"supportedLayouts", one}})},
         {"Broken", Value::dictionary({{"supportedLayouts", "none"}, {"defaultLayout", 7}})},
         {"Seven", Value::dictionary({{"defaultLayout", 7}})}}));
    memory_.logSink.clear();
    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutId(21, {}, "Similar"), "CVNLayout41");
    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutId(2, 3, "Bare"), "CVNLayout00");
    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutId(2, 3, "Seven"), "CVNLayout07");
    EXPECT_FALSE(memory_.logSink.contains("(FATAL)"));

    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutId(2, 3, "Broken"), "CVNLayout01");
    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutId("21", 3, "Similar"), "CVNLayout01");
    EXPECT_TRUE(
        memory_.logSink.contains("(FATAL) CVNLayoutUtility: Could not fetch filename based on "
                                 "layout id due to exception: "));
    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutIdsFromLayoutId(99, "Bare"), one);
    EXPECT_EQ(CVNLayoutUtility::getSupportedLayoutIdsFromLayoutId(99, "Nothing"), Value::array());
}

}  // namespace
}  // namespace tavrolin::tests

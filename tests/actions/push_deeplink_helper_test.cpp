#include "tavrolin/actions/push_deeplink_helper.h"

#include <gmock/gmock.h>

#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::URL;
using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Helper = CVNPushDeeplinkHelper;

class PushDeeplinkHelperTest : public MemorySDKTest {
protected:
    void setURLTypes(const Value& types) {
        memory_.bundles.mainBundle.setInfoDictionary(
            types ? Value::dictionary({{"CFBundleURLTypes", types}}) : Value::dictionary());
    }
    static Value schemes(const Value& list) {
        return Value::dictionary({{"CFBundleURLSchemes", list}});
    }
    // What a completion got, in words; "nothing" when it was not called.
    Helper::Completion completion() {
        result_ = "nothing";
        return [this](const Value& link, bool deliver, const Value& custom) {
            result_ = link.description() + (deliver ? " app " : " system ") + custom.description();
        };
    }

    std::string result_;
};

TEST_F(PushDeeplinkHelperTest, DecidesWhoGetsTheLink) {
    setURLTypes(Value::array({schemes(Value::array({"shop", "shop-beta"}))}));
    const Value custom = Value::dictionary({{"k", 1}});
    struct Case {
        Value link, custom;
        const char* result;
        std::vector<std::string> opened;
    };
    const Case cases[] = {
        {"https://a.example/x", {}, "https://a.example/x app (null)", {}},
        {" \r\n\tHTTP://a.example ", {}, "HTTP://a.example app (null)", {}},
        {"httpx:a", {}, "httpx:a app (null)", {}},
        {"shop://cart", {}, "shop://cart app (null)", {}},
        {"SHOP2://cart", {}, "SHOP2://cart app (null)", {}},  // contains one that is configured
        {"sho://cart", {}, "sho://cart system (null)", {"sho://cart"}},
        {"tel:123", custom, R"(tel:123 app {"k": 1})", {"tel:123"}},
        {"tel:123", Value::dictionary(), "tel:123 system {}", {"tel:123"}},
        {"tel:123", "no dictionary", "tel:123 system no dictionary", {"tel:123"}},
        {"no scheme", {}, "no scheme system (null)", {}},
        {"https://a b", {}, "https://a b system (null)", {}},  // no URL
        {"/path", custom, R"(/path app {"k": 1})", {}},
        {{}, custom, R"((null) app {"k": 1})", {}},
        {"  ", custom, R"( app {"k": 1})", {}},
        {"  ", {}, "nothing", {}},
        {{}, Value::dictionary(), "nothing", {}},
        {7, {}, "nothing", {}},
        {Value::null(), custom, R"((null) app {"k": 1})", {}},
    };
    std::size_t opened = 0;
    for (const auto& [link, payload, expected, opens] : cases) {
        Helper::handleDeeplinkURLString(link, payload, completion());
        EXPECT_EQ(result_, expected) << link.description();
        auto urls = memory_.application.openedURLs();
        urls.erase(urls.begin(), urls.begin() + static_cast<std::ptrdiff_t>(opened));
        opened += urls.size();
        EXPECT_EQ(urls, opens) << link.description();
    }
    EXPECT_THAT(takeLog(), IsEmpty());
    Helper::handleDeeplinkURLString("https://a.example", {}, {});
}

TEST_F(PushDeeplinkHelperTest, KnowsTheAppsSchemesInWhateverShapeTheyCome) {
    struct Case {
        Value types;
        bool matches;
        bool isLogged;
    };
    const Value own = schemes(Value::array({"shop"}));
    const Case cases[] = {
        {{}, false, false},
        {Value::array(), false, false},
        {Value::array({Value::dictionary(), own}), true, false},
        {Value::array({schemes(Value::array({"SHOP"}))}), true, false},
        {Value::array({schemes(Value::array({""}))}), false, false},
        {own, false, true},
        {"text", false, true},
        {Value::array({own, "text"}), false, true},
        {Value::array({own, schemes("shop")}), false, true},
        {Value::array({own, schemes(Value::array({7}))}), false, true},
    };
    for (const auto& [types, matches, isLogged] : cases) {
        setURLTypes(types);
        EXPECT_EQ(Helper::doesMatchAppConfiguredURLScheme("Shop"), matches) << types.description();
        const auto lines = takeLog();
        ASSERT_EQ(lines.size(), isLogged ? 1U : 0U) << types.description();
        if (isLogged) {
            EXPECT_THAT(lines.front(), HasSubstr("Could not check URL scheme for deeplink due to "
                                                 "exception: "));
        }
    }
}

TEST_F(PushDeeplinkHelperTest, HandsOpenedAndUniversalLinksToTheApp) {
    const auto url = URL::withString("shop://cart");
    Helper::handleOpenURLScheme(*url, completion());
    EXPECT_EQ(result_, "shop://cart app (null)");
    Helper::handleUniversalLinkWithUserActivity(
        {std::string(platform::kActivityTypeBrowsingWeb), url}, completion());
    EXPECT_EQ(result_, "shop://cart app (null)");
    Helper::handleUniversalLinkWithUserActivity({"another", url}, completion());
    EXPECT_EQ(result_, "nothing");
}

}  // namespace
}  // namespace tavrolin::tests

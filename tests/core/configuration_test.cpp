#include <gtest/gtest.h>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/core/backend_configuration.h"
#include "tavrolin/core/plist_utility.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/store/core_data_controller.h"

namespace tavrolin {

namespace {

using foundation::Value;

class ConfigurationTest : public testing::Test {
protected:
    ConfigurationTest() { platform::install(memory_.platform()); }

    void setSettings(Value settings) {
        memory_.bundles.mainBundle.setInfoDictionary(
            Value::dictionary({{"CorvalenKeys", std::move(settings)}}));
    }
    std::size_t linesWith(std::string_view text) {
        std::size_t count = 0;
        for (const std::string& line : memory_.logSink.lines())
            count += line.find(text) != std::string::npos ? 1 : 0;
        return count;
    }

    // Lives as long as the process, as the library's singletons do.
    adapters::memory::MemoryPlatform& memory_ = *new adapters::memory::MemoryPlatform;
};

// Bundles whose main one can't be read, and whose property lists raise.
class UnreadableBundles : public platform::ForwardingBundles {
public:
    using ForwardingBundles::ForwardingBundles;
    platform::Bundle& main() override { raise(); }
    Value dictionaryWithContentsOfFile(std::string_view) override { raise(); }

private:
    [[noreturn]] static void raise() {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument, "torn page");
    }
};

}  // namespace

TEST_F(ConfigurationTest, FindsTheIconsNameInTheInfoDictionary) {
    EXPECT_TRUE(CVNPlistUility::getNotificationIconName().isNil());
    for (const Value& settings : {Value::dictionary(), Value("no dictionary"),
                                  Value::dictionary({{"CorvalenAppGroup", "group.example"}})}) {
        setSettings(settings);
        EXPECT_TRUE(CVNPlistUility::getNotificationIconName().isNil());
    }
    setSettings(Value::dictionary({{"CorvalenNotificationIcon", "icon"}}));
    EXPECT_EQ(CVNPlistUility::getNotificationIconName(), Value("icon"));
}

TEST_F(ConfigurationTest, GivesAnEmptyLayoutForWhateverIsMissing) {
    const Value empty = Value::dictionary();
    EXPECT_TRUE(CVNPlistUility::getCorvalenPushSDKConfig().isNil());
    EXPECT_EQ(CVNPlistUility::getLayoutConfigForNotificationType("carousel"), empty);
    EXPECT_EQ(linesWith("(INFO) CVNPlistUility: CorvalenPush SDK Framework Bundle Identifier: "
                        "com.corvalen.tavrolin"),
              2U);

    const Value layout = Value::dictionary({{"1", "21"}});
    memory_.bundles.libraryBundle.setResource(
        "CorvalenPushSDKConfig", "plist",
        Value::dictionary({{"LayoutConfig", Value::dictionary({{"carousel", layout}})}}));
    EXPECT_EQ(CVNPlistUility::getLayoutConfigForNotificationType("carousel"), layout);
    EXPECT_EQ(CVNPlistUility::getLayoutConfigForNotificationType("other"), empty);
    EXPECT_EQ(CVNPlistUility::getLayoutConfigForNotificationType({}), empty);
}

TEST_F(ConfigurationTest, LogsWhatCannotBeReadAndGoesOnEmpty) {
    memory_.bundles.libraryBundle.setResource("CorvalenPushSDKConfig", "plist",
                                              Value::dictionary());
    UnreadableBundles unreadable(memory_.bundles);
    platform::Platform ports = memory_.platform();
    ports.bundles = &unreadable;
    platform::install(ports);
    EXPECT_EQ(CVNPlistUility::getAppInfoDictionary(), Value::dictionary());
    EXPECT_EQ(linesWith("(FATAL) CVNPlistUility: Could not fetch data from app's info dictionary "
                        "due to exception: torn page"),
              1U);
    EXPECT_EQ(CVNPlistUility::getCorvalenPushSDKConfig(), Value::dictionary());
    EXPECT_EQ(linesWith("(FATAL) CVNPlistUility: Could not fetch data from "
                        "CorvalenPushSDKConfig.plist due to exception: torn page"),
              1U);
    platform::install(memory_.platform());
}

TEST_F(ConfigurationTest, TakesABaseURLAsGivenUnlessItIsBlank) {
    auto& configuration = CVNPushBackendConfiguration::sharedInstance();
    for (const Value& blank : {Value(), Value(""), Value(" \t\r\n\u00a0\u2003")})
        EXPECT_FALSE(configuration.validateURL(blank, 3));
    EXPECT_EQ(linesWith("(ERROR) CVNPushBackendConfiguration: BaseURL could not be configured for "
                        "3. -[CVNPushBackendConfiguration validateURL:forURLType:]"),
              3U);
    EXPECT_FALSE(configuration.validateURL(" https://example.com ", 1));  // not trimmed
    EXPECT_EQ(memory_.logSink.lines().size(), 3U);
    const auto url = configuration.validateURL("https://example.com/v1", 1);
    ASSERT_TRUE(url);
    EXPECT_FALSE(configuration.basePushVexUrl());
    configuration.setBasePushVexUrl(url);
    EXPECT_EQ(CVNPushBackendConfiguration::sharedInstance().basePushVexUrl(), url);
}

TEST_F(ConfigurationTest, PointsThePreferencesAtTheAppGroup) {
    auto& utility = CVNSharedUtility::sharedInstance();  // without settings: stays, with a warning
    EXPECT_EQ(linesWith("(WARN) CVNPushPreferences: Corvalen doesn't have app group name"), 1U);
    utility.configureSettingsWithInfoPlist(Value::dictionary({{"CorvalenKeys", "a text"}}));
    EXPECT_EQ(
        linesWith("(FATAL) CVNSharedUtility: Fail to configure app settings due to exception "),
        1U);
    utility.configureSettingsWithInfoPlist(Value::dictionary(
        {{"CorvalenKeys", Value::dictionary({{"CorvalenAppGroup", "group.example"}})}}));
    CVNPushPreferences::sharedInstance().putString("here", "Key");
    EXPECT_EQ((*memory_.preferences.suite("group.example"))->get("CVNKey"), Value("here"));
}

TEST_F(ConfigurationTest, LoadsTheStoreOnceAndLogsHowItWent) {
    setSettings(Value::dictionary({{"CorvalenAppGroup", "group.example"}}));
    memory_.files.addAppGroup("group.example");
    CVNSharedUtility::sharedInstance().loadCorvalenPushStore();
    memory_.dispatch.runUntilIdle();
    EXPECT_TRUE(CVNPushCoreDataController::sharedInstance().storeLoaded());
    CVNSharedUtility::sharedInstance().loadCorvalenPushStore();
    memory_.dispatch.runUntilIdle();
    EXPECT_EQ(linesWith("(INFO) CVNSharedUtility: Store Loaded "
                        "-[CVNSharedUtility loadCorvalenPushStore]"),
              1U);
}

TEST_F(ConfigurationTest, SaysThatTheStoreCouldNotBeOpened) {
    class NoStores : public platform::RecordStores {
        foundation::Expected<std::unique_ptr<platform::RecordStore>> open(
            const platform::ManagedObjectModel&, const platform::StoreDescription&) override {
            return foundation::Error{"Test", 1, "unreadable"};
        }
    };
    NoStores stores;
    platform::Platform ports = memory_.platform();
    ports.recordStores = &stores;
    platform::install(ports);
    CVNSharedUtility::sharedInstance().loadCorvalenPushStore();
    memory_.dispatch.runUntilIdle();
    EXPECT_EQ(linesWith("(ERROR) CVNSharedUtility: Could Initialize the Corvalen SDK due to "
                        "exception "),
              1U);
    platform::install(memory_.platform());
}

TEST_F(ConfigurationTest, GivesTheAuthorizationStatusOnTheMainQueue) {
    memory_.notificationCenter.setAuthorizationStatus(3);
    platform::AuthorizationStatus given = -1;
    CVNSharedUtility::sharedInstance().getNotificationAuthStatusWithCompleted(
        [&](platform::AuthorizationStatus status) { given = status; });
    CVNSharedUtility::sharedInstance().getNotificationAuthStatusWithCompleted(nullptr);
    EXPECT_EQ(given, -1);
    memory_.dispatch.runUntilIdle();
    EXPECT_EQ(given, 3);
}

}  // namespace tavrolin

#include <gtest/gtest.h>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/preference_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/push_preferences_manager.h"

namespace tavrolin {

namespace {

using foundation::Value;
using Manager = CVNPushPreferencesManager;

// Suites that can be made to fail.
class FragileSuites : public platform::PreferencesSuites {
public:
    explicit FragileSuites(platform::PreferencesSuites& target) : target_(target) {}

    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> standard() override {
        if (isBroken) return foundation::Error{"Test", 1, "unreadable"};
        return wrapped(target_.standard());
    }
    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> suite(
        std::string_view name) override {
        if (isBroken) return foundation::Error{"Test", 1, "unreadable"};
        return wrapped(target_.suite(name));
    }

    bool isBroken = false;
    bool refusesWrites = false;

private:
    class Suite : public platform::ForwardingPreferencesSuite {
    public:
        Suite(std::shared_ptr<platform::PreferencesSuite> target, const bool& refuses)
            : ForwardingPreferencesSuite(std::move(target)), refuses_(refuses) {}
        foundation::Failure set(std::string_view key, const Value& value) override {
            if (refuses_) return foundation::Error{"Test", 2, "full"};
            return ForwardingPreferencesSuite::set(key, value);
        }

    private:
        const bool& refuses_;
    };

    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> wrapped(
        const foundation::Expected<std::shared_ptr<platform::PreferencesSuite>>& suite) {
        return std::shared_ptr<platform::PreferencesSuite>(
            std::make_shared<Suite>(*suite, refusesWrites));
    }

    platform::PreferencesSuites& target_;
};

class PreferencesTest : public testing::Test {
protected:
    PreferencesTest() {
        platform::Platform ports = memory_.platform();
        ports.preferences = &suites_;
        platform::install(ports);
    }

    CVNPushPreferences& preferences() { return CVNPushPreferences::sharedInstance(); }
    std::shared_ptr<platform::PreferencesSuite> group() {
        return *memory_.preferences.suite("group.example");
    }
    std::size_t linesWith(std::string_view text) {
        std::size_t count = 0;
        for (const std::string& line : memory_.logSink.lines())
            count += line.find(text) != std::string::npos ? 1 : 0;
        return count;
    }

    // They live as long as the process, as the library's singletons do.
    adapters::memory::MemoryPlatform& memory_ = *new adapters::memory::MemoryPlatform;
    FragileSuites& suites_ = *new FragileSuites(memory_.preferences);
};

}  // namespace

TEST_F(PreferencesTest, ChangesOverToTheGroupsSuiteAndMovesNothing) {
    preferences().putString("before", "Key");
    preferences().setSuitName("group.example");
    EXPECT_TRUE(preferences().getStringForKey("Key").isNil());
    preferences().putString("after", "Key");
    EXPECT_EQ(group()->get("CVNKey"), Value("after"));

    for (const Value& name : {Value(), Value("")}) {
        memory_.logSink.clear();
        preferences().setSuitName(name);
        EXPECT_EQ(linesWith("(WARN) CVNPushPreferences: Corvalen doesn't have app group name"), 1U);
        EXPECT_EQ(preferences().getStringForKey("Key"), Value("after"));
    }
}

TEST_F(PreferencesTest, GivesNothingForAValueOfAnotherKind) {
    preferences().setSuitName("group.example");
    const foundation::Date date{1'700'000'000.5};
    preferences().setObject(3, "number");
    preferences().putString("yes", "text");
    preferences().setDate(date, "date");
    preferences().setBoolean(true, "true");
    const std::uint8_t noArchive[] = {0xFF};
    preferences().setObject(Value::data(noArchive), "bytes");

    EXPECT_EQ(preferences().getStringForKey("text"), Value("yes"));
    EXPECT_TRUE(preferences().getStringForKey("number").isNil());
    EXPECT_EQ(preferences().getDateForKey("date"), Value(date));
    EXPECT_TRUE(preferences().getDateForKey("number").isNil());
    EXPECT_TRUE(preferences().getBooleanForKey("true"));
    EXPECT_TRUE(preferences().getBooleanForKey("number"));
    EXPECT_FALSE(preferences().getBooleanForKey("text"));
    EXPECT_FALSE(preferences().getBooleanForKey("absent"));
    EXPECT_TRUE(preferences().getCustomObjectForKey("bytes").isNil());
    EXPECT_TRUE(preferences().getCustomObjectForKey("text").isNil());

    preferences().putString({}, "text");
    preferences().removeObjectForKey("number");
    EXPECT_TRUE(preferences().getObjectForKey("text").isNil());
    EXPECT_TRUE(preferences().getObjectForKey("number").isNil());
}

TEST_F(PreferencesTest, KeepsCustomObjectsAsArchives) {
    preferences().setSuitName("group.example");
    const Value object = Value::dictionary({{"a", Value::array({1, "two"})}});
    preferences().setCustomObject(object, "Object");
    EXPECT_EQ(group()->get("CVNObject").kind(), Value::Kind::data);
    EXPECT_EQ(preferences().getCustomObjectForKey("Object"), object);
}

TEST_F(PreferencesTest, WorksOnWithoutStandardPreferencesAndSaysSo) {
    suites_.isBroken = true;
    EXPECT_TRUE(preferences().getStringForKey("Key").isNil());
    EXPECT_EQ(Manager::getAllStoredPreferences().count(), 0U);
    memory_.logSink.clear();
    preferences().putString("lost", "Key");
    EXPECT_EQ(linesWith("(ERROR) CVNPushPreferences: Could not store the preference Key"), 1U);

    suites_.isBroken = false;
    preferences().putString("kept", "Key");
    EXPECT_EQ(preferences().getStringForKey("Key"), Value("kept"));
}

TEST_F(PreferencesTest, StaysOnItsSuiteWhenAnotherCannotBeOpened) {
    preferences().putString("here", "Key");
    suites_.isBroken = true;
    memory_.logSink.clear();
    preferences().setSuitName("group.example");
    EXPECT_EQ(memory_.logSink.lines().size(), 1U);
    EXPECT_EQ(linesWith("(ERROR) CVNPushPreferences: Could not open"), 1U);
    EXPECT_EQ(preferences().getStringForKey("Key"), Value("here"));
}

TEST_F(PreferencesTest, KeepsTheOldValueWhenAWriteFailsAndSaysSo) {
    preferences().putString("old", "Key");
    suites_.refusesWrites = true;
    preferences().putString("new", "Key");
    EXPECT_EQ(linesWith("(ERROR) CVNPushPreferences: Could not store the preference Key"), 1U);
    EXPECT_EQ(preferences().getStringForKey("Key"), Value("old"));
}

// --- The manager ------------------------------------------------------------------------------

TEST_F(PreferencesTest, StoresEachPreferenceInItsForm) {
    preferences().setSuitName("group.example");
    Manager::setDevicePushToken("0a1b");
    Manager::setDevicePushTokenOld("ffff");
    Manager::setActionButtonIndex(2);
    Manager::setCarouselIndex(-1);
    Manager::setRatingInfoWithRatingValue(4.5, 3);
    Manager::setNotificationAuthorizationOptions(7);
    Manager::setOptForPushNotification(true);
    Manager::setPermissionForPushNotification(false);
    const Value expected = Value::dictionary({{"CVNPushToken", "0a1b"},
                                              {"CVNPushTokenEncoded", "0a1b"},
                                              {"CVNPushTokenOld", "ffff"},
                                              {"CVNNotificationActionButtonIndex", "2"},
                                              {"CVNNotificationCarouselIndex", "-1"},
                                              {"CVNNotificationRatingValue", 4.5},
                                              {"CVNNotificationRatingIndex", 3},
                                              {"CVNNotificationAuthorizationOptions", 7},
                                              {"CVNUserOptPushNotification", true},
                                              {"CVNPermissionForPushNotification", false}});
    EXPECT_EQ(group()->dictionaryRepresentation(), expected);
    EXPECT_EQ(Manager::getActionButtonIndex(), Value("2"));
    EXPECT_EQ(Manager::getRatingIndex().kind(), Value::Kind::integer);

    Manager::removeRatingInfo();
    Manager::removeActionButtonIndex();
    Manager::removeCarouselIndex();
    EXPECT_TRUE(Manager::getRatingValue().isNil());
    EXPECT_TRUE(Manager::getRatingIndex().isNil());
    EXPECT_EQ(group()->dictionaryRepresentation().count(), 6U);
}

TEST_F(PreferencesTest, TellsAPermissionNeverRecordedFromARefusedOne) {
    EXPECT_TRUE(Manager::getPermissionForPushNotification().isNil());
    EXPECT_FALSE(Manager::getOptForPushNotification());
    EXPECT_FALSE(Manager::getNotificationCategoriesUploaded());
    EXPECT_EQ(Manager::getNotificationAuthorizationOptions(), 0U);
    EXPECT_EQ(Manager::getDebugLevel(), 0);
    Manager::setPermissionForPushNotification(false);
    EXPECT_EQ(Manager::getPermissionForPushNotification(), Value(false));
}

TEST_F(PreferencesTest, TakesTheFirstDefaultOnly) {
    Manager::optForCorvalenFeatureWithKey("Feature", false);
    Manager::optForCorvalenFeatureWithKey("Feature", true);
    EXPECT_EQ(preferences().getObjectForKey("Feature"), Value(false));
}

TEST_F(PreferencesTest, GivesAndKeepsTheTimeOfTheFirstSilentFetch) {
    memory_.dispatch.advance(0.4);
    const Value first = Manager::getPushVexRequestEpochTime();
    EXPECT_EQ(first, Value("1704067200"));
    memory_.dispatch.advance(100);
    EXPECT_EQ(Manager::getPushVexRequestEpochTime(), first);
    Manager::setPushVexRequestEpochTime();
    EXPECT_EQ(Manager::getPushVexRequestEpochTime(), Value("1704067300"));
}

TEST_F(PreferencesTest, PicksItsOwnPreferencesByTheirPrefixInAnyCase) {
    preferences().setSuitName("group.example");
    for (const char* key : {"CVNA", "cvnB", "cVn", "PushToken", "CV", "XCVN"})
        static_cast<void>(group()->set(key, key));
    const Value ours = Manager::getAllCorvalenStoredPreferences();
    EXPECT_EQ(ours, Value::dictionary({{"CVNA", "CVNA"}, {"cvnB", "cvnB"}, {"cVn", "cVn"}}));
    EXPECT_EQ(Manager::getAllStoredPreferences().count(), 6U);
}

TEST_F(PreferencesTest, FindsTheAppGroupInTheStoreAndThenInTheInfoDictionary) {
    EXPECT_TRUE(Manager::getCorvalenAppGroup().isNil());
    memory_.bundles.mainBundle.setInfoDictionary(Value::dictionary(
        {{"CorvalenKeys", Value::dictionary({{"CorvalenAppGroup", "group.info"}})}}));
    EXPECT_EQ(Manager::getCorvalenAppGroup(), Value("group.info"));
    preferences().putString("", kPlistCorvalenAppGroup);
    EXPECT_EQ(Manager::getCorvalenAppGroup(), Value("group.info"));
    preferences().putString("group.stored", kPlistCorvalenAppGroup);
    EXPECT_EQ(Manager::getCorvalenAppGroup(), Value("group.stored"));
}

TEST_F(PreferencesTest, MakesQueryItemsOfTheAttributionInItsOrder) {
    EXPECT_TRUE(Manager::getCorvalenAttrParameters().empty());
    Manager::setUserNotificationAttribution(
        Value::dictionary({{"utm_source", "push%20message"}, {"a", "100%"}, {"n", 1}}));
    const auto items = Manager::getCorvalenAttrParameters();
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(items[0].name, "utm_source");
    EXPECT_EQ(items[0].value, Value("push message"));
    EXPECT_EQ(items[1].name, "a");
    EXPECT_TRUE(items[1].value.isNil());  // no percent-encoding
    Manager::removeUserNotificationAttribution();
    EXPECT_TRUE(Manager::getUserNotificationAttribution().isNil());
}

}  // namespace tavrolin

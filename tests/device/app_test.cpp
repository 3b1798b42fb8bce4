#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include "adapters/lmdb/lmdb_preferences.h"
#include "device/device.h"
#include "device/device_error.h"
#include "device/system_state.h"
#include "tavrolin/platform/preferences_suite.h"
#include "tests/support/http_server.h"
#include "tests/support/pictures.h"
#include "tests/support/test_device.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> texts(const Value& list, std::string_view key) {
    std::vector<std::string> result;
    for (const Value& item : list.items())
        result.emplace_back(item[key].string());
    return result;
}

std::vector<std::int64_t> eventIds(const TestDevice& device) {
    std::vector<std::int64_t> result;
    const Value events = device.look({"events"});
    for (const Value& event : events.items())
        result.push_back(event["id"].isNumber() ? event["id"].integerValue() : 0);
    return result;
}

std::string fileOf(const TestDevice& device, const std::string& name, const Value& payload) {
    const std::string path = device.folder() + "-" + name + ".json";
    writeFile(path, compactJSON(payload));
    return path;
}

// A silent push that shows itself at that date, "yyyy-MM-dd'T'HH:mm:ss".
Value scheduledPush(std::string_view trid, std::string_view date, Value section = {}) {
    section.set("schDt", date);
    Value push = pushPayload(trid, section);
    push.set("aps", Value::dictionary({{"content-available", 1}}));
    return push;
}

// A moment so many days from the device's own now.
std::string inDays(const TestDevice& device, int days) {
    const Value now = device.look({"advance", "1s"})["now"];
    // The clock is at the machine's time or ahead of it by less than these tests take.
    const std::string text(now.string());
    std::tm moment{};
    strptime(text.c_str(), "%Y-%m-%dT%H:%M:%S", &moment);
    const std::time_t then = timegm(&moment) + std::time_t{days} * 86400;
    char result[32];
    std::strftime(result, sizeof result, "%Y-%m-%dT%H:%M:%S", std::gmtime(&then));
    return result;
}

void expectResult(const Value& actual, const Value& expected) {
    EXPECT_EQ(compactJSON(actual), compactJSON(expected));
}

Value button(std::int64_t type, std::string_view deeplink, Value config = Value::dictionary()) {
    return Value::dictionary({{"actionName", "button"},
                              {"actionDeeplink", deeplink},
                              {"aTyp", type},
                              {"config", config}});
}

TEST(App, NoticesTheSystemsPermissionAtItsStartItsForegroundAndWhenItAsks) {
    const TestDevice device;
    expectResult(device.look({"app", "launch"}), Value::dictionary({{"app", "foreground"}}));
    device.look({"app", "permission", "deny"});
    device.look({"app", "badge"});
    EXPECT_THAT(eventIds(device), IsEmpty());
    device.look({"app", "foreground"});
    EXPECT_THAT(eventIds(device), ElementsAre(85));
    device.look({"app", "terminate"});
    device.look({"app", "permission", "grant"});
    EXPECT_THAT(eventIds(device), ElementsAre(85));
    expectResult(device.look({"app", "launch"}), Value::dictionary({{"app", "foreground"}}));
    EXPECT_THAT(eventIds(device), ElementsAre(85, 84));

    // The same again is reported when the core SDK wants it, and only then.
    device.look({"app", "foreground"});
    device.look({"core", "permission-needed", "true"});
    device.look({"app", "foreground"});
    EXPECT_THAT(eventIds(device), ElementsAre(85, 84, 84));
    EXPECT_EQ(device.look({"preferences"})["CVNIsOptInOutRepeated"], Value(1));

    const TestDevice fresh;
    fresh.look({"app", "request-permission"});
    EXPECT_THAT(eventIds(fresh), ElementsAre(84));
    fresh.look({"app", "permission", "deny"});
    fresh.look({"app", "request-permission"});
    EXPECT_THAT(eventIds(fresh), ElementsAre(84, 85));
    const Value outbox = fresh.look({"outbox"});
    EXPECT_EQ(outbox["remoteRegistrations"], Value(2));
    EXPECT_EQ(outbox["doubleOptIn2Timestamps"].count(), 1U);
}

TEST(App, HandsTokensLinksAndDecisionsToTheCoreSDK) {
    const TestDevice device;
    device.look({"app", "token", "0aFF"});
    EXPECT_THAT(eventIds(device), IsEmpty());
    device.look({"core", "token-needed", "true"});
    device.look({"app", "token", "0aFF"});
    device.look({"app", "token", "0b"});
    device.look({"app", "token", ""});
    device.look({"app", "token-error", "no network"});
    EXPECT_THAT(eventIds(device), ElementsAre(86, 88, 87));
    const Value preferences = device.look({"preferences"});
    EXPECT_EQ(preferences["CVNPushToken"], Value("0b"));
    EXPECT_EQ(preferences["CVNPushTokenOld"], Value("0aff"));
    for (const char* token : {"0", "0g", "0x0a"})
        EXPECT_EQ(device.run({"app", "token", token}).status, 2) << token;

    device.look({"app", "opt-in"});
    device.look({"app", "opt-in"});
    device.look({"app", "opt-out"});
    EXPECT_THAT(eventIds(device), ElementsAre(86, 88, 87, 72, 73));
    device.look({"app", "double-opt-in"});
    device.look({"app", "double-opt-in"});
    device.look({"app", "double-opt-in", "--instant"});
    device.look({"app", "reset-double-opt-in"});
    const Value outbox = device.look({"outbox"});
    EXPECT_EQ(outbox["doubleOptIn"].count(), 2U);
    EXPECT_EQ(outbox["doubleOptIn"].at(1)["instant"], Value(true));
    EXPECT_EQ(outbox["doubleOptInResets"], Value(1));
    // Known to the app, but with nothing to say.
    expectResult(device.look({"app", "background"}), Value::dictionary({{"app", "background"}}));
}

TEST(App, RegistersTheCategoriesOfItsOwnFile) {
    const TestDevice device;
    EXPECT_EQ(device.look({"categories"}), Value::array());
    device.look({"app", "register-categories"});
    const Value categories = device.look({"categories"});
    EXPECT_THAT(texts(categories, "identifier"),
                ElementsAre("CorvalenCarouselLandscapeNotification",
                            "CorvalenCarouselPortraitNotification", "CorvalenOffer"));
    expectResult(
        categories.at(2)["actions"].at(2),
        Value::dictionary({{"identifier", "2"},
                           {"title", "Reply"},
                           {"options", 4},
                           {"textInput", Value::dictionary({{"buttonTitle", "Reply"},
                                                            {"placeholder", "Reply here..."}})}}));
}

TEST(App, IsStartedByWhatTheUserDoesAndRecordsItOnce) {
    const TestDevice device;
    const Value section = Value::dictionary(
        {{"deeplink", "otherapp://offer"},
         {"actionButton",
          Value::array({button(2, "sampleapp://copied", Value::dictionary({{"ctxt", "SAVE10"}})),
                        button(5, "sampleapp://replied")})}});
    device.look({"core", "user-identity", "ANNA"});
    for (const char* id : {"opened", "copied", "replied", "beyond", "swiped", "cleared"})
        device.deliver(pushPayload(id, section), {"--id", id});
    EXPECT_EQ(device.look({"app", "badge"})["badge"], Value(6));
    device.look({"app", "terminate"});

    expectResult(device.look({"open", "opened"}), Value::dictionary({{"app", "foreground"}}));
    EXPECT_EQ(device.run({"open", "opened"}).status, 1);
    device.look({"action", "copied", "0"});
    device.look({"action", "replied", "--reply", "see you", "1"});
    // Beyond the buttons: nothing is recorded, but it was pressed.
    device.look({"action", "beyond", "--", "-7"});
    expectResult(device.look({"dismiss", "swiped"}),
                 Value::dictionary({{"removed", Value::array({"swiped"})}}));
    expectResult(device.look({"clear"}),
                 Value::dictionary({{"removed", Value::array({"cleared"})}}));

    EXPECT_THAT(eventIds(device), ElementsAre(12, 12, 12, 12, 12, 12, 13, 13, 0, 13));
    EXPECT_EQ(device.look({"events"}).at(8)["payload"]["repliedText"], Value("see you"));
    const Value outbox = device.look({"outbox"});
    EXPECT_THAT(texts(outbox["deeplinks"], "deeplink"),
                ElementsAre("otherapp://offer", "sampleapp://copied", "sampleapp://replied"));
    const Value& replied = outbox["deeplinks"].at(2)["customPayload"]["cvnCustomPayload"];
    EXPECT_EQ(replied["repliedText"], Value("see you"));
    EXPECT_EQ(outbox["openedURLs"], Value::array({"otherapp://offer"}));
    EXPECT_EQ(outbox["pasteboard"], Value("SAVE10"));
    EXPECT_EQ(outbox["badge"], Value(6));
    EXPECT_EQ(outbox["attributionChecks"].at(0)["identity"], Value("anna"));
    std::vector<bool> read;
    const Value store = device.look({"store"});
    for (const Value& record : store.items())
        read.push_back(record["isRead"].boolValue());
    EXPECT_THAT(read, ElementsAre(true, true, true, false, false, false));
    EXPECT_EQ(device.look({"app", "badge"})["badge"], Value(3));
}

TEST(App, TakesAtItsNextStartWhatItDidNotTakeWhenItDied) {
    const TestDevice device;
    device.deliver(pushPayload("t-1"), {"--id", "first"});
    const std::string dies = device.folder() + "-dies";
    writeFile(dies, "#!/bin/sh\nkill -9 $$\n");
    chmod(dies.c_str(), 0700);
    {
        device::Device broken(
            {.folder = device.folder(), .time = device::TimeMode::jump, .executable = dies});
        EXPECT_THROW(broken.respond("first", std::string(platform::kDefaultActionIdentifier), {}),
                     device::DeviceError);
    }
    EXPECT_EQ(device.look({"tray"}), Value::array());
    EXPECT_THAT(eventIds(device), ElementsAre(12));
    device.look({"app", "launch"});
    EXPECT_THAT(eventIds(device), ElementsAre(12, 13));
    device.look({"app", "terminate"});
    device.look({"app", "launch"});
    EXPECT_THAT(eventIds(device), ElementsAre(12, 13));
    EXPECT_EQ(device.look({"outbox"})["deeplinks"].count(), 1U);
}

TEST(App, IsStoppedWhenItDiesAndStartsAnew) {
    HTTPServer server;
    server.reply("/silent.jpg", {.fault = HTTPReply::Fault::silence});
    const TestDevice device;
    device.look({"app", "launch"});
    const Value push = scheduledPush("t-1", "2000-01-01T00:00:00",
                                     Value::dictionary({{"mediaUrl", server.url("/silent.jpg")}}));
    RunningProgram program =
        device.start({"--time", "real", "app", "silent", "-"}, compactJSON(push));
    server.waitForRequests(1);
    kill(program.child(), SIGKILL);
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("the app died"));
    expectResult(device.look({"app", "opt-in"}), Value::dictionary({{"app", "background"}}));
}

TEST(App, ShowsWhatItScheduledWhenTheClockGetsThere) {
    HTTPServer server;
    server.reply("/banner.jpg", {.body = test::jpeg(64, 40)});
    const TestDevice device;
    const std::string date = inDays(device, 7);
    const Value push = scheduledPush("t-1", date,
                                     Value::dictionary({{"type", "Image"},
                                                        {"title", "A week later"},
                                                        {"mediaUrl", server.url("/banner.jpg")}}));
    EXPECT_EQ(device.deliver(push)["fetchResult"], Value(0));
    // Twice is once: the second finds it stored.
    EXPECT_EQ(device.look({"app", "silent", fileOf(device, "again", push)})["fetchResult"],
              Value(2));
    Value foreign = push;
    foreign.set("cvnSrc", "somebody else");
    EXPECT_EQ(device.deliver(foreign)["fetchResult"], Value(1));

    const Value pending = device.look({"pending"});
    ASSERT_EQ(pending.count(), 1U);
    EXPECT_EQ(pending.at(0)["identifier"], Value("t-1"));
    EXPECT_EQ(pending.at(0)["fireAt"], Value(date));
    EXPECT_EQ(pending.at(0)["content"]["attachments"].count(), 1U);
    EXPECT_EQ(device.look({"store"}).at(0)["currentStatus"], Value("scheduled"));
    expectResult(device.look({"advance", "6d"})["fired"], Value::array());
    EXPECT_EQ(device.look({"tray"}), Value::array());
    // It runs already, in the background, and launching it changes nothing.
    expectResult(device.look({"app", "launch"}), Value::dictionary({{"app", "background"}}));
    device.look({"app", "foreground"});
    expectResult(device.look({"advance", "1d"})["fired"], Value::array({"t-1"}));
    const Value tray = device.look({"tray"});
    ASSERT_EQ(tray.count(), 1U);
    EXPECT_EQ(tray.at(0)["deliveredAt"], Value(date));
    const Value posted = device.look({"outbox"})["postedNotifications"];
    ASSERT_EQ(posted.count(), 1U);
    EXPECT_EQ(posted.at(0)["name"], Value("CorvalenNotificationReceived"));
    EXPECT_EQ(posted.at(0)["userInfo"]["cvnPayload"]["title"], Value("A week later"));
    EXPECT_EQ(device.look({"pending"}), Value::array());
}

TEST(App, SchedulesWithoutThePictureThatNeverComes) {
    HTTPServer server;
    server.reply("/silent.jpg", {.fault = HTTPReply::Fault::silence});
    const TestDevice device;
    device.look({"app", "launch"});
    const Value push = scheduledPush("t-1", "2097-01-01T00:00:00",
                                     Value::dictionary({{"mediaUrl", server.url("/silent.jpg")}}));
    const Value result = device.deliver(push);
    EXPECT_EQ(result["fetchResult"], Value(0));
    EXPECT_EQ(result["seconds"], Value(60)) << "of the device's clock";
    const Value pending = device.look({"pending"});
    ASSERT_EQ(pending.count(), 1U);
    EXPECT_EQ(pending.at(0)["content"]["attachments"].count(), 0U);
}

TEST(App, KeepsTheSoonestSixtyFourRequestsAndNamesTheOthers) {
    const TestDevice device;
    device.look({"app", "permission", "grant"});
    Value campaigns = Value::array();
    for (int i = 0; i < 66; ++i) {
        campaigns.append(scheduledPush("t-" + std::to_string(i), inDays(device, 66 - i)));
    }
    const ProgramResult result =
        device.run({"app", "fetch", "--scheduled", fileOf(device, "campaigns", campaigns)});
    EXPECT_EQ(result.status, 0);
    const Value pending = device.look({"pending"});
    EXPECT_EQ(pending.count(), 64U);
    EXPECT_EQ(pending.at(0)["identifier"], Value("t-65"));
    EXPECT_THAT(result.errors, HasSubstr("dropped: t-0"));
    EXPECT_THAT(result.errors, HasSubstr("dropped: t-1"));
    EXPECT_EQ(device.look({"store"}).count(), 66U);
}

TEST(App, ShowsASnoozedNotificationAgainWithItsPicture) {
    HTTPServer server;
    server.reply("/banner.jpg", {.body = test::jpeg(64, 40)});
    const TestDevice device;
    device.deliver(
        pushPayload("t-1",
                    Value::dictionary(
                        {{"type", "Image"},
                         {"mediaUrl", server.url("/banner.jpg")},
                         {"actionButton",
                          Value::array({button(4, "", Value::dictionary({{"intl", "600"}}))})}})),
        {"--id", "first"});
    {
        // As the content extension leaves it.
        const std::string preferences = device.groupFolder() + "/Library/Preferences";
        adapters::lmdb::LMDBPreferences suites(
            [&](std::string_view) { return std::optional(preferences); }, preferences);
        auto suite = suites.suite("group.corvalen.sample");
        ASSERT_TRUE(suite);
        ASSERT_FALSE((*suite)->set("CVNNotificationActionButtonIndex", "0"));
    }
    device.look({"open", "first"});
    EXPECT_EQ(device.look({"tray"}), Value::array());
    EXPECT_THAT(texts(device.look({"pending"}), "identifier"), ElementsAre("t-1"));
    expectResult(device.look({"advance", "10m"})["fired"], Value::array({"t-1"}));
    const Value tray = device.look({"tray"});
    ASSERT_EQ(tray.count(), 1U);
    const Value& attachments = tray.at(0)["content"]["attachments"];
    ASSERT_EQ(attachments.count(), 1U);
    EXPECT_EQ(fileText(std::string(attachments.at(0)["url"].string()).substr(7)),
              test::jpeg(64, 40));
    EXPECT_THAT(eventIds(device), ElementsAre(12));
}

TEST(App, HearsOfPushesThatArriveInTheForeground) {
    const TestDevice device;
    const std::string file = fileOf(device, "push", pushPayload("t-1"));
    const Value result = device.look({"app", "present", file});
    EXPECT_EQ(result["outcome"], Value("completed"));
    Value foreign = pushPayload("t-2");
    foreign.set("cvnSrc", "somebody else");
    device.look({"app", "present", fileOf(device, "foreign", foreign)});
    EXPECT_EQ(device.look({"tray"}).count(), 2U);
    EXPECT_EQ(device.look({"outbox"})["postedNotifications"].count(), 1U);
    device.look({"app", "background"});
    device.deliver(pushPayload("t-3"));
    EXPECT_EQ(device.look({"outbox"})["postedNotifications"].count(), 1U);
}

TEST(App, TellsWrongUsageOfItsCommands) {
    const TestDevice device;
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"app"},
                                               {"app", "fly"},
                                               {"app", "permission", "maybe"},
                                               {"advance", "soon"},
                                               {"advance", "-5m"},
                                               {"advance", "999999999d"},
                                               {"core", "token-needed", "perhaps"},
                                               {"core", "colour", "red"},
                                               {"open"},
                                               {"action", "first"}}) {
        EXPECT_EQ(device.run(arguments).status, 2) << arguments.back();
    }
    for (const char* text : {"{}", "[1]", "[{}"}) {
        const std::string file = device.folder() + "-fetch.json";
        writeFile(file, text);
        EXPECT_EQ(device.run({"app", "fetch", "--normal", file}).status, 1) << text;
    }
}

}  // namespace
}  // namespace tavrolin::tests

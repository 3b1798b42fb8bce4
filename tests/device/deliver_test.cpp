#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/http_server.h"
#include "tests/support/pictures.h"
#include "tests/support/test_device.h"

namespace tavrolin::tests {
namespace {

namespace fs = std::filesystem;

using foundation::Value;
using testing::HasSubstr;

std::string jpeg() {
    return test::jpeg(64, 40);
}

std::vector<std::string> texts(const Value& list, std::string_view key) {
    std::vector<std::string> result;
    for (const Value& item : list.items())
        result.emplace_back(item[key].string());
    return result;
}

std::string pathOf(const Value& attachment) {
    return std::string(attachment["url"].string()).substr(std::string("file://").size());
}

Value carousel(const std::vector<std::string>& urls) {
    Value items = Value::array();
    for (const std::string& url : urls) {
        items.append(Value::dictionary({{"imgUrl", url}, {"imgTitle", url}}));
    }
    return Value::dictionary({{"type", "CarouselLandscape"}, {"carousel", items}});
}

TEST(Deliver, RewritesARichPushAndKeepsEveryStep) {
    HTTPServer server;
    server.reply("/banner.jpg", {.body = jpeg()});
    const TestDevice device;
    const Value result = device.deliver(
        pushPayload("t-1", Value::dictionary({{"type", "Image"},
                                              {"mediaUrl", server.url("/banner.jpg?signed=1")},
                                              {"deeplink", "sampleapp://offer"},
                                              {"collapseKey", "offers"}})),
        {"--id", "first"});

    EXPECT_EQ(result["identifier"], Value("first"));
    EXPECT_EQ(result["recognised"], Value(true));
    EXPECT_EQ(result["outcome"], Value("completed"));
    EXPECT_EQ(result["seconds"], Value(0));
    EXPECT_GT(result["peakRssKiB"].integerValue(), 1000);
    const Value& content = result["content"];
    EXPECT_EQ(content["title"], Value("Fresh in"));
    EXPECT_TRUE(content["subtitle"].isNull());
    EXPECT_EQ(content["categoryIdentifier"], Value("CorvalenPN"));
    ASSERT_EQ(content["attachments"].count(), 1U);
    const std::string attached = pathOf(content["attachments"].at(0));
    EXPECT_THAT(attached, HasSubstr(device.folder() + "/system/attachments/"));
    EXPECT_EQ(fileText(attached), jpeg());
    // The user info is the payload's dictionary form, with the kept copy's plain path in it.
    const Value& section = content["userInfo"]["cvnPayload"];
    const std::string kept(section["mediaURLPath"].string());
    EXPECT_THAT(kept, HasSubstr(device.groupFolder() + "/CVN-Notification-Media/"));
    EXPECT_EQ(fileText(kept), jpeg());
    EXPECT_EQ(content["userInfo"]["aps"]["mutable-content"], Value("1"));
    // Without its query, deliberately.
    EXPECT_EQ(server.requests().front().path, "/banner.jpg");

    const Value tray = device.look({"tray"});
    ASSERT_EQ(tray.count(), 1U);
    EXPECT_EQ(tray.at(0)["identifier"], Value("first"));
    EXPECT_EQ(tray.at(0)["content"], content);

    const Value store = device.look({"store"});
    ASSERT_EQ(store.count(), 1U);
    const Value& record = store.at(0);
    EXPECT_EQ(record["trid"], Value("t-1"));
    EXPECT_EQ(record["source"], Value("APNS"));
    EXPECT_EQ(record["campaignType"], Value("normal"));
    EXPECT_EQ(record["currentStatus"], Value("delivered"));
    EXPECT_EQ(record["alreadyDisplayedOnTray"], Value(true));
    EXPECT_EQ(record["isRead"], Value(false));
    EXPECT_EQ(record["collapseKey"], Value("offers"));
    EXPECT_TRUE(record["scheduledDate"].isNull());
    EXPECT_EQ(record["payload"]["cvnPayload"]["mediaURLPath"], Value(kept));

    const Value events = device.look({"events"});
    ASSERT_EQ(events.count(), 1U);
    EXPECT_EQ(events.at(0)["id"], Value(12));
    EXPECT_EQ(events.at(0)["name"], Value("pn_delivered"));
    EXPECT_EQ(events.at(0)["type"], Value(3));
    EXPECT_EQ(events.at(0)["payload"], Value::dictionary({{"trid", "t-1"},
                                                          {"isAmplified", 0},
                                                          {"gwSource", 2},
                                                          {"ct", 0},
                                                          {"pnMeta", Value::dictionary()}}));
    EXPECT_EQ(device.look({"events", "--flushes"})["flushes"], Value(1));
}

TEST(Deliver, LeavesNothingInTheExtensionsTemporaryFolderAndEverythingPrivate) {
    HTTPServer server;
    server.reply("/banner.jpg", {.body = jpeg()});
    const TestDevice device;
    device.deliver(
        pushPayload("t-1", Value::dictionary({{"mediaUrl", server.url("/banner.jpg")}})));
    EXPECT_TRUE(fs::is_empty(device.folder() + "/containers/service-extension/tmp"));
    for (const auto& entry : fs::recursive_directory_iterator(device.folder())) {
        struct stat status {};
        ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, entry.is_directory() ? 0700U : 0600U) << entry.path();
    }
}

TEST(Deliver, RemovesTheFilesOfWhatLeftTheTrayAndOfRunsThatWereKilled) {
    HTTPServer server;
    server.reply("/banner.jpg", {.body = jpeg()});
    const TestDevice device;
    const Value section = Value::dictionary({{"mediaUrl", server.url("/banner.jpg")}});
    const auto files = [&](const std::string& folder) {
        std::size_t count = 0;
        for (const auto& entry : fs::recursive_directory_iterator(device.folder() + folder)) {
            if (entry.is_regular_file()) ++count;
        }
        return count;
    };
    device.deliver(pushPayload("t-1", section), {"--id", "../a b"});
    device.deliver(pushPayload("t-2", section), {"--id", "../a b"});  // replaced by the system
    device.deliver(pushPayload("t-2", section), {"--id", "c"});       // and by the library
    const Value shown = device.look({"tray"}).at(0)["content"]["attachments"].at(0);
    EXPECT_EQ(fileText(pathOf(shown)), jpeg());
    EXPECT_EQ(files("/system/attachments"), 1U);

    const std::string leftover = "/containers/service-extension/tmp/killed/part.tmp";
    writeFile(device.folder() + leftover, "half a picture");
    device.deliver(pushPayload("t-3", section));
    EXPECT_FALSE(fs::exists(device.folder() + leftover));
}

TEST(Deliver, ShowsOnlyTheCarouselItemsWhosePictureCame) {
    HTTPServer server;
    server.reply("/1.jpg", {.body = jpeg(), .delay = std::chrono::milliseconds(20)});
    server.reply("/3.jpg", {.body = jpeg()});
    server.reply("/4.jpg", {.body = "\xFF\xD8\xFF, but no picture"});
    const TestDevice device;
    const Value result =
        device.deliver(pushPayload("t-1", carousel({server.url("/1.jpg"), server.url("/2.jpg"),
                                                    server.url("/3.jpg"), server.url("/4.jpg")})));
    // The fourth can be attached by its first bytes, but doesn't decode.
    EXPECT_EQ(result["content"]["attachments"].count(), 3U);
    EXPECT_EQ(texts(result["content"]["userInfo"]["cvnPayload"]["carousel"], "imgTitle"),
              (std::vector<std::string>{server.url("/1.jpg"), server.url("/3.jpg")}));
}

TEST(Deliver, HoldsASimplePushForExactlyThreeSeconds) {
    const TestDevice device;
    Value payload = pushPayload("t-1");
    Value aps = payload["aps"];
    aps.set("category", "CorvalenSimpleNotification");
    payload.set("aps", aps);
    EXPECT_EQ(device.deliver(payload)["seconds"], Value(3));
    EXPECT_EQ(device.look({"events", "--flushes"})["flushes"], Value(1));
}

TEST(Deliver, ShowsTheBestAttemptWhenAServerHangs) {
    HTTPServer server;
    server.reply("/silent.jpg", {.fault = HTTPReply::Fault::silence});
    const TestDevice device;
    const Value payload =
        pushPayload("t-1", Value::dictionary({{"mediaUrl", server.url("/silent.jpg")}}));
    const Value result = device.deliver(payload);
    EXPECT_EQ(result["outcome"], Value("expired"));
    EXPECT_EQ(result["seconds"], Value(30));
    EXPECT_EQ(result["content"]["userInfo"], payload);
    EXPECT_EQ(device.look({"store"}).count(), 1U);
    EXPECT_EQ(device.look({"events"}).count(), 1U);
}

TEST(Deliver, ShowsThePushAsReceivedWhenTheExtensionIsKilled) {
    HTTPServer server;
    server.reply("/silent.jpg", {.fault = HTTPReply::Fault::silence});
    const TestDevice device;
    device.deliver(pushPayload("t-0"));
    const Value payload =
        pushPayload("t-1", Value::dictionary({{"mediaUrl", server.url("/silent.jpg")}}));
    RunningProgram program = device.start({"--time", "real", "deliver", "-"}, compactJSON(payload));
    server.waitForRequests(1);
    kill(program.child(), SIGKILL);
    const Value result = parsedJSON(program.finish().output);
    EXPECT_EQ(result["outcome"], Value("crashed"));
    EXPECT_EQ(result["content"]["userInfo"], payload);
    EXPECT_EQ(device.look({"tray"}).count(), 2U);
    // What was stored and reported before is still there.
    EXPECT_EQ(texts(device.look({"store"}), "trid").front(), "t-0");
    EXPECT_EQ(device.look({"events"}).at(0)["payload"]["trid"], Value("t-0"));
}

TEST(Deliver, LeavesPushesAloneThatAreNotItsOwn) {
    const TestDevice device;
    const Value alert = Value::dictionary({{"title", "Hello"}});
    struct Case {
        const char* name;
        Value payload;
        bool recognised;
    };
    const std::vector<Case> cases = {
        {"foreign",
         Value::dictionary(
             {{"aps", Value::dictionary({{"alert", alert}, {"mutable-content", 1}})}}),
         false},
        {"not mutable",
         Value::dictionary(
             {{"aps", Value::dictionary({{"alert", alert}})}, {"cvnSrc", "corvalen"}}),
         true},
        {"a marker of another kind",
         Value::dictionary({{"aps", Value::dictionary({{"alert", alert}, {"mutable-content", 1}})},
                            {"cvnSrc", 1}}),
         false},
    };
    for (const Case& each : cases) {
        const Value result = device.deliver(each.payload);
        EXPECT_EQ(result["outcome"], Value("untouched")) << each.name;
        EXPECT_EQ(result["recognised"], Value(each.recognised)) << each.name;
        EXPECT_EQ(result["content"]["userInfo"], each.payload) << each.name;
        EXPECT_EQ(result["content"]["title"], Value("Hello")) << each.name;
    }
    EXPECT_EQ(device.look({"tray"}).count(), cases.size());
    EXPECT_EQ(device.look({"store"}).count(), 0U);
    EXPECT_EQ(device.look({"events"}).count(), 0U);
}

TEST(Deliver, ShowsNothingOfASilentPush) {
    const TestDevice device;
    const Value result = device.deliver(Value::dictionary(
        {{"aps", Value::dictionary({{"content-available", 1}})}, {"cvnSrc", "Corvalen"}}));
    EXPECT_EQ(result["outcome"], Value("silent"));
    EXPECT_TRUE(result["fetchResult"].isNull());
    EXPECT_TRUE(result["content"].isNil());
    EXPECT_EQ(device.look({"tray"}).count(), 0U);
}

TEST(Deliver, ReplacesAnOlderNotificationOfTheSameTridOrCollapseKey) {
    const TestDevice device;
    const auto push = [&](std::string_view id, std::string_view trid, std::string_view key) {
        Value section = Value::dictionary();
        if (!key.empty()) section.set("collapseKey", key);
        return device.deliver(pushPayload(trid, section), {"--id", std::string(id)});
    };
    const Value none = Value::array();
    EXPECT_EQ(push("a", "t-1", "")["replaced"], none);
    EXPECT_EQ(push("b", "t-2", "")["replaced"], none);
    EXPECT_EQ(push("c", "t-1", "")["replaced"], Value::array({"a"}));
    EXPECT_EQ(push("d", "t-3", "key")["replaced"], none);
    EXPECT_EQ(push("e", "t-4", "key")["replaced"], Value::array({"d"}));
    EXPECT_EQ(texts(device.look({"tray"}), "identifier"),
              (std::vector<std::string>{"b", "c", "e"}));
    // The second delivery of t-1 is neither stored nor reported again.
    EXPECT_EQ(texts(device.look({"store"}), "trid"),
              (std::vector<std::string>{"t-1", "t-2", "t-3", "t-4"}));
    EXPECT_EQ(device.look({"events"}).count(), 4U);
}

TEST(Deliver, StoresAndReportsOnceWhenTwoExtensionsDeliverOneTridAtOnce) {
    const TestDevice device;
    const std::string payload = compactJSON(pushPayload("t-1"));
    for (int round = 0; round < 5; ++round) {
        RunningProgram first = device.start({"deliver", "-"}, payload);
        RunningProgram second = device.start({"deliver", "-"}, payload);
        EXPECT_EQ(first.finish().status, 0);
        EXPECT_EQ(second.finish().status, 0);
        EXPECT_EQ(device.look({"store"}).count(), 1U);
        EXPECT_EQ(device.look({"events"}).count(), 1U);
        EXPECT_EQ(device.run({"reset"}).status, 0);
    }
}

TEST(Deliver, TouchesNoFileOutsideTheMediaFolderOnAPayloadsWord) {
    HTTPServer server;
    const TestDevice device;
    device.look({"tray"});
    const std::string secret = device.folder() + "/app/secret.jpg";
    writeFile(secret, jpeg());
    Value section = carousel({server.url("/missing.jpg")});
    section.set("carousel", Value::array({Value::dictionary({{"imgUrl", server.url("/missing.jpg")},
                                                             {"imgUrlPath", secret}})}));
    section.set("mediaURLPath", secret);
    const Value result = device.deliver(pushPayload("t-1", section));
    EXPECT_EQ(result["content"]["attachments"].count(), 0U);
    EXPECT_EQ(result["content"]["userInfo"]["cvnPayload"]["carousel"].count(), 0U);
    EXPECT_EQ(fileText(secret), jpeg());
}

// Each is a media URL's path and what the server answers; none gives an attachment, all complete.
TEST(Deliver, CompletesWithoutMediaThatIsOfNoUse) {
    HTTPServer server;
    server.reply("/500.jpg", {.status = 500, .body = jpeg()});
    server.reply("/loop.jpg", {.status = 302, .headers = {{"Location", "/loop.jpg"}}});
    server.reply("/wrong.jpg", {.body = "<html>not found</html>"});
    server.reply("/endless.jpg",
                 {.body = std::string(65536, 'x'), .fault = HTTPReply::Fault::endless});
    server.reply("/short.jpg", {.body = jpeg(), .declaredLength = 100000});
    server.reply("/nothing.jpg", {});
    server.reply("/a%252Fb", {.body = jpeg()});
    server.reply("/..", {.body = jpeg()});
    server.reply("/" + std::string(300, 'n') + ".jpg", {.body = jpeg()});
    server.reply("/", {.body = jpeg()});
    const TestDevice device;
    for (const std::string& path :
         {std::string("/404.jpg"), std::string("/500.jpg"), std::string("/loop.jpg"),
          std::string("/wrong.jpg"), std::string("/endless.jpg"), std::string("/short.jpg"),
          std::string("/nothing.jpg"), std::string("/a%2Fb"), std::string("/.."),
          "/" + std::string(300, 'n') + ".jpg", std::string("/")}) {
        const Value result = device.deliver(
            pushPayload("t" + path, Value::dictionary({{"mediaUrl", server.url(path)}})));
        EXPECT_EQ(result["outcome"], Value("completed")) << path;
        EXPECT_EQ(result["content"]["attachments"].count(), 0U) << path;
        EXPECT_TRUE(result["content"]["userInfo"]["cvnPayload"]["mediaURLPath"].isNil()) << path;
    }
    EXPECT_TRUE(fs::is_empty(device.folder() + "/containers/service-extension/tmp"));
}

TEST(Deliver, FallsBackToTheExtensionsDocumentsWithoutAnAppGroup) {
    const TestDevice device;
    device.look({"tray"});
    const std::string plist = device.folder() + "/app/Info.plist";
    writeFile(
        plist,
        R"(<plist version="1.0"><dict><key>CFBundleName</key><string>S</string></dict></plist>)");
    EXPECT_EQ(device.deliver(pushPayload("t-1"))["outcome"], Value("completed"));
    EXPECT_EQ(texts(device.look({"store"}), "trid"), std::vector<std::string>{"t-1"});
    EXPECT_TRUE(fs::is_empty(device.folder() + "/groups"));
}

TEST(Deliver, NeverOverwritesAStoreThatCanNotBeRead) {
    const TestDevice device;
    device.look({"tray"});
    const std::string file = device.groupFolder() + "/Tavrolin/CorvalenPushDB.sqlite";
    const std::string text = "these are somebody's notes, and not a store of notifications";
    writeFile(file, text);
    const Value payload = pushPayload("t-1");
    const Value result = device.deliver(payload);
    // Without a store the library prepares nothing, and its time runs out.
    EXPECT_EQ(result["outcome"], Value("expired"));
    EXPECT_EQ(result["content"]["userInfo"], payload);
    EXPECT_EQ(fileText(file), text);
    const ProgramResult look = device.run({"store"});
    EXPECT_EQ(look.status, 1);
    EXPECT_THAT(look.errors, HasSubstr(file));
    EXPECT_EQ(look.output, "");
}

}  // namespace
}  // namespace tavrolin::tests

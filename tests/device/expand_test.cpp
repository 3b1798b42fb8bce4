#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <csignal>
#include <filesystem>

#include "device/content_extension/content_extension_process.h"
#include "device/content_extension_launcher.h"
#include "tests/support/http_server.h"
#include "tests/support/pictures.h"
#include "tests/support/test_device.h"

namespace tavrolin::tests {
namespace {

namespace fs = std::filesystem;

using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;

Value button(std::int64_t type, const Value& config = Value::dictionary()) {
    return Value::dictionary({{"actionName", "Button"}, {"aTyp", type}, {"config", config}});
}

// A text's notification with a button of every kind, the last one to reply with.
Value expandable(std::string_view trid) {
    Value payload = pushPayload(
        trid, Value::dictionary(
                  {{"type", "Simple"},
                   {"deeplink", "otherapp://offer"},
                   {"actionButton",
                    Value::array({button(1), button(2, Value::dictionary({{"ctxt", "SAVE10"}})),
                                  button(4, Value::dictionary({{"intl", "60"}})), button(3)})},
                   {"rbtn", Value::dictionary({{"name", "Reply"}, {"aTyp", 5}})}}));
    payload.set("cvnUi", Value::dictionary({{"lid", 1}, {"tim", Value::dictionary({{"ty", 0}})}}));
    Value aps = payload["aps"];
    aps.set("category", "CorvalenOffer");
    payload.set("aps", aps);
    return payload;
}

std::vector<std::string> strings(const Value& texts) {
    std::vector<std::string> result;
    for (const Value& text : texts.items())
        result.emplace_back(text.string());
    return result;
}

std::vector<std::string> keysOf(const Value& dictionary) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : dictionary.entries())
        keys.emplace_back(key.string());
    return keys;
}

struct PixelSize {
    unsigned width = 0;
    unsigned height = 0;
    unsigned bits = 0;
    bool operator==(const PixelSize&) const = default;
};

// From the header of a PNG.
PixelSize pixelSize(const std::string& path) {
    const std::string bytes = fileText(path);
    if (bytes.size() < 29 || !bytes.starts_with("\x89PNG")) return {};
    const auto number = [&](std::size_t at) {
        unsigned value = 0;
        for (std::size_t i = at; i < at + 4; ++i)
            value = value << 8U | static_cast<unsigned char>(bytes[i]);
        return value;
    };
    return {number(16), number(20), static_cast<unsigned char>(bytes[24])};
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

TEST(Expand, PrintsTheViewInTheContractsForm) {
    const TestDevice device;
    device.look({"app", "register-categories"});
    device.deliver(expandable("t-1"), {"--id", "push"});
    const Value view = device.look({"expand", "push"});
    EXPECT_THAT(keysOf(view),
                ElementsAre("layout", "size", "nativeActions", "responses", "requests"));
    EXPECT_EQ(view["layout"], Value("CVNLayout01"));
    EXPECT_EQ(view["size"]["width"], Value(375));
    EXPECT_GT(view["size"]["height"].doubleValue(), 20);
    std::vector<std::string> actions;
    for (const Value& action : view["nativeActions"].items())
        actions.push_back(action["identifier"].description() + ":" +
                          action["options"].description());
    EXPECT_THAT(actions, ElementsAre("4:5", "0:4", "1:4", "2:4", "3:2"));
    EXPECT_EQ(view["nativeActions"].at(0)["textInput"]["buttonTitle"], Value("Reply"));
    EXPECT_EQ(view["responses"], Value::array());
    EXPECT_EQ(view["requests"], Value::array());

    const Value tree = device.look({"expand", "push", "--tree", "--width", "320"})["tree"];
    EXPECT_EQ(tree["outlet"], Value("customView"));
    EXPECT_EQ(tree["frame"].at(2), Value(320));
    EXPECT_EQ(tree["children"].at(0)["class"], Value("CVNLayout01"));
    // Looking changes nothing but the clock, and delivers nothing.
    EXPECT_EQ(device.look({"tray"}).count(), 1U);
    EXPECT_EQ(device.look({"events"}).count(), 1U) << "its delivery";

    // Without buttons of its own a notification keeps those of its category.
    Value plain = expandable("t-2");
    plain.set("cvnPayload", Value::dictionary({{"type", "Simple"}, {"trid", "t-2"}}));
    device.deliver(plain, {"--id", "plain"});
    EXPECT_EQ(device.look({"expand", "plain"})["nativeActions"],
              device.look({"categories"}).at(2)["actions"]);

    // Somebody else's notification has no layout, and an answer that never comes.
    device.deliver(Value::dictionary({{"aps", Value::dictionary({{"alert", "Hello"}})}}),
                   {"--id", "foreign"});
    const Value foreign = device.look({"expand", "foreign", "--do", "press 0"});
    EXPECT_TRUE(foreign["layout"].isNull());
    EXPECT_EQ(foreign["size"]["height"], Value(0));
    EXPECT_TRUE(foreign["responses"].at(0)["option"].isNull());
}

TEST(Expand, AnswersEachActionAndAsksOfTheSystemWhatItMeans) {
    struct Case {
        const char* step;
        Value option;
        std::vector<std::string> requests;
        const char* event;
    };
    const std::vector<std::string> removal = {"close", "remove"};
    const std::vector<Case> cases = {
        {"press 0", 2, {}, ""},
        {"press 1", 0, {"close"}, ""},
        {"press 2", 0, removal, ""},
        {"press 3", 0, removal, "pn_dismissed"},
        {"reply 4 see you there", 0, removal, "nc_apn_reply_submitted"},
    };
    for (const Case& each : cases) {
        const TestDevice device;
        device.look({"app", "permission", "grant"});
        device.deliver(expandable("t-1"), {"--id", "push"});
        const Value view = device.look({"expand", "push", "--do", each.step});
        ASSERT_EQ(view["responses"].count(), 1U) << each.step;
        EXPECT_EQ(view["responses"].at(0)["step"], Value(each.step));
        EXPECT_EQ(view["responses"].at(0)["option"], each.option) << each.step;
        EXPECT_EQ(strings(view["requests"]), each.requests) << each.step;
        const bool isRemoved = each.requests == removal;
        EXPECT_EQ(device.look({"tray"}).count(), isRemoved ? 0U : 1U) << each.step;
        EXPECT_EQ(device.run({"expand", "push"}).status, isRemoved ? 1 : 0) << each.step;
        const Value events = device.look({"events"});
        const Value& last = events.at(events.count() - 1);
        if (*each.event != '\0') {
            EXPECT_EQ(last["name"], Value(each.event)) << each.step;
        }
        const std::string_view step = each.step;
        if (step == "press 1") {
            EXPECT_EQ(device.look({"outbox"})["pasteboard"], Value("SAVE10"));
        }
        if (step == "press 2") {
            EXPECT_EQ(device.look({"pending"}).at(0)["identifier"], Value("t-1"));
            EXPECT_THAT(strings(device.look({"advance", "60s"})["fired"]), ElementsAre("t-1"));
        }
        if (step.starts_with("reply")) {
            EXPECT_EQ(last["payload"]["repliedText"], Value("see you there"));
        }
    }
}

TEST(Expand, ARemovalTakesTheNotificationsOwnFilesAlong) {
    HTTPServer server;
    server.reply("/banner.jpg", {.body = test::jpeg(64, 40)});
    const TestDevice device;
    for (const char* identifier : {"removed", "kept"}) {
        Value payload = expandable(identifier);
        Value section = payload["cvnPayload"];
        section.set("mediaUrl", server.url("/banner.jpg"));
        payload.set("cvnPayload", section);
        device.deliver(payload, {"--id", identifier});
    }
    const std::string folder = device.folder() + "/system/attachments";
    ASSERT_EQ(filesIn(folder).size(), 2U);
    device.look({"expand", "removed", "--do", "press 3", "--png", device.folder() + "-last.png"});
    EXPECT_EQ(filesIn(folder).size(), 1U);
    const Value tray = device.look({"tray"});
    const Value& url = tray.at(0)["content"]["attachments"].at(0)["url"];
    EXPECT_TRUE(fs::exists(std::string(url.string()).substr(7)));
}

TEST(Expand, TakesTapsAsAFingerAndLeavesTheRestToTheApp) {
    const TestDevice device;
    device.deliver(expandable("t-1"), {"--id", "push"});
    const Value view = device.look({"expand", "push", "--do", "tap 5,5", "--do", "tap-on Fresh in",
                                    "--do", "tap 5000,5", "--do", "wait 3", "--do", "disappear"});
    EXPECT_THAT(strings(view["requests"]), ElementsAre("open", "open"));
    const ProgramResult missing = device.run({"expand", "push", "--do", "tap-on Nobody"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors, HasSubstr("\"Nobody\""));
    EXPECT_EQ(device.look({"outbox"})["deeplinks"], Value::array());
    device.look({"open", "push"});
    EXPECT_EQ(device.look({"outbox"})["openedURLs"], Value::array({"otherapp://offer"}));
}

// A push with pictures, steps in the expanded view, the app: three processes.
TEST(Expand, ATappedPictureLeadsToItsOwnLink) {
    struct Case {
        const char* type;
        std::int64_t layoutId;
        std::vector<std::string> steps;
        bool opens;
        const char* link;
    };
    const std::vector<Case> cases = {
        {"CarouselLandscape", 71, {"press 0", "wait 1", "tap 187,60"}, true, "otherapp://1"},
        {"CarouselLandscape", 71, {"press 1", "tap 187,60"}, true, "otherapp://0"},  // still there
        {"CarouselLandscape", 72, {"wait 5", "tap 187,60"}, true, "otherapp://2"},
        {"CarouselLandscape",
         72,
         {"wait 3", "disappear", "wait 9", "tap 187,60"},
         true,
         "otherapp://1"},
        {"CarouselLandscape", 72, {"tap-on previousImageView"}, false, "otherapp://all"},
        {"CarouselPortrait", 91, {"press 1", "wait 1", "tap 300,60"}, true, "otherapp://0"},
        {"CarouselPortrait", 91, {"press 0", "wait 1", "tap 300,60"}, true, "otherapp://2"},
        {"CarouselPortrait", 92, {"tap-on imageSlot1"}, true, "otherapp://1"},
        {"CarouselPortrait", 92, {"tap-on imageSlot3"}, false, "otherapp://all"},
    };
    HTTPServer server;
    server.reply("/look.jpg", {.body = test::jpeg(64, 40)});
    Value items = Value::array();
    for (const char* link : {"otherapp://0", "otherapp://1", "otherapp://2"}) {
        items.append(
            Value::dictionary({{"imgUrl", server.url("/look.jpg")}, {"imgDeeplink", link}}));
    }
    for (const Case& each : cases) {
        const TestDevice device;
        Value payload = pushPayload("looks", Value::dictionary({{"type", each.type},
                                                                {"deeplink", "otherapp://all"},
                                                                {"carousel", items}}));
        payload.set("cvnUi", Value::dictionary({{"lid", each.layoutId},
                                                {"lui", Value::dictionary({{"spd", 2}})},
                                                {"cs", Value::dictionary()}}));
        device.deliver(payload, {"--id", "push"});
        std::vector<std::string> command = {"expand", "push"};
        for (const std::string& step : each.steps)
            command.insert(command.end(), {"--do", step});
        const Value view = device.look(command);
        EXPECT_EQ(view["requests"].count(), each.opens ? 1U : 0U) << each.steps.back();
        for (const Value& response : view["responses"].items())
            EXPECT_EQ(response["option"], Value(0)) << "it stays open";
        device.look({"open", "push"});
        EXPECT_EQ(device.look({"outbox"})["openedURLs"], Value::array({each.link}))
            << each.layoutId << " " << each.steps.back();
    }
}

// It does its own work, yet the link is the one at the place of the last tapped picture, the first
// where there was none.
TEST(Expand, ATappedButtonDoesItsWorkAndLeadsToTheFirstLink) {
    const TestDevice device;
    Value copying = button(2, Value::dictionary({{"ctxt", "SAVE10"}}));
    copying.set("actionName", "Copy it");
    copying.set("actionDeeplink", "otherapp://second");
    Value first = button(1);
    first.set("actionDeeplink", "otherapp://first");
    Value payload =
        pushPayload("t-1", Value::dictionary({{"type", "Image"},
                                              {"deeplink", "otherapp://offer"},
                                              {"actionButton", Value::array({first, copying})}}));
    payload.set("cvnUi", Value::dictionary({{"lid", 24}}));
    device.deliver(payload, {"--id", "push"});
    const Value view = device.look({"expand", "push", "--do", "tap-on Copy it"});
    EXPECT_EQ(view["layout"], Value("CVNLayout24"));
    EXPECT_THAT(strings(view["requests"]), ElementsAre("open"));
    device.look({"open", "push"});
    const Value outbox = device.look({"outbox"});
    EXPECT_EQ(outbox["pasteboard"], Value("SAVE10"));
    EXPECT_EQ(outbox["openedURLs"], Value::array({"otherapp://first"}));
}

TEST(Expand, DrawsTheSamePicturesTwice) {
    const TestDevice device;
    device.deliver(expandable("t-1"), {"--id", "push"});
    const std::string folder = device.folder() + "-pictures";
    fs::create_directories(folder);
    const auto draw = [&](const std::string& name, std::vector<std::string> arguments) {
        std::vector<std::string> all = {"expand", "push",
                                        "--png",  folder + "/" + name + ".png",
                                        "--svg",  folder + "/" + name + ".svg"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Value view = device.look(all);
        EXPECT_THAT(fileText(folder + "/" + name + ".svg"), HasSubstr("<svg")) << name;
        return view;
    };
    const Value view = draw("one", {});
    draw("two", {});
    const auto height = static_cast<unsigned>(std::ceil(view["size"]["height"].doubleValue() * 2));
    EXPECT_EQ(pixelSize(folder + "/one.png"), (PixelSize{750, height, 8}));
    for (const char* kind : {".png", ".svg"})
        EXPECT_EQ(fileText(folder + "/one" + kind), fileText(folder + "/two" + kind)) << kind;
    draw("dark", {"--dark"});
    EXPECT_NE(fileText(folder + "/one.png"), fileText(folder + "/dark.png"));
    draw("card", {"--card"});
    draw("card again", {"--card"});
    EXPECT_EQ(fileText(folder + "/card.png"), fileText(folder + "/card again.png"));
    draw("both", {"--card-png", folder + "/beside.png"});
    EXPECT_EQ(fileText(folder + "/both.png"), fileText(folder + "/one.png"));
    EXPECT_EQ(fileText(folder + "/beside.png"), fileText(folder + "/card.png"));
    EXPECT_EQ(pixelSize(folder + "/card.png").width, (375U + 32) * 2);
    EXPECT_GT(pixelSize(folder + "/card.png").height, height + 100);

    // The system's own part of the card is left out where the extension wants it so.
    const std::string plist = device.folder() + "/app/Info.plist";
    std::string info = fileText(plist);
    info.insert(info.find("<dict>") + 6,
                "<key>NSExtension</key><dict><key>NSExtensionAttributes</key><dict>"
                "<key>UNNotificationExtensionDefaultContentHidden</key><true/></dict></dict>");
    writeFile(plist, info);
    draw("bare", {"--card"});
    EXPECT_LT(pixelSize(folder + "/bare.png").height, pixelSize(folder + "/card.png").height);

    draw("wide", {"--width", "10000"});
    EXPECT_EQ(pixelSize(folder + "/wide.png").width, 20000U);
    draw("small", {"--scale", "0.5"});
    EXPECT_EQ(pixelSize(folder + "/small.png").width, 188U);
    draw("large", {"--scale", "4", "--width", "1"});
    EXPECT_EQ(pixelSize(folder + "/large.png").width, 4U);
}

TEST(Expand, WritesAPictureAsAWholeOrNotAtAll) {
    const TestDevice device;
    device.deliver(expandable("t-1"), {"--id", "push"});
    const std::string folder = device.folder() + "-pictures";
    writeFile(folder + "/old.png", "old");
    for (const std::string& target :
         {folder + "/missing/new.png", folder, std::string("/dev/null")}) {
        const ProgramResult result =
            device.run({"expand", "push", "--do", "press 3", "--png", target});
        EXPECT_EQ(result.status, 1) << target;
        EXPECT_THAT(result.errors, HasSubstr("can't write " + target));
    }
    EXPECT_EQ(device.look({"tray"}).count(), 1U) << "what can't be drawn is not begun";
    const ProgramResult failed =
        device.run({"expand", "push", "--do", "tap-on Nobody", "--png", folder + "/old.png"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(fileText(folder + "/old.png"), "old");
    EXPECT_THAT(filesIn(folder), ElementsAre("old.png"));
    RunningProgram program({"--device", device.folder(), "expand", "push", "--do", "wait 60",
                            "--png", folder + "/new.png"},
                           {});
    const pid_t extension = program.child();
    EXPECT_THAT(filesIn(folder), ElementsAre("old.png")) << "an interrupted command would leave it";
    kill(extension, SIGKILL);
    EXPECT_EQ(program.finish().status, 1);

    chmod((folder + "/old.png").c_str(), 0640);
    device.look({"expand", "push", "--png", folder + "/old.png"});
    EXPECT_EQ(pixelSize(folder + "/old.png").width, 750U);
    struct stat status {};
    stat((folder + "/old.png").c_str(), &status);
    EXPECT_EQ(status.st_mode & 0777U, 0640U);
}

TEST(Expand, RefusesWhatMakesNoSenseBeforeAnythingIsStarted) {
    const TestDevice device;
    for (const std::vector<std::string>& wrong : std::vector<std::vector<std::string>>{
             {"--width", "0"},       {"--width", "-1"},       {"--width", "nan"},
             {"--width", "inf"},     {"--width", "1e9"},      {"--width", "wide"},
             {"--scale", "0"},       {"--scale", "8.1"},      {"--scale", "nan"},
             {"--do", "fly"},        {"--do", "tap"},         {"--do", "tap 1"},
             {"--do", "tap 1,x"},    {"--do", "tap nan,1"},   {"--do", "tap-on"},
             {"--do", "tap-on "},    {"--do", "press"},       {"--do", "reply 1"},
             {"--do", "wait"},       {"--do", "wait -1"},     {"--do", "wait inf"},
             {"--do", "wait 1e9"},   {"--do", "disappear 1"}, {"--do", ""},
             {"--do", "press \xff"}, {"--png", "-"},          {"--png", "a", "--svg", "./a"},
         }) {
        std::vector<std::string> arguments = {"expand", "push"};
        arguments.insert(arguments.end(), wrong.begin(), wrong.end());
        EXPECT_EQ(device.run(arguments).status, 2) << wrong[0] << " " << wrong[1];
    }
    EXPECT_EQ(device.run({"expand", "push", "--svg", "a", "--card-png", "a"}).status, 2);
    const ProgramResult missing = device.run({"expand", "push"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors, HasSubstr("no notification push"));
}

TEST(Expand, GoesOnWithoutTheExtension) {
    const TestDevice device;
    device.deliver(expandable("t-1"), {"--id", "push"});
    RunningProgram program({"--device", device.folder(), "expand", "push", "--do", "wait 60"}, {});
    kill(program.child(), SIGKILL);
    const ProgramResult result = program.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("the content extension died"));
    EXPECT_EQ(device.look({"tray"}).count(), 1U);
    EXPECT_THAT(filesIn(device.folder() + "/containers/content-extension/tmp"), ElementsAre());

    for (const char* script : {
             "exit 0",
             "printf 'some words that are no message' >&3",
             // A well-formed message, {"expanded": 1}, that makes no sense.
             "printf '\\013\\000\\000\\000\\241\\150expanded\\001' >&3; exec sleep 100",
         }) {
        device::ProcessStart start;
        start.executable = device.folder() + "-extension";
        writeFile(start.executable, "#!/bin/sh\n" + std::string(script) + "\n");
        chmod(start.executable.c_str(), 0700);
        start.folder = device.folder();
        platform::DeliveredNotification notification;
        notification.request.content.userInfo = Value::dictionary();
        device::ChildProcess process(start.executable, device::kContentExtensionProcess);
        EXPECT_FALSE(device::runContentExtension(process, start, {}, notification, {}).isComplete)
            << script;
    }
}

TEST(Expand, TakesTheLibrarysFilesFromTheAppsFolderFirst) {
    const TestDevice device;
    device.deliver(expandable("t-1"), {"--id", "push"});
    const std::string overlay = device.folder() + "/app/library";
    writeFile(overlay + "/CVNLayout01.json", "{\"root\": {\"class\": \"Nothing\"}}");
    const ProgramResult broken =
        device.run({"expand", "push", "--tree", "--png", device.folder() + "-broken.png"});
    EXPECT_EQ(broken.status, 0) << broken.errors;
    EXPECT_TRUE(parsedJSON(broken.output)["layout"].isNull());
    EXPECT_THAT(broken.errors, HasSubstr("CVNLayout01"));

    writeFile(overlay + "/CorvalenPushSDKConfig.plist",
              "<plist><dict><key>LayoutConfig</key><dict><key>Simple</key><dict>"
              "<key>supportedLayouts</key><array><integer>41</integer></array>"
              "<key>defaultLayout</key><integer>41</integer></dict></dict></dict></plist>");
    EXPECT_EQ(device.look({"expand", "push"})["layout"], Value("CVNLayout41"));
}

}  // namespace
}  // namespace tavrolin::tests

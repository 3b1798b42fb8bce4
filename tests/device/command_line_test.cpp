#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "adapters/sqlite/sqlite_record_stores.h"
#include "device/system_state.h"
#include "tests/support/test_device.h"

namespace tavrolin::tests {
namespace {

namespace fs = std::filesystem;

using foundation::Value;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

std::string nested(std::size_t levels) {
    return R"({"a":)" + std::string(levels, '[') + std::string(levels, ']') + "}";
}

TEST(CommandLine, RefusesMalformedInputWithOneLineThatSaysWhere) {
    const TestDevice device;
    struct Case {
        std::string input;
        const char* message;
    };
    const std::vector<Case> cases = {
        {"", "line 1"},
        {"{\"aps\":\n  {\"alert\": }}", "line 2, column 13"},
        {"[1, 2]", "must be a JSON object"},
        {"\"text\"", "must be a JSON object"},
        {"{\"a\": \"\xFF\xFE\"}", "line 1, column 8"},
        {"{\"a\": \"\\ud800\"}", "line 1"},
        {"{\"a\": 1} trailing", "line 1, column 10"},
        {nested(10000), "level"},
        {R"({"a": ")" + std::string(4100, 'x') + "\"}", "4108 bytes"},
    };
    for (const Case& each : cases) {
        const ProgramResult result = device.run({"deliver", "-"}, each.input);
        EXPECT_EQ(result.status, 1) << each.message;
        EXPECT_EQ(result.output, "") << each.message;
        EXPECT_THAT(result.errors, HasSubstr(each.message));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
    EXPECT_EQ(device.look({"tray"}).count(), 0U);
}

TEST(CommandLine, TakesWhatIsUnusualButSound) {
    const TestDevice device;
    const ProgramResult result = device.run(
        {"deliver", "-"},
        R"({"aps":{"alert":"first"},"aps":{"alert":"a\u0000b"},"big":123456789012345678901234567890,)"
        R"("most":18446744073709551615})");
    ASSERT_EQ(result.status, 0) << result.errors;
    const Value content = parsedJSON(result.output)["content"];
    EXPECT_EQ(content["body"], Value(std::string_view("a\0b", 3)));
    EXPECT_EQ(content["userInfo"]["big"], Value(1.2345678901234568e29));
    EXPECT_EQ(content["userInfo"]["most"], Value(18446744073709551615U));
    // A larger payload is delivered when that is asked for.
    const std::string large = R"({"aps": {"alert": ")" + std::string(5000, 'x') + "\"}}";
    EXPECT_EQ(device.run({"deliver", "--no-limit", "-"}, large).status, 0);
}

TEST(CommandLine, GoesOnAfterABadLine) {
    const TestDevice device;
    const ProgramResult result =
        device.run({"deliver", "--lines", "-"},
                   "{\"aps\":{\"alert\":\"one\"}}\n\n{\"aps\":\n{\"aps\":{\"alert\":\"four\"}}");
    EXPECT_EQ(result.status, 1);
    std::vector<Value> lines;
    std::istringstream output(result.output);
    for (std::string line; std::getline(output, line);)
        lines.push_back(parsedJSON(line));
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0]["content"]["body"], Value("one"));
    EXPECT_EQ(lines[1]["line"], Value(3));
    EXPECT_THAT(std::string(lines[1]["error"].string()), HasSubstr("line 1"));
    EXPECT_EQ(lines[2]["content"]["body"], Value("four"));
    EXPECT_EQ(device.look({"tray"}).count(), 2U);
}

// Depth is what the payload's reader allows; nothing behind it allows less.
TEST(CommandLine, GoesOnAfterALineThatIsAsDeepAsALineCanBe) {
    const TestDevice device;
    const std::string deep =
        R"({"aps":{"alert":"x","mutable-content":1},"cvnSrc":"Corvalen","cvnCustomPayload":)" +
        nested(500) + R"(,"cvnPayload":{"trid":"deep"}})";
    const ProgramResult result =
        device.run({"deliver", "--lines", "-"}, deep + "\n{\"aps\":{\"alert\":\"next\"}}\n");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 2) << result.errors;
    EXPECT_EQ(device.look({"store"}).count(), 1U);
}

TEST(CommandLine, TellsWhatCanNotBeReadFromWhatIsEmpty) {
    const TestDevice device;
    device.deliver(pushPayload("t-1"));
    const std::string plist = device.folder() + "/app/Info.plist";
    const std::string text = fileText(plist);
    writeFile(plist, "no property list");
    for (const char* command : {"store", "preferences"}) {
        const ProgramResult result = device.run({command});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_THAT(result.errors, HasSubstr(plist)) << command;
    }
    writeFile(plist, text);
    EXPECT_EQ(device.look({"store"}).count(), 1U);

    const std::string groups = device.folder() + "/groups";
    fs::rename(groups, groups + "-away");
    writeFile(groups, "not a folder");
    EXPECT_EQ(device.run({"store"}).status, 1);
    // An app group that can't be reached is a store that can't be opened, and no crash.
    EXPECT_EQ(device.deliver(pushPayload("t-2"))["outcome"], Value("expired"));
}

TEST(CommandLine, ServesSeveralCommandsThatMakeOneDevice) {
    for (int round = 0; round < 4; ++round) {
        const TestDevice device;
        std::vector<RunningProgram> programs;
        for (int i = 0; i < 4; ++i) {
            programs.push_back(
                device.start({"deliver", "-"}, compactJSON(pushPayload("t-" + std::to_string(i)))));
        }
        for (RunningProgram& program : programs) {
            const ProgramResult result = program.finish();
            EXPECT_EQ(result.status, 0) << result.errors;
        }
        EXPECT_EQ(device.look({"store"}).count(), 4U);
    }
}

TEST(CommandLine, TellsWrongUsageFromWhatCouldNotBeDone) {
    const TestDevice device;
    EXPECT_EQ(device.run({}).status, 2);
    EXPECT_EQ(device.run({"no-such-command"}).status, 2);
    EXPECT_EQ(device.run({"deliver"}).status, 2);
    EXPECT_EQ(device.run({"--time", "sideways", "tray"}).status, 2);
    EXPECT_EQ(device.run({"--device", "", "tray"}).status, 2);
    EXPECT_EQ(device.run({"--log", "10", "tray"}).status, 2);
    EXPECT_EQ(device.run({"deliver", "--lines", "--id", "same", "-"}).status, 2);
    EXPECT_THAT(device.run({"fly"}).errors, HasSubstr("fly"));
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"deliver", "--id", "\xff", "-"},
                                               {"open", "\xff"},
                                               {"core", "user-identity", "\xff"}}) {
        EXPECT_EQ(device.run(arguments).status, 2) << arguments.front();
    }
    EXPECT_EQ(device.run({"--help"}).status, 0);
    const ProgramResult missing = device.run({"deliver", device.folder() + "/missing.json"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_THAT(missing.errors, HasSubstr("No such file"));
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"deliver", "/"}, {"deliver", "--lines", "/"}}) {
        EXPECT_EQ(device.run(arguments).status, 1);
    }
}

TEST(CommandLine, PrintsWhatIsEmptyInTheContractsForm) {
    const TestDevice device;
    const Value none = Value::array();
    EXPECT_EQ(device.look({"tray"}), none);
    EXPECT_EQ(device.look({"store"}), none);
    EXPECT_EQ(device.look({"events"}), none);
    EXPECT_EQ(device.look({"events", "--flushes"}), Value::dictionary({{"flushes", 0}}));
    EXPECT_EQ(device.look({"preferences"}), Value::dictionary());
    const Value outbox = device.look({"outbox"});
    for (const char* key : {"openedURLs", "deeplinks", "postedNotifications", "doubleOptIn",
                            "doubleOptIn2Timestamps", "attributionChecks"}) {
        EXPECT_EQ(outbox[key], none) << key;
    }
    for (const char* key : {"badge", "remoteRegistrations", "doubleOptInResets"}) {
        EXPECT_EQ(outbox[key], Value(0)) << key;
    }
    EXPECT_TRUE(outbox["pasteboard"].isNull());
}

TEST(CommandLine, ShowsTheOthersBesideADamagedOne) {
    const TestDevice device;
    device.deliver(pushPayload("whole"), {"--id", "whole"});
    adapters::sqlite::SQLiteRecordStores stores;
    device::SystemState state(device::DeviceFolder(device.folder()), stores);
    for (const char* content : {"", "{", "5", "{} ", "{\"a\": }"})
        state.putOnTray({"damaged " + std::string(content), {4e9}, content});
    for (const char* arguments : {"", "[]", "{\"id\": 12"})
        state.addCall({"event", arguments, {}});
    state.addCall({"event", "{}", {}});
    const Value tray = device.look({"tray"});
    ASSERT_EQ(tray.count(), 6U);
    EXPECT_EQ(tray.items()[0]["content"]["title"], Value("Fresh in"));
    for (std::size_t i = 1; i < 6; ++i)
        EXPECT_TRUE(tray.items()[i]["content"].isNull()) << tray.items()[i].description();
    const Value events = device.look({"events"});
    ASSERT_EQ(events.count(), 2U) << "the whole push's and the empty one";
    EXPECT_EQ(events.items()[1], Value::dictionary({{"at", "1970-01-01T00:00:00"}}));
    EXPECT_EQ(device.run({"tray"}).status, 0);
}

TEST(CommandLine, EmptiesADeviceAndNothingElse) {
    const TestDevice device;
    device.deliver(pushPayload("t-1"));
    EXPECT_EQ(device.run({"reset"}).status, 0);
    EXPECT_EQ(device.look({"tray"}).count(), 0U);
    EXPECT_EQ(device.look({"store"}).count(), 0U);
    EXPECT_TRUE(fs::exists(device.folder() + "/app/Info.plist"));

    const std::string other = device.folder() + "-other";
    writeFile(other + "/letters.txt", "dear reader");
    writeFile(other + "/system/letters.txt", "dear reader");
    for (const char* command : {"reset", "tray"}) {
        const ProgramResult result = device.run({"--device", other, command});
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_EQ(fileText(other + "/letters.txt"), "dear reader") << command;
        EXPECT_EQ(fileText(other + "/system/letters.txt"), "dear reader") << command;
    }
}

TEST(CommandLine, GoesOnWithADeviceThatWasHalfMadeOrHalfEmptied) {
    for (const char* left : {"system", "system/attachments", "system/State.sqlite"}) {
        const TestDevice device;
        const std::string path = device.folder() + "/" + left;
        if (std::string_view(left).ends_with("sqlite")) {
            writeFile(path, "");
        } else {
            fs::create_directories(path);
        }
        EXPECT_EQ(device.look({"tray"}), Value::array()) << left;
        EXPECT_TRUE(fs::exists(device.folder() + "/app/Info.plist")) << left;
        EXPECT_EQ(device.run({"reset"}).status, 0) << left;
        EXPECT_EQ(device.look({"tray"}), Value::array()) << left;
    }
}

TEST(CommandLine, KeepsTheClockGoingForwardsFromCommandToCommand) {
    const TestDevice device;
    Value payload = pushPayload("t-1");
    Value aps = payload["aps"];
    aps.set("category", "CorvalenSimpleNotification");
    payload.set("aps", aps);
    for (const char* id : {"a", "b", "c"})
        device.deliver(payload, {"--id", id});
    Value section = Value::dictionary();
    const Value tray = device.look({"tray"});
    ASSERT_EQ(tray.count(), 1U);
    // Three holds of three seconds each went by, whatever the machine's clock says.
    const Value store = device.look({"store"});
    EXPECT_LT(store.at(0)["time"].string(), tray.at(0)["deliveredAt"].string());
}

TEST(CommandLine, BeginsADamagedClockAnew) {
    const TestDevice device;
    device.look({"advance", "31d"});
    for (const char* text : {"1e300 0", "nan nan", "noon", ""}) {
        writeFile(device.folder() + "/system/clock", text);
        const ProgramResult result = device.run({"advance", "1s"});
        EXPECT_EQ(result.status, 0) << text;
        EXPECT_THAT(result.errors, HasSubstr("clock can't be read")) << text;
        EXPECT_THAT(device.run({"advance", "1s"}).errors, Not(HasSubstr("clock"))) << text;
    }
}

TEST(CommandLine, BeginsAtAGivenMomentAndStandsStillThere) {
    const TestDevice device;
    const auto advance = [&](const char* now) {
        return device.run({"--now", now, "advance", "90s"});
    };
    // A new device's clock begins anywhere, whatever the machine's says.
    const ProgramResult early = advance("1999-12-31T23:59:00");
    EXPECT_EQ(parsedJSON(early.output)["now"], Value("2000-01-01T00:00:30")) << early.errors;
    const ProgramResult back = advance("2000-01-01T00:00:29");
    EXPECT_EQ(back.status, 1);
    EXPECT_THAT(back.errors, HasSubstr("the device's clock is at 2000-01-01T00:00:3"));
    EXPECT_EQ(std::count(back.errors.begin(), back.errors.end(), '\n'), 1);
    EXPECT_EQ(parsedJSON(advance("9999-12-31T23:00:00").output)["now"],
              Value("9999-12-31T23:01:30"));
    for (const char* text : {"", "noon", "2026-11-24", "2026-02-30T00:00:00", "0000-01-01T00:00:00",
                             "2026-11-24T08:00:00Z"})
        EXPECT_EQ(advance(text).status, 2) << text;
}

TEST(CommandLine, LetsNoTimePassBesideTheDelaysOnAClockThatWasSet) {
    const auto clockAfter = [](std::string_view time, std::vector<std::string> command) {
        const TestDevice device;
        command.insert(command.begin(),
                       {"--time", std::string(time), "--now", "2026-11-24T08:00:00"});
        const ProgramResult result = device.run(command, compactJSON(pushPayload("t-1")));
        EXPECT_EQ(result.status, 0) << result.errors;
        return std::stod(fileText(device.folder() + "/system/clock"));
    };
    constexpr double kMoment = 1795507200;
    // The extension's flush of events comes three seconds after the delivery.
    EXPECT_EQ(clockAfter("jump", {"deliver", "-"}), kMoment + 3);
    EXPECT_EQ(clockAfter("jump", {"advance", "0s"}), kMoment);
    EXPECT_GT(clockAfter("real", {"advance", "0s"}), kMoment);
}

TEST(CommandLine, AddsUpTheTimeOfCommandsThatRunAtOnce) {
    const TestDevice device;
    const std::string before(device.look({"advance", "0s"})["now"].string());
    std::vector<RunningProgram> programs;
    for (int i = 0; i < 4; ++i)
        programs.push_back(device.start({"advance", "365d"}));
    for (RunningProgram& program : programs)
        EXPECT_EQ(program.finish().status, 0);
    const std::string after(device.look({"advance", "0s"})["now"].string());
    EXPECT_GE(std::stoi(after) - std::stoi(before), 3) << before << " " << after;
}

TEST(CommandLine, RemovesTheFilesThatAKilledCommandLeft) {
    const TestDevice device;
    device.deliver(pushPayload("t-1"), {"--id", "kept"});
    const std::string system = device.folder() + "/system";
    writeFile(system + "/attachments/orphan/picture.jpg", "picture");
    fs::create_directories(system + "/commands/killed");
    device.look({"tray"});
    EXPECT_FALSE(fs::exists(system + "/attachments/orphan"));
    EXPECT_TRUE(fs::is_empty(system + "/commands"));
}

TEST(CommandLine, SendsNothingToATerminalThatMovesItsCursor) {
    const TestDevice device;
    const std::string errors = device.run({"open", "a\x1b[2J\xc2\x9b\nb"}).errors;
    EXPECT_THAT(errors, HasSubstr("a [2J  b"));
}

TEST(CommandLine, WritesLogLinesToStandardErrorFromTheThresholdOn) {
    const TestDevice device;
    const std::string payload = compactJSON(pushPayload("t-1"));
    const ProgramResult quiet = device.run({"--log", "9", "deliver", "-"}, payload);
    EXPECT_EQ(quiet.errors, "");
    const ProgramResult all = device.run({"--log", "0", "deliver", "-"}, payload);
    EXPECT_THAT(
        all.errors,
        HasSubstr("⬜️ CVNPushLogger(SYSTEM) CVNNotificationServiceExtension: ✅ ✅ ✅ 👍 "
                  "Tavrolin NSE Called ✅ ✅ ✅ -[CVNNotificationServiceExtension "
                  "didReceiveNotificationRequest:withContentHandler:] (Line "));
    EXPECT_THAT(all.errors, HasSubstr("CVNNotificationPayload in json string format : {\n"));
    EXPECT_THAT(all.errors, HasSubstr("Store Loaded"));
}

}  // namespace
}  // namespace tavrolin::tests

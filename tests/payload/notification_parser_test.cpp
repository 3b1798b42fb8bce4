#include "tavrolin/payload/notification_parser.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "tavrolin/payload/payload_keys.h"
#include "tests/payload/payload_platform.h"

namespace tavrolin {
namespace {

using foundation::Value;
using payload_test::json;
using payload_test::PayloadPlatform;
using payload_test::sample;
using testing::ElementsAre;
using testing::IsEmpty;

class NotificationParserTest : public testing::Test {
protected:
    PayloadPlatform platform;

    // What was parsed, as the dictionary that it turns back into; nil when it wasn't ours.
    static Value parsed(const Value& payload) {
        const auto model = CVNNotificationParser::parseNotificationPayloadDictionary(payload);
        return model == nullptr ? Value() : model->toNSDictionary();
    }
};

// Whether the value holds what is expected, and perhaps more; null expects the key to be missing.
bool holds(const Value& value, const Value& expected) {
    if (expected.isNull()) return value.isNil();
    if (expected.isDictionary()) {
        return value.isDictionary() &&
               std::ranges::all_of(expected.entries(), [&](const auto& entry) {
                   return holds(value[entry.key.string()], entry.value);
               });
    }
    if (expected.isArray()) {
        return value.isArray() && std::ranges::equal(value.items(), expected.items(), holds);
    }
    return value == expected;
}

TEST_F(NotificationParserTest, RecognisesItsOwnPushesByTheMarkerInAnyCase) {
    const struct {
        const char* payload;
        bool ours;
    } cases[] = {
        {R"({"cvnSrc": "Corvalen"})", true},
        {R"({"cvnSrc": "corvalen"})", true},
        {R"({"cvnSrc": "CORVALEN", "payload": {}})", true},
        {R"({"cvnSrc": "Corvalen "})", false},
        {R"({"cvnSrc": "Corvalen\u0000"})", false},
        {R"({"cvnSrc": ""})", false},
        {R"({"cvnSrc": 1})", false},
        {R"({"cvnSrc": null})", false},
        {R"({"cvnSrc": ["Corvalen"]})", false},
        {R"({"cvnPayload": {"cvnSrc": "Corvalen"}})", false},
        {R"({})", false},
    };
    for (const auto& [payload, ours] : cases) {
        EXPECT_EQ(CVNNotificationParser::isNotificationFromCorvalen(json(payload)), ours)
            << payload;
        EXPECT_EQ(parsed(json(payload)).isNil(), !ours) << payload;
    }
    EXPECT_FALSE(CVNNotificationParser::isNotificationFromCorvalen({}));
    EXPECT_THAT(platform.takeLog(), IsEmpty());

    EXPECT_FALSE(CVNNotificationParser::isNotificationFromCorvalen("Corvalen"));
    EXPECT_THAT(
        platform.takeLog(),
        ElementsAre(testing::AllOf(
            testing::HasSubstr("(FATAL) CVNNotificationParser: Push notification source could not "
                               "be identified due to exception: a string"),
            testing::EndsWith(" +[CVNNotificationParser isNotificationFromCorvalen:]"))));
}

TEST_F(NotificationParserTest, TellsSilentPushesAlsoInsideLaunchOptions) {
    const struct {
        const char* payload;
        bool silent;
        bool ours;
    } cases[] = {
        {R"({"cvnSrc": "Corvalen", "aps": {"content-available": 1}})", true, true},
        {R"({"cvnSrc": "Corvalen", "aps": {"content-available": "1"}})", true, true},
        {R"({"cvnSrc": "Corvalen", "aps": {"content-available": true}})", true, true},
        {R"({"cvnSrc": "Corvalen", "aps": {"content-available": 2}})", false, true},
        {R"({"cvnSrc": "Corvalen", "aps": {"content-available": {}}})", false, true},
        {R"({"cvnSrc": "Corvalen", "aps": "silent"})", false, true},
        {R"({"cvnSrc": "Corvalen"})", false, true},
        {R"({"aps": {"content-available": 1}})", true, false},
    };
    for (const auto& [text, silent, ours] : cases) {
        const Value payload = json(text);
        const Value options = Value::dictionary(
            {{UIApplicationLaunchOptionsRemoteNotificationKey, payload}, {"other", 1}});
        for (const Value& argument : {payload, options}) {
            platform.takeLog();
            EXPECT_EQ(CVNNotificationParser::isSilentNotification(argument), silent) << text;
            EXPECT_THAT(platform.takeLog(), IsEmpty()) << text;
            EXPECT_EQ(CVNNotificationParser::isSilentNotificationFromCorvalen(argument),
                      silent && ours)
                << text;
        }
    }
    for (const Value& nonsense : {Value(), Value::null(), Value("text"), Value::array({1})}) {
        EXPECT_FALSE(CVNNotificationParser::isSilentNotification(nonsense));
        EXPECT_FALSE(CVNNotificationParser::isSilentNotificationFromCorvalen(nonsense));
    }
}

TEST_F(NotificationParserTest, FillsInWhatAPayloadLeavesOut) {
    EXPECT_TRUE(holds(parsed(json(R"({"cvnSrc": "Corvalen"})")), json(R"({
        "aps": {"alert": {}, "mutable-content": "0", "content-available": "0", "sound": null},
        "cvnSrc": "Corvalen",
        "cvnPayload": {"type": null, "actionButton": [], "carousel": [], "attrIdentity": null,
            "attrParams": {}, "pnMeta": {}, "publishedDate": "2026-11-24T09:30:00",
            "receivedDate": "2026-11-24T09:30:00", "status": null, "rbtn": null},
        "cvnUi": {"lid": null, "tim": null, "rat": null}, "cvnCustomPayload": null})")));
    EXPECT_TRUE(holds(parsed(json(R"({"cvnSrc": "Corvalen",
        "cvnPayload": {"publishedDate": null, "receivedDate": null, "status": "RunNing",
            "actionButton": [{}, {"config": {}, "aTyp": 2}, {"config": {"ctxt": "A1"}}],
            "carousel": [{}], "rbtn": {}, "attrParams": []},
        "cvnUi": {"flid": 21, "tim": {}, "rat": {"btn": [{}, {"t": "Fine"}]}}})")),
                      json(R"({
        "cvnPayload": {"publishedDate": "2026-11-24T09:30:00", "status": "running",
            "actionButton": [{"actionDeeplink": "", "aTyp": null, "config": null},
                {"actionDeeplink": "", "aTyp": 2, "config": null},
                {"actionDeeplink": "", "config": {"ctxt": "A1"}}],
            "carousel": [{"imgUrl": null}], "rbtn": {"name": null}, "attrParams": {}},
        "cvnUi": {"lid": null, "flid": null,
            "tim": {"et": null, "ft": "", "ty": "0", "tt": ""},
            "rat": {"ty": "0", "sc": "0", "cbt": "Submit", "dl": null, "ratingIndex": "-1",
                "rating": "Not Given", "btn": [{"t": ""}, {"t": "Fine"}]}}})")));
}

TEST_F(NotificationParserTest, KeepsANullReceptionDateButReplacesANullPublicationDate) {
    const auto record = CVNNotificationParser::parsePayloadDictionary(
        json(R"({"publishedDate": null, "receivedDate": null})"));
    EXPECT_EQ(record->publishedDate.string(), PayloadPlatform::kNow);
    EXPECT_TRUE(record->receivedDate.isNull());
}

TEST_F(NotificationParserTest, ReadsTheOldFormatAsTheNewOne) {
    const Value old = json(R"({"cvnSrc": "Corvalen", "aps": {"sound": "chime"},
        "payload": {"trid": "t", "mediaurl": "http://host/a.jpg", "status": "Done"},
        "customPayload": {"a": [1, {"b": null}]}})");
    EXPECT_EQ(parsed(old), parsed(json(R"({"cvnSrc": "Corvalen", "aps": {"sound": "chime"},
        "cvnPayload": {"trid": "t", "mediaUrl": "http://host/a.jpg", "status": "Done"},
        "cvnCustomPayload": {"a": [1, {"b": null}]}})")));

    const Value both = json(R"({"cvnSrc": "Corvalen",
        "payload": {"trid": "old"}, "cvnPayload": {"trid": "new", "mediaUrl": "n", "mediaurl": "o"},
        "customPayload": "old", "cvnCustomPayload": "new"})");
    EXPECT_TRUE(holds(parsed(both), json(R"({
        "cvnPayload": {"trid": "new", "mediaUrl": "n"}, "cvnCustomPayload": "new"})")));
}

TEST_F(NotificationParserTest, GivesARatingWithAnEmptyLinkThePayloadsLink) {
    const struct {
        const char* rating;
        const char* deeplink;
    } cases[] = {
        {R"({"dl": ""})", R"("app://home")"},
        {R"({"dl": "app://rate"})", R"("app://rate")"},
        {R"({})", "null"},
        {R"({"dl": 0})", "0"},
    };
    for (const auto& [rating, deeplink] : cases) {
        const Value model = parsed(
            Value::dictionary({{kPNApnSource, "Corvalen"},
                               {kPNPayload, Value::dictionary({{kPNDeeplink, "app://home"}})},
                               {kPNUi, Value::dictionary({{kPNRating, json(rating)}})}}));
        EXPECT_TRUE(holds(model[kPNUi][kPNRating][kPNRatingDeeplink], json(deeplink))) << rating;
    }
}

// One failed step logs one line and keeps what it had; the steps around it go on.
TEST_F(NotificationParserTest, StopsAStepAtAWrongKindAndGoesOnAroundIt) {
    const struct {
        const char* payload;
        const char* message;
        const char* operation;
        const char* left;
    } cases[] = {
        {R"({"aps": "x"})", "CVNAps Parsing failed due to exception = ", "parseAPSDictionary:",
         R"({"aps": {"alert": null, "mutable-content": "0"}})"},
        {R"({"aps": {"alert": "Hello", "mutable-content": 1, "category": "c", "sound": "s"}})",
         "CVNAlert Parsing failed due to exception = ", "parseAlertDictionary:",
         R"({"aps": {"alert": {}, "mutable-content": "1", "category": "c", "sound": "s"}})"},
        {R"({"aps": {"mutable-content": "1", "content-available": [], "sound": "s"}})",
         "CVNAps Parsing failed due to exception = ", "parseAPSDictionary:",
         R"({"aps": {"mutable-content": "1", "content-available": "0", "sound": null}})"},
        {R"({"cvnPayload": ["x"]})",
         "CVNPayload Parsing failed due to exception = ", "parsePayloadDictionary:",
         R"({"cvnPayload": {"actionButton": null, "pnMeta": null, "publishedDate": null}})"},
        {R"({"cvnPayload": {"trid": "t", "status": 7, "title": "T"}, "cvnCustomPayload": 5})",
         "CVNPayload Parsing failed due to exception = ", "parsePayloadDictionary:",
         R"({"cvnPayload": {"trid": "t", "carousel": [], "title": null}, "cvnCustomPayload": 5})"},
        {R"({"cvnPayload": {"attrParams": "x", "title": "T"}})",
         "CVNAttrParams Parsing failed due to exception = ", "parseAttributionParams:",
         R"({"cvnPayload": {"attrParams": {}, "title": "T"}})"},
        {R"({"cvnPayload": {"attrParams": {"__sta": 5, "a": 1}}})",
         "CVNAttrParams Parsing failed due to exception = ", "parseAttributionParams:",
         R"({"cvnPayload": {"attrParams": {"__sta": 5, "a": 1}, "attrIdentity": null}})"},
        {R"({"cvnPayload": {"actionButton": [{"actionName": "A"}, "x", {"actionName": "C"}]}})",
         "CVNActionButton list Parsing failed due to exception = ", "parseActionButtonList:",
         R"({"cvnPayload": {"actionButton": [{"actionName": "A"}], "carousel": []}})"},
        {R"({"cvnPayload": {"actionButton": [{"config": 3}]}})",
         "CVNActionButton list Parsing failed due to exception = ", "parseActionButtonList:",
         R"({"cvnPayload": {"actionButton": []}})"},
        {R"({"cvnPayload": {"actionButton": {"actionName": "A"}, "type": "t"}})",
         "CVNActionButton list Parsing failed due to exception = ", "parseActionButtonList:",
         R"({"cvnPayload": {"actionButton": [], "type": "t"}})"},
        {R"({"cvnPayload": {"rbtn": "Reply", "title": "T"}})",
         "CVNActionButton list Parsing failed due to exception = ",
         "parseReplyActionButtonDictionary:", R"({"cvnPayload": {"rbtn": {}, "title": "T"}})"},
        {R"({"cvnPayload": {"carousel": [{"imgUrl": 1}, null], "title": "T"}})",
         "CVNCarousel list Parsing failed due to exception = ", "parseCarouselList:",
         R"({"cvnPayload": {"carousel": [{"imgUrl": 1}], "title": "T"}})"},
        {R"({"cvnPayload": {"carousel": "x"}})",
         "CVNCarousel list Parsing failed due to exception = ", "parseCarouselList:",
         R"({"cvnPayload": {"carousel": []}})"},
        {R"({"cvnUi": 5, "cvnCustomPayload": {"a": 1}})",
         "CVNUi Parsing failed due to exception = ", "parseUiDictionary:",
         R"({"cvnUi": {}, "cvnCustomPayload": {"a": 1}})"},
        {R"({"cvnUi": {"tim": {"et": 1, "ty": [], "tc": "F"}, "cs": {}}})",
         "CVNTim Parsing failed due to exception = ", "parseTimDictionary:",
         R"({"cvnUi": {"tim": {"et": 1, "ft": "", "tc": null, "tt": null}, "cs": {}}})"},
        {R"({"cvnUi": {"rat": {"ty": 1, "sc": {}, "cbt": "Go"}, "lui": 1}})",
         "CVNRat Parsing failed due to exception = ", "parseRatDictionary:",
         R"({"cvnUi": {"rat": {"ty": "1", "sc": "0", "cbt": null, "ratingIndex": "0"}, "lui": 1}})"},
        {R"({"cvnUi": {"rat": {"btn": [{"t": "A"}, 5], "rating": "B"}}})",
         "CVNCarousel list Parsing failed due to exception = ", "parseRatingButtonList:",
         R"({"cvnUi": {"rat": {"btn": [{"t": "A"}], "rating": "B"}}})"},
    };
    for (const auto& [text, message, operation, left] : cases) {
        Value payload = json(text);
        payload.set(kPNApnSource, "Corvalen");
        platform.takeLog();
        const Value model = parsed(payload);
        EXPECT_TRUE(holds(model, json(left))) << text << "\ngave " << model.description();
        EXPECT_THAT(
            platform.takeLog(),
            ElementsAre(testing::AllOf(
                testing::HasSubstr("(FATAL) CVNNotificationParser: " + std::string(message)),
                testing::EndsWith(" +[CVNNotificationParser " + std::string(operation) + "]"))))
            << text;
    }
}

TEST_F(NotificationParserTest, GivesTheTypedFormOfAButtonsConfiguration) {
    const auto parse = CVNNotificationParser::parseActionButtonConfiguration;
    EXPECT_EQ(parse(json(R"({"ctxt": "A1", "intl": 30})"))->toNSDictionary(),
              json(R"({"ctxt": "A1", "intl": 30})"));
    EXPECT_EQ(parse({})->toNSDictionary().count(), 0U);
    EXPECT_THAT(platform.takeLog(), IsEmpty());
    EXPECT_EQ(parse("x")->toNSDictionary().count(), 0U);
    EXPECT_THAT(platform.takeLog(),
                ElementsAre(testing::HasSubstr(
                    "CVNActionButtonConfiguration Parsing failed due to exception = ")));
}

// --- Attribution --------------------------------------------------------------------------------

// The sender's side: the decoder walks backwards and maps a letter at position p to code p + 38.
std::string encoded(std::string_view text) {
    std::string result;
    for (const char c : text) {
        const std::size_t position = static_cast<std::size_t>(c) - 38;
        result += c == '|' ? c : kCorvalenAttributionDecryptionKey[position];
    }
    std::ranges::reverse(result);
    return result;
}

TEST_F(NotificationParserTest, DecodesAttributionLists) {
    using Pieces = std::optional<std::vector<std::string>>;
    const struct {
        std::string input;
        std::string_view alphabet;
        Pieces pieces;
    } cases[] = {
        {"YQ", "QWERTY", Pieces({"&+"})},
        {"", "QWERTY", std::nullopt},
        {encoded("PUSH|WEEKENDS-2026|A"), kCorvalenAttributionDecryptionKey,
         Pieces({"PUSH", "WEEKENDS-2026", "A"})},
        {"Q%7CW%7c", "QWERTY", Pieces({"", "'", "&"})},
        {"12|34", "QWERTY", Pieces({"43", "21"})},  // digits stay, but the order turns
        {"&A", "QWERTY", Pieces({"%%"})},           // not in the alphabet
        {"aé9€", "QWERTY", Pieces({"€9é%"})},
        {"Q%", "QWERTY", Pieces({""})},    // broken encodings
        {"Q%FF", "QWERTY", Pieces({""})},  //
        {"|", "QWERTY", Pieces({"", ""})},
    };
    for (const auto& [input, alphabet, pieces] : cases) {
        EXPECT_EQ(CVNNotificationParser::decryptCorvalenAttribution(input, alphabet), pieces)
            << input;
    }
    EXPECT_THAT(platform.takeLog(), IsEmpty());
}

TEST_F(NotificationParserTest, TakesTheSecondPieceAsTheIdentity) {
    const auto identity = [](const std::string& list) {
        return CVNNotificationParser::parseAttributionParams(Value::dictionary({{kPNSta, list}}))
            ->attrIdentity;
    };
    EXPECT_EQ(identity(encoded("PUSH|ID-7|X")), Value("ID-7"));
    EXPECT_EQ(identity(encoded("PUSH|")), Value(""));
    EXPECT_TRUE(identity(encoded("PUSH")).isNil());
    EXPECT_TRUE(identity("").isNil());
}

// --- Hostile payloads ---------------------------------------------------------------------------

// Calls back with a copy of the value for each place in it, in which that place holds `other`.
void replaceEachPlace(const Value& value, const Value& other,
                      const std::function<void(const Value&)>& use) {
    if (value.isDictionary()) {
        for (const auto& entry : value.entries()) {
            const auto put = [&](const Value& inner) {
                Value copy = value;
                copy.set(entry.key, inner);
                use(copy);
            };
            put(other);
            replaceEachPlace(entry.value, other, put);
        }
    } else if (value.isArray()) {
        for (std::size_t i = 0; i < value.count(); ++i) {
            const auto put = [&](const Value& inner) {
                Value copy = Value::array();
                for (std::size_t k = 0; k < value.count(); ++k)
                    copy.append(k == i ? inner : value.at(k));
                use(copy);
            };
            put(other);
            replaceEachPlace(value.at(i), other, put);
        }
    }
}

Value nested(int levels) {
    Value value = Value::dictionary();
    for (int i = 0; i < levels; ++i)
        value = i % 2 == 0 ? Value::array({value}) : Value::dictionary({{"aps", value}});
    return value;
}

TEST_F(NotificationParserTest, SurvivesAnyKindInAnyFieldAndArchivesWhatItMade) {
    const Value others[] = {Value::null(),
                            true,
                            -1,
                            18'446'744'073'709'551'615U,
                            1e300,
                            "",
                            std::string("\0x", 2),
                            Value::array(),
                            Value::array({"x", Value::null()}),
                            Value::dictionary({{"", 1}}),
                            nested(40)};
    int parsedOnes = 0;
    for (const char* name : {"carousel-landscape", "rating"}) {
        for (const Value& other : others) {
            replaceEachPlace(sample(name), other, [&](const Value& payload) {
                const auto model =
                    CVNNotificationParser::parseNotificationPayloadDictionary(payload);
                if (model == nullptr) return;
                ++parsedOnes;
                const auto bytes = foundation::KeyedArchiver::archivedData(*model, true);
                const auto again =
                    foundation::KeyedUnarchiver::unarchive<CVNNotificationPayloadModel>(bytes);
                ASSERT_EQ(again->toNSDictionary(), model->toNSDictionary());
            });
        }
    }
    EXPECT_GT(parsedOnes, 1000);
}

}  // namespace
}  // namespace tavrolin

#include "tavrolin/payload/notification_payload.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "tavrolin/foundation/value_transformer.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tests/payload/payload_platform.h"

namespace tavrolin {
namespace {

using foundation::Exception;
using foundation::KeyedArchiver;
using foundation::KeyedUnarchiver;
using foundation::Ref;
using foundation::Value;
using payload_test::json;
using payload_test::PayloadPlatform;
using payload_test::sample;
using testing::ElementsAre;
using testing::IsEmpty;
using Transformer = CVNNotificationPayloadModelValueTransformer;

class NotificationPayloadTest : public testing::Test {
protected:
    PayloadPlatform platform;

    static Ref<CVNNotificationPayloadModel> modelOf(std::string_view sampleName) {
        return CVNNotificationParser::parseNotificationPayloadDictionary(sample(sampleName));
    }
};

std::vector<std::string> keysOf(const Value& dictionary) {
    std::vector<std::string> keys;
    for (const auto& entry : dictionary.entries())
        keys.emplace_back(entry.key.string());
    return keys;
}

// --- The samples --------------------------------------------------------------------------------

TEST_F(NotificationPayloadTest, SamplesSurviveTheArchiveAndBeingParsedAgain) {
    int samples = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(TAVROLIN_SOURCE_DIR "/examples/payloads")) {
        const std::string name = file.path().stem();
        SCOPED_TRACE(name);
        const Value payload = sample(name);
        const auto text = foundation::jsonWithValue(payload, foundation::JSONStyle::compact);
        EXPECT_LE(text->size(), 4096U);
        const auto model = modelOf(name);
        EXPECT_EQ(model == nullptr, name == "foreign");
        if (model == nullptr) continue;
        ++samples;
        const Value dictionary = model->toNSDictionary();
        const auto unarchived =
            Transformer::reverseTransformedValue(Transformer::transformedValue(*model));
        ASSERT_NE(unarchived, nullptr);
        EXPECT_EQ(unarchived->toNSDictionary(), dictionary);
        EXPECT_EQ(
            CVNNotificationParser::parseNotificationPayloadDictionary(dictionary)->toNSDictionary(),
            dictionary);
    }
    EXPECT_GE(samples, 10);
    EXPECT_THAT(platform.takeLog(), IsEmpty());
}

// --- The dictionary form ------------------------------------------------------------------------

TEST_F(NotificationPayloadTest, WritesItsIntegersAsTexts) {
    const auto model = CVNNotificationParser::parseNotificationPayloadDictionary(
        json(R"({"cvnSrc": "Corvalen", "aps": {"content-available": 1},
                 "cvnUi": {"tim": {"ty": 2}, "rat": {"ty": 1, "sc": 5}}})"));
    const Value dictionary = model->toNSDictionary();
    EXPECT_EQ(dictionary["aps"],
              json(R"({"alert": {}, "mutable-content": "0", "content-available": "1"})"));
    EXPECT_EQ(dictionary["cvnUi"]["tim"], json(R"({"ty": "2", "ft": "", "tt": ""})"));
    EXPECT_EQ(dictionary["cvnUi"]["rat"], json(R"({"ty": "1", "sc": "5", "cbt": "Submit",
        "ratingIndex": "-1", "rating": "Not Given"})"));
}

TEST_F(NotificationPayloadTest, KeepsTheOrderOfItsKeys) {
    const Value dictionary = modelOf("carousel-landscape")->toNSDictionary();
    EXPECT_THAT(keysOf(dictionary),
                ElementsAre("aps", "cvnSrc", "cvnPayload", "cvnCustomPayload", "cvnUi"));
    EXPECT_THAT(keysOf(dictionary["cvnPayload"]),
                ElementsAre("type", "trid", "deeplink", "actionButton", "carousel", "attrIdentity",
                            "attrParams", "pnMeta", "publishedDate", "status", "category", "ttl",
                            "title", "subtitle", "body", "sound", "collapseKey", "receivedDate",
                            "htT", "htS", "htB", "rbtn"));
    EXPECT_THAT(keysOf(dictionary["cvnUi"]),
                ElementsAre("lid", "flid", "bgc", "bggc", "tim", "lui", "cs"));
}

TEST_F(NotificationPayloadTest, PutsTheAttributionAmongThePayloadsOwnKeys) {
    CVNPayload payload;
    payload.cvnAttribution = std::make_shared<CVNAttributionParameter>();
    payload.cvnAttribution->attrParams = json(R"({"channel": "push"})");
    EXPECT_EQ(payload.toNSDictionary(), json(R"({"attrParams": {"channel": "push"}})"));
    payload.cvnAttribution->attrIdentity = "id";
    EXPECT_EQ(payload.toNSDictionary(),
              json(R"({"attrIdentity": "id", "attrParams": {"channel": "push"}})"));
    EXPECT_EQ(payload.cvnAttribution->toNSDictionary().count(), 0U);
}

// --- The archive --------------------------------------------------------------------------------

TEST_F(NotificationPayloadTest, ArchivesEveryFieldButTheInBoxOnes) {
    CVNPayload payload;
    payload.actionButton.emplace();  // empty is not absent
    payload.modifiedDate = "2026-11-24T08:00:00";
    payload.pnMeta =
        json(R"({"big": 18446744073709551615, "real": 0.1, "no": false, "null": null})");
    payload.appInBoxCategory = payload.appInBoxTimestamp = payload.aappInBoxTtl = "x";
    const auto bytes = KeyedArchiver::archivedData(payload, true);
    const auto again = KeyedUnarchiver::unarchive<CVNPayload>(bytes);
    EXPECT_EQ(again->toNSDictionary(), payload.toNSDictionary());
    EXPECT_TRUE(again->pnMeta["big"].isUnsigned());
    EXPECT_EQ(again->pnMeta["no"].kind(), Value::Kind::boolean);
    EXPECT_TRUE(again->actionButton.has_value());
    EXPECT_FALSE(again->carousel.has_value());
    EXPECT_EQ(again->cvnAttribution, nullptr);
    EXPECT_TRUE(again->appInBoxCategory.isNil() && again->appInBoxTimestamp.isNil() &&
                again->aappInBoxTtl.isNil());
}

TEST_F(NotificationPayloadTest, OnlyTheStrictReaderMindsTheWrongDeclarations) {
    const auto strict = [](const foundation::Archivable& record, auto type) {
        using Record = typename decltype(type)::element_type;
        const auto bytes = KeyedArchiver::archivedData(record, true);
        EXPECT_NE(KeyedUnarchiver::unarchive<Record>(bytes), nullptr);
        KeyedUnarchiver::unarchive<Record>(bytes, KeyedUnarchiver::Mode::strict);
    };
    CVNNotificationPayloadModel model;
    model.source = "Corvalen";
    EXPECT_NO_THROW(strict(model, Ref<CVNNotificationPayloadModel>()));
    model.cvnCustomPayload = Value::dictionary();
    EXPECT_THROW(strict(model, Ref<CVNNotificationPayloadModel>()), Exception);

    CVNActionButton button;
    button.actionType = 4;
    EXPECT_THROW(strict(button, Ref<CVNActionButton>()), Exception);
    CVNReplyActionButton reply;
    reply.actionType = 5;
    EXPECT_THROW(strict(reply, Ref<CVNReplyActionButton>()), Exception);
    const auto bytes = KeyedArchiver::archivedData(button, true);
    EXPECT_EQ(KeyedUnarchiver::unarchive<CVNActionButton>(bytes)->actionType.kind(),
              Value::Kind::integer);
}

TEST_F(NotificationPayloadTest, TheStoreFindsTheTransformerByItsName) {
    Transformer::registerTransformer();
    const auto transformer =
        foundation::ValueTransformer::forName("CVNNotificationPayloadModelValueTransformer");
    ASSERT_NE(transformer, nullptr);
    const auto model = modelOf("simple");
    const auto again = std::dynamic_pointer_cast<CVNNotificationPayloadModel>(
        transformer->reverseTransformedValue(transformer->transformedValue(*model)));
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(again->toNSDictionary(), model->toNSDictionary());
}

TEST_F(NotificationPayloadTest, WhatCantBeArchivedOrReadIsLoggedAndNeverRaises) {
    CVNNotificationPayloadModel deep;
    deep.cvnCustomPayload = Value::array();
    for (int i = 0; i < 1100; ++i)
        deep.cvnCustomPayload = Value::array({deep.cvnCustomPayload});
    EXPECT_TRUE(Transformer::transformedValue(deep).isNil());
    EXPECT_TRUE(Transformer::transformedValue(CVNPayload()).isNil());
    EXPECT_THAT(platform.takeLog(),
                testing::Each(testing::AllOf(
                    testing::HasSubstr("(FATAL) CVNNotificationPayloadModelValueTransformer: "
                                       "Unable to archive CVNNotificationPayloadModel due to "
                                       "execption: "),
                    testing::EndsWith("+[CVNNotificationPayloadModelValueTransformer "
                                      "transformedValue:]"))));

    const Value good = Transformer::transformedValue(*modelOf("rating"));
    std::vector<std::uint8_t> bytes(good.bytes().begin(), good.bytes().end());
    std::size_t refused = 0;
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const Value cut = Value::data(std::span(bytes).first(size));
        refused += Transformer::reverseTransformedValue(cut) == nullptr ? 1U : 0U;
    }
    EXPECT_EQ(refused, bytes.size());
    EXPECT_EQ(platform.takeLog().size(), bytes.size());

    for (std::size_t i = 0; i < bytes.size(); ++i) {  // damage gives another model or none
        bytes[i] ^= 0x20U;
        Transformer::reverseTransformedValue(Value::data(bytes));
        bytes[i] ^= 0x20U;
    }
    platform.takeLog();
    EXPECT_EQ(Transformer::reverseTransformedValue("text"), nullptr);
    EXPECT_EQ(platform.takeLog().size(), 1U);
    EXPECT_EQ(Transformer::reverseTransformedValue({}), nullptr);
    EXPECT_THAT(platform.takeLog(), IsEmpty());
}

// --- Stored media -------------------------------------------------------------------------------

class StoredMediaTest : public NotificationPayloadTest {
protected:
    StoredMediaTest() { CVNPushFileUtility::appGroupURLWithAppGroup("group"); }

    std::string addMedia(const std::string& name) {
        return platform.files.add(std::string(kNotificationMediaFolder) + "/" + name);
    }
};

TEST_F(StoredMediaTest, RemovesTheMediaAndTheCarouselImages) {
    CVNPayload payload;
    const std::string media = addMedia("a b?#%41.jpg");
    const std::string images[] = {addMedia("1.jpg"), addMedia("2.jpg")};
    payload.mediaURLPath = media;
    payload.carousel.emplace();
    for (const Value& path : {Value(images[0]), Value(), Value("file://" + images[1])}) {
        payload.carousel->push_back(std::make_shared<CVNCarousel>());
        payload.carousel->back()->imgUrlPath = path;
    }
    payload.deleteStoredMedia();
    EXPECT_FALSE(std::filesystem::exists(media));
    EXPECT_FALSE(std::filesystem::exists(images[0]));
    EXPECT_FALSE(std::filesystem::exists(images[1]));
    const auto line = [](const char* message) {
        return testing::AllOf(testing::HasSubstr("(DEBUG) CVNPayload: " + std::string(message)),
                              testing::EndsWith(" -[CVNPayload deleteStoredMedia]"));
    };
    EXPECT_THAT(platform.takeLog(), ElementsAre(line("Removed saved file from media"),
                                                line("Removed saved file from carousel media"),
                                                line("Removed saved file from carousel media")));

    payload.deleteStoredMedia();  // nothing is left to remove
    CVNPayload().deleteStoredMedia();
    EXPECT_THAT(platform.takeLog(), IsEmpty());
}

TEST_F(StoredMediaTest, LeavesEverythingElseAlone) {
    addMedia("kept.jpg");
    const std::string store = platform.files.add("Tavrolin/CorvalenPushDB.sqlite");
    const std::string folder = platform.files.path(kNotificationMediaFolder);
    std::filesystem::create_symlink(store, folder + "/link.jpg");
    const Value paths[] = {store,
                           "file://" + store,
                           folder,
                           folder + "/",
                           folder + "/.",
                           folder + "/../Tavrolin/CorvalenPushDB.sqlite",
                           folder + "/%2e%2e/Tavrolin/CorvalenPushDB.sqlite",
                           "file://" + folder + "/%2e%2e/Tavrolin/CorvalenPushDB.sqlite",
                           folder + "/link.jpg",
                           folder + std::string("/kept.jpg\0x", 11),
                           folder + "/gone.jpg",
                           "kept.jpg",
                           "file:kept.jpg",
                           "",
                           Value::null(),
                           5,
                           Value::array({folder + "/kept.jpg"})};
    for (const Value& path : paths) {
        SCOPED_TRACE(path.description());
        CVNPayload payload;
        payload.mediaURLPath = path;
        payload.carousel.emplace({std::make_shared<CVNCarousel>()});
        payload.carousel->front()->imgUrlPath = path;
        payload.deleteStoredMedia();
        EXPECT_TRUE(std::filesystem::exists(store));
        EXPECT_TRUE(std::filesystem::exists(folder + "/kept.jpg"));
        EXPECT_THAT(platform.takeLog(), IsEmpty());
    }
}

}  // namespace
}  // namespace tavrolin

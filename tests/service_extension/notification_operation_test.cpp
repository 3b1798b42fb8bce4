#include "tavrolin/service_extension/notification_operation.h"

#include <gmock/gmock.h>

#include "tests/support/memory_sdk.h"
#include "tests/support/pictures.h"

namespace tavrolin::tests {
namespace {

using adapters::memory::MemoryURLSession;
using foundation::Value;
using platform::NotificationContent;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Operation = CVNNotificationOperation;

constexpr const char* kMediaFolder = "/groups/group.example/CVN-Notification-Media/";

// A carousel's product section, of an item for each name.
Value carousel(const char* type, const std::vector<std::string>& names) {
    Value items = Value::array();
    for (const std::string& name : names) {
        items.append(Value::dictionary(
            {{"imgUrl", "https://example.com/" + name}, {"imgTitle", "about " + name}}));
    }
    return Value::dictionary({{"type", type}, {"carousel", items}});
}

class NotificationOperationTest : public MemorySDKTest {
protected:
    NotificationOperationTest() {
        CVNPushFileUtility::appGroupURLWithAppGroup("group.example");
        memory_.urlSession.setDefaultAnswer({.body = test::png(2, 2)});
        memory_.urlSession.setAnswer("https://example.com/missing.png", {.statusCode = 404});
    }

    // Prepares the push's content as the extension does.
    void prepare(const Value& userInfo) {
        NotificationContent content;
        content.title = "as received";
        content.userInfo = userInfo;
        start(Operation::initWithAPNSContent(
            std::make_shared<platform::MutableNotificationContent>(content), parsed(userInfo),
            completion()));
    }
    void start(std::shared_ptr<Operation> operation) {
        operation_ = std::move(operation);
        started_ = now();
        operation_->start();
    }
    Operation::CompletionBlock completion() {
        return [this](const Payload& payload, const Operation::Content& content) {
            ++completions_;
            took_ = now() - started_;
            wasFinished_ = operation_->isFinished();
            payload_ = payload;
            result_ = content->snapshot();
        };
    }
    // Lets everything happen; fails unless the completion was called once and the operation ended.
    void finish() {
        run();
        EXPECT_EQ(completions_, 1);
        EXPECT_FALSE(wasFinished_) << "first the completion, then the end";
        EXPECT_TRUE(operation_->isFinished());
    }
    std::vector<std::string> requested() const {
        std::vector<std::string> urls;
        for (const auto& request : memory_.urlSession.requests())
            urls.push_back(request.url.absoluteString());
        return urls;
    }
    std::vector<std::string> attached() const {
        std::vector<std::string> names;
        for (const auto& attachment : result_.attachments) {
            const std::string path = attachment.url.path();
            EXPECT_TRUE(memory_.files.fileExists(path)) << path;
            names.push_back(path.substr(path.rfind(".tmp") + 4));
        }
        return names;
    }

    std::shared_ptr<Operation> operation_;
    int completions_ = 0;
    double started_ = 0;
    double took_ = -1;
    bool wasFinished_ = false;
    Payload payload_;
    NotificationContent result_;
};

TEST_F(NotificationOperationTest, ASimpleNotificationTakesThreeSecondsAndNoMedia) {
    Value userInfo = push("t", Value::dictionary({{"mediaUrl", "https://example.com/a.png"}}));
    userInfo.set("aps", Value::dictionary({{"category", "CorvalenSimpleNotification"}}));
    prepare(userInfo);
    EXPECT_EQ(operation_->name(), "CVN_APNS_Notification_Operation");
    memory_.dispatch.advance(2.999);
    EXPECT_EQ(completions_, 0);
    EXPECT_TRUE(operation_->isExecuting());
    finish();
    EXPECT_DOUBLE_EQ(took_, 3);
    EXPECT_THAT(requested(), IsEmpty());
    EXPECT_THAT(result_.attachments, IsEmpty());
    EXPECT_EQ(result_.title, Value("as received"));
    EXPECT_EQ(result_.userInfo, payload_->toNSDictionary());
    EXPECT_EQ(result_.userInfo["cvnPayload"]["trid"], Value("t"));
}

TEST_F(NotificationOperationTest, RichMediaIsAttachedAndCopiedForTheContentExtension) {
    prepare(push("t", Value::dictionary({{"mediaUrl", "https://example.com/a.png?signature"}})));
    EXPECT_THAT(requested(), IsEmpty()) << "it returns before";
    finish();
    EXPECT_DOUBLE_EQ(took_, 0) << "only a simple one waits";
    EXPECT_THAT(requested(), ElementsAre("https://example.com/a.png")) << "and no empty icons";
    EXPECT_THAT(attached(), ElementsAre("a.png"));
    const std::string copy(payload_->cvnPayload->mediaURLPath.string());
    EXPECT_THAT(copy, testing::StartsWith(kMediaFolder));
    EXPECT_THAT(copy, EndsWith("a.png"));
    EXPECT_TRUE(memory_.files.fileExists(copy));
    EXPECT_EQ(result_.userInfo["cvnPayload"]["mediaURLPath"], Value(copy));
    EXPECT_EQ(result_.userInfo, payload_->toNSDictionary());
}

TEST_F(NotificationOperationTest, IsDeliveredWithoutItsMediaWhenThatFails) {
    const Value sections[] = {
        Value::dictionary(),
        Value::dictionary({{"mediaUrl", "https://example.com/missing.png"}}),
        Value::dictionary({{"mediaUrl", "https://example.com/page.html"}}),
        Value::dictionary({{"mediaUrl", "no url"}}),
        Value::dictionary({{"mediaUrl", 7}}),
        Value::dictionary({{"type", "CarouselPortrait"}}),
        carousel("CarouselLandscape", {}),
        carousel("CarouselLandscape", {"missing.png"}),
    };
    for (const Value& section : sections) {
        SCOPED_TRACE(section.description());
        completions_ = 0;
        prepare(push("t", section));
        finish();
        EXPECT_THAT(result_.attachments, IsEmpty());
        EXPECT_EQ(result_.userInfo, payload_->toNSDictionary());
        EXPECT_TRUE(result_.userInfo["cvnPayload"]["mediaURLPath"].isNil());
        EXPECT_EQ(result_.userInfo["cvnPayload"]["carousel"].count(), 0U);
    }
}

TEST_F(NotificationOperationTest, TheIconsOfARatingComeFirstAndAreNotAttached) {
    Value userInfo = push("t", Value::dictionary({{"mediaUrl", "https://example.com/a.png"}}));
    userInfo.set(
        "cvnUi",
        Value::dictionary({{"lid", "1"},
                           {"rat", Value::dictionary({{"si", "https://example.com/full.png"},
                                                      {"ui", "https://example.com/empty.png"}})}}));
    memory_.urlSession.setAnswer("https://example.com/empty.png",
                                 {.body = test::png(1, 1), .delay = 2});
    prepare(userInfo);
    memory_.dispatch.advance(1.9);
    EXPECT_THAT(requested(),
                ElementsAre("https://example.com/full.png", "https://example.com/empty.png"))
        << "both at once, the media after both";
    finish();
    EXPECT_DOUBLE_EQ(took_, 2);
    EXPECT_THAT(requested(), SizeIs(3));
    EXPECT_THAT(attached(), ElementsAre("a.png"));
    const Value rating = result_.userInfo["cvnUi"]["rat"];
    for (const auto& [key, name] : {std::pair("selectedIconPath", "full.png"),
                                    std::pair("unselectedIconPath", "empty.png")}) {
        const std::string path(rating[key].string());
        EXPECT_THAT(path, AllOf(testing::StartsWith(kMediaFolder), EndsWith(name)));
        EXPECT_TRUE(memory_.files.fileExists(path));
    }
}

TEST_F(NotificationOperationTest, ACarouselKeepsItsOrderInWhateverOrderThePicturesCome) {
    for (const auto& [name, delay] : {std::pair("a", 3), std::pair("c", 1), std::pair("d", 2)}) {
        memory_.urlSession.setAnswer(
            "https://example.com/" + std::string(name) + ".png",
            {.body = test::png(2, 2), .delay = static_cast<double>(delay)});
    }
    for (const char* type : {"CarouselPortrait", "CarouselLandscape"}) {
        SCOPED_TRACE(type);
        completions_ = 0;
        Value section = carousel(type, {"a.png", "missing.png", "c.png", "d.png"});
        section.set("mediaUrl", "https://example.com/never.png");
        prepare(push("t", section));
        finish();
        EXPECT_DOUBLE_EQ(took_, 3) << "all of them at once";
        const std::vector<std::string> names = {"a.png", "c.png", "d.png"};
        EXPECT_EQ(attached(), names);
        const Value shown = result_.userInfo["cvnPayload"]["carousel"];
        ASSERT_EQ(shown.count(), names.size());
        for (std::size_t i = 0; i < names.size(); ++i) {
            EXPECT_EQ(shown.at(i)["imgTitle"], Value("about " + names[i]));
            const std::string path(shown.at(i)["imgUrlPath"].string());
            EXPECT_THAT(path, AllOf(testing::StartsWith(kMediaFolder), EndsWith(names[i])));
            EXPECT_TRUE(memory_.files.fileExists(path)) << path;
        }
        EXPECT_THAT(payload_->cvnPayload->carousel.value(), SizeIs(3));
    }
    EXPECT_THAT(requested(), testing::Not(Contains("https://example.com/never.png")));
}

TEST_F(NotificationOperationTest, ASilentDownloadNeverCompletes) {
    memory_.urlSession.setAnswer("https://example.com/b.png", {.neverAnswers = true});
    prepare(push("t", carousel("CarouselPortrait", {"a.png", "b.png"})));
    run();
    operation_->cancel();
    run();
    EXPECT_EQ(completions_, 0);
    EXPECT_TRUE(operation_->isExecuting());
    EXPECT_THAT(operation_->bestAttemptContent()->snapshot().attachments, IsEmpty());
}

TEST_F(NotificationOperationTest, ACancelledOneStillCompletes) {
    prepare(push("t", Value::dictionary({{"mediaUrl", "https://example.com/a.png"}})));
    operation_->cancel();
    finish();
    EXPECT_THAT(attached(), ElementsAre("a.png"));
}

TEST_F(NotificationOperationTest, AnExceptionCompletesTheContentAsItIs) {
    const Value raising = Value::dictionary(
        {{"cvnSrc", "Corvalen"},
         {"cvnUi", Value::dictionary({{"lid", "1"}, {"rat", Value::dictionary({{"si", 7}})}})}});
    prepare(raising);
    finish();  // an icon that is no text is no icon
    completions_ = 0;

    // A dispatch that takes no more work.
    class FullDispatch : public platform::ForwardingDispatch {
    public:
        using ForwardingDispatch::ForwardingDispatch;
        void afterMain(double, platform::Block) override {
            foundation::Exception::raise(foundation::Exception::kInvalidArgument, "no timers");
        }
    } full(memory_.dispatch);
    platform::Platform ports = memory_.platform();
    ports.dispatch = &full;
    platform::install(ports);
    Value userInfo = push("t");
    userInfo.set("aps", Value::dictionary({{"category", "CorvalenSimpleNotification"}}));
    takeLog();
    prepare(userInfo);
    EXPECT_EQ(completions_, 1);
    EXPECT_TRUE(operation_->isFinished());
    EXPECT_EQ(result_.userInfo, userInfo);
    EXPECT_THAT(takeLog(),
                Contains("(DEBUG) CVNNotificationOperation: Could not request due to exception = "
                         "no timers -[CVNNotificationOperation start]"));
    platform::install(memory_.platform());
}

TEST_F(NotificationOperationTest, DoesWithoutACompletion) {
    start(Operation::initWithAPNSContent(std::make_shared<platform::MutableNotificationContent>(),
                                         parsed(push("t")), nullptr));
    run();
    EXPECT_TRUE(operation_->isFinished());
}

// --- Pictures that may be shown
// -------------------------------------------------------------------

TEST_F(NotificationOperationTest, ShowsOnlyPicturesInTheMediaFolder) {
    const std::string folder = kMediaFolder;
    const std::string picture = test::png(2, 2);
    memory_.files.write(folder + "own.png", picture);
    memory_.files.write(folder + "text.png", "no picture");
    memory_.files.write("/groups/group.example/near.png", picture);
    constexpr std::string_view kWhere = " -[CVNNotificationOperation isValidImage:]";
    struct Case {
        Value path;
        bool isValid;
        const char* message;
    };
    const Case cases[] = {
        {folder + "own.png", true, nullptr},
        {folder + "text.png", false, nullptr},
        {folder + "missing.png", false, "Carousel image not downloaded due to error: "},
        {folder + "../near.png", false, "Carousel image not downloaded due to error: "},
        {"/groups/group.example/near.png", false, "Carousel image not downloaded due to error: "},
        {"", false, "Carousel image not downloaded due to error: "},
        {{}, false, "Carousel image not downloaded due to exception: "},
        {7, false, "Carousel image not downloaded due to exception: "},
    };
    for (const auto& [path, isValid, message] : cases) {
        SCOPED_TRACE(path.description());
        takeLog();
        EXPECT_EQ(Operation::isValidImage(path), isValid);
        const auto lines = takeLog();
        if (message == nullptr) {
            EXPECT_THAT(lines, IsEmpty());
        } else {
            EXPECT_THAT(lines, ElementsAre(AllOf(HasSubstr("(DEBUG) CVNNotificationOperation: " +
                                                           std::string(message)),
                                                 EndsWith(std::string(kWhere)))));
        }
    }
}

TEST_F(NotificationOperationTest, APathThatCameWithThePayloadCountsOnlyInTheMediaFolder) {
    memory_.files.write("/groups/group.example/secret.png", test::png(2, 2));
    Value section = carousel("CarouselPortrait", {"missing.png"});
    section.set(
        "carousel",
        Value::array({Value::dictionary({{"imgUrl", "https://example.com/missing.png"},
                                         {"imgUrlPath", "/groups/group.example/secret.png"}})}));
    prepare(push("t", section));
    finish();
    EXPECT_EQ(result_.userInfo["cvnPayload"]["carousel"].count(), 0U);
}

// --- The content of a local notification
// ----------------------------------------------------------

TEST_F(NotificationOperationTest, ALocalNotificationBuildsItsContentFromThePayload) {
    const Value section = Value::dictionary({{"title", "section title"},
                                             {"subtitle", "section subtitle"},
                                             {"body", "section body"},
                                             {"category", "section category"},
                                             {"sound", "section sound"}});
    const auto texts = [](const NotificationContent& content) {
        return std::vector<Value>{content.title, content.subtitle, content.body,
                                  content.categoryIdentifier, content.sound};
    };
    const auto fromSection = [&](std::string_view key) { return section[key]; };
    const std::vector<std::string_view> keys = {"title", "subtitle", "body", "category", "sound"};
    std::vector<Value> allFromSection;
    for (const auto key : keys)
        allFromSection.push_back(fromSection(key));

    // Without the push service's section everything comes from the product's.
    const Payload bare = parsed(push("t", section));
    EXPECT_EQ(texts(Operation::getNotificationContentWithPayload(bare)), allFromSection);
    EXPECT_EQ(bare->aps->category, Value("section category")) << "written back";

    // Each field on its own goes before the product's.
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const bool isInAlert = i < 3;
        Value aps = Value::dictionary();
        if (isInAlert) {
            aps.set("alert", Value::dictionary({{keys[i], "own"}}));
        } else {
            aps.set(keys[i], "own");
        }
        Value userInfo = push("t", section);
        userInfo.set("aps", aps);
        const Payload payload = parsed(userInfo);
        std::vector<Value> expected = allFromSection;
        expected[i] = "own";
        EXPECT_EQ(texts(Operation::getNotificationContentWithPayload(payload)), expected)
            << keys[i];
        EXPECT_EQ(payload->aps->category, expected[3]) << keys[i];
    }

    // An empty text is present; what is nowhere stays absent.
    Value userInfo = push("t", section);
    userInfo.set("aps", Value::dictionary({{"alert", Value::dictionary({{"title", ""}})}}));
    EXPECT_EQ(Operation::getNotificationContentWithPayload(parsed(userInfo)).title, Value(""));
    const auto nothing = Operation::getNotificationContentWithPayload(
        std::make_shared<CVNNotificationPayloadModel>());
    EXPECT_EQ(texts(nothing), std::vector<Value>(5));
    EXPECT_TRUE(nothing.userInfo.isNil());
}

TEST_F(NotificationOperationTest, ALocalNotificationIsPreparedByItsChosenCategory) {
    start(Operation::initWithLocalNotificaitonPayload(
        parsed(push("t", Value::dictionary(
                             {{"title", "Later"}, {"category", "CorvalenSimpleNotification"}}))),
        completion()));
    EXPECT_EQ(operation_->name(), "CVN_Local_Notification_Operation");
    finish();
    EXPECT_DOUBLE_EQ(took_, 3) << "the category from the product section counts";
    EXPECT_EQ(result_.title, Value("Later"));
    EXPECT_EQ(result_.userInfo["aps"]["category"], Value("CorvalenSimpleNotification"));
}

}  // namespace
}  // namespace tavrolin::tests

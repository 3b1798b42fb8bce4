#include "tavrolin/core/shared_utility.h"

#include <gmock/gmock.h>

#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/foundation/json.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using Preferences = CVNPushPreferencesManager;

class SharedUtilityTest : public MemorySDKTest {
protected:
    CVNSharedUtility& utility_ = CVNSharedUtility::sharedInstance();
};

TEST_F(SharedUtilityTest, TellsEmptyTextsFromBlankOnes) {
    const struct {
        Value text;
        bool isEmpty;
        bool isBlank;
        Value without;
    } cases[] = {
        {{}, true, false, {}},
        {"", true, true, ""},
        {7, true, false, 7},
        {" \t\u00a0\n", false, true, ""},
        {"  a b\n", false, false, "a b"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(CVNSharedUtility::isEmptyString(each.text), each.isEmpty);
        EXPECT_EQ(CVNSharedUtility::isBlank(each.text), each.isBlank);
        EXPECT_EQ(CVNSharedUtility::stringWithoutBlanks(each.text), each.without);
    }
}

TEST_F(SharedUtilityTest, ChoosesTheLinkByWhatTheUserDid) {
    static constexpr const char* kPush = R"({"cvnSrc": "Corvalen",
        "cvnPayload": {"trid": "t", "deeplink": "own",
            "actionButton": [{"actionDeeplink": "button0"}, {"actionDeeplink": "button1"}],
            "carousel": [{"imgDeeplink": "item0"}, {"imgDeeplink": ""}, {"imgDeeplink": " "}]},
        "cvnUi": {"rat": {"dl": "rating"}}})";
    const auto push = *foundation::valueWithJSON(kPush);
    auto model = parsed(push);
    ASSERT_EQ(model->cvnPayload->carousel->size(), 3U);
    auto& rating = *model->cvnUi->cvnRat;
    constexpr int kNone = -99;
    constexpr const char* kRaises = "raises";
    const struct {
        bool rated;
        int button;
        int carousel;
        Value link;
    } cases[] = {
        {false, kNone, kNone, "own"},
        {false, kNone, 0, "item0"},
        {false, kNone, 1, "own"},
        {false, kNone, 2, "own"},
        {false, kNone, 3, kRaises},
        {false, kNone, 4, "own"},
        {false, kNone, -1, kRaises},
        // The carousel's index picks the button.
        {false, 1, kNone, "button0"},
        {false, 0, 1, "button1"},
        {false, 0, 2, kRaises},
        {false, 0, 3, "own"},
        {false, 0, -1, kRaises},
        {true, 1, 0, "rating"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(testing::Message()
                     << each.rated << " " << each.button << " " << each.carousel);
        Preferences::removeRatingInfo();
        Preferences::removeActionButtonIndex();
        Preferences::removeCarouselIndex();
        if (each.rated) Preferences::setRatingInfoWithRatingValue("4", 3);
        if (each.button != kNone) Preferences::setActionButtonIndex(each.button);
        if (each.carousel != kNone) Preferences::setCarouselIndex(each.carousel);
        EXPECT_EQ(utility_.isRatingGiven(), each.rated);
        EXPECT_EQ(utility_.isActionButtonTapped(), each.button != kNone);
        EXPECT_EQ(utility_.isCarouselTapped(), each.carousel != kNone);
        if (each.link == Value(kRaises)) {
            EXPECT_THROW(utility_.getNotificationDeeplink(*model), foundation::Exception);
        } else {
            EXPECT_EQ(utility_.getNotificationDeeplink(*model), each.link);
        }
    }
    rating.deeplink = {};
    EXPECT_TRUE(utility_.getNotificationDeeplink(*model).isNil());
    EXPECT_TRUE(utility_.getNotificationDeeplink({}).isNil());
}

TEST_F(SharedUtilityTest, MovesAStoredRatingIntoThePayloadOnce) {
    auto model = std::make_shared<CVNNotificationPayloadModel>();
    model->cvnUi = std::make_shared<CVNUi>();
    model->cvnUi->cvnRat = std::make_shared<CVNRat>();
    const CVNRat& rating = *model->cvnUi->cvnRat;

    EXPECT_EQ(utility_.getRatingNotificationPayload(model), model);
    EXPECT_TRUE(rating.ratingValue.isNil());

    Preferences::setRatingInfoWithRatingValue("Good", 2);
    EXPECT_EQ(utility_.getRatingNotificationPayload(model), model);
    EXPECT_EQ(rating.ratingValue, Value("Good"));
    EXPECT_EQ(rating.ratingIndex, 2);
    EXPECT_FALSE(utility_.isRatingGiven());
    EXPECT_TRUE(Preferences::getRatingIndex().isNil());

    Preferences::setRatingInfoWithRatingValue("Good", 2);
    utility_.getRatingNotificationPayload(std::make_shared<CVNNotificationPayloadModel>());
    EXPECT_FALSE(utility_.isRatingGiven());
}

}  // namespace
}  // namespace tavrolin::tests

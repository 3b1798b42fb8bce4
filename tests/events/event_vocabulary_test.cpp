#include "tavrolin/events/event_vocabulary.h"

#include <gtest/gtest.h>

#include <utility>

#include "tavrolin/foundation/exception.h"

namespace tavrolin {
namespace {

using foundation::Value;
using Word = std::pair<std::uint64_t, const char*>;

TEST(EventVocabulary, NamesTheEventsThatHaveOne) {
    const Word names[] = {{12, "pn_delivered"},
                          {13, "pn_clicked"},
                          {14, "pn_dismissed"},
                          {19, "pn_replied"},
                          {84, "app_pn_opt_in"},
                          {85, "app_pn_opt_out"},
                          {86, "pn_token_generated"},
                          {87, "pn_token_failed"},
                          {88, "pn_token_refreshed"},
                          {0, ""},
                          {11, ""},
                          {15, ""},
                          {72, ""},
                          {73, ""},
                          {89, ""},
                          {kUnknownWord, ""}};
    for (const auto& [id, name] : names)
        EXPECT_EQ(EventNameString(id), name) << id;
    EXPECT_EQ(kEventNameReply, "nc_apn_reply_submitted");
}

TEST(EventVocabulary, EveryTypeButOneIsTheSystems) {
    for (const std::uint64_t type : {0U, 2U, 3U, 4U, 5U})
        EXPECT_EQ(EventTypeString(type), Value("system_event")) << type;
    EXPECT_EQ(EventTypeString(1), Value("custom_event"));
    EXPECT_TRUE(EventTypeString(6).isNil());
    EXPECT_TRUE(EventTypeString(kUnknownWord).isNil());
}

TEST(EventVocabulary, WordsAndNumbersAgreeBothWays) {
    for (const auto& [source, word] : {Word(2, "APNS"), Word(3, "PUSH_VEX")}) {
        EXPECT_EQ(NotificationGatewaySourceString(source), Value(word));
        EXPECT_EQ(CVNPushNotificationGatewaySourceFromString(word), source);
    }
    for (const auto& [type, word] : {Word(0, "normal"), Word(1, "scheduled")}) {
        EXPECT_EQ(CVNNotificationCampaignTypeString(type), Value(word));
        EXPECT_EQ(CVNPushNotificationCampaignTypeString(word), type);
    }
    for (const auto& [status, word] :
         {Word(1, "scheduled"), Word(2, "canceled"), Word(3, "rendered"), Word(4, "delivered")}) {
        EXPECT_EQ(NotificationCurrentStatus(status), word);
        EXPECT_EQ(NotificationCurrentStatusFromString(word), status);
    }
}

TEST(EventVocabulary, UnknownNumbersAndWordsHaveFixedAnswers) {
    for (const std::uint64_t number : {std::uint64_t{5}, kUnknownWord}) {
        EXPECT_TRUE(NotificationGatewaySourceString(number).isNil());
        EXPECT_TRUE(CVNNotificationCampaignTypeString(number).isNil());
        EXPECT_EQ(NotificationCurrentStatus(number), "");
    }
    EXPECT_TRUE(NotificationGatewaySourceString(0).isNil());
    EXPECT_EQ(NotificationCurrentStatus(0), "");
    constexpr std::uint64_t kAllOnes = 18'446'744'073'709'551'615U;
    for (const Value& word :
         {Value("apns"), Value("Normal"), Value("cancelled"), Value("APNS "), Value(""), Value()}) {
        EXPECT_EQ(CVNPushNotificationGatewaySourceFromString(word), kAllOnes);
        EXPECT_EQ(CVNPushNotificationCampaignTypeString(word), kAllOnes);
        EXPECT_EQ(NotificationCurrentStatusFromString(word), kAllOnes);
    }
    EXPECT_THROW(CVNPushNotificationGatewaySourceFromString(2), foundation::Exception);
}

}  // namespace
}  // namespace tavrolin

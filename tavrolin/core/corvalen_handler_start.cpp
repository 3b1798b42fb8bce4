// What the core SDK calls. It stands apart from the rest of the handler, which the facade uses in
// its turn.

#include <utility>
#include <vector>

#include "tavrolin/actions/local_notification_scheduler.h"
#include "tavrolin/actions/notification_helper.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/register_notification_service.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/payload/notification_parser.h"

namespace tavrolin {

using foundation::Value;

namespace {

using Models = std::vector<foundation::Ref<CVNNotificationPayloadModel>>;

Models parsedModels(const Value& payloads) {
    Models models;
    if (!payloads.isArray()) return models;  // the core SDK has none of this kind
    for (const Value& payload : payloads.items()) {
        if (auto model = CVNNotificationParser::parseNotificationPayloadDictionary(payload)) {
            models.push_back(std::move(model));
        }
    }
    return models;
}

void scheduleWhatIsNew(Models models, std::uint64_t campaignType) {
    CVNNotificationHelper::getFilterNotifications(
        std::move(models), [campaignType](const Models& filtered) {
            CVNLocalNotificationScheduler::scheduleLocalNotifications(
                filtered, kGatewaySourcePushVex, campaignType, {});
        });
}

}  // namespace

void CVNPushCorvalenHandler::initPushNotificationSDKWith(
    const Value& launchOptions, std::shared_ptr<CorvalenPushProtocol> andDelegate,
    const Value& with) {
    if (!andDelegate) return;
    guard(
        "-[CVNPushCorvalenHandler initPushNotificationSDKWith:andDelegate:with:]",
        "Unable to initialize CorvalenPush SDK", [&] {
            setCorvalenAdapter(std::move(andDelegate));
            CVNPushPreferences& preferences = CVNPushPreferences::sharedInstance();
            preferences.setSuitName(with);
            // So that later readers find the group without the Info dictionary.
            preferences.putString(with, kPlistCorvalenAppGroup);
            Tavrolin::sharedInstance().initSDKWithLaunchOptions(launchOptions);
            CVNRegisterNotficationService::getCurrentNotificationSettingsWithCompletionHandler({});
        });
}

void CVNPushCorvalenHandler::setPushVexAndScheduleNotifications(const Value& normalCampaigns,
                                                                const Value& with) {
    CVNRegisterNotficationService::getCurrentNotificationSettingsWithCompletionHandler(
        [normalCampaigns, scheduled = with](bool granted) {
            if (!granted) return;
            CVNLocalNotificationScheduler::checkNotificationsAreScheduled();
            auto normalModels = parsedModels(normalCampaigns);
            auto scheduledModels = parsedModels(scheduled);
            scheduleWhatIsNew(std::move(normalModels), kCampaignTypeNormal);
            scheduleWhatIsNew(std::move(scheduledModels), kCampaignTypeScheduled);
        });
}

void CVNPushCorvalenHandler::requestNotificationPermission() {
    Tavrolin::sharedInstance().registerForPushNotificationWithDefaultAuthorizationOptions();
}

}  // namespace tavrolin

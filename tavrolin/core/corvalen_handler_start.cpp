// What the core SDK calls. It stands apart from the rest of the handler, which the facade uses in
// its turn.

#include <utility>

#include "tavrolin/core/app_services.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/payload/notification_parser.h"

namespace tavrolin {

using foundation::Value;

namespace {

SchedulingService::Models parsedModels(const Value& payloads) {
    SchedulingService::Models models;
    if (!payloads.isArray()) return models;  // the core SDK has none of this kind
    for (const Value& payload : payloads.items()) {
        if (auto model = CVNNotificationParser::parseNotificationPayloadDictionary(payload)) {
            models.push_back(std::move(model));
        }
    }
    return models;
}

void scheduleWhatIsNew(SchedulingService& scheduling, SchedulingService::Models models,
                       std::uint64_t campaignType) {
    scheduling.getFilterNotifications(
        std::move(models), [&scheduling, campaignType](SchedulingService::Models filtered) {
            scheduling.scheduleLocalNotifications(std::move(filtered), kGatewaySourcePushVex,
                                                  campaignType, {});
        });
}

}  // namespace

void CVNPushCorvalenHandler::initPushNotificationSDKWith(
    const Value& launchOptions, std::shared_ptr<CorvalenPushProtocol> andDelegate,
    const Value& with) {
    if (!andDelegate) return;
    guard("-[CVNPushCorvalenHandler initPushNotificationSDKWith:andDelegate:with:]",
          "Unable to initialize CorvalenPush SDK", [&] {
              setCorvalenAdapter(std::move(andDelegate));
              CVNPushPreferences& preferences = CVNPushPreferences::sharedInstance();
              preferences.setSuitName(with);
              // So that later readers find the group without the Info dictionary.
              preferences.putString(with, kPlistCorvalenAppGroup);
              Tavrolin::sharedInstance().initSDKWithLaunchOptions(launchOptions);
              if (auto* registration = appServices().registration) {
                  registration->getCurrentNotificationSettingsWithCompletionHandler({});
              }
          });
}

void CVNPushCorvalenHandler::setPushVexAndScheduleNotifications(const Value& normalCampaigns,
                                                                const Value& with) {
    const AppServices services = appServices();
    if (services.registration == nullptr || services.scheduling == nullptr) return;
    services.registration->getCurrentNotificationSettingsWithCompletionHandler(
        [&scheduling = *services.scheduling, normalCampaigns, scheduled = with](bool granted) {
            if (!granted) return;
            scheduling.checkNotificationsAreScheduled();
            auto normalModels = parsedModels(normalCampaigns);
            auto scheduledModels = parsedModels(scheduled);
            scheduleWhatIsNew(scheduling, std::move(normalModels), kCampaignTypeNormal);
            scheduleWhatIsNew(scheduling, std::move(scheduledModels), kCampaignTypeScheduled);
        });
}

void CVNPushCorvalenHandler::requestNotificationPermission() {
    Tavrolin::sharedInstance().registerForPushNotificationWithDefaultAuthorizationOptions();
}

}  // namespace tavrolin

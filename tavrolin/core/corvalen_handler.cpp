#include "tavrolin/core/corvalen_handler.h"

#include <utility>

#include "tavrolin/core/app_services.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/push_preferences.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/events/event_vocabulary.h"
#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/payload/notification_parser.h"

namespace tavrolin {

using foundation::Value;

namespace {

using Adapters = foundation::ClassRegistry<CorvalenPushProtocol>;

SchedulingService::Models parsedModels(const Value& payloads) {
    SchedulingService::Models models;
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
                                                  campaignType);
        });
}

}  // namespace

CVNPushCorvalenHandler& CVNPushCorvalenHandler::sharedInstance() {
    static auto* instance = new CVNPushCorvalenHandler;
    return *instance;
}

std::shared_ptr<CorvalenPushProtocol> CVNPushCorvalenHandler::corvalenAdapter() const {
    const std::lock_guard lock(mutex_);
    return corvalenAdapter_;
}

void CVNPushCorvalenHandler::setCorvalenAdapter(std::shared_ptr<CorvalenPushProtocol> adapter) {
    const std::lock_guard lock(mutex_);
    corvalenAdapter_ = std::move(adapter);
}

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
                  registration->getCurrentNotificationSettings({});
              }
          });
}

void CVNPushCorvalenHandler::setPushVexAndScheduleNotifications(const Value& normalCampaigns,
                                                                const Value& with) {
    const AppServices services = appServices();
    if (services.registration == nullptr || services.scheduling == nullptr) return;
    services.registration->getCurrentNotificationSettings(
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

bool CVNPushCorvalenHandler::checkIfTokenNeedsToBeSend() {
    const auto adapter = corvalenAdapter();
    return adapter && adapter->checkIfTokenNeedsToBeSend();
}

bool CVNPushCorvalenHandler::checkIfNotificationPermissionNeedsToBeSend() {
    const auto adapter = corvalenAdapter();
    return adapter && adapter->checkIfNotificationPermissionNeedsToBeSend();
}

void CVNPushCorvalenHandler::processEventsManually() {
    if (const auto adapter = corvalenAdapter()) adapter->processEventsManually();
}

bool CVNPushCorvalenHandler::checkIfAttributionNeedsToBeUpdated(const Value& attributionParameters,
                                                                const Value& withRecievedIdentity) {
    const auto adapter = corvalenAdapter();
    return adapter &&
           adapter->checkIfAttributionNeedsToBeUpdated(attributionParameters, withRecievedIdentity);
}

void CVNPushCorvalenHandler::handleOpenOperation(const Value& operation) {
    if (const auto adapter = corvalenAdapter()) adapter->handleOpenOperation(operation);
}

void CVNPushCorvalenHandler::handleDeeplinkOnMainQueue(const Value& deeplink,
                                                       const Value& withCustomPayload) {
    if (const auto sdk = target()) sdk->handleDeeplinkOnMainQueue(deeplink, withCustomPayload);
}

void CVNPushCorvalenHandler::recordEventWithId(std::int64_t eventId, std::int64_t eventType,
                                               const Value& andPayload) {
    if (const auto sdk = target()) sdk->recordEventWithId(eventId, eventType, andPayload);
}

void CVNPushCorvalenHandler::recordEventWithName(const Value& eventName, std::int64_t eventType,
                                                 const Value& andPayload) {
    if (const auto sdk = target()) sdk->recordEventWithName(eventName, eventType, andPayload);
}

void CVNPushCorvalenHandler::handleDeeplinkURLString(const Value& deeplink,
                                                     const Value& customPayload,
                                                     const DeeplinkCompletion& /*withCompletion*/) {
    if (const auto sdk = target()) sdk->handleDeeplinkURLString(deeplink, customPayload);
}

void CVNPushCorvalenHandler::loadCorvalenStore() {
    if (const auto sdk = target()) sdk->loadCorvalenStore();
}

void CVNPushCorvalenHandler::handleDoubleOptIn(std::int64_t status, bool forceOptIn,
                                               bool andInstantOptIn) {
    if (const auto sdk = target()) {
        sdk->handleDoubleOptInWithStatus(status, forceOptIn, andInstantOptIn);
    }
}

void CVNPushCorvalenHandler::resetDoubleOptIn() {
    if (const auto sdk = target()) sdk->resetDoubleOptIn();
}

void CVNPushCorvalenHandler::saveDoubleOptIn2Timestamp(const Value& timestamp) {
    if (const auto sdk = target()) sdk->saveDobuleOptIn2Timestamp(timestamp);
}

std::shared_ptr<CorvalenPushProtocol> CVNPushCorvalenHandler::getPushNotificationProtocol() const {
    return Adapters::makeInstance(kPushNotificationAdapterClassName);
}

bool CVNPushCorvalenHandler::isPushNotificationSDKPresent() const {
    return Adapters::isRegistered(kPushNotificationAdapterClassName);
}

std::shared_ptr<CorvalenPushProtocol> CVNPushCorvalenHandler::getPushNotificationSDKInstance()
    const {
    return getPushNotificationProtocol();
}

std::shared_ptr<CorvalenPushProtocol> CVNPushCorvalenHandler::target() const {
    if (auto adapter = corvalenAdapter()) return adapter;
    return getPushNotificationProtocol();
}

}  // namespace tavrolin

#include "tavrolin/core/corvalen_handler.h"

#include <utility>

#include "tavrolin/foundation/class_registry.h"

namespace tavrolin {

using foundation::Value;

namespace {

using Adapters = foundation::ClassRegistry<CorvalenPushProtocol>;

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

#include "device/service_extension_process.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/process_life.h"
#include "device/process_messages.h"
#include "device/sample_service_extension.h"
#include "device/system_notification_center.h"
#include "tavrolin/core/corvalen_handler.h"

namespace tavrolin::device {

using adapters::asio::AsioDispatch;
using foundation::Value;

namespace {

constexpr double kBudget = 30;  // seconds of the device's clock
constexpr double kGrace = 1;    // seconds between the warning and the end

// Hands content to the device; the device takes the first and passes over the rest.
class HandBack {
public:
    HandBack(Channel& channel, AsioDispatch& dispatch)
        : channel_(channel), dispatch_(dispatch), pending_(dispatch.pending()) {}

    void operator()(const platform::NotificationContent& content) {
        channel_.send(Value::dictionary({{kMessageContent, valueOf(content)},
                                         {kMessageAt, dispatch_.now()},
                                         {kMessageExpired, hasExpired_.load()}}));
        isDone_ = true;
        const std::lock_guard lock(mutex_);
        pending_.reset();
    }
    void expire() { hasExpired_ = true; }
    bool isDone() const { return isDone_; }

private:
    Channel& channel_;
    AsioDispatch& dispatch_;
    std::atomic<bool> hasExpired_{false};
    std::atomic<bool> isDone_{false};
    std::mutex mutex_;
    std::unique_ptr<AsioDispatch::Pending> pending_;  // until content was handed back
};

void serve(Channel& channel, const Value& message) {
    ProcessLife life(channel, message, "service-extension");
    ProcessPlatform& platform = life.platform();
    AsioDispatch& dispatch = life.dispatch();
    SystemNotificationCenter center =
        platform.makeNotificationCenter([&channel](const std::vector<std::string>& removed) {
            Value identifiers = Value::array();
            for (const std::string& identifier : removed)
                identifiers.append(identifier);
            channel.send(Value::dictionary({{kMessageRemoved, identifiers}}));
        });
    platform.install({.center = center}, life.logLevel());
    CVNPushCorvalenHandler::sharedInstance().setCorvalenAdapter(
        std::make_shared<CoreSDK>(platform.systemState(), dispatch, platform.json()));

    HandBack handBack(channel, dispatch);
    SampleServiceExtension extension;
    dispatch.deadlineMain(kBudget, [&] {
        if (!handBack.isDone()) {
            handBack.expire();
            extension.serviceExtensionTimeWillExpire();
        }
        dispatch.deadlineMain(kGrace, [&] { dispatch.stop(); });
    });
    const platform::NotificationRequest request{std::string(message[kMessageIdentifier].string()),
                                                contentOf(message[kMessageContent])};
    dispatch.asyncGlobal(platform::QueuePriority::high, [&] {
        extension.didReceiveNotificationRequest(
            request, [&](const platform::NotificationContent& content) { handBack(content); });
    });
    dispatch.runMainUntilIdle();
    life.end();
}

}  // namespace

int runServiceExtensionProcess(int channelDescriptor) {
    return serveProcess(channelDescriptor, "service extension", serve);
}

}  // namespace tavrolin::device

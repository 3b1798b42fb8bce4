// A small host app: it receives a push that it delivers to itself, and prints what came of it. The
// ports are those in memory, so it needs no system around it; an app on a real one installs its own
// in their place.

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/service_extension/notification_service_extension.h"

namespace {

using tavrolin::foundation::Value;
using tavrolin::platform::NotificationContent;

constexpr std::string_view kAppGroup = "group.com.example.host";
constexpr std::string_view kPicture = "https://media.example.com/mountain.png";

constexpr std::string_view kPush = R"json({
    "aps": {
        "alert": {"title": "A weekend in the mountains", "body": "Three nights, sauna included."},
        "mutable-content": 1
    },
    "cvnSrc": "Corvalen",
    "cvnPayload": {
        "type": "Image",
        "trid": "host-example-1",
        "title": "A weekend in the mountains",
        "body": "Three nights, sauna included.",
        "mediaUrl": "https://media.example.com/mountain.png"
    }
})json";

// One grey pixel.
std::string pictureBytes() {
    constexpr std::string_view kHex =
        "89504e470d0a1a0a0000000d49484452000000010000000108000000003a7e9b550000000a494441"
        "54789c636800000082008177cd72b60000000049454e44ae426082";
    std::string bytes;
    for (std::size_t i = 0; i < kHex.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string(kHex.substr(i, 2)), nullptr, 16));
    return bytes;
}

// A text, or a dash for none.
std::string shown(const Value& text) {
    return text.isString() ? std::string(text.string()) : "-";
}

// The app's core SDK: takes the events, decides on tokens and attribution, routes links. This one
// prints the events and wants nothing.
class HostCoreSDK : public tavrolin::CorvalenPushProtocol {
public:
    void recordEventWithId(std::int64_t eventId, std::int64_t, const Value& andPayload) override {
        std::printf("event: %lld for %s\n", static_cast<long long>(eventId),
                    shown(andPayload["trid"]).c_str());
    }
    void recordEventWithName(const Value& eventName, std::int64_t, const Value&) override {
        std::printf("event: %s\n", shown(eventName).c_str());
    }
    void processEventsManually() override { std::puts("events are sent now"); }

    bool checkIfTokenNeedsToBeSend() override { return false; }
    bool checkIfNotificationPermissionNeedsToBeSend() override { return false; }
    bool checkIfAttributionNeedsToBeUpdated(const Value&, const Value&) override { return false; }
    void handleOpenOperation(const Value&) override {}
    void handleDeeplinkOnMainQueue(const Value&, const Value&) override {}
    void handleDeeplinkURLString(const Value&, const Value&) override {}
    void loadCorvalenStore() override {}
    void handleDoubleOptInWithStatus(std::int64_t, bool, bool) override {}
    void resetDoubleOptIn() override {}
    void saveDobuleOptIn2Timestamp(const Value&) override {}
};

// The app's service extension: the library's, except that pushes of other senders go back at once.
class HostServiceExtension : public tavrolin::CVNNotificationServiceExtension {
public:
    void didReceiveNotificationRequest(const tavrolin::platform::NotificationRequest& request,
                                       ContentHandler withContentHandler) override {
        if (!tavrolin::CVNNotificationParser::isNotificationFromCorvalen(
                request.content.userInfo)) {
            withContentHandler(request.content);
            return;
        }
        CVNNotificationServiceExtension::didReceiveNotificationRequest(
            request, std::move(withContentHandler));
    }
};

}  // namespace

int main() {
    // The ports live as long as the process.
    auto& memory = *new tavrolin::adapters::memory::MemoryPlatform;
    memory.files.addAppGroup(kAppGroup);
    memory.bundles.mainBundle.setInfoDictionary(Value::dictionary(
        {{"CorvalenKeys", Value::dictionary({{"CorvalenAppGroup", kAppGroup}})}}));
    memory.urlSession.setAnswer(kPicture, {.body = pictureBytes()});
    tavrolin::platform::install(memory.platform());
    // The core SDK starts the library: the launch options, itself, and the app group.
    tavrolin::CVNPushCorvalenHandler::sharedInstance().initPushNotificationSDKWith(
        Value::dictionary(), std::make_shared<HostCoreSDK>(), kAppGroup);
    memory.dispatch.runUntilIdle();

    const auto payload = memory.json.parse(kPush);
    if (!payload) {
        std::fprintf(stderr, "host: %s\n", payload.error().localizedDescription.c_str());
        return 1;
    }
    tavrolin::platform::NotificationRequest request{.identifier = "request-1", .content = {}};
    request.content.title = (*payload)["aps"]["alert"]["title"];
    request.content.body = (*payload)["aps"]["alert"]["body"];
    request.content.userInfo = *payload;

    // Static, as the extension must live as long as the process.
    static HostServiceExtension extension;
    extension.didReceiveNotificationRequest(request, [&](const NotificationContent& content) {
        memory.notificationCenter.deliver({request.identifier, content});
    });
    memory.dispatch.runUntilIdle();  // downloads, the store, and the flush three seconds later

    for (const auto& delivered : memory.notificationCenter.delivered()) {
        const NotificationContent& content = delivered.request.content;
        std::printf("tray: %s | %s | %s | %zu attached\n", shown(content.title).c_str(),
                    shown(content.body).c_str(), shown(content.categoryIdentifier).c_str(),
                    content.attachments.size());
    }
    return memory.notificationCenter.delivered().size() == 1 ? 0 : 1;
}

// Plays a day of a small app against the ports in memory, and prints what comes of it. What an app
// has to write stands in the other files; this one is the phone around it.

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "adapters/memory/memory_platform.h"
#include "app_delegate.h"
#include "notification_service.h"
#include "tavrolin/core/push_preferences_manager.h"

namespace {

using host::AppDelegate;
using host::Value;
using tavrolin::adapters::memory::MemoryPlatform;
using tavrolin::foundation::URL;
using tavrolin::platform::DeliveredNotification;
using tavrolin::platform::kDefaultActionIdentifier;
using tavrolin::platform::LifecycleEvent;
using tavrolin::platform::NotificationContent;
using tavrolin::platform::NotificationRequest;

constexpr std::string_view kOffer = R"json({
    "aps": {
        "alert": {"title": "A weekend in the mountains", "body": "Three nights, sauna included."},
        "category": "trip-offer",
        "mutable-content": 1
    },
    "cvnSrc": "Corvalen",
    "cvnPayload": {
        "type": "Image",
        "trid": "offer-1",
        "mediaUrl": "https://media.example.com/mountain.png",
        "deeplink": "hostapp://trips/mountains",
        "actionButton": [
            {"actionName": "See the trip", "actionDeeplink": "hostapp://trips/mountains", "aTyp": 1},
            {"actionName": "Ask us", "actionDeeplink": "hostapp://questions", "aTyp": 5}
        ]
    }
})json";

constexpr std::string_view kOtherOffer = R"json({
    "aps": {
        "alert": {"title": "A week by the lake", "body": "With a boat."},
        "category": "trip-offer",
        "mutable-content": 1
    },
    "cvnSrc": "Corvalen",
    "cvnPayload": {
        "type": "Simple",
        "trid": "offer-2",
        "actionButton": [
            {"actionName": "See the trip", "actionDeeplink": "hostapp://trips/lake", "aTyp": 1},
            {"actionName": "Ask us", "actionDeeplink": "hostapp://questions", "aTyp": 5}
        ]
    }
})json";

constexpr std::string_view kSilent = R"json({
    "aps": {"content-available": 1},
    "cvnSrc": "Corvalen",
    "cvnPayload": {
        "type": "Simple",
        "trid": "breakfast-1",
        "title": "Breakfast is served",
        "body": "Until 10:30, on the terrace.",
        "schDt": "2024-01-01T07:00:00",
        "ttl": "2024-01-01T10:30:00"
    }
})json";

// One grey pixel.
constexpr std::array<std::uint8_t, 67> kPicture = {
    0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a, 0x00, 0x00, 0x00, 0x0d, 0x49, 0x48,
    0x44, 0x52, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x01, 0x08, 0x00, 0x00, 0x00,
    0x00, 0x3a, 0x7e, 0x9b, 0x55, 0x00, 0x00, 0x00, 0x0a, 0x49, 0x44, 0x41, 0x54, 0x78,
    0x9c, 0x63, 0x68, 0x00, 0x00, 0x00, 0x82, 0x00, 0x81, 0x77, 0xcd, 0x72, 0xb6, 0x00,
    0x00, 0x00, 0x00, 0x49, 0x45, 0x4e, 0x44, 0xae, 0x42, 0x60, 0x82};

void step(const char* title) {
    std::printf("== %s\n", title);
}

/// The system around the app, on the ports in memory.
class Phone {
public:
    Phone(MemoryPlatform& memory, AppDelegate& app) : memory_(memory), app_(app) {}

    Value payload(std::string_view json) const { return *memory_.json.parse(json); }

    // docs: extension-process
    /// A push comes in: the extension gets it first, and what it hands back goes to the tray.
    void push(const Value& payload) {
        NotificationRequest request;
        request.identifier = "request-" + std::to_string(++pushes_);
        request.content.title = payload["aps"]["alert"]["title"];
        request.content.body = payload["aps"]["alert"]["body"];
        request.content.categoryIdentifier = payload["aps"]["category"];
        request.content.userInfo = payload;

        static host::NotificationService service;  // lives as long as its process
        service.didReceiveNotificationRequest(
            request, [this, identifier = request.identifier](const NotificationContent& content) {
                memory_.notificationCenter.deliver({identifier, content});
            });
        memory_.dispatch.runUntilIdle();
    }
    // docs: end

    /// Does something with the newest notification, which leaves the tray.
    void respond(std::string_view action, std::optional<std::string> text = std::nullopt) {
        const DeliveredNotification newest = memory_.notificationCenter.delivered().back();
        memory_.notificationCenter.removeDeliveredNotifications({newest.request.identifier});
        app_.didReceive({std::string(action), newest, std::move(text)});
        memory_.dispatch.runUntilIdle();
    }

    void showTray() const {
        const auto delivered = memory_.notificationCenter.delivered();
        if (delivered.empty()) std::puts("   tray: empty");
        for (const auto& each : delivered) {
            const NotificationContent& content = each.request.content;
            std::printf("   tray: %s (%zu attached)\n", content.title.description().c_str(),
                        content.attachments.size());
        }
    }

    void showCategories() const {
        for (const auto& category : memory_.notificationCenter.categories()) {
            std::printf("   category: %s", category.identifier.c_str());
            for (const auto& action : category.actions)
                std::printf("%s %s", action.identifier == "0" ? ":" : ",", action.title.c_str());
            std::puts("");
        }
    }

private:
    MemoryPlatform& memory_;
    AppDelegate& app_;
    int pushes_ = 0;
};

}  // namespace

int main() {
    // docs: ports
    auto& memory = *new MemoryPlatform;  // the ports live as long as the process
    memory.files.addAppGroup(host::kAppGroup);
    memory.bundles.mainBundle.setInfoDictionary(Value::dictionary({
        {"CorvalenKeys", Value::dictionary({{"CorvalenAppGroup", host::kAppGroup}})},
        {"CFBundleURLTypes",
         Value::array({Value::dictionary({{"CFBundleURLSchemes", Value::array({"hostapp"})}})})},
    }));
    tavrolin::platform::install(memory.platform());
    // docs: end

    // docs: categories
    const Value see = Value::dictionary({{"title", "See the trip"}, {"type", "button"}});
    const Value ask = Value::dictionary(
        {{"title", "Ask us"}, {"type", "text"}, {"placeholder", "Your question"}});
    const Value offer = Value::dictionary({{"actionItems", Value::array({see, ask})}});
    memory.bundles.mainBundle.setResource(
        "CorvalenConfig", "plist",
        Value::dictionary({{"ActionButtons_v2", Value::dictionary({{"trip-offer", offer}})}}));
    // docs: end
    const std::string picture(kPicture.begin(), kPicture.end());
    memory.urlSession.setAnswer("https://media.example.com/mountain.png", {.body = picture});

    auto& app = *new AppDelegate;
    Phone phone(memory, app);

    step("The app starts");
    app.didFinishLaunching(Value::dictionary());
    memory.dispatch.runUntilIdle();
    phone.showCategories();

    step("It asks for permission");
    app.askForPermission();
    memory.dispatch.runUntilIdle();
    std::printf("   system: was asked for a token %d time\n",
                memory.application.remoteRegistrations());

    step("It gets its token");
    const std::array<std::uint8_t, 4> token = {0x0a, 0xff, 0x10, 0x2c};
    app.didRegisterForRemoteNotifications(Value::data(token));
    std::printf("   token: %s\n",
                tavrolin::CVNPushPreferencesManager::getDevicePushToken().description().c_str());

    step("A push comes in while the app is in the foreground");
    phone.push(phone.payload(kOffer));
    app.willPresent(memory.notificationCenter.delivered().back());
    phone.showTray();

    step("The user opens it");
    phone.respond(kDefaultActionIdentifier);
    phone.showTray();

    step("Another one comes, and the user answers it");
    phone.push(phone.payload(kOtherOffer));
    phone.respond("1", "Is there a sauna?");

    step("A silent push is scheduled");
    app.didReceiveRemoteNotification(phone.payload(kSilent), [](auto result) {
        std::printf("   app: background fetch ended with %lld\n", static_cast<long long>(result));
    });
    memory.dispatch.runUntilIdle();
    phone.showTray();

    step("Its hour comes");
    memory.dispatch.advance(7 * 60 * 60);
    phone.showTray();
    std::printf("   badge: %zu\n", app.badge());

    step("Links come from elsewhere");
    app.openURL(*URL::withString("hostapp://settings"));
    app.continueUserActivity({std::string(tavrolin::platform::kActivityTypeBrowsingWeb),
                              URL::withString("https://www.example.com/trips")});

    step("The user wants news");
    app.setWantsNews(true);
    app.setWantsNews(true);  // is known already

    step("The user turns notifications off, and comes back to the app");
    // docs: life
    memory.application.post(LifecycleEvent::didEnterBackground);
    memory.notificationCenter.setAuthorizationStatus(1);  // denied
    memory.application.post(LifecycleEvent::willEnterForeground);
    memory.application.post(LifecycleEvent::didBecomeActive);
    memory.dispatch.runUntilIdle();
    // docs: end

    step("The app offers them again");
    app.offerNotificationsAgain();
    memory.dispatch.runUntilIdle();

    memory.application.post(LifecycleEvent::willTerminate);
    memory.dispatch.runUntilIdle();
}

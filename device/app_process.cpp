#include "device/app_process.h"

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "device/app_ports.h"
#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/device_error.h"
#include "device/process_life.h"
#include "device/process_messages.h"
#include "device/system_notification_center.h"
#include "tavrolin/core/corvalen_handler.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/register_notification_service.h"
#include "tavrolin/core/tavrolin.h"
#include "tavrolin/events/notification_response_service.h"
#include "tavrolin/foundation/notification_center.h"
#include "tavrolin/service_extension/push_file_utility.h"
#include "tavrolin/store/core_data_controller.h"

namespace tavrolin::device {

using foundation::Value;
using platform::LifecycleEvent;

namespace {

// In seconds of the device's clock.
constexpr double kBackgroundBudget = 30;
constexpr double kTransferPatience = 60;

// The sample app, as a host would write it, driven by the steps.
class SampleApp {
public:
    SampleApp(ProcessPlatform& platform, SystemApplication& application, Channel& channel)
        : platform_(platform),
          application_(application),
          channel_(channel),
          coreSDK_(std::make_shared<CoreSDK>(platform.systemState(), platform.dispatch(),
                                             platform.json())) {}

    // Goes on where it rested: in the state that a started app is in, without what only a start
    // does.
    void wake() {
        CVNPushCorvalenHandler::sharedInstance().setCorvalenAdapter(coreSDK_);
        CVNPushCoreDataController::sharedInstance().loadStoreAtPath(
            CVNPushFileUtility::appGroupURLWithAppGroup(Tavrolin::sharedInstance().appGroup()), {});
    }

    void take(const Value& step) {
        static const std::map<std::string_view, void (SampleApp::*)(const Value&)> kSteps = {
            {kStepLaunch, &SampleApp::launch},
            {kStepWillEnterForeground, &SampleApp::post<LifecycleEvent::willEnterForeground>},
            {kStepDidEnterBackground, &SampleApp::post<LifecycleEvent::didEnterBackground>},
            {kStepDidBecomeActive, &SampleApp::post<LifecycleEvent::didBecomeActive>},
            {kStepWillTerminate, &SampleApp::post<LifecycleEvent::willTerminate>},
            {kStepTakeResponses, &SampleApp::takeResponses},
            {kStepToken, &SampleApp::token},
            {kStepTokenError, &SampleApp::tokenError},
            {kStepSilent, &SampleApp::silent},
            {kStepPresent, &SampleApp::present},
            {kStepFetch, &SampleApp::fetch},
            {kStepRequestPermission, &SampleApp::requestPermission},
            {kStepOptIn, &SampleApp::optIn},
            {kStepBadge, &SampleApp::badge},
            {kStepRegisterCategories, &SampleApp::registerCategories},
            {kStepDoubleOptIn, &SampleApp::doubleOptIn},
            {kStepResetDoubleOptIn, &SampleApp::resetDoubleOptIn},
        };
        (this->*kSteps.at(step[kStepName].string()))(step);
    }

private:
    static Tavrolin& library() { return Tavrolin::sharedInstance(); }
    void answer(const Value& answers) {
        channel_.send(Value::dictionary({{kMessageAnswers, answers}}));
    }

    void launch(const Value& step) {
        CVNPushCorvalenHandler::sharedInstance().initPushNotificationSDKWith(
            step["options"], coreSDK_, platform_.appGroup());
    }

    template <LifecycleEvent event>
    void post(const Value& /*step*/) {
        application_.post(event);
    }

    void takeResponses(const Value& /*step*/) {
        SystemState& state = platform_.systemState();
        for (const QueuedResponse& queued : state.responses()) {
            const auto response = responseOf(queued);
            // From here on it is the app's, whatever becomes of it.
            if (!state.takeResponse(queued.number) || !response) continue;
            library().didReceiveNotificationResponse(*response);
        }
    }

    // Nothing for one that can't be read any more.
    std::optional<platform::NotificationResponse> responseOf(const QueuedResponse& queued) {
        const TrayEntry& entry = queued.notification;
        std::optional<platform::NotificationResponse> response;
        guard("-[SampleApp responseOf:]", "A response can't be read: %@", [&] {
            const auto content = platform_.json().parse(entry.content);
            if (!content) return;
            response = {queued.actionIdentifier,
                        {{entry.identifier, contentOf(*content)}, entry.deliveredAt},
                        queued.userText};
        });
        return response;
    }

    void token(const Value& step) {
        library().didRegisterForRemoteNotificationsWithDeviceToken(step["token"]);
    }
    void tokenError(const Value& step) {
        library().didFailToRegisterForRemoteNotificationsWithError(
            {"device", 1, std::string(step["message"].string())});
    }

    void silent(const Value& step) {
        library().didReceiveRemoteNotification(
            step["payload"], [this](platform::BackgroundFetchResult result) {
                answer(Value::dictionary({{kAnswerFetchResult, result},
                                          {kAnswerFetchedAt, platform_.dispatch().now()}}));
            });
    }
    void present(const Value& step) {
        guard("-[SampleApp present:]", "A notification can't be read: %@", [&] {
            library().willPresentForegroundNotification(
                {{std::string(step["identifier"].string()), contentOf(step["content"])},
                 step["date"].date()});
        });
    }
    void fetch(const Value& step) {
        CVNPushCorvalenHandler::sharedInstance().setPushVexAndScheduleNotifications(
            step["normal"], step["scheduled"]);
    }

    void requestPermission(const Value& /*step*/) {
        CVNPushCorvalenHandler::sharedInstance().requestNotificationPermission();
    }
    void optIn(const Value& step) { library().optPushNotification(step["value"].boolValue()); }
    void badge(const Value& /*step*/) {
        answer(Value::dictionary({{kAnswerBadge, library().getNotificationBadgeCount()}}));
    }
    void registerCategories(const Value& /*step*/) {
        CVNRegisterNotficationService::setUserActionCategoriesForNotification();
    }
    void doubleOptIn(const Value& step) {
        if (step["instant"].boolValue()) {
            library().showInstantNotificationDoubleOptIn();
        } else {
            library().initiateNotificationDoubleOptIn();
        }
    }
    void resetDoubleOptIn(const Value& /*step*/) { library().resetNotificationDoubleOptIn(); }

    ProcessPlatform& platform_;
    SystemApplication& application_;
    Channel& channel_;
    std::shared_ptr<CoreSDK> coreSDK_;
};

// What the system can't do ends the app, and what it had not taken stays where it was.
void takeOrEnd(SampleApp& app, const Value& step) {
    try {
        app.take(step);
    } catch (const DeviceError& error) {
        log(LogLevel::error, "-[SampleApp take:]", error.what());
        std::_Exit(EXIT_FAILURE);
    }
}

void serve(Channel& channel, const Value& message) {
    ProcessLife life(channel, message, "app");
    ProcessPlatform& platform = life.platform();
    adapters::asio::AsioDispatch& dispatch = life.dispatch();
    SystemNotificationCenter center = platform.makeNotificationCenter({});
    Calls calls(platform.systemState(), dispatch, platform.json());
    SystemApplication application(calls, dispatch);
    SystemPasteboard pasteboard(calls);
    platform.install({center, &application, &pasteboard}, life.logLevel());
    foundation::NotificationCenter::defaultCenter().addObserver(
        kCorvalenNotificationReceived, [&](const Value& userInfo) {
            calls.keep(kCallPost, Value::dictionary({{"name", kCorvalenNotificationReceived},
                                                     {"userInfo", userInfo}}));
        });

    if (message[kMessageJumping].boolValue()) platform.endSilentTransfersEvery(kTransferPatience);

    SampleApp app(platform, application, channel);
    if (message[kMessageWakes].boolValue()) {
        dispatch.asyncMain([&] { app.wake(); });
        dispatch.runMainUntilQuiet();
    }
    for (const Value& step : message[kMessageSteps].items()) {
        dispatch.asyncMain([&] { takeOrEnd(app, step); });
        dispatch.runMainUntilQuiet();
    }
    if (!message[kMessageInForeground].boolValue()) {
        dispatch.deadlineMain(kBackgroundBudget, [&] {
            log(LogLevel::warn, "-[SampleApp background]",
                "The app's 30 seconds in the background are over; what it was doing is lost");
            dispatch.stop();
        });
    }
    dispatch.runMainUntilIdle();
    life.end();
}

}  // namespace

int runAppProcess(int channelDescriptor) {
    return serveProcess(channelDescriptor, "app", serve);
}

}  // namespace tavrolin::device

#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tavrolin/core/app_services.h"

namespace tavrolin::tests {

/// The rooms that register and schedule, in writing: calls are "operation argument argument" (a
/// notification by its tracking id), and completions wait until the test answers them.
class FakeAppServices : public RegistrationService, public SchedulingService {
public:
    FakeAppServices() { appServices() = {this, this}; }
    ~FakeAppServices() override { appServices() = {}; }
    FakeAppServices(const FakeAppServices&) = delete;
    FakeAppServices& operator=(const FakeAppServices&) = delete;

    std::vector<std::string> calls;
    std::vector<foundation::Value> scheduledPayloads;
    std::vector<std::function<void(BackgroundFetchResult)>> fetchHandlers;

    void answerSettings(bool granted) {
        for (const auto& handler : std::exchange(settingsHandlers_, {}))
            handler(granted);
    }
    /// Gives each list back without its first notification.
    void answerFilters() {
        for (auto& [models, handler] : std::exchange(filters_, {})) {
            models.erase(models.begin());
            handler(std::move(models));
        }
    }

    void getCurrentNotificationSettingsWithCompletionHandler(
        std::function<void(bool)> handler) override {
        calls.emplace_back(
            handler ? "getCurrentNotificationSettingsWithCompletionHandler"
                    : "getCurrentNotificationSettingsWithCompletionHandler without a handler");
        if (handler) settingsHandlers_.push_back(std::move(handler));
    }
    void registerForPushWithRequestAuthorizationWithOptions(std::uint64_t options) override {
        calls.push_back("registerForPushWithRequestAuthorizationWithOptions " +
                        std::to_string(options));
    }
    void scheduleNotification(const foundation::Value& payload,
                              std::function<void(BackgroundFetchResult)> handler) override {
        calls.emplace_back("scheduleNotification");
        scheduledPayloads.push_back(payload);
        fetchHandlers.push_back(std::move(handler));
    }
    void checkNotificationsAreScheduled() override {
        calls.emplace_back("checkNotificationsAreScheduled");
    }
    void getFilterNotifications(Models models, std::function<void(Models)> handler) override {
        calls.push_back("getFilterNotifications" + tridsOf(models));
        filters_.emplace_back(std::move(models), std::move(handler));
    }
    void scheduleLocalNotifications(Models models, std::uint64_t source, std::uint64_t campaignType,
                                    std::function<void(bool)> /*completion*/) override {
        calls.push_back("scheduleLocalNotifications " + std::to_string(source) + " " +
                        std::to_string(campaignType) + tridsOf(models));
    }

private:
    static std::string tridsOf(const Models& models) {
        std::string trids;
        for (const auto& model : models)
            trids.append(" ").append(model->cvnPayload->trid.string());
        return trids;
    }

    std::vector<std::function<void(bool)>> settingsHandlers_;
    std::vector<std::pair<Models, std::function<void(Models)>>> filters_;
};

}  // namespace tavrolin::tests

#include "adapters/memory/memory_notification_center.h"

#include <algorithm>

namespace tavrolin::adapters::memory {

using foundation::Failure;
using platform::DeliveredNotification;
using platform::NotificationRequest;
using platform::QueuePriority;

void MemoryNotificationCenter::setAuthorizationStatus(platform::AuthorizationStatus status) {
    const std::lock_guard lock(mutex_);
    status_ = status;
}

void MemoryNotificationCenter::deliver(platform::NotificationRequest request) {
    const std::lock_guard lock(mutex_);
    fireDue();
    put(std::move(request), dispatch_.now());
}

std::vector<NotificationRequest> MemoryNotificationCenter::pending() {
    const std::lock_guard lock(mutex_);
    fireDue();
    std::vector<NotificationRequest> requests;
    requests.reserve(pending_.size());
    for (const Pending& each : pending_)
        requests.push_back(each.request);
    return requests;
}

std::vector<platform::NotificationCategory> MemoryNotificationCenter::categories() const {
    const std::lock_guard lock(mutex_);
    return categories_;
}

void MemoryNotificationCenter::setAnswer(bool grants, Failure failure) {
    const std::lock_guard lock(mutex_);
    userGrants_ = grants;
    askFailure_ = std::move(failure);
}

std::vector<std::uint64_t> MemoryNotificationCenter::authorizationRequests() const {
    const std::lock_guard lock(mutex_);
    return authorizationRequests_;
}

void MemoryNotificationCenter::setAddFailure(Failure failure) {
    const std::lock_guard lock(mutex_);
    addFailure_ = std::move(failure);
}

std::vector<DeliveredNotification> MemoryNotificationCenter::delivered() {
    const std::lock_guard lock(mutex_);
    fireDue();
    return delivered_;
}

void MemoryNotificationCenter::getAuthorizationStatus(
    std::function<void(platform::AuthorizationStatus)> completion) {
    const std::lock_guard lock(mutex_);
    dispatch_.asyncGlobal(QueuePriority::normal, [completion = std::move(completion),
                                                  status = status_] { completion(status); });
}

void MemoryNotificationCenter::requestAuthorization(std::uint64_t options,
                                                    std::function<void(bool, Failure)> completion) {
    constexpr platform::AuthorizationStatus kNotDetermined = 0;
    constexpr platform::AuthorizationStatus kDenied = 1;
    constexpr platform::AuthorizationStatus kAuthorized = 2;
    const std::lock_guard lock(mutex_);
    authorizationRequests_.push_back(options);
    if (!askFailure_ && status_ == kNotDetermined) status_ = userGrants_ ? kAuthorized : kDenied;
    const bool isGranted = !askFailure_ && status_ != kDenied;
    dispatch_.asyncGlobal(QueuePriority::normal,
                          [completion = std::move(completion), isGranted, failure = askFailure_] {
                              completion(isGranted, failure);
                          });
}

void MemoryNotificationCenter::setNotificationCategories(
    std::vector<platform::NotificationCategory> categories) {
    const std::lock_guard lock(mutex_);
    categories_ = std::move(categories);
}

void MemoryNotificationCenter::addNotificationRequest(NotificationRequest request,
                                                      std::function<void(Failure)> completion) {
    const std::lock_guard lock(mutex_);
    fireDue();
    if (!addFailure_) {
        std::erase_if(pending_, [&](const Pending& each) {
            return each.request.identifier == request.identifier;
        });
        const double seconds = request.trigger ? request.trigger->timeInterval() : 0;
        const double fireAt = dispatch_.now().secondsSince1970 + seconds;
        const auto place = std::find_if(pending_.begin(), pending_.end(),
                                        [&](const Pending& each) { return each.fireAt > fireAt; });
        pending_.insert(place, {fireAt, std::move(request)});
    }
    if (!completion) return;
    dispatch_.asyncGlobal(QueuePriority::normal, [completion = std::move(completion),
                                                  failure = addFailure_] { completion(failure); });
}

void MemoryNotificationCenter::fireDue() {
    const double now = dispatch_.now().secondsSince1970;
    while (!pending_.empty() && pending_.front().fireAt <= now) {
        Pending due = std::move(pending_.front());
        pending_.erase(pending_.begin());
        put(std::move(due.request), {due.fireAt});
    }
}

void MemoryNotificationCenter::put(NotificationRequest request, foundation::Date date) {
    std::erase_if(delivered_, [&](const DeliveredNotification& each) {
        return each.request.identifier == request.identifier;
    });
    delivered_.push_back({std::move(request), date});
}

void MemoryNotificationCenter::getPendingNotificationIdentifiers(
    std::function<void(std::vector<std::string>)> completion) {
    const std::lock_guard lock(mutex_);
    fireDue();
    std::vector<std::string> identifiers;
    identifiers.reserve(pending_.size());
    for (const Pending& each : pending_)
        identifiers.push_back(each.request.identifier);
    dispatch_.asyncGlobal(QueuePriority::normal,
                          [completion = std::move(completion),
                           identifiers = std::move(identifiers)] { completion(identifiers); });
}

void MemoryNotificationCenter::getDeliveredNotifications(
    std::function<void(std::vector<DeliveredNotification>)> completion) {
    dispatch_.asyncGlobal(QueuePriority::normal, [completion = std::move(completion),
                                                  tray = delivered()] { completion(tray); });
}

void MemoryNotificationCenter::removeDeliveredNotifications(std::vector<std::string> identifiers) {
    const std::lock_guard lock(mutex_);
    fireDue();
    std::erase_if(delivered_, [&](const DeliveredNotification& each) {
        return std::find(identifiers.begin(), identifiers.end(), each.request.identifier) !=
               identifiers.end();
    });
}

}  // namespace tavrolin::adapters::memory

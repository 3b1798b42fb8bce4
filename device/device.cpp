#include "device/device.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>
#include <vector>

#include "device/app_ports.h"
#include "device/app_process.h"
#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/device_error.h"
#include "device/extension_launcher.h"
#include "device/process_platform.h"
#include "device/run_folder.h"
#include "device/system_notification_center.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/payload/notification_parser.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/preferences_suite.h"
#include "tavrolin/platform/record_store.h"
#include "tavrolin/store/push_notification_event.h"

namespace tavrolin::device {

namespace fs = std::filesystem;

using foundation::Date;
using foundation::Value;
using platform::NotificationRequest;

namespace {

constexpr std::string_view kExtension = "service-extension";
constexpr std::string_view kAdviceOnFiles =
    "; see that it can be read; if it is damaged, `tavrolin reset` empties the device";

bool isOne(const Value& number) {
    return (number.isNumber() || number.isString()) && number.integerValue() == 1;
}

const Value& apsOf(const Value& payload) {
    static const Value kNone;
    return payload[kPNAps].isDictionary() ? payload[kPNAps] : kNone;
}

// To a thousandth of a second, as it is printed.
double rounded(double seconds) {
    return std::round(seconds * 1000) / 1000;
}

std::string_view outcomeText(ExtensionResult::Outcome outcome) {
    switch (outcome) {
        case ExtensionResult::Outcome::completed:
            return "completed";
        case ExtensionResult::Outcome::expired:
            return "expired";
        default:
            return "crashed";
    }
}

template <class T>
T orFail(foundation::Expected<T> result, const std::string& what, std::string_view advice = {}) {
    if (!result) {
        throw DeviceError(what + ": " + result.error().localizedDescription + std::string(advice));
    }
    return std::move(*result);
}

// A JSON object's text with one more field, whose value is JSON text as well.
std::string withField(std::string object, std::string_view key, std::string_view value) {
    object.pop_back();
    if (object.size() > 1) object += ',';
    return object.append("\"").append(key).append("\":").append(value).append("}");
}

// Whether something is there to be read; what can't be looked at is no absence.
bool exists(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found && error != std::errc::not_a_directory) {
        return false;
    }
    if (error) throw DeviceError("can't look at " + path + ": " + error.message());
    return true;
}

bool isEmpty(const std::string& folder) {
    std::error_code error;
    const bool answer = fs::is_empty(folder, error);
    if (error) {
        throw DeviceError("can't look into " + folder + ": " + error.message() +
                          "; see that it can be read");
    }
    return answer;
}

}  // namespace

Device::Device(DeviceOptions options)
    : options_(std::move(options)), folder_(options_.folder), clock_(folder_), storage_(folder_) {
    if (options_.expands) startContentExtension();
    folder_.make();
    const bool clockIsDamaged = clock_.isDamaged();
    if (options_.now) setClock(*options_.now);
    platform_ = std::make_unique<ProcessPlatform>(folder_, "device",
                                                  adapters::asio::Clock::jumping(clock_.now()));
    static auto* center = new SystemNotificationCenter(platform_->makeNotificationCenter({}));
    platform_->install({.center = *center}, options_.logLevel);
    if (clockIsDamaged) {
        log(LogLevel::warn, "-[Device Device:]",
            "The device's clock can't be read; it begins anew");
    }
    run_.emplace(folder_.system() + "/commands/" + randomIdentifier(), [this] { tidyUp(); });
    firedAtStart_ = fireUntil(clock_.now());
}

// A jumping clock stands still but for the jumps, so that the same command shows the same twice.
void Device::setClock(Date date) {
    clock_.set(date);
    if (options_.time == TimeMode::jump) clock_.stop();
}

void Device::tidyUp() {
    std::vector<Value> contents;
    SystemState& state = platform_->systemState();
    for (const TrayEntry& entry : state.tray())
        contents.push_back(readJSON(entry.content));
    for (const PendingEntry& entry : state.pending())
        contents.push_back(readJSON(entry.content));
    for (const QueuedResponse& response : state.responses())
        contents.push_back(readJSON(response.notification.content));
    storage_.removeAllBut(contents);
}

Device::~Device() = default;

void Device::reset(std::string_view folder) {
    DeviceFolder(folder).reset();
}

// --- Pushes -----------------------------------------------------------------------------------

Value Device::parsePayload(std::string_view text, std::optional<std::size_t> limit) const {
    const auto payload = platform_->json().parse(text);
    if (!payload) {
        throw DeviceError("the payload is no JSON: " + payload.error().localizedDescription);
    }
    if (!payload->isDictionary()) {
        throw DeviceError("the payload must be a JSON object, but it is " +
                          std::string(Value::kindName(payload->kind())));
    }
    if (limit) {
        const std::string compact =
            orFail(platform_->json().serialise(*payload, platform::JSONText::Style::compact),
                   "the payload can't be written as JSON");
        if (compact.size() > *limit) {
            throw DeviceError("the payload has " + std::to_string(compact.size()) +
                              " bytes in the compact form; the push service takes " +
                              std::to_string(*limit) + " (--no-limit delivers it all the same)");
        }
    }
    return *payload;
}

Value Device::parsePayloads(std::string_view text) const {
    const auto payloads = platform_->json().parse(text);
    if (!payloads) {
        throw DeviceError("the payloads are no JSON: " + payloads.error().localizedDescription);
    }
    if (!payloads->isArray()) {
        throw DeviceError("the payloads must be a JSON array, but they are " +
                          std::string(Value::kindName(payloads->kind())));
    }
    std::size_t number = 0;
    for (const Value& payload : payloads->items()) {
        ++number;
        if (payload.isDictionary()) continue;
        throw DeviceError("payload " + std::to_string(number) +
                          " must be a JSON object, but it is " +
                          std::string(Value::kindName(payload.kind())));
    }
    return *payloads;
}

Value Device::deliver(const Value& payload, const std::optional<std::string>& identifier) {
    NotificationRequest request{identifier ? *identifier : randomIdentifier(),
                                contentOfPush(payload)};
    const bool isRecognised = CVNNotificationParser::isNotificationFromCorvalen(payload);
    const Value& aps = apsOf(payload);
    const bool hasAlert = !aps[kPNAlert].isNil() && !aps[kPNAlert].isNull();
    if (isOne(aps[kPNContentAvailable]) && !hasAlert) {
        return deliverSilently(request);
    }
    if (isOne(aps[kPNMutableContent])) {
        return deliverThroughExtension(std::move(request), isRecognised);
    }
    const Date now = clock_.now();
    Value replaced = Value::array();
    show(request, now, replaced);
    clock_.reach(now);
    return Value::dictionary({{"identifier", request.identifier},
                              {"recognised", isRecognised},
                              {"outcome", "untouched"},
                              {"content", valueOf(request.content)},
                              {"replaced", replaced},
                              {"seconds", 0.0},
                              {"peakRssKiB", Value::null()}});
}

Value Device::deliverSilently(const NotificationRequest& request) {
    Value push = step(kStepSilent);
    push.set("payload", request.content.userInfo);
    const AppRun run = runApp({.steps = {push}});
    const Value& result = run.answers[kAnswerFetchResult];
    const Value& fetchedAt = run.answers[kAnswerFetchedAt];
    const Date end = fetchedAt.kind() == Value::Kind::date ? fetchedAt.date() : run.end;
    return Value::dictionary(
        {{"identifier", request.identifier},
         {"recognised",
          CVNNotificationParser::isNotificationFromCorvalen(request.content.userInfo)},
         {"outcome", "silent"},
         {kAnswerFetchResult, result.isNil() ? Value::null() : result},
         {"replaced", Value::array()},
         {"seconds", rounded(foundation::secondsBetween(run.start, end))},
         {"peakRssKiB", run.peakRSSKiB ? Value(*run.peakRSSKiB) : Value::null()}});
}

Value Device::deliverThroughExtension(NotificationRequest request, bool isRecognised) {
    ProcessStart start = processStart();
    start.start = clock_.now();
    start.run = randomIdentifier();
    const RunFolder temporary(folder_.temporaryFolder(kExtension, start.run));
    ExtensionResult result = runServiceExtension(start, request);
    // A foreign push comes back as it went in; what it says then is the original, too.
    if (result.content && isRecognised) request.content = std::move(*result.content);

    Value replaced = Value::array();
    for (const std::string& removed : result.removed)
        replaced.append(removed);
    clock_.reach(std::max(result.endedAt, result.handedBackAt));
    storage_.take(request.content, temporary.path());
    show(request, result.handedBackAt, replaced);
    const bool isUntouched = !isRecognised && result.outcome == ExtensionResult::Outcome::completed;
    return Value::dictionary(
        {{"identifier", request.identifier},
         {"recognised", isRecognised},
         {"outcome", isUntouched ? "untouched" : outcomeText(result.outcome)},
         {"content", valueOf(request.content)},
         {"replaced", replaced},
         {"seconds", rounded(foundation::secondsBetween(start.start, result.handedBackAt))},
         {"peakRssKiB", result.peakRSSKiB ? Value(*result.peakRSSKiB) : Value::null()}});
}

void Device::show(const NotificationRequest& request, Date at, Value& replaced) {
    const Value content = jsonForm(valueOf(request.content));
    TrayEntry entry{request.identifier, at, {}};
    try {
        fireUntil(at);
        entry.content =
            orFail(platform_->json().serialise(content, platform::JSONText::Style::compact),
                   "the notification can't be kept");
        if (const auto older = platform_->systemState().putOnTray(entry)) {
            replaced.append(request.identifier);
            storage_.remove(readJSON(older->content));
        }
    } catch (...) {
        storage_.remove(content);
        throw;
    }
    presentIfInForeground(entry);
    fireUntil(clock_.now());
}

// --- Looking ----------------------------------------------------------------------------------

Value Device::readJSON(const std::string& text) const {
    const auto value = platform_->json().parse(text);
    return value ? *value : Value::null();
}

std::string Device::writeJSON(const Value& value) const {
    return orFail(platform_->json().serialise(value, platform::JSONText::Style::compact),
                  "the result can't be written as JSON");
}

bool Device::isObject(std::string_view text) const {
    return text.starts_with('{') && text.ends_with('}') && platform_->json().isJSON(text);
}

// What is kept as JSON text needs no second writing; what is damaged is null, and hides none of the
// others.
std::string Device::elementText(const Value& fields, std::string_view content) const {
    return withField(writeJSON(fields), "content", isObject(content) ? content : "null");
}

void Device::tray(const Take& take) {
    for (const TrayEntry& entry : platform_->systemState().tray()) {
        take(elementText(Value::dictionary({{"identifier", entry.identifier},
                                            {"deliveredAt", dateText(entry.deliveredAt)}}),
                         entry.content));
    }
}

void Device::events(const Take& take) {
    for (Call& call : platform_->systemState().calls(CoreSDK::kEvent)) {
        if (!isObject(call.arguments)) continue;  // damaged
        take(withField(std::move(call.arguments), "at", writeJSON(dateText(call.at))));
    }
}

Value Device::flushes() {
    return Value::dictionary({{"flushes", platform_->systemState().calls(CoreSDK::kFlush).size()}});
}

// Without an app group each process has a store of its own.
void Device::store(const Take& take) {
    const std::string folder = platform_->storeDirectory("app");
    const std::string extensionFolder = platform_->storeDirectory(kExtension);
    showStoreIn(folder, take);
    if (extensionFolder != folder) showStoreIn(extensionFolder, take);
}

void Device::showStoreIn(const std::string& folder, const Take& take) {
    const std::string file = folder + "/Tavrolin/CorvalenPushDB.sqlite";
    if (!exists(file)) return;
    const platform::ManagedObjectModel model{{CorvalenPushNotificationEvent::entityDescription()}};
    platform::StoreDescription description{foundation::URL::fileURLWithPath(file)};
    description.isReadOnly = true;
    const auto store = orFail(platform_->recordStores().open(model, description),
                              "can't read the notification store " + file, kAdviceOnFiles);
    const auto& entity = *model.entityNamed(CorvalenPushNotificationEvent::kEntityName);
    platform::FetchRequest request;
    request.entityName = entity.name;
    for (const platform::Record& record : orFail(
             store->fetch(request), "can't read the notification store " + file, kAdviceOnFiles)) {
        Value row = Value::dictionary();
        for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
            const Value& value = record.values[i];
            const bool isPayload =
                entity.attributes[i].type == platform::AttributeType::transformable;
            row.set(entity.attributes[i].name, isPayload ? payloadForm(value) : jsonForm(value));
        }
        take(writeJSON(row));
    }
}

Value Device::preferences() {
    const Value group = platform_->appGroup();
    const auto folder = group ? folder_.groupPreferences(group.string()) : std::nullopt;
    if (!folder || !exists(*folder) || isEmpty(*folder)) return Value::dictionary();
    const auto suite =
        orFail(platform_->preferences().suite(group.string()),
               "can't read the preferences of " + group.description(), kAdviceOnFiles);
    return jsonForm(suite->dictionaryRepresentation());
}

void Device::pending(const Take& take) {
    for (const PendingEntry& entry : platform_->systemState().pending()) {
        take(elementText(Value::dictionary({{"identifier", entry.identifier},
                                            {"fireAt", dateText(entry.fireAt)}}),
                         entry.content));
    }
}

void Device::categories(const Take& take) {
    const auto kept = platform_->systemState().setting(kSettingCategories);
    const Value all = kept ? readJSON(*kept) : Value::array();
    if (!all.isArray()) return;
    for (const Value& category : all.items())
        take(writeJSON(category));
}

Value Device::outbox() {
    std::map<std::string, std::vector<Value>, std::less<>> calls;
    for (const Call& call : platform_->systemState().callsExcept(CoreSDK::kEvent))
        calls[call.operation].push_back(readJSON(call.arguments));
    // Of each call its arguments, or one of them.
    const auto list = [&](std::string_view operation, std::string_view argument = {}) {
        Value result = Value::array();
        for (const Value& arguments : calls[std::string(operation)])
            result.append(argument.empty() ? arguments : arguments[argument]);
        return result;
    };
    const auto& copied = calls[std::string(kCallPasteboard)];
    const auto badge = platform_->systemState().setting(kSettingBadge);
    return Value::dictionary(
        {{"openedURLs", list(kCallOpenURL, "url")},
         {"pasteboard", copied.empty() ? Value::null() : copied.back()["string"]},
         {"deeplinks", list(CoreSDK::kDeeplink)},
         {"postedNotifications", list(kCallPost)},
         {"badge", badge ? Value(*badge).integerValue() : 0},
         {"remoteRegistrations", calls[std::string(kCallRemoteRegistration)].size()},
         {"doubleOptIn", list(CoreSDK::kDoubleOptIn)},
         {"doubleOptInResets", calls[std::string(CoreSDK::kDoubleOptInReset)].size()},
         {"doubleOptIn2Timestamps", list(CoreSDK::kDoubleOptIn2Timestamp, "timestamp")},
         {"attributionChecks", list(CoreSDK::kAttributionCheck)}});
}

}  // namespace tavrolin::device

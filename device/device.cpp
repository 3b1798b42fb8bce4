#include "device/device.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <utility>
#include <vector>

#include "device/content_values.h"
#include "device/core_sdk.h"
#include "device/device_error.h"
#include "device/process_platform.h"
#include "device/run_folder.h"
#include "device/tray_center.h"
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
using platform::NotificationContent;
using platform::NotificationRequest;

namespace {

constexpr std::string_view kExtension = "service-extension";

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
T orFail(foundation::Expected<T> result, const std::string& what) {
    if (!result) throw DeviceError(what + ": " + result.error().localizedDescription);
    return std::move(*result);
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

bool liesBelow(const fs::path& path, const std::string& folder) {
    const auto relative = path.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != ".." && *relative.begin() != ".";
}

}  // namespace

Device::Device(DeviceOptions options)
    : options_(std::move(options)), folder_(options_.folder), clock_(folder_) {
    folder_.make();
    platform_ = std::make_unique<ProcessPlatform>(folder_, "device",
                                                  adapters::asio::Clock::jumping(clock_.now()));
    static TrayCenter* center =
        new TrayCenter(platform_->systemState(), platform_->dispatch(), platform_->json(), {});
    platform_->install(*center, options_.logLevel);
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

Value Device::deliver(const Value& payload, const std::optional<std::string>& identifier) {
    NotificationRequest request{identifier ? *identifier : randomIdentifier(),
                                contentOfPush(payload)};
    const bool isRecognised = CVNNotificationParser::isNotificationFromCorvalen(payload);
    const Value& aps = apsOf(payload);
    const bool hasAlert = !aps[kPNAlert].isNil() && !aps[kPNAlert].isNull();
    if (isOne(aps[kPNContentAvailable]) && !hasAlert) {
        return Value::dictionary({{"identifier", request.identifier},
                                  {"recognised", isRecognised},
                                  {"outcome", "silent"},
                                  {"fetchResult", Value::null()},
                                  {"replaced", Value::array()},
                                  {"seconds", 0.0},
                                  {"peakRssKiB", Value::null()}});
    }
    if (isOne(aps[kPNMutableContent])) {
        return deliverThroughExtension(std::move(request), isRecognised);
    }
    const Date now = clock_.now();
    Value replaced = Value::array();
    show(request, now, {}, replaced);
    clock_.reach(now);
    return Value::dictionary({{"identifier", request.identifier},
                              {"recognised", isRecognised},
                              {"outcome", "untouched"},
                              {"content", valueOf(request.content)},
                              {"replaced", replaced},
                              {"seconds", 0.0},
                              {"peakRssKiB", Value::null()}});
}

Value Device::deliverThroughExtension(NotificationRequest request, bool isRecognised) {
    const Date start = clock_.now();
    const std::string run = randomIdentifier();
    const RunFolder temporary(folder_.temporaryFolder(kExtension, run));
    ExtensionResult result = runServiceExtension(
        folder_, request, {options_.executable, options_.time, start, options_.logLevel, run});
    // A foreign push comes back as it went in; what it says then is the original, too.
    if (result.content && isRecognised) request.content = std::move(*result.content);

    Value replaced = Value::array();
    for (const std::string& removed : result.removed) {
        replaced.append(removed);
        removeAttachments(removed);
    }
    const std::string kept = attachmentsOf(request.identifier) + "/" + run;
    try {
        moveAttachments(request.content, temporary.path(), kept);
        show(request, result.handedBackAt, run, replaced);
    } catch (...) {
        std::error_code error;
        fs::remove_all(kept, error);
        throw;
    }
    clock_.reach(std::max(result.endedAt, result.handedBackAt));
    const bool isUntouched = !isRecognised && result.outcome == ExtensionResult::Outcome::completed;
    return Value::dictionary(
        {{"identifier", request.identifier},
         {"recognised", isRecognised},
         {"outcome", isUntouched ? "untouched" : outcomeText(result.outcome)},
         {"content", valueOf(request.content)},
         {"replaced", replaced},
         {"seconds", rounded(foundation::secondsBetween(start, result.handedBackAt))},
         {"peakRssKiB", result.peakRSSKiB ? Value(*result.peakRSSKiB) : Value::null()}});
}

// The system takes handed-over files into its own storage. What lies elsewhere than in the run's
// own folder, and what is no file, is not attached.
void Device::moveAttachments(NotificationContent& content, const std::string& from,
                             const std::string& to) {
    std::vector<platform::Attachment> moved;
    for (const platform::Attachment& attachment : content.attachments) {
        std::error_code error;
        const fs::path file = fs::canonical(attachment.url.path(), error);
        if (error || !liesBelow(file, fs::canonical(from, error).string()) ||
            !fs::is_regular_file(fs::symlink_status(attachment.url.path(), error))) {
            continue;
        }
        fs::create_directories(to, error);
        const fs::path target = fs::path(to) / file.filename();
        fs::rename(file, target, error);
        if (error) continue;
        moved.push_back({attachment.identifier, foundation::URL::fileURLWithPath(target.string())});
    }
    content.attachments = std::move(moved);
}

void Device::show(const NotificationRequest& request, Date at, const std::string& run,
                  Value& replaced) {
    const Value content = valueOf(request.content);
    const std::string text =
        orFail(platform_->json().serialise(jsonForm(content), platform::JSONText::Style::compact),
               "the notification can't be kept");
    if (!platform_->systemState().putOnTray({request.identifier, at, text})) return;
    replaced.append(request.identifier);
    // What the older one of the same identifier had lies beside the new one's files.
    std::error_code error;
    for (const auto& folder : fs::directory_iterator(attachmentsOf(request.identifier), error)) {
        if (folder.path().filename().string() != run) fs::remove_all(folder.path(), error);
    }
}

void Device::removeAttachments(const std::string& identifier) {
    std::error_code error;
    fs::remove_all(attachmentsOf(identifier), error);
}

// A folder for each request; an identifier is any text.
std::string Device::attachmentsOf(const std::string& identifier) const {
    static constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::size_t kLongest = 200;
    std::string name;
    for (const char c : identifier) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || c == '-') {
            name += c;
        } else {
            name.append(1, '_').append(1, kDigits[byte >> 4U]).append(1, kDigits[byte & 15U]);
        }
    }
    if (name.size() > kLongest) {
        name =
            name.substr(0, kLongest) + "_" + std::to_string(std::hash<std::string>()(identifier));
    }
    return folder_.attachments() + "/" + name;
}

// --- Looking ----------------------------------------------------------------------------------

Value Device::readJSON(const std::string& text) const {
    const auto value = platform_->json().parse(text);
    return value ? *value : Value::null();
}

Value Device::tray() {
    Value result = Value::array();
    for (const TrayEntry& entry : platform_->systemState().tray()) {
        result.append(Value::dictionary({{"identifier", entry.identifier},
                                         {"deliveredAt", dateText(entry.deliveredAt)},
                                         {"content", readJSON(entry.content)}}));
    }
    return result;
}

Value Device::events() {
    Value result = Value::array();
    for (const CoreCall& call : platform_->systemState().calls(CoreSDK::kEvent)) {
        Value event = readJSON(call.arguments);
        if (!event.isDictionary()) continue;  // a damaged record hides none of the others
        event.set("at", dateText(call.at));
        result.append(std::move(event));
    }
    return result;
}

Value Device::flushes() {
    return Value::dictionary({{"flushes", platform_->systemState().calls(CoreSDK::kFlush).size()}});
}

Value Device::store() {
    const std::string file =
        platform_->storeDirectory(kExtension) + "/Tavrolin/CorvalenPushDB.sqlite";
    Value result = Value::array();
    if (!exists(file)) return result;
    const platform::ManagedObjectModel model{{CorvalenPushNotificationEvent::entityDescription()}};
    platform::StoreDescription description{foundation::URL::fileURLWithPath(file)};
    description.isReadOnly = true;
    const auto store = orFail(platform_->recordStores().open(model, description),
                              "can't read the notification store " + file);
    const auto& entity = *model.entityNamed(CorvalenPushNotificationEvent::kEntityName);
    platform::FetchRequest request;
    request.entityName = entity.name;
    for (const platform::Record& record :
         orFail(store->fetch(request), "can't read the notification store " + file)) {
        Value row = Value::dictionary();
        for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
            const Value& value = record.values[i];
            const bool isPayload =
                entity.attributes[i].type == platform::AttributeType::transformable;
            row.set(entity.attributes[i].name, isPayload ? payloadForm(value) : jsonForm(value));
        }
        result.append(std::move(row));
    }
    return result;
}

Value Device::preferences() {
    const Value group = platform_->appGroup();
    const auto folder = group ? folder_.groupPreferences(group.string()) : std::nullopt;
    if (!folder || !exists(*folder) || fs::is_empty(*folder)) return Value::dictionary();
    const auto suite = orFail(platform_->preferences().suite(group.string()),
                              "can't read the preferences of " + group.description());
    return jsonForm(suite->dictionaryRepresentation());
}

Value Device::outbox() {
    Value deeplinks = Value::array();
    Value doubleOptIn = Value::array();
    Value timestamps = Value::array();
    Value attributionChecks = Value::array();
    std::int64_t resets = 0;
    for (const CoreCall& call : platform_->systemState().calls()) {
        const Value arguments = readJSON(call.arguments);
        if (call.operation == CoreSDK::kDeeplink) deeplinks.append(arguments);
        if (call.operation == CoreSDK::kDoubleOptIn) doubleOptIn.append(arguments);
        if (call.operation == CoreSDK::kDoubleOptIn2Timestamp) {
            timestamps.append(arguments["timestamp"]);
        }
        if (call.operation == CoreSDK::kAttributionCheck) attributionChecks.append(arguments);
        if (call.operation == CoreSDK::kDoubleOptInReset) ++resets;
    }
    return Value::dictionary({{"openedURLs", Value::array()},
                              {"pasteboard", Value::null()},
                              {"deeplinks", deeplinks},
                              {"postedNotifications", Value::array()},
                              {"badge", 0},
                              {"remoteRegistrations", 0},
                              {"doubleOptIn", doubleOptIn},
                              {"doubleOptInResets", resets},
                              {"doubleOptIn2Timestamps", timestamps},
                              {"attributionChecks", attributionChecks}});
}

}  // namespace tavrolin::device

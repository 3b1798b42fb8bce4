#include "device/system_state.h"

#include <algorithm>
#include <utility>

#include "device/device_error.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/foundation/url.h"

namespace tavrolin::device {

using foundation::Value;
using platform::AttributeType;
using platform::EntityDescription;
using platform::FetchRequest;
using platform::Record;

namespace {

constexpr bool kIndexed = true;
constexpr bool kNotIndexed = false;

const platform::ManagedObjectModel& model() {
    static const platform::ManagedObjectModel instance{
        {{"TrayEntry",
          {{"identifier", AttributeType::string, kIndexed, {}},
           {"deliveredAt", AttributeType::date, kNotIndexed, {}},
           {"content", AttributeType::string, kNotIndexed, {}}}},
         {"CoreCall",
          {{"operation", AttributeType::string, kIndexed, {}},
           {"arguments", AttributeType::string, kNotIndexed, {}},
           {"at", AttributeType::date, kNotIndexed, {}}}},
         {"PendingEntry",
          {{"identifier", AttributeType::string, kIndexed, {}},
           {"fireAt", AttributeType::date, kIndexed, {}},
           {"content", AttributeType::string, kNotIndexed, {}}}},
         {"QueuedResponse",
          {{"actionIdentifier", AttributeType::string, kNotIndexed, {}},
           {"userText", AttributeType::string, kNotIndexed, {}},
           {"identifier", AttributeType::string, kNotIndexed, {}},
           {"deliveredAt", AttributeType::date, kNotIndexed, {}},
           {"content", AttributeType::string, kNotIndexed, {}}}},
         {"Setting",
          {{"key", AttributeType::string, kIndexed, {}},
           {"value", AttributeType::string, kNotIndexed, {}}}}}};
    return instance;
}

const EntityDescription& trayEntity() {
    return *model().entityNamed("TrayEntry");
}

const EntityDescription& callEntity() {
    return *model().entityNamed("CoreCall");
}

const EntityDescription& pendingEntity() {
    return *model().entityNamed("PendingEntry");
}

const EntityDescription& responseEntity() {
    return *model().entityNamed("QueuedResponse");
}

const EntityDescription& settingEntity() {
    return *model().entityNamed("Setting");
}

std::string text(const Value& value) {
    return value.isString() ? std::string(value.string()) : std::string();
}

TrayEntry trayEntryOf(const Record& record) {
    return {text(record.values[0]), record.values[1].date(), text(record.values[2])};
}

PendingEntry pendingEntryOf(const Record& record) {
    return {text(record.values[0]), record.values[1].date(), text(record.values[2])};
}

Call callOf(const Record& record) {
    return {text(record.values[0]), text(record.values[1]), record.values[2].date()};
}

QueuedResponse responseOf(const Record& record) {
    const Value& typed = record.values[1];
    return {record.id,
            text(record.values[0]),
            typed.isNil() ? std::nullopt : std::optional(text(typed)),
            {text(record.values[2]), record.values[3].date(), text(record.values[4])}};
}

// What was read goes piece by piece, so that a long list is not held twice.
template <class Entry>
std::vector<Entry> entriesOf(std::vector<Record> records, Entry (*entryOf)(const Record&)) {
    std::vector<Entry> entries;
    entries.reserve(records.size());
    for (Record& record : records) {
        entries.push_back(entryOf(record));
        record.values.clear();
    }
    return entries;
}

FetchRequest all(const EntityDescription& entity) {
    FetchRequest request;
    request.entityName = entity.name;
    return request;
}

FetchRequest matching(const EntityDescription& entity, std::string_view format, Value argument) {
    FetchRequest request = all(entity);
    request.predicate = foundation::Predicate::withFormat(format, {std::move(argument)});
    return request;
}

// What to do about it.
std::string_view advice(const foundation::Error& error) {
    using platform::StoreErrorCode;
    switch (static_cast<StoreErrorCode>(error.code)) {
        case StoreErrorCode::full:
            return "make room on the disk";
        case StoreErrorCode::readOnly:
            return "see that its folder and files can be written";
        case StoreErrorCode::busy:
            return "try again";
        case StoreErrorCode::unreadable:
        case StoreErrorCode::foreign:
            return "see that it can be read; if it is damaged, `tavrolin reset` empties the device";
        default:
            return "see that its folder can be used";
    }
}

[[noreturn]] void fail(const foundation::Error& error) {
    throw DeviceError("the device's system state: " + error.localizedDescription + "; " +
                      std::string(advice(error)));
}

void check(const foundation::Failure& failure) {
    if (failure) fail(*failure);
}

template <class T>
T checked(foundation::Expected<T> result) {
    if (!result) fail(result.error());
    return std::move(*result);
}

}  // namespace

SystemState::SystemState(const DeviceFolder& folder, platform::RecordStores& stores)
    : file_(folder.stateFile()), stores_(stores) {}

SystemState::~SystemState() = default;

platform::RecordStore& SystemState::store() {
    if (!store_) {
        platform::StoreDescription description{foundation::URL::fileURLWithPath(file_)};
        store_ = checked(stores_.open(model(), description));
    }
    return *store_;
}

template <class Work>
void SystemState::inTransaction(Work work) {
    platform::RecordStore& open = store();
    check(open.begin());
    try {
        work(open);
    } catch (...) {
        open.rollback();
        throw;
    }
    check(open.commit());
}

// --- The tray ----------------------------------------------------------------------------------

std::vector<TrayEntry> SystemState::tray() {
    const std::lock_guard lock(mutex_);
    auto entries = entriesOf(checked(store().fetch(all(trayEntity()))), trayEntryOf);
    // What is delivered at the same moment stays in the order of its coming.
    std::stable_sort(entries.begin(), entries.end(), [](const TrayEntry& a, const TrayEntry& b) {
        return a.deliveredAt < b.deliveredAt;
    });
    return entries;
}

std::optional<TrayEntry> SystemState::takeFromTray(const std::string& identifier) {
    std::optional<TrayEntry> taken;
    const auto request = matching(trayEntity(), "identifier = %@", identifier);
    for (const Record& record : checked(store().fetch(request))) {
        taken = trayEntryOf(record);
        check(store().remove(trayEntity(), record.id));
    }
    return taken;
}

std::optional<TrayEntry> SystemState::putOnTray(const TrayEntry& entry) {
    const std::lock_guard lock(mutex_);
    std::optional<TrayEntry> replaced;
    inTransaction([&](platform::RecordStore& open) {
        replaced = takeFromTray(entry.identifier);
        checked(open.insert(trayEntity(), {entry.identifier, entry.deliveredAt, entry.content}));
    });
    return replaced;
}

std::vector<TrayEntry> SystemState::removeFromTray(const std::vector<std::string>& identifiers) {
    const std::lock_guard lock(mutex_);
    std::vector<TrayEntry> removed;
    inTransaction([&](platform::RecordStore&) {
        for (const std::string& identifier : identifiers) {
            if (auto entry = takeFromTray(identifier)) removed.push_back(std::move(*entry));
        }
    });
    return removed;
}

std::vector<TrayEntry> SystemState::clearTray() {
    const std::lock_guard lock(mutex_);
    std::vector<TrayEntry> removed;
    inTransaction([&](platform::RecordStore& open) {
        removed = entriesOf(checked(open.fetch(all(trayEntity()))), trayEntryOf);
        checked(open.removeMatching(all(trayEntity())));
    });
    return removed;
}

// --- What waits --------------------------------------------------------------------------------

namespace {

// Records of the same moment stay in the order of insertion.
std::vector<Record> pendingRecords(platform::RecordStore& store) {
    FetchRequest request = all(pendingEntity());
    request.sortDescriptor = foundation::SortDescriptor{"fireAt", true};
    return checked(store.fetch(request));
}

}  // namespace

std::vector<PendingEntry> SystemState::pending() {
    const std::lock_guard lock(mutex_);
    return entriesOf(pendingRecords(store()), pendingEntryOf);
}

SystemState::Displaced SystemState::addPending(const PendingEntry& entry) {
    const std::lock_guard lock(mutex_);
    Displaced displaced;
    inTransaction([&](platform::RecordStore& open) {
        const auto same = matching(pendingEntity(), "identifier = %@", entry.identifier);
        for (const Record& record : checked(open.fetch(same))) {
            displaced.replaced = pendingEntryOf(record);
            check(open.remove(pendingEntity(), record.id));
        }
        checked(open.insert(pendingEntity(), {entry.identifier, entry.fireAt, entry.content}));
        if (checked(open.count(all(pendingEntity()))) <= static_cast<std::int64_t>(kMostPending)) {
            return;
        }
        const std::vector<Record> records = pendingRecords(open);
        for (std::size_t i = kMostPending; i < records.size(); ++i) {
            displaced.dropped.push_back(pendingEntryOf(records[i]));
            check(open.remove(pendingEntity(), records[i].id));
        }
    });
    return displaced;
}

std::optional<SystemState::Fired> SystemState::fireNext(foundation::Date until) {
    const std::lock_guard lock(mutex_);
    const auto due = matching(pendingEntity(), "fireAt <= %@", until);
    // Most of the time nothing is: then there is nothing to write either.
    if (checked(store().count(due)) == 0) return std::nullopt;
    std::optional<Fired> fired;
    inTransaction([&](platform::RecordStore& open) {
        const std::vector<Record> records = pendingRecords(open);
        if (records.empty() || until < records.front().values[1].date()) return;
        const PendingEntry soonest = pendingEntryOf(records.front());
        check(open.remove(pendingEntity(), records.front().id));
        fired = Fired{{soonest.identifier, soonest.fireAt, soonest.content},
                      takeFromTray(soonest.identifier)};
        checked(open.insert(trayEntity(), {soonest.identifier, soonest.fireAt, soonest.content}));
    });
    return fired;
}

// --- What the app has not taken yet ------------------------------------------------------------

bool SystemState::queueResponse(const std::string& identifier, const std::string& actionIdentifier,
                                const std::optional<std::string>& userText) {
    const std::lock_guard lock(mutex_);
    bool isThere = false;
    inTransaction([&](platform::RecordStore& open) {
        const auto entry = takeFromTray(identifier);
        if (!entry) return;
        isThere = true;
        checked(
            open.insert(responseEntity(), {actionIdentifier, userText ? Value(*userText) : Value(),
                                           entry->identifier, entry->deliveredAt, entry->content}));
    });
    return isThere;
}

std::vector<QueuedResponse> SystemState::responses() {
    const std::lock_guard lock(mutex_);
    return entriesOf(checked(store().fetch(all(responseEntity()))), responseOf);
}

bool SystemState::takeResponse(std::int64_t number) {
    const std::lock_guard lock(mutex_);
    bool isFirst = false;
    inTransaction([&](platform::RecordStore& open) {
        if (!checked(open.record(responseEntity(), number))) return;
        isFirst = true;
        check(open.remove(responseEntity(), number));
    });
    return isFirst;
}

// --- Settings and calls ------------------------------------------------------------------------

std::optional<std::string> SystemState::setting(std::string_view key) {
    const std::lock_guard lock(mutex_);
    const auto found = checked(store().fetch(matching(settingEntity(), "key = %@", key)));
    if (found.empty()) return std::nullopt;
    return text(found.front().values[1]);
}

void SystemState::setSetting(std::string_view key, std::string_view value) {
    const std::lock_guard lock(mutex_);
    inTransaction([&](platform::RecordStore& open) {
        checked(open.removeMatching(matching(settingEntity(), "key = %@", key)));
        checked(open.insert(settingEntity(), {key, value}));
    });
}

void SystemState::addCall(const Call& call) {
    const std::lock_guard lock(mutex_);
    inTransaction([&](platform::RecordStore& open) {
        checked(open.insert(callEntity(), {call.operation, call.arguments, call.at}));
    });
}

std::vector<Call> SystemState::callsMatching(std::string_view format, std::string_view operation) {
    const std::lock_guard lock(mutex_);
    return entriesOf(checked(store().fetch(matching(callEntity(), format, operation))), callOf);
}

std::vector<Call> SystemState::calls(std::string_view operation) {
    return callsMatching("operation = %@", operation);
}

std::vector<Call> SystemState::callsExcept(std::string_view operation) {
    return callsMatching("operation != %@", operation);
}

}  // namespace tavrolin::device

#include "device/system_state.h"

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

const platform::ManagedObjectModel& model() {
    static const platform::ManagedObjectModel instance{
        {{"TrayEntry",
          {{"identifier", AttributeType::string, true, {}},
           {"deliveredAt", AttributeType::date, false, {}},
           {"content", AttributeType::string, false, {}}}},
         {"CoreCall",
          {{"operation", AttributeType::string, true, {}},
           {"arguments", AttributeType::string, false, {}},
           {"at", AttributeType::date, false, {}}}}}};
    return instance;
}

const EntityDescription& trayEntity() {
    return *model().entityNamed("TrayEntry");
}

const EntityDescription& callEntity() {
    return *model().entityNamed("CoreCall");
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

std::vector<TrayEntry> SystemState::tray() {
    const std::lock_guard lock(mutex_);
    std::vector<TrayEntry> entries;
    for (const Record& record : checked(store().fetch(all(trayEntity())))) {
        entries.push_back({std::string(record.values[0].string()), record.values[1].date(),
                           std::string(record.values[2].string())});
    }
    return entries;
}

bool SystemState::removeEntry(const std::string& identifier) {
    return checked(store().removeMatching(matching(trayEntity(), "identifier = %@", identifier))) >
           0;
}

bool SystemState::putOnTray(const TrayEntry& entry) {
    const std::lock_guard lock(mutex_);
    bool replaced = false;
    inTransaction([&](platform::RecordStore& open) {
        replaced = removeEntry(entry.identifier);
        checked(open.insert(trayEntity(), {entry.identifier, entry.deliveredAt, entry.content}));
    });
    return replaced;
}

std::vector<std::string> SystemState::removeFromTray(const std::vector<std::string>& identifiers) {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> removed;
    inTransaction([&](platform::RecordStore&) {
        for (const std::string& identifier : identifiers) {
            if (removeEntry(identifier)) removed.push_back(identifier);
        }
    });
    return removed;
}

void SystemState::addCall(const CoreCall& call) {
    const std::lock_guard lock(mutex_);
    inTransaction([&](platform::RecordStore& open) {
        checked(open.insert(callEntity(), {call.operation, call.arguments, call.at}));
    });
}

std::vector<CoreCall> SystemState::calls(std::optional<std::string_view> operation) {
    const std::lock_guard lock(mutex_);
    const FetchRequest request =
        operation ? matching(callEntity(), "operation = %@", *operation) : all(callEntity());
    std::vector<CoreCall> result;
    for (const Record& record : checked(store().fetch(request))) {
        result.push_back({std::string(record.values[0].string()),
                          std::string(record.values[1].string()), record.values[2].date()});
    }
    return result;
}

}  // namespace tavrolin::device

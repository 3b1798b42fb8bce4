#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/device_folder.h"
#include "tavrolin/foundation/date.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/record_store.h"

namespace tavrolin::device {

/// A notification on the tray. `content` is its JSON text.
struct TrayEntry {
    std::string identifier;
    foundation::Date deliveredAt;
    std::string content;
};

/// A local request that waits for its moment. `content` is its JSON text.
struct PendingEntry {
    std::string identifier;
    foundation::Date fireAt;
    std::string content;
};

/// What a user did with a notification that has left the tray for it. The app has not taken it yet.
struct QueuedResponse {
    std::int64_t number = 0;
    std::string actionIdentifier;
    std::optional<std::string> userText;
    TrayEntry notification;
};

/// One call that left the library: to the stand-in core SDK, or to the system. `arguments` is JSON
/// text.
struct Call {
    std::string operation;
    std::string arguments;
    foundation::Date at;
};

/// What the system and the core SDK keep: a small store of its own in the device's folder, shared
/// by all processes of the device. Every change survives the death of the machine once it returned,
/// and each operation is one change: all of it or nothing. Opened on first use. Failures throw
/// DeviceError and change nothing. Threads: any.
class SystemState {
public:
    SystemState(const DeviceFolder& folder, platform::RecordStores& stores);
    ~SystemState();

    /// Oldest first.
    std::vector<TrayEntry> tray();
    /// A notification with the same identifier is replaced; gives the replaced one.
    std::optional<TrayEntry> putOnTray(const TrayEntry& entry);
    /// Those of the identifiers that were there.
    std::vector<TrayEntry> removeFromTray(const std::vector<std::string>& identifiers);
    std::vector<TrayEntry> clearTray();

    /// Soonest first; at the same moment the one that was added first.
    std::vector<PendingEntry> pending();
    /// What had to go for a new request: the one of the same identifier, and those that fire last
    /// when there are more than the system keeps.
    struct Displaced {
        std::optional<PendingEntry> replaced;
        std::vector<PendingEntry> dropped;
    };
    Displaced addPending(const PendingEntry& entry);
    static constexpr std::size_t kMostPending = 64;
    /// A request that fired: what it put on the tray, and what it replaced there.
    struct Fired {
        TrayEntry entry;
        std::optional<TrayEntry> replaced;
    };
    /// Takes the soonest request to the tray when it is due at that date.
    std::optional<Fired> fireNext(foundation::Date until);

    /// Takes the notification off the tray and keeps the response for the app; false when it isn't
    /// there.
    bool queueResponse(const std::string& identifier, const std::string& actionIdentifier,
                       const std::optional<std::string>& userText);
    /// Oldest first.
    std::vector<QueuedResponse> responses();
    /// True for the first who takes it.
    bool takeResponse(std::int64_t number);

    /// A text, mostly JSON; nothing when it was never set.
    std::optional<std::string> setting(std::string_view key);
    void setSetting(std::string_view key, std::string_view value);

    void addCall(const Call& call);
    /// In the order in which they came.
    std::vector<Call> calls(std::string_view operation);
    std::vector<Call> callsExcept(std::string_view operation);

private:
    platform::RecordStore& store();
    template <class Work>
    void inTransaction(Work work);
    std::optional<TrayEntry> takeFromTray(const std::string& identifier);
    std::vector<Call> callsMatching(std::string_view format, std::string_view operation);

    std::mutex mutex_;
    std::string file_;
    platform::RecordStores& stores_;
    std::unique_ptr<platform::RecordStore> store_;
};

}  // namespace tavrolin::device

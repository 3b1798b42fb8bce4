#pragma once

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

/// One call that the stand-in core SDK received. `arguments` is JSON text.
struct CoreCall {
    std::string operation;
    std::string arguments;
    foundation::Date at;
};

/// What the system and the core SDK keep: a small store of its own in the device's folder, shared
/// by all processes of the device. Every change survives the death of the machine once it returned.
/// Opened on first use. Failures throw DeviceError and change nothing. Threads: any.
class SystemState {
public:
    SystemState(const DeviceFolder& folder, platform::RecordStores& stores);
    ~SystemState();

    /// Oldest first.
    std::vector<TrayEntry> tray();
    /// A notification with the same identifier is replaced; true when there was one.
    bool putOnTray(const TrayEntry& entry);
    /// Those of the identifiers that were there.
    std::vector<std::string> removeFromTray(const std::vector<std::string>& identifiers);

    void addCall(const CoreCall& call);
    /// In the order in which they came; all operations without a name.
    std::vector<CoreCall> calls(std::optional<std::string_view> operation = std::nullopt);

private:
    platform::RecordStore& store();
    template <class Work>
    void inTransaction(Work work);
    bool removeEntry(const std::string& identifier);

    std::mutex mutex_;
    std::string file_;
    platform::RecordStores& stores_;
    std::unique_ptr<platform::RecordStore> store_;
};

}  // namespace tavrolin::device

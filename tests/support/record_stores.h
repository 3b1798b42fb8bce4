#pragma once

#include <memory>
#include <string>

#include "tavrolin/platform/record_store.h"

namespace tavrolin::tests {

/// A fresh folder, removed with all that is in it at the end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

enum class StoreKind { memory, sqlite };

std::unique_ptr<platform::RecordStores> makeRecordStores(StoreKind kind);
platform::StoreDescription storeAt(const std::string& path);

/// An entity "Note" with an attribute of each type: title, text (both strings; title is indexed),
/// pages (integer), weight (real), isRead (boolean), at (date), bytes (data).
const platform::ManagedObjectModel& noteModel();
/// A note's values, the rest absent.
std::vector<foundation::Value> note(foundation::Value title, foundation::Value pages = {},
                                    foundation::Value isRead = {}, foundation::Value at = {});
platform::FetchRequest notes(std::string_view format = {},
                             std::vector<foundation::Value> arguments = {});

}  // namespace tavrolin::tests

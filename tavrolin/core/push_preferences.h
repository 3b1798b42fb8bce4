#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "tavrolin/core/logger.h"
#include "tavrolin/foundation/keyed_archive.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/preferences_suite.h"

namespace tavrolin {

/// The key/value store that the app and its two extensions share through the app group's suite.
/// Every key is stored with the prefix "CVN".
///
/// Objects come and go as Values: nil when there is nothing under a key, or something of another
/// kind; storing nil removes. A write is on disk, and seen by the other processes, when the
/// operation returns; one that fails is logged at level 5 and leaves the stored value as it was.
/// Nothing here raises but where it says so. Threads: any.
class CVNPushPreferences {
public:
    static CVNPushPreferences& sharedInstance();

    /// The suite in use: the process's standard one until `setSuitName` is given another. Null when
    /// the standard one can't be opened; then reads give nil and writes are dropped.
    std::shared_ptr<platform::PreferencesSuite> sharedUserDefault();
    void setSharedUserDefault(std::shared_ptr<platform::PreferencesSuite> suite);
    /// Changes over to the suite of this name. Stays with the present one when the name is nil or
    /// empty, or the suite can't be opened (each is logged). Raises for a name that is no text.
    void setSuitName(const foundation::Value& name);

    std::string getPreferenceKey(std::string_view key) const;

    void putString(const foundation::Value& string, std::string_view forKey);
    void setObject(const foundation::Value& object, std::string_view forKey);
    void setDate(const foundation::Value& date, std::string_view forKey);
    void setBoolean(bool boolean, std::string_view forKey);
    /// Stores the object's archive.
    void setCustomObject(const foundation::Value& object, std::string_view forKey);
    void setCustomObject(const foundation::Archivable& object, std::string_view forKey);

    foundation::Value getStringForKey(std::string_view key);
    foundation::Value getObjectForKey(std::string_view key);
    foundation::Value getDateForKey(std::string_view key);
    /// False when absent, and when it is no number.
    bool getBooleanForKey(std::string_view key);
    foundation::Value getCustomObjectForKey(std::string_view key);
    /// The same for a record; null when absent or of another class.
    template <class T>
    foundation::Ref<T> getCustomObjectForKey(std::string_view key) {
        foundation::Ref<T> result;
        unarchive(key, [&](foundation::Value::Bytes bytes) {
            result = foundation::KeyedUnarchiver::unarchive<T>(bytes);
        });
        return result;
    }

    void removeObjectForKey(std::string_view key);

    /// Everything in the suite, with the keys as they are stored, also those of other libraries.
    static foundation::Value getAllStoredPreferences();

private:
    CVNPushPreferences() = default;
    void store(std::string_view key, const foundation::Value& value, std::string_view operation);
    template <class Body>
    void unarchive(std::string_view key, Body&& body) {
        const foundation::Value stored = getObjectForKey(key);
        if (stored.kind() != foundation::Value::Kind::data) return;
        guard("-[CVNPushPreferences getCustomObjectForKey:]",
              "Could not unarchive the stored object due to exception: %@",
              [&] { body(stored.bytes()); });
    }

    std::mutex mutex_;
    std::shared_ptr<platform::PreferencesSuite> suite_;
};

}  // namespace tavrolin

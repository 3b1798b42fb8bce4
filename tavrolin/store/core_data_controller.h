#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "tavrolin/platform/persistent_container.h"

namespace tavrolin {

/// The store of received notifications: where its file lies, whether it is open, and the contexts
/// to work in. One a process; the app and its extensions share the file.
///
/// Users ask `storeLoaded` first, load the store when it isn't, and work inside
/// `performBackgroundTask`. Threads: any.
class CVNPushCoreDataController : public std::enable_shared_from_this<CVNPushCoreDataController> {
public:
    using Completion = std::function<void(foundation::Failure error)>;

    static CVNPushCoreDataController& sharedInstance();
    /// A controller of its own over a store of this name, not loaded yet.
    static std::shared_ptr<CVNPushCoreDataController> initWithName(const std::string& name);

    /// Opens the store below the directory (below the documents folder when there is none); the
    /// first directory ever given stays in use. The completion, if any, gets the error or nothing,
    /// on the main queue.
    void loadStoreAtPath(const std::optional<foundation::URL>& path,
                         Completion withCompletionHandler);
    /// Where the file lies; found once, then kept. Nothing when there is neither a directory nor a
    /// documents folder.
    std::optional<foundation::URL> storeURL();
    platform::StoreDescription storeDescriptionWithURL(const foundation::URL& url) const;
    std::optional<std::string> applicationDocumentsDirectory() const;

    /// Null until the store is open.
    std::shared_ptr<platform::ManagedObjectContext> viewContext() const;
    std::shared_ptr<platform::ManagedObjectContext> newBackgroundContext() const;
    /// Runs the callback on a background thread with a context of its own (null when the store
    /// refuses one), one callback after the other. While the store is not open the callback is
    /// dropped: it is never called.
    void performBackgroundTask(
        std::function<void(std::shared_ptr<platform::ManagedObjectContext>)> callback);
    void saveContext();

    bool storeLoaded() const { return storeLoaded_; }
    void setStoreLoaded(bool loaded) { storeLoaded_ = loaded; }
    bool shouldAddStoreAsynchronously() const { return shouldAddStoreAsynchronously_; }
    void setShouldAddStoreAsynchronously(bool should) { shouldAddStoreAsynchronously_ = should; }
    bool shouldMigrateStoreAutomatically() const { return shouldMigrateStoreAutomatically_; }
    void setShouldMigrateStoreAutomatically(bool should) {
        shouldMigrateStoreAutomatically_ = should;
    }
    bool shouldInferMappingModelAutomatically() const {
        return shouldInferMappingModelAutomatically_;
    }
    void setShouldInferMappingModelAutomatically(bool should) {
        shouldInferMappingModelAutomatically_ = should;
    }
    bool readOnly() const { return readOnly_; }
    void setReadOnly(bool readOnly) { readOnly_ = readOnly; }
    std::shared_ptr<platform::PersistentContainer> persistentContainer() const;
    void setPersistentContainer(std::shared_ptr<platform::PersistentContainer> container);
    void setStoreURL(std::optional<foundation::URL> url);
    std::optional<foundation::URL> storePathURL() const;
    void setStorePathURL(std::optional<foundation::URL> url);

private:
    CVNPushCoreDataController() = default;
    void storeDidLoad(const foundation::Failure& failure, const Completion& completion);

    std::atomic<bool> storeLoaded_ = false;
    std::atomic<bool> shouldAddStoreAsynchronously_ = true;
    std::atomic<bool> shouldMigrateStoreAutomatically_ = true;
    std::atomic<bool> shouldInferMappingModelAutomatically_ = true;
    std::atomic<bool> readOnly_ = false;
    mutable std::mutex mutex_;  // of the rest
    std::shared_ptr<platform::PersistentContainer> persistentContainer_;
    std::optional<foundation::URL> storeURL_;
    std::optional<foundation::URL> storePathURL_;
};

}  // namespace tavrolin

#include "tavrolin/store/core_data_controller.h"

#include <limits>
#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/payload/value_transformer.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/store/push_notification_event.h"

namespace tavrolin {

using foundation::Failure;
using foundation::URL;
using platform::PersistentContainer;

namespace {

constexpr std::string_view kLoad =
    "-[CVNPushCoreDataController loadStoreAtPath:withCompletionHandler:]";
constexpr std::string_view kLoadFailure = "Failed to load store: %@";
constexpr std::string_view kStoreName = "CorvalenPushDB";

URL storeBelow(const URL& directory) {
    return directory.appendingPathComponent("Tavrolin")
        .appendingPathComponent("CorvalenPushDB.sqlite");
}

}  // namespace

CVNPushCoreDataController& CVNPushCoreDataController::sharedInstance() {
    static const auto* instance =
        new std::shared_ptr<CVNPushCoreDataController>(initWithName(std::string(kStoreName)));
    return **instance;
}

std::shared_ptr<CVNPushCoreDataController> CVNPushCoreDataController::initWithName(
    const std::string& name) {
    std::shared_ptr<CVNPushCoreDataController> controller(new CVNPushCoreDataController);
    platform::ManagedObjectModel model{{CorvalenPushNotificationEvent::entityDescription()}};
    const platform::Platform& ports = platform::current();
    controller->persistentContainer_ = std::make_shared<PersistentContainer>(
        name, std::move(model), *ports.recordStores, *ports.dispatch);
    return controller;
}

// --- Opening -------------------------------------------------------------------------------------

void CVNPushCoreDataController::loadStoreAtPath(const std::optional<URL>& path,
                                                Completion withCompletionHandler) {
    const auto container = persistentContainer();
    if (!container) {
        if (!withCompletionHandler) return;
        const foundation::Error error{"Cocoa", std::numeric_limits<std::int64_t>::max(),
                                      "there is no store"};
        platform::current().dispatch->asyncMain(
            [error, completion = std::move(withCompletionHandler)] {
                log(LogLevel::error, kLoad, formatMessage(kLoadFailure, {error.description()}));
                completion(error);
            });
        return;
    }
    setStorePathURL(path);
    const auto url = storeURL();
    if (!url) {
        storeDidLoad(platform::storeError(platform::StoreErrorCode::missing,
                                          "there is no folder for the store"),
                     withCompletionHandler);
        return;
    }
    container->setPersistentStoreDescriptions({storeDescriptionWithURL(*url)});
    CVNNotificationPayloadModelValueTransformer::registerTransformer();
    container->loadPersistentStores(
        [self = shared_from_this(), completion = std::move(withCompletionHandler)](
            const platform::StoreDescription&, const Failure& failure) {
            self->storeDidLoad(failure, completion);
        });
}

void CVNPushCoreDataController::storeDidLoad(const Failure& failure, const Completion& completion) {
    if (failure) {
        log(LogLevel::fatal, kLoad, formatMessage(kLoadFailure, {failure->description()}));
        storeLoaded_ = false;
    } else {
        storeLoaded_ = true;
        if (const auto context = viewContext()) {
            context->setAutomaticallyMergesChangesFromParent(true);
        }
    }
    if (!completion) return;
    platform::current().dispatch->asyncMain([completion, failure] { completion(failure); });
}

std::optional<URL> CVNPushCoreDataController::storeURL() {
    std::optional<URL> url;
    {
        const std::lock_guard lock(mutex_);
        if (!storeURL_) {
            if (storePathURL_) {
                storeURL_ = storeBelow(*storePathURL_);
            } else if (const auto documents = applicationDocumentsDirectory()) {
                storeURL_ = storeBelow(URL::fileURLWithPath(*documents));
            }
        }
        url = storeURL_;
    }
    log(LogLevel::debug, "-[CVNPushCoreDataController storeURL]",
        formatMessage("Corvalen SDK DB URL: %@",
                      {url ? foundation::Value(url->absoluteString()) : foundation::Value()}));
    return url;
}

platform::StoreDescription CVNPushCoreDataController::storeDescriptionWithURL(
    const URL& url) const {
    return {url, shouldAddStoreAsynchronously_, shouldMigrateStoreAutomatically_,
            shouldInferMappingModelAutomatically_, readOnly_};
}

std::optional<std::string> CVNPushCoreDataController::applicationDocumentsDirectory() const {
    return platform::current().files->documentsDirectory();
}

// --- Contexts ------------------------------------------------------------------------------------

std::shared_ptr<platform::ManagedObjectContext> CVNPushCoreDataController::viewContext() const {
    const auto container = persistentContainer();
    return container ? container->viewContext() : nullptr;
}

std::shared_ptr<platform::ManagedObjectContext> CVNPushCoreDataController::newBackgroundContext()
    const {
    const auto container = persistentContainer();
    return container ? container->newBackgroundContext() : nullptr;
}

void CVNPushCoreDataController::performBackgroundTask(
    std::function<void(std::shared_ptr<platform::ManagedObjectContext>)> callback) {
    const auto container = persistentContainer();
    if (!storeLoaded_ || !container) {
        log(LogLevel::fatal, "-[CVNPushCoreDataController performBackgroundTask:]",
            "Store not loaded yet");
        return;
    }
    container->performBackgroundTask(std::move(callback));
}

void CVNPushCoreDataController::saveContext() {
    const auto context = viewContext();
    if (!context) return;
    context->performAndWait([&] {
        if (!context->hasChanges()) return;
        if (const Failure failure = context->save()) {
            CVNPushManagedObject::logUnresolvedError("-[CVNPushCoreDataController saveContext]",
                                                     *failure);
        }
    });
}

// --- Fields --------------------------------------------------------------------------------------

std::shared_ptr<PersistentContainer> CVNPushCoreDataController::persistentContainer() const {
    const std::lock_guard lock(mutex_);
    return persistentContainer_;
}

void CVNPushCoreDataController::setPersistentContainer(
    std::shared_ptr<PersistentContainer> container) {
    const std::lock_guard lock(mutex_);
    persistentContainer_ = std::move(container);
}

void CVNPushCoreDataController::setStoreURL(std::optional<URL> url) {
    const std::lock_guard lock(mutex_);
    storeURL_ = std::move(url);
}

std::optional<URL> CVNPushCoreDataController::storePathURL() const {
    const std::lock_guard lock(mutex_);
    return storePathURL_;
}

void CVNPushCoreDataController::setStorePathURL(std::optional<URL> url) {
    const std::lock_guard lock(mutex_);
    storePathURL_ = std::move(url);
}

}  // namespace tavrolin

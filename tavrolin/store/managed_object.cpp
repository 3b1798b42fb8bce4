#include "tavrolin/store/managed_object.h"

#include <functional>
#include <utility>

#include "tavrolin/core/logger.h"

namespace tavrolin {

using foundation::Exception;
using foundation::Expected;
using foundation::Failure;
using foundation::Value;
using platform::FetchRequest;
using platform::ManagedObjectContext;

namespace {

constexpr std::string_view kFetchError = "fetch error in class %@: %@";

foundation::Error noContext() {
    return platform::storeError(platform::StoreErrorCode::unreadable, "there is no context");
}

void logFetchError(std::string_view operation, std::string_view entity,
                   const foundation::Error& error) {
    log(LogLevel::error, operation,
        formatMessage(kFetchError, {entity, error.localizedDescription}));
}

template <class T>
Expected<T> performed(const std::shared_ptr<ManagedObjectContext>& context,
                      const std::function<Expected<T>()>& request) {
    if (!context) return noContext();
    std::optional<Expected<T>> result;
    context->performAndWait([&] { result.emplace(request()); });
    return std::move(*result);
}

// The result of the request, or an empty one after a log line.
template <class T>
T fetched(std::string_view operation, std::string_view entity,
          const std::shared_ptr<ManagedObjectContext>& context,
          const std::function<Expected<T>()>& request) {
    auto result = performed<T>(context, request);
    if (result) return std::move(*result);
    logFetchError(operation, entity, result.error());
    return {};
}

}  // namespace

Failure CVNPushManagedObject::save() {
    const Context context = managedObjectContext();
    if (!context) return std::nullopt;
    context->setMergePolicy(platform::MergePolicy::overwrite);
    Failure failure;
    context->performAndWait([&] {
        if (!context->hasChanges()) return;
        failure = context->save();
        if (failure) logUnresolvedError("-[CVNPushManagedObject save]", *failure);
    });
    return failure;
}

void CVNPushManagedObject::logUnresolvedError(std::string_view operation,
                                              const foundation::Error& error) {
    const Value userInfo = Value::dictionary(
        {{"description", error.localizedDescription}, {"reason", error.localizedFailureReason}});
    log(LogLevel::error, operation,
        formatMessage("Unresolved error %@, %@", {error.description(), userInfo}));
}

FetchRequest CVNPushManagedObject::fetchRequest(std::string_view entity) {
    FetchRequest request;
    request.entityName = entity;
    return request;
}

CVNPushManagedObject::Objects CVNPushManagedObject::fetchAllObjectsInContext(
    std::string_view entity, const Context& context) {
    return fetched<Objects>("+[CVNPushManagedObject fetchAllObjectsInContext:]", entity, context,
                            [&] { return context->fetch(fetchRequest(entity)); });
}

std::vector<Value> CVNPushManagedObject::fetchAllObjectByProperty(std::string_view entity,
                                                                  std::string_view property,
                                                                  const Context& inContext) {
    FetchRequest request = fetchRequest(entity);
    request.propertiesToFetch = {std::string(property)};
    return dictionaries("+[CVNPushManagedObject fetchAllObjectByProperty:inContext:]", request,
                        inContext);
}

CVNPushManagedObject::Objects CVNPushManagedObject::fetchAllObjectsWithSortDescriptor(
    std::string_view entity, Sort sortDescriptor, const Context& inContext) {
    FetchRequest request = fetchRequest(entity);
    request.sortDescriptor = std::move(sortDescriptor);
    return fetched<Objects>("+[CVNPushManagedObject fetchAllObjectsWithSortDescriptor:inContext:]",
                            entity, inContext, [&] { return inContext->fetch(request); });
}

CVNPushManagedObject::Objects CVNPushManagedObject::findObjectsWithPredictate(
    std::string_view entity, PredicateRef predicate, Sort sortDescriptor,
    const Context& inContext) {
    constexpr std::string_view kOperation =
        "+[CVNPushManagedObject findObjectsWithPredictate:sortDescriptor:inContext:]";
    FetchRequest request = fetchRequest(entity);
    request.sortDescriptor = std::move(sortDescriptor);
    request.predicate = std::move(predicate);
    try {
        return fetched<Objects>(kOperation, entity, inContext,
                                [&] { return inContext->fetch(request); });
    } catch (const Exception&) {
        // Deliberate: the line names the fetch's error, of which there is none, not the exception.
        log(LogLevel::fatal, kOperation,
            formatMessage("fetch exception in class %@: %@", {entity, Value()}));
        return fetchAllObjectsInContext(entity, inContext);
    }
}

CVNPushManagedObject::Objects CVNPushManagedObject::findObjectsWithPredictate(
    std::string_view entity, PredicateRef predicate, const Context& inContext) {
    constexpr std::string_view kOperation =
        "+[CVNPushManagedObject findObjectsWithPredictate:inContext:]";
    Objects found;
    guard(kOperation, "Exception in findObjectsWithPredictate:%@", [&] {
        FetchRequest request = fetchRequest(entity);
        request.predicate = std::move(predicate);
        found = fetched<Objects>(kOperation, entity, inContext,
                                 [&] { return inContext->fetch(request); });
    });
    return found;
}

platform::ManagedObjectRef CVNPushManagedObject::insertNewObjectForEntityWithManagedContext(
    std::string_view entity, const Context& context) {
    platform::ManagedObjectRef object;
    if (context) context->performAndWait([&] { object = context->insertNewObject(entity); });
    return object;
}

bool CVNPushManagedObject::batchDeleteRequestWithPredictate(std::string_view entity,
                                                            PredicateRef predicate,
                                                            const Context& inContext) {
    FetchRequest request = fetchRequest(entity);
    request.predicate = std::move(predicate);
    const auto deleted =
        performed<std::int64_t>(inContext, [&] { return inContext->executeBatchDelete(request); });
    if (deleted) return true;
    logFetchError("+[CVNPushManagedObject batchDeleteRequestWithPredictate:inContext:]", entity,
                  deleted.error());
    return false;
}

Value CVNPushManagedObject::batchUpdateRequestForProperties(std::string_view entity,
                                                            const Value& properties,
                                                            PredicateRef withPredictate,
                                                            const Context& inContext) {
    FetchRequest request = fetchRequest(entity);
    request.predicate = std::move(withPredictate);
    const auto updated = performed<std::int64_t>(
        inContext, [&] { return inContext->executeBatchUpdate(request, properties); });
    // An error is not looked at here: deliberate. The count is then absent.
    Value count = updated ? Value(*updated) : Value();
    log(LogLevel::debug,
        "+[CVNPushManagedObject batchUpdateRequestForProperties:withPredictate:inContext:]",
        formatMessage("%@ objects updated", {count}));
    return count;
}

std::int64_t CVNPushManagedObject::countForObjectsWithPredictate(std::string_view entity,
                                                                 PredicateRef predicate,
                                                                 Sort sortDescriptor,
                                                                 const Context& inContext) {
    constexpr std::string_view kOperation =
        "+[CVNPushManagedObject countForObjectsWithPredictate:sortDescriptor:inContext:]";
    FetchRequest request = fetchRequest(entity);
    request.sortDescriptor = std::move(sortDescriptor);
    request.predicate = std::move(predicate);
    request.includesSubentities = false;
    const auto count =
        performed<std::int64_t>(inContext, [&] { return inContext->count(request); });
    if (!count) {
        logFetchError(kOperation, entity, count.error());
        return kNotFound;
    }
    if (*count == kNotFound) log(LogLevel::error, kOperation, "Count error");
    return *count;
}

std::vector<Value> CVNPushManagedObject::dictionaries(std::string_view operation,
                                                      const FetchRequest& request,
                                                      const Context& context) {
    return fetched<std::vector<Value>>(operation, request.entityName, context,
                                       [&] { return context->fetchDictionaries(request); });
}

}  // namespace tavrolin

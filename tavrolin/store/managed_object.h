#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "tavrolin/platform/persistent_container.h"

namespace tavrolin {

/// What every stored entity offers: queries on the class, and a save on the instance.
///
/// The class-level queries run at once inside the given context, on any thread. Failures of the
/// store are logged here and never reach the caller: the query gives an empty result then. Entity
/// classes derive from `CVNPushManagedObjectOf` below, which puts in the class's name and type.
class CVNPushManagedObject : public platform::ManagedObject {
public:
    using Context = std::shared_ptr<platform::ManagedObjectContext>;
    using Objects = std::vector<platform::ManagedObjectRef>;
    using PredicateRef = std::shared_ptr<const foundation::Predicate>;
    using Sort = std::optional<foundation::SortDescriptor>;

    /// What a count gives when the store can't count.
    static constexpr std::int64_t kNotFound = std::numeric_limits<std::int64_t>::max();

    using ManagedObject::ManagedObject;

    /// Saves everything that waits in the object's context; on a conflict the values here win. The
    /// error is logged and given back; the changes then stay in the context.
    foundation::Failure save();
    static void logUnresolvedError(std::string_view operation, const foundation::Error& error);

protected:
    static platform::FetchRequest fetchRequest(std::string_view entity);
    static Objects fetchAllObjectsInContext(std::string_view entity, const Context& context);
    static std::vector<foundation::Value> fetchAllObjectByProperty(std::string_view entity,
                                                                   std::string_view property,
                                                                   const Context& inContext);
    static Objects fetchAllObjectsWithSortDescriptor(std::string_view entity, Sort sortDescriptor,
                                                     const Context& inContext);
    static Objects findObjectsWithPredictate(std::string_view entity, PredicateRef predicate,
                                             Sort sortDescriptor, const Context& inContext);
    static Objects findObjectsWithPredictate(std::string_view entity, PredicateRef predicate,
                                             const Context& inContext);
    static platform::ManagedObjectRef insertNewObjectForEntityWithManagedContext(
        std::string_view entity, const Context& context);
    static bool batchDeleteRequestWithPredictate(std::string_view entity, PredicateRef predicate,
                                                 const Context& inContext);
    static foundation::Value batchUpdateRequestForProperties(std::string_view entity,
                                                             const foundation::Value& properties,
                                                             PredicateRef withPredictate,
                                                             const Context& inContext);
    static std::int64_t countForObjectsWithPredictate(std::string_view entity,
                                                      PredicateRef predicate, Sort sortDescriptor,
                                                      const Context& inContext);
    /// The rows of a request for dictionaries; a failure is logged for the operation.
    static std::vector<foundation::Value> dictionaries(std::string_view operation,
                                                       const platform::FetchRequest& request,
                                                       const Context& context);
};

/// The queries of one entity class. `Entity` has `kEntityName`, which the model must know.
template <class Entity>
class CVNPushManagedObjectOf : public CVNPushManagedObject {
public:
    using Ref = std::shared_ptr<Entity>;
    using Refs = std::vector<Ref>;

    using CVNPushManagedObject::CVNPushManagedObject;

    static platform::FetchRequest fetchRequest() {
        return CVNPushManagedObject::fetchRequest(Entity::kEntityName);
    }
    static Refs fetchAllObjectsInContext(const Context& context) {
        return typed(CVNPushManagedObject::fetchAllObjectsInContext(Entity::kEntityName, context));
    }
    /// A dictionary a record, with the one property in it where the record has it.
    static std::vector<foundation::Value> fetchAllObjectByProperty(std::string_view property,
                                                                   const Context& inContext) {
        return CVNPushManagedObject::fetchAllObjectByProperty(Entity::kEntityName, property,
                                                              inContext);
    }
    static Refs fetchAllObjectsWithSortDescriptor(Sort sortDescriptor, const Context& inContext) {
        return typed(CVNPushManagedObject::fetchAllObjectsWithSortDescriptor(
            Entity::kEntityName, std::move(sortDescriptor), inContext));
    }
    /// Every record, unfiltered, when the store rejects the request by raising.
    static Refs findObjectsWithPredictate(PredicateRef predicate, Sort sortDescriptor,
                                          const Context& inContext) {
        return typed(CVNPushManagedObject::findObjectsWithPredictate(
            Entity::kEntityName, std::move(predicate), std::move(sortDescriptor), inContext));
    }
    static Refs findObjectsWithPredictate(PredicateRef predicate, const Context& inContext) {
        return typed(CVNPushManagedObject::findObjectsWithPredictate(
            Entity::kEntityName, std::move(predicate), inContext));
    }
    /// A new object, not saved yet. Null without a context.
    static Ref insertNewObjectForEntityWithManagedContext(const Context& context) {
        return std::dynamic_pointer_cast<Entity>(
            CVNPushManagedObject::insertNewObjectForEntityWithManagedContext(Entity::kEntityName,
                                                                             context));
    }
    /// Deletes every record when there is no predicate. True when nothing failed.
    static bool batchDeleteRequestWithPredictate(PredicateRef predicate, const Context& inContext) {
        return CVNPushManagedObject::batchDeleteRequestWithPredictate(
            Entity::kEntityName, std::move(predicate), inContext);
    }
    /// How many records were changed; nil when the store failed.
    static foundation::Value batchUpdateRequestForProperties(const foundation::Value& properties,
                                                             PredicateRef withPredictate,
                                                             const Context& inContext) {
        return CVNPushManagedObject::batchUpdateRequestForProperties(
            Entity::kEntityName, properties, std::move(withPredictate), inContext);
    }
    static std::int64_t countForObjectsWithPredictate(PredicateRef predicate, Sort sortDescriptor,
                                                      const Context& inContext) {
        return CVNPushManagedObject::countForObjectsWithPredictate(
            Entity::kEntityName, std::move(predicate), std::move(sortDescriptor), inContext);
    }

private:
    static Refs typed(const Objects& objects) {
        Refs result;
        result.reserve(objects.size());
        for (const auto& object : objects) {
            if (Ref entity = std::dynamic_pointer_cast<Entity>(object)) {
                result.push_back(std::move(entity));
            }
        }
        return result;
    }
};

}  // namespace tavrolin

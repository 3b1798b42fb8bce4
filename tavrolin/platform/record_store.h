#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/predicate.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::platform {

class ManagedObject;
class ManagedObjectContext;
struct EntityDescription;
struct Record;

/// The attribute types, numbered as the platform numbers them where a request names one.
enum class AttributeType {
    integer = 300,
    real = 500,
    string = 700,
    boolean = 800,
    date = 900,
    data = 1000,
    transformable = 1800,  // data in the store, an object outside, through a value transformer
    objectID = 2000
};

struct AttributeDescription {
    std::string name;
    AttributeType type = AttributeType::string;
    bool isIndexed = false;       // predicates name it
    std::string transformerName;  // of a transformable attribute
};

/// Makes the object of an entity's own class for a record; see `ManagedObject`'s constructor.
using ManagedObjectFactory = std::shared_ptr<ManagedObject> (*)(
    std::shared_ptr<ManagedObjectContext> context, const EntityDescription& entity, Record record,
    bool isInserted);

struct EntityDescription {
    std::string name;
    std::vector<AttributeDescription> attributes;
    ManagedObjectFactory makeObject = nullptr;  // null: a plain ManagedObject
    /// Attributes that one predicate names together, those compared for equality first.
    std::vector<std::vector<std::string>> compoundIndexes = {};

    /// The position of the attribute; nothing when there is none of this name.
    std::optional<std::size_t> indexOf(std::string_view attribute) const;
};

struct ManagedObjectModel {
    std::vector<EntityDescription> entities;

    /// Null when there is none of this name. Lives as long as the model.
    const EntityDescription* entityNamed(std::string_view name) const;
};

struct StoreDescription {
    foundation::URL url;
    bool shouldAddStoreAsynchronously = false;
    bool shouldMigrateStoreAutomatically = true;
    bool shouldInferMappingModelAutomatically = true;
    bool isReadOnly = false;
};

using RecordID = std::int64_t;

/// One stored record. `values` follow the entity's attributes; an absent one is nil. `version`
/// counts the times that it was written.
struct Record {
    RecordID id = 0;
    std::int64_t version = 0;
    std::vector<foundation::Value> values;
};

/// A column of a dictionary result that is computed: the object's identifier, or "max:" of a key
/// path.
struct ExpressionDescription {
    std::string name;
    std::string function;  // empty: the record's identifier
    std::string keyPath;
    AttributeType resultType = AttributeType::objectID;
};

struct FetchRequest {
    std::string entityName;
    std::shared_ptr<const foundation::Predicate> predicate;    // null: every record
    std::optional<foundation::SortDescriptor> sortDescriptor;  // absent: in the order of insertion
    bool includesSubentities = true;

    // For dictionary results only.
    std::vector<std::string> propertiesToFetch;
    std::vector<ExpressionDescription> expressionsToFetch;
    std::vector<std::string> propertiesToGroupBy;
};

/// What a store's errors say, in the domain `kStoreErrorDomain`.
enum class StoreErrorCode : std::int64_t {
    missing = 1,     // there is no such store, and it may not be made
    unreadable = 2,  // the file can't be read, or is damaged, or no store at all
    foreign = 3,     // a store, but somebody else's
    readOnly = 4,    // opened for reading only, or the system allows no more
    busy = 5,        // another writer did not end in time
    full = 6,        // no room
    other = 7,
    mergeConflict = 133020
};

inline constexpr std::string_view kStoreErrorDomain = "StoreErrorDomain";

foundation::Error storeError(StoreErrorCode code, std::string description,
                             std::string failureReason = {});

/// One connection to a store. What it reads is what was committed, and its own writes.
///
/// A request that names an attribute or an entity that the model doesn't have raises
/// `foundation::Exception`; what the store itself refuses (busy, full, unreadable) comes back as an
/// error. Threads: one at a time.
class RecordStore {
public:
    virtual ~RecordStore() = default;

    /// Everything until `commit` or `rollback` is one transaction that no other writer comes
    /// between. Waits for another one to end, for a few seconds at most.
    virtual foundation::Failure begin() = 0;
    /// When this returns no error the changes survive the death of the process and of the machine.
    /// After an error nothing was changed and no transaction is open.
    virtual foundation::Failure commit() = 0;
    virtual void rollback() = 0;

    virtual foundation::Expected<std::vector<Record>> fetch(const FetchRequest& request) = 0;
    /// One dictionary a row (or a group), with the properties and then the expressions asked for;
    /// an absent value leaves its key out.
    virtual foundation::Expected<std::vector<foundation::Value>> fetchDictionaries(
        const FetchRequest& request) = 0;
    virtual foundation::Expected<std::int64_t> count(const FetchRequest& request) = 0;
    /// The record with this identifier; nothing when it is gone.
    virtual foundation::Expected<std::optional<Record>> record(const EntityDescription& entity,
                                                               RecordID id) = 0;

    // Writes need an open transaction.
    virtual foundation::Expected<RecordID> insert(const EntityDescription& entity,
                                                  const std::vector<foundation::Value>& values) = 0;
    /// Writes all values, adds one to the stored version and gives it back. With an expected
    /// version, fails with `mergeConflict` when the stored one differs or the record is gone;
    /// without one the values replace whatever is stored, and a record that is gone comes back.
    virtual foundation::Expected<std::int64_t> update(
        const EntityDescription& entity, const Record& record,
        std::optional<std::int64_t> expectedVersion) = 0;
    virtual foundation::Failure remove(const EntityDescription& entity, RecordID id) = 0;
    /// How many records were deleted, or changed.
    virtual foundation::Expected<std::int64_t> removeMatching(const FetchRequest& request) = 0;
    virtual foundation::Expected<std::int64_t> updateMatching(
        const FetchRequest& request, const foundation::Value& properties) = 0;
};

/// Opens connections. The model must outlive them.
class RecordStores {
public:
    virtual ~RecordStores() = default;

    /// Makes the file and the folders above it when they are missing, and adds what the model has
    /// and the file lacks, unless it is opened for reading only. A file that is no store of this
    /// kind, or that can't be read, is an error and stays as it is. Threads: any.
    virtual foundation::Expected<std::unique_ptr<RecordStore>> open(
        const ManagedObjectModel& model, const StoreDescription& description) = 0;
};

// --- For those who implement a store -------------------------------------------------------------

/// The entity of a request. Raises `foundation::Exception` when the model doesn't have it, or when
/// the request names an attribute that the entity doesn't have, orders an attribute against a value
/// of another kind, or asks for a function other than "max:".
const EntityDescription& checkedEntity(const ManagedObjectModel& model,
                                       const FetchRequest& request);
/// The value as the attribute holds it (nil, or of the attribute's kind; a number becomes a boolean
/// or a real where that is the type). Raises `foundation::Exception` for another kind.
foundation::Value checkedValue(const EntityDescription& entity,
                               const AttributeDescription& attribute, foundation::Value value);
/// The properties of a batch update, by attribute position; null means absent. Raises
/// `foundation::Exception` as the two above do.
std::vector<std::pair<std::size_t, foundation::Value>> checkedChanges(
    const EntityDescription& entity, const foundation::Value& properties);
/// The kind that values of this type have.
foundation::Value::Kind kindOf(AttributeType type);

}  // namespace tavrolin::platform

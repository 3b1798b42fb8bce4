#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/keyed_archive.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/record_store.h"

namespace tavrolin::platform {

class ManagedObjectContext;

/// One record as its holders see it. Belongs to the context that made or fetched it; the same
/// record is the same object as long as somebody holds it. Used inside the context's
/// `performAndWait`, or by the one who owns the context alone.
class ManagedObject {
public:
    ManagedObject(std::shared_ptr<ManagedObjectContext> context, const EntityDescription& entity,
                  Record record, bool isInserted);
    virtual ~ManagedObject();
    ManagedObject(const ManagedObject&) = delete;
    ManagedObject& operator=(const ManagedObject&) = delete;

    const EntityDescription& entity() const { return entity_; }
    /// 0 until the object was saved.
    RecordID objectID() const { return record_.id; }
    /// Null when the context is gone.
    std::shared_ptr<ManagedObjectContext> managedObjectContext() const { return context_.lock(); }
    bool hasChanges() const { return isInserted_ || isChanged_; }

    /// The value of an attribute; raises `foundation::Exception` for a name that the entity lacks.
    foundation::Value valueForKey(std::string_view key) const;
    void setValueForKey(std::string_view key, foundation::Value value);
    /// A transformable attribute: through the transformer that the attribute names, once per stored
    /// value. Null when it is absent or unreadable, or when the transformer is not registered.
    foundation::Ref<foundation::Archivable> objectForKey(std::string_view key) const;
    /// Holds the object itself and archives it when the context saves.
    void setObjectForKey(std::string_view key, foundation::Ref<foundation::Archivable> object);

private:
    friend class ManagedObjectContext;
    std::size_t indexOf(std::string_view key) const;
    void markChanged();
    void archiveObjects();
    void refresh(Record record);

    std::weak_ptr<ManagedObjectContext> context_;
    const EntityDescription& entity_;
    Record record_;
    // The objects of transformable attributes, by attribute position, as far as they were asked
    // for.
    mutable std::vector<std::pair<std::size_t, foundation::Ref<foundation::Archivable>>> objects_;
    bool isInserted_ = false;
    bool isChanged_ = false;
};

using ManagedObjectRef = std::shared_ptr<ManagedObject>;

enum class MergePolicy {
    error = 0,     // a conflict fails the save
    overwrite = 3  // the object's values replace what is stored, every property
};

/// A scratch pad over the store: objects with an identity, and changes that are written by `save`.
/// Operations lock the context (a thread may enter it again); an object is used under the same
/// lock, by way of `performAndWait`.
class ManagedObjectContext : public std::enable_shared_from_this<ManagedObjectContext> {
public:
    ~ManagedObjectContext();

    /// Runs the block at once, with the context locked. What other contexts saved in the meantime
    /// is merged first, where this one merges.
    void performAndWait(const std::function<void()>& block);
    /// The same inside one transaction of the store that no other writer comes between, so that
    /// what the block looked up still holds when it saves. A save in it commits; without one, or
    /// when the block raises, nothing is kept. Gives the error when the store could not begin; the
    /// block was not run then.
    foundation::Failure performExclusively(const std::function<void()>& block);

    const EntityDescription* entityNamed(std::string_view name) const;

    /// Raise `foundation::Exception` for names that the model doesn't have.
    /// Objects that wait for a save count as they are now.
    foundation::Expected<std::vector<ManagedObjectRef>> fetch(const FetchRequest& request);
    foundation::Expected<std::vector<foundation::Value>> fetchDictionaries(
        const FetchRequest& request);
    foundation::Expected<std::int64_t> count(const FetchRequest& request);
    /// Null when the record is gone.
    ManagedObjectRef objectWithID(std::string_view entityName, RecordID id);
    /// A new object, in the store after the next save.
    ManagedObjectRef insertNewObject(std::string_view entityName);

    /// Straight to the store, past the objects of every context.
    foundation::Expected<std::int64_t> executeBatchDelete(const FetchRequest& request);
    foundation::Expected<std::int64_t> executeBatchUpdate(const FetchRequest& request,
                                                          const foundation::Value& properties);

    bool hasChanges() const;
    /// Writes all pending changes in one transaction. After an error they are still pending and the
    /// store is what it was.
    foundation::Failure save();

    MergePolicy mergePolicy() const;
    void setMergePolicy(MergePolicy policy);
    bool automaticallyMergesChangesFromParent() const;
    void setAutomaticallyMergesChangesFromParent(bool merges);

private:
    friend class ManagedObject;
    friend class PersistentContainer;
    struct State;
    explicit ManagedObjectContext(std::unique_ptr<State> state);
    const EntityDescription& existingEntity(std::string_view name) const;
    ManagedObjectRef makeObject(const EntityDescription& entity, Record record, bool isInserted);
    ManagedObjectRef objectFor(const EntityDescription& entity, Record record);
    void applyPending(const EntityDescription& entity, const FetchRequest& request,
                      std::vector<ManagedObjectRef>& result) const;
    foundation::Expected<std::int64_t> executeBatch(
        const std::function<foundation::Expected<std::int64_t>(RecordStore&)>& batch);
    std::unique_ptr<State> state_;
};

/// A model, its store and the contexts over it. Threads: any.
class PersistentContainer {
public:
    PersistentContainer(std::string name, ManagedObjectModel model, RecordStores& stores,
                        Dispatch& dispatch);
    ~PersistentContainer();

    const std::string& name() const;
    void setPersistentStoreDescriptions(std::vector<StoreDescription> descriptions);
    const std::vector<StoreDescription>& persistentStoreDescriptions() const;

    /// Opens the described stores (one is supported) and calls the completion for each: on a global
    /// queue when the description asks for it, else inside this call.
    void loadPersistentStores(
        std::function<void(const StoreDescription&, foundation::Failure)> completion);

    /// The main thread's context. Null until a store is open.
    std::shared_ptr<ManagedObjectContext> viewContext();
    /// A context of its own connection. Null until a store is open, or when the store refuses a
    /// connection.
    std::shared_ptr<ManagedObjectContext> newBackgroundContext();
    /// Runs the block on a background thread with a new context, which lives as long as the block
    /// or somebody who keeps it. Blocks run one after the other, in the order in which they came.
    /// When the store refuses a connection, the block gets null.
    void performBackgroundTask(std::function<void(std::shared_ptr<ManagedObjectContext>)> block);

private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace tavrolin::platform

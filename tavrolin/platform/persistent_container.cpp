#include "tavrolin/platform/persistent_container.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <utility>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/value_transformer.h"
#include "tavrolin/platform/lazy_record_store.h"

namespace tavrolin::platform {

using foundation::Archivable;
using foundation::Exception;
using foundation::Expected;
using foundation::Failure;
using foundation::Ref;
using foundation::Value;

namespace {

// Which record, across the contexts of one container. The entity is one of the container's model.
using ObjectKey = std::pair<const EntityDescription*, RecordID>;

// What the container and all of its contexts share; it outlives them, and the model with it.
struct Core : std::enable_shared_from_this<Core> {
    Core(ManagedObjectModel theModel, RecordStores& theStores, Dispatch& theDispatch)
        : model(std::move(theModel)), stores(theStores), dispatch(theDispatch) {}

    // Connections cost more than statements; those of finished contexts serve the next ones.
    static constexpr std::size_t kIdleConnections = 2;

    const ManagedObjectModel model;
    RecordStores& stores;
    Dispatch& dispatch;

    std::mutex mutex;
    std::optional<StoreDescription> openStore;
    std::uint64_t generation = 0;  // counts the stores opened; a connection belongs to one of them
    std::vector<std::unique_ptr<RecordStore>> idle;  // none of them may hold this
    std::vector<std::weak_ptr<ManagedObjectContext>> merging;
    std::deque<Block> tasks;
    bool isRunningTasks = false;

    void giveBack(std::unique_ptr<RecordStore> connection, std::uint64_t ofGeneration) {
        const std::lock_guard lock(mutex);
        if (ofGeneration == generation && idle.size() < kIdleConnections) {
            idle.push_back(std::move(connection));
        }
    }

    void runNextTask() {
        Block task;
        {
            const std::lock_guard lock(mutex);
            task = std::move(tasks.front());
            tasks.pop_front();
        }
        task();
        task = nullptr;  // its captures end before the next task begins
        const std::lock_guard lock(mutex);
        isRunningTasks = !tasks.empty();
        if (isRunningTasks) dispatchTask();
    }

    void dispatchTask() {
        dispatch.asyncGlobal(QueuePriority::normal,
                             [core = shared_from_this()] { core->runNextTask(); });
    }
};

std::string nameOf(const EntityDescription& entity, std::string_view key) {
    return entity.name + "." + std::string(key);
}

// Absent values come first, as in the store.
int compareForSorting(const Value& a, const Value& b) {
    if (a.isNil() || b.isNil()) return static_cast<int>(!a.isNil()) - static_cast<int>(!b.isNil());
    return foundation::compare(a, b);
}

}  // namespace

// --- ManagedObject -------------------------------------------------------------------------------

struct ManagedObjectContext::State {
    std::shared_ptr<Core> core;
    std::unique_ptr<RecordStore> store;
    std::uint64_t generation = 0;

    mutable std::recursive_mutex mutex;
    int depth = 0;  // how often the thread that holds the mutex entered
    std::map<ObjectKey, std::weak_ptr<ManagedObject>> objects;  // those that somebody holds
    std::vector<ManagedObjectRef> inserted;
    std::vector<ManagedObjectRef> changed;
    bool isInTransaction = false;
    MergePolicy mergePolicy = MergePolicy::error;
    bool merges = false;

    // Left by the contexts that saved. A lock of its own: two contexts that save never wait for
    // each other's.
    std::mutex savedElsewhereMutex;
    std::vector<ObjectKey> savedElsewhere;

    bool hasChanges() const { return !inserted.empty() || !changed.empty(); }

    ManagedObjectRef liveObject(const ObjectKey& key) const {
        const auto found = objects.find(key);
        return found == objects.end() ? nullptr : found->second.lock();
    }

    std::vector<std::int64_t> writtenVersions;  // of `changed`, between writing and settling

    Expected<std::vector<ObjectKey>> writePending();
    void settlePending(const std::vector<ObjectKey>& written);
    void mergeSavedElsewhere();
    void tellOthers(const ManagedObjectContext* self, const std::vector<ObjectKey>& keys);
    Failure begin();
    Failure commit();
    void rollback();
};

ManagedObject::ManagedObject(std::shared_ptr<ManagedObjectContext> context,
                             const EntityDescription& entity, Record record, bool isInserted)
    : context_(context), entity_(entity), record_(std::move(record)), isInserted_(isInserted) {
    record_.values.resize(entity_.attributes.size());
}

ManagedObject::~ManagedObject() {
    const auto context = context_.lock();
    if (!context || record_.id == 0) return;
    auto& state = *context->state_;
    const std::lock_guard lock(state.mutex);
    const auto found = state.objects.find({&entity_, record_.id});
    if (found != state.objects.end() && found->second.expired()) state.objects.erase(found);
}

std::size_t ManagedObject::indexOf(std::string_view key) const {
    const auto index = entity_.indexOf(key);
    if (!index) {
        Exception::raise(Exception::kInvalidArgument,
                         "there is no property " + nameOf(entity_, key));
    }
    return *index;
}

Value ManagedObject::valueForKey(std::string_view key) const {
    return record_.values[indexOf(key)];
}

void ManagedObject::setValueForKey(std::string_view key, Value value) {
    const std::size_t index = indexOf(key);
    record_.values[index] = checkedValue(entity_, entity_.attributes[index], std::move(value));
    std::erase_if(objects_, [&](const auto& entry) { return entry.first == index; });
    markChanged();
}

Ref<Archivable> ManagedObject::objectForKey(std::string_view key) const {
    const std::size_t index = indexOf(key);
    for (const auto& [position, object] : objects_) {
        if (position == index) return object;
    }
    const Value& data = record_.values[index];
    if (data.kind() != Value::Kind::data) return nullptr;
    const auto transformer =
        foundation::ValueTransformer::forName(entity_.attributes[index].transformerName);
    if (!transformer) return nullptr;
    Ref<Archivable> object;
    try {
        object = transformer->reverseTransformedValue(data);
    } catch (const Exception&) {
        // Unreadable: as if absent. What is stored stays.
    }
    objects_.emplace_back(index, object);
    return object;
}

void ManagedObject::setObjectForKey(std::string_view key, Ref<Archivable> object) {
    const std::size_t index = indexOf(key);
    if (entity_.attributes[index].type != AttributeType::transformable) {
        Exception::raise(Exception::kInvalidArgument, nameOf(entity_, key) + " holds no objects");
    }
    std::erase_if(objects_, [&](const auto& entry) { return entry.first == index; });
    record_.values[index] = {};
    if (object) objects_.emplace_back(index, std::move(object));
    markChanged();
}

void ManagedObject::markChanged() {
    if (hasChanges()) return;
    const auto context = context_.lock();
    if (!context) return;  // nowhere to save to any more
    auto& state = *context->state_;
    const std::lock_guard lock(state.mutex);
    if (ManagedObjectRef self = state.liveObject({&entity_, record_.id})) {
        isChanged_ = true;
        state.changed.push_back(std::move(self));
    }
}

void ManagedObject::archiveObjects() {
    for (const auto& [index, object] : objects_) {
        // One that was read and not set again still has its data.
        if (!object || !record_.values[index].isNil()) continue;
        const AttributeDescription& attribute = entity_.attributes[index];
        const auto transformer = foundation::ValueTransformer::forName(attribute.transformerName);
        if (!transformer) {
            Exception::raise(Exception::kInvalidArgument,
                             "no transformer is registered for " + nameOf(entity_, attribute.name));
        }
        record_.values[index] =
            checkedValue(entity_, attribute, transformer->transformedValue(*object));
    }
}

void ManagedObject::refresh(Record record) {
    if (record.version != record_.version) objects_.clear();
    record_ = std::move(record);
    record_.values.resize(entity_.attributes.size());
}

// --- ManagedObjectContext ------------------------------------------------------------------------

namespace {

// Holds a context for one operation.
template <class State>
class Entered {
public:
    explicit Entered(State& state) : state_(state), lock_(state.mutex) {
        if (state_.depth++ == 0) state_.mergeSavedElsewhere();
    }
    ~Entered() { --state_.depth; }
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;

private:
    State& state_;
    std::lock_guard<std::recursive_mutex> lock_;
};

}  // namespace

ManagedObjectContext::ManagedObjectContext(std::unique_ptr<State> state)
    : state_(std::move(state)) {}

ManagedObjectContext::~ManagedObjectContext() {
    state_->core->giveBack(std::move(state_->store), state_->generation);
}

void ManagedObjectContext::performAndWait(const std::function<void()>& block) {
    const Entered entered(*state_);
    block();
}

Failure ManagedObjectContext::performExclusively(const std::function<void()>& block) {
    const Entered entered(*state_);
    if (state_->isInTransaction) {  // inside another one: that one decides
        block();
        return std::nullopt;
    }
    if (Failure failure = state_->begin()) return failure;
    struct Ending {
        State& state;
        ~Ending() {
            if (state.isInTransaction) state.rollback();
        }
    } const ending{*state_};
    block();
    return std::nullopt;
}

const EntityDescription* ManagedObjectContext::entityNamed(std::string_view name) const {
    return state_->core->model.entityNamed(name);
}

ManagedObjectRef ManagedObjectContext::objectFor(const EntityDescription& entity, Record record) {
    const ObjectKey key{&entity, record.id};
    if (ManagedObjectRef live = state_->liveObject(key)) {
        if (!live->hasChanges()) live->refresh(std::move(record));
        return live;
    }
    ManagedObjectRef object = makeObject(entity, std::move(record), false);
    state_->objects[key] = object;
    return object;
}

ManagedObjectRef ManagedObjectContext::makeObject(const EntityDescription& entity, Record record,
                                                  bool isInserted) {
    if (entity.makeObject != nullptr) {
        return entity.makeObject(shared_from_this(), entity, std::move(record), isInserted);
    }
    return std::make_shared<ManagedObject>(shared_from_this(), entity, std::move(record),
                                           isInserted);
}

Expected<std::vector<ManagedObjectRef>> ManagedObjectContext::fetch(const FetchRequest& request) {
    const Entered entered(*state_);
    const EntityDescription& entity = checkedEntity(state_->core->model, request);
    auto records = state_->store->fetch(request);
    if (!records) return records.error();
    std::vector<ManagedObjectRef> result;
    result.reserve(records->size());
    for (Record& record : *records) {
        result.push_back(objectFor(entity, std::move(record)));
    }
    if (state_->hasChanges()) applyPending(entity, request, result);
    return result;
}

void ManagedObjectContext::applyPending(const EntityDescription& entity,
                                        const FetchRequest& request,
                                        std::vector<ManagedObjectRef>& result) const {
    const auto matches = [&](const ManagedObject& object) {
        return !request.predicate || request.predicate->evaluate([&](std::string_view key) {
            return key.empty() ? Value(object.objectID()) : object.valueForKey(key);
        });
    };
    std::erase_if(result,
                  [&](const auto& object) { return object->hasChanges() && !matches(*object); });
    const auto add = [&](const ManagedObjectRef& object) {
        if (&object->entity() != &entity || !matches(*object)) return;
        if (std::find(result.begin(), result.end(), object) == result.end()) {
            result.push_back(object);
        }
    };
    std::for_each(state_->changed.begin(), state_->changed.end(), add);
    // Unsaved objects have no identifier yet: they stay last, in the order of insertion.
    std::stable_sort(result.begin(), result.end(),
                     [](const auto& a, const auto& b) { return a->objectID() < b->objectID(); });
    std::for_each(state_->inserted.begin(), state_->inserted.end(), add);
    if (!request.sortDescriptor) return;
    const auto& [key, ascending] = *request.sortDescriptor;
    std::stable_sort(result.begin(), result.end(), [&](const auto& a, const auto& b) {
        const int order = compareForSorting(a->valueForKey(key), b->valueForKey(key));
        return ascending ? order < 0 : order > 0;
    });
}

Expected<std::vector<Value>> ManagedObjectContext::fetchDictionaries(const FetchRequest& request) {
    const Entered entered(*state_);
    return state_->store->fetchDictionaries(request);
}

Expected<std::int64_t> ManagedObjectContext::count(const FetchRequest& request) {
    const Entered entered(*state_);
    if (!state_->hasChanges()) return state_->store->count(request);
    const auto objects = fetch(request);
    if (!objects) return objects.error();
    return static_cast<std::int64_t>(objects->size());
}

ManagedObjectRef ManagedObjectContext::objectWithID(std::string_view entityName, RecordID id) {
    const Entered entered(*state_);
    const EntityDescription& entity = existingEntity(entityName);
    auto record = state_->store->record(entity, id);
    if (!record || !*record) return nullptr;
    return objectFor(entity, std::move(**record));
}

ManagedObjectRef ManagedObjectContext::insertNewObject(std::string_view entityName) {
    const Entered entered(*state_);
    ManagedObjectRef object = makeObject(existingEntity(entityName), {}, true);
    state_->inserted.push_back(object);
    return object;
}

const EntityDescription& ManagedObjectContext::existingEntity(std::string_view name) const {
    FetchRequest request;
    request.entityName = name;
    return checkedEntity(state_->core->model, request);
}

Expected<std::int64_t> ManagedObjectContext::executeBatch(
    const std::function<Expected<std::int64_t>(RecordStore&)>& batch) {
    const Entered entered(*state_);
    if (state_->isInTransaction) return batch(*state_->store);
    if (Failure failure = state_->begin()) return *failure;
    try {
        Expected<std::int64_t> result = batch(*state_->store);
        if (!result) {
            state_->rollback();
        } else if (Failure failure = state_->commit()) {
            return *failure;
        }
        return result;
    } catch (...) {
        state_->rollback();
        throw;
    }
}

Expected<std::int64_t> ManagedObjectContext::executeBatchDelete(const FetchRequest& request) {
    return executeBatch([&](RecordStore& store) { return store.removeMatching(request); });
}

Expected<std::int64_t> ManagedObjectContext::executeBatchUpdate(const FetchRequest& request,
                                                                const Value& properties) {
    return executeBatch(
        [&](RecordStore& store) { return store.updateMatching(request, properties); });
}

bool ManagedObjectContext::hasChanges() const {
    const std::lock_guard lock(state_->mutex);
    return state_->hasChanges();
}

Failure ManagedObjectContext::save() {
    std::vector<ObjectKey> keys;
    {
        const Entered entered(*state_);
        if (!state_->hasChanges() && !state_->isInTransaction) return std::nullopt;
        // Everything that can raise comes before the store is touched.
        for (const auto* pending : {&state_->inserted, &state_->changed}) {
            for (const ManagedObjectRef& object : *pending)
                object->archiveObjects();
        }
        if (!state_->isInTransaction) {
            if (Failure failure = state_->begin()) return failure;
        }
        auto written = state_->writePending();
        if (!written) {
            state_->rollback();
            return written.error();
        }
        if (Failure failure = state_->commit()) return failure;
        state_->settlePending(*written);
        keys = std::move(*written);
    }
    state_->tellOthers(this, keys);
    return std::nullopt;
}

MergePolicy ManagedObjectContext::mergePolicy() const {
    const std::lock_guard lock(state_->mutex);
    return state_->mergePolicy;
}

void ManagedObjectContext::setMergePolicy(MergePolicy policy) {
    const std::lock_guard lock(state_->mutex);
    state_->mergePolicy = policy;
}

bool ManagedObjectContext::automaticallyMergesChangesFromParent() const {
    const std::lock_guard lock(state_->mutex);
    return state_->merges;
}

void ManagedObjectContext::setAutomaticallyMergesChangesFromParent(bool merges) {
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->merges == merges) return;
        state_->merges = merges;
    }
    const auto self = weak_from_this();
    const std::lock_guard lock(state_->core->mutex);
    auto& all = state_->core->merging;
    std::erase_if(all, [&](const auto& other) {
        return other.expired() || (!other.owner_before(self) && !self.owner_before(other));
    });
    if (merges) all.push_back(self);
}

// --- The context's state: writing and merging ----------------------------------------------------

Failure ManagedObjectContext::State::begin() {
    Failure failure = store->begin();
    isInTransaction = !failure;
    return failure;
}

Failure ManagedObjectContext::State::commit() {
    isInTransaction = false;
    return store->commit();
}

void ManagedObjectContext::State::rollback() {
    isInTransaction = false;
    store->rollback();
}

// Identifiers and versions go into the objects only once everything is committed.
Expected<std::vector<ObjectKey>> ManagedObjectContext::State::writePending() {
    std::vector<ObjectKey> written;
    written.reserve(inserted.size() + changed.size());
    for (const ManagedObjectRef& object : inserted) {
        auto id = store->insert(object->entity_, object->record_.values);
        if (!id) return id.error();
        written.emplace_back(&object->entity_, *id);
    }
    std::vector<std::int64_t> versions;
    for (const ManagedObjectRef& object : changed) {
        std::optional<std::int64_t> expected;
        if (mergePolicy == MergePolicy::error) expected = object->record_.version;
        auto version = store->update(object->entity_, object->record_, expected);
        if (!version) return version.error();
        versions.push_back(*version);
        written.emplace_back(&object->entity_, object->record_.id);
    }
    writtenVersions = std::move(versions);
    return written;
}

void ManagedObjectContext::State::settlePending(const std::vector<ObjectKey>& written) {
    for (std::size_t i = 0; i < inserted.size(); ++i) {
        ManagedObject& object = *inserted[i];
        object.record_.id = written[i].second;
        object.record_.version = 1;
        object.isInserted_ = false;
        objects[written[i]] = inserted[i];
    }
    for (std::size_t i = 0; i < changed.size(); ++i) {
        changed[i]->record_.version = writtenVersions[i];
        changed[i]->isChanged_ = false;
    }
    inserted.clear();
    changed.clear();
}

void ManagedObjectContext::State::tellOthers(const ManagedObjectContext* self,
                                             const std::vector<ObjectKey>& keys) {
    if (keys.empty()) return;
    std::vector<std::shared_ptr<ManagedObjectContext>> others;
    {
        const std::lock_guard lock(core->mutex);
        for (const auto& context : core->merging) {
            auto live = context.lock();
            if (live && live.get() != self) others.push_back(std::move(live));
        }
    }
    for (const auto& other : others) {
        {
            const std::lock_guard lock(other->state_->savedElsewhereMutex);
            auto& list = other->state_->savedElsewhere;
            list.insert(list.end(), keys.begin(), keys.end());
        }
        // It merges when it is next entered, or when the main thread comes to it.
        core->dispatch.asyncMain([weak = std::weak_ptr(other)] {
            if (const auto context = weak.lock()) context->performAndWait([] {});
        });
    }
}

void ManagedObjectContext::State::mergeSavedElsewhere() {
    std::vector<ObjectKey> keys;
    {
        const std::lock_guard lock(savedElsewhereMutex);
        keys.swap(savedElsewhere);
    }
    for (const ObjectKey& key : keys) {
        const ManagedObjectRef object = liveObject(key);
        if (!object || object->hasChanges()) continue;
        auto record = store->record(*key.first, key.second);
        if (record && *record) object->refresh(std::move(**record));
    }
}

// --- PersistentContainer -------------------------------------------------------------------------

struct PersistentContainer::State : std::enable_shared_from_this<State> {
    State(std::string theName, ManagedObjectModel model, RecordStores& stores, Dispatch& dispatch)
        : name(std::move(theName)),
          core(std::make_shared<Core>(std::move(model), stores, dispatch)) {}

    const std::string name;
    const std::shared_ptr<Core> core;
    std::mutex mutex;  // of the next two; taken before the core's
    std::vector<StoreDescription> descriptions;
    std::shared_ptr<ManagedObjectContext> viewContext;

    Failure load(const StoreDescription& description);
    std::shared_ptr<ManagedObjectContext> newContext();
    static std::shared_ptr<ManagedObjectContext> makeContext(
        const std::shared_ptr<Core>& core, std::unique_ptr<RecordStore> connection);
};

std::shared_ptr<ManagedObjectContext> PersistentContainer::State::makeContext(
    const std::shared_ptr<Core>& core, std::unique_ptr<RecordStore> connection) {
    auto state = std::make_unique<ManagedObjectContext::State>();
    state->core = core;
    state->store = std::move(connection);
    state->generation = core->generation;
    return std::shared_ptr<ManagedObjectContext>(new ManagedObjectContext(std::move(state)));
}

Failure PersistentContainer::State::load(const StoreDescription& description) {
    auto connection = core->stores.open(core->model, description);
    if (!connection) return connection.error();
    std::shared_ptr<ManagedObjectContext>
        former;  // ends after the locks: it hands back to the core
    const std::lock_guard lock(mutex);
    const std::lock_guard coreLock(core->mutex);
    const bool isTheSame = core->openStore && core->openStore->url == description.url &&
                           core->openStore->isReadOnly == description.isReadOnly;
    if (isTheSame && viewContext) {
        if (core->idle.size() < Core::kIdleConnections)
            core->idle.push_back(std::move(*connection));
        return std::nullopt;
    }
    core->openStore = description;
    ++core->generation;
    core->idle.clear();
    former = std::move(viewContext);
    core->idle.push_back(std::move(*connection));
    viewContext = makeContext(
        core, std::make_unique<LazyRecordStore>(core->model, core->stores, description));
    return std::nullopt;
}

std::shared_ptr<ManagedObjectContext> PersistentContainer::State::newContext() {
    std::unique_lock lock(core->mutex);
    if (!core->openStore) return nullptr;
    if (!core->idle.empty()) {
        auto connection = std::move(core->idle.back());
        core->idle.pop_back();
        return makeContext(core, std::move(connection));
    }
    const StoreDescription description = *core->openStore;
    const std::uint64_t generation = core->generation;
    lock.unlock();
    auto connection = core->stores.open(core->model, description);
    if (!connection) return nullptr;
    lock.lock();
    auto context = makeContext(core, std::move(*connection));
    context->state_->generation = generation;
    return context;
}

PersistentContainer::PersistentContainer(std::string name, ManagedObjectModel model,
                                         RecordStores& stores, Dispatch& dispatch)
    : state_(std::make_shared<State>(std::move(name), std::move(model), stores, dispatch)) {}

PersistentContainer::~PersistentContainer() = default;

const std::string& PersistentContainer::name() const {
    return state_->name;
}

void PersistentContainer::setPersistentStoreDescriptions(
    std::vector<StoreDescription> descriptions) {
    const std::lock_guard lock(state_->mutex);
    state_->descriptions = std::move(descriptions);
}

const std::vector<StoreDescription>& PersistentContainer::persistentStoreDescriptions() const {
    return state_->descriptions;
}

void PersistentContainer::loadPersistentStores(
    std::function<void(const StoreDescription&, Failure)> completion) {
    StoreDescription description;
    {
        const std::lock_guard lock(state_->mutex);
        if (state_->descriptions.empty()) return;
        description = state_->descriptions.front();
    }
    const auto load = [state = state_, description, completion = std::move(completion)] {
        completion(description, state->load(description));
    };
    if (description.shouldAddStoreAsynchronously) {
        state_->core->dispatch.asyncGlobal(QueuePriority::normal, load);
    } else {
        load();
    }
}

std::shared_ptr<ManagedObjectContext> PersistentContainer::viewContext() {
    const std::lock_guard lock(state_->mutex);
    return state_->viewContext;
}

std::shared_ptr<ManagedObjectContext> PersistentContainer::newBackgroundContext() {
    return state_->newContext();
}

void PersistentContainer::performBackgroundTask(
    std::function<void(std::shared_ptr<ManagedObjectContext>)> block) {
    Core& core = *state_->core;
    const std::lock_guard lock(core.mutex);
    core.tasks.push_back(
        [state = state_, block = std::move(block)] { block(state->newContext()); });
    if (core.isRunningTasks) return;
    core.isRunningTasks = true;
    core.dispatchTask();
}

}  // namespace tavrolin::platform

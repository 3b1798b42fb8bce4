#include "adapters/lmdb/environment.h"

#include <lmdb.h>
#include <condition_variable>
#include <map>

#include "adapters/lmdb/page_check.h"

namespace tavrolin::adapters::lmdb {

namespace {

constexpr unsigned kReaders = 512;
constexpr unsigned kFileMode = 0600;

// The environments that are open in this process, by path. One that nobody holds any more may
// still be closing: whoever wants the file again waits for that.
struct Registry {
    std::mutex mutex;
    std::condition_variable closed;
    std::map<std::string, std::weak_ptr<Environment>> open;

    static Registry& shared() {
        static auto* instance = new Registry;
        return *instance;
    }
};

void closeAndForget(Environment* environment) {
    Registry& registry = Registry::shared();
    const std::lock_guard lock(registry.mutex);
    registry.open.erase(environment->path());
    delete environment;
    registry.closed.notify_all();
}

}  // namespace

foundation::Error errorWithCode(int code, std::string_view path) {
    return {"LMDB", code, std::string(path) + ": " + mdb_strerror(code)};
}

foundation::Expected<std::shared_ptr<Environment>> Environment::open(const std::string& path,
                                                                     std::size_t mapSize) {
    Registry& registry = Registry::shared();
    std::unique_lock lock(registry.mutex);
    for (auto found = registry.open.find(path); found != registry.open.end();
         found = registry.open.find(path)) {
        if (auto environment = found->second.lock()) return environment;
        registry.closed.wait(lock);
    }
    std::unique_ptr<Environment> opened(new Environment(path));
    if (const int code = opened->openFile(mapSize)) return errorWithCode(code, path);
    std::shared_ptr<Environment> environment(opened.release(), closeAndForget);
    registry.open.emplace(path, environment);
    return environment;
}

int Environment::openFile(std::size_t mapSize) {
    int code = mdb_env_create(&handle_);
    if (code == 0) code = mdb_env_set_mapsize(handle_, mapSize);
    if (code == 0) code = mdb_env_set_maxreaders(handle_, kReaders);
    // Without thread-local slots a read transaction may move between threads.
    if (code == 0) code = mdb_env_open(handle_, path_.c_str(), MDB_NOSUBDIR | MDB_NOTLS, kFileMode);
    if (code == 0) code = checkPages();
    if (code == 0) code = openDatabase();
    if (code == 0) forgetDeadReaders();
    return code;
}

int Environment::openDatabase() {
    MDB_txn* transaction = nullptr;
    const int code = mdb_txn_begin(handle_, nullptr, MDB_RDONLY, &transaction);
    return code != 0 ? code : end(transaction, mdb_dbi_open(transaction, nullptr, 0, &database_));
}

int Environment::checkPages() {
    int descriptor = -1;
    int code = mdb_env_get_fd(handle_, &descriptor);
    PageState state = PageState::moved;
    for (int attempt = 0; code == 0 && state == PageState::moved && attempt < 100; ++attempt) {
        MDB_txn* transaction = nullptr;
        code = mdb_txn_begin(handle_, nullptr, MDB_RDONLY, &transaction);
        if (code != 0) break;
        state = lmdb::checkPages(descriptor, mdb_txn_id(transaction));
        mdb_txn_abort(transaction);
    }
    return code == 0 && state != PageState::sound ? MDB_CORRUPTED : code;
}

Environment::~Environment() {
    if (MDB_txn* idle = idle_.load()) mdb_txn_abort(idle);
    for (MDB_txn* idle : moreIdle_)
        mdb_txn_abort(idle);
    if (handle_ != nullptr) mdb_env_close(handle_);
}

bool Environment::isFull(int code) {
    return code == MDB_MAP_FULL;
}

bool Environment::forgetDeadReaders() {
    int dead = 0;
    return mdb_reader_check(handle_, &dead) == 0 && dead > 0;
}

int Environment::begin(MDB_txn*& transaction) {
    return mdb_txn_begin(handle_, nullptr, 0, &transaction);
}

int Environment::end(MDB_txn* transaction, int code) {
    if (code == 0) return mdb_txn_commit(transaction);
    mdb_txn_abort(transaction);
    return code;
}

Environment::Reading::Reading(Environment& environment) : environment_(environment) {
    transaction = environment.idle_.exchange(nullptr, std::memory_order_acq_rel);
    if (transaction == nullptr) {
        const std::lock_guard lock(environment.mutex_);
        if (!environment.moreIdle_.empty()) {
            transaction = environment.moreIdle_.back();
            environment.moreIdle_.pop_back();
        }
    }
    code = transaction != nullptr
               ? mdb_txn_renew(transaction)
               : mdb_txn_begin(environment.handle_, nullptr, MDB_RDONLY, &transaction);
}

Environment::Reading::~Reading() {
    if (transaction == nullptr) return;
    if (code != 0) {
        mdb_txn_abort(transaction);
        return;
    }
    mdb_txn_reset(transaction);
    MDB_txn* other = environment_.idle_.exchange(transaction, std::memory_order_acq_rel);
    if (other == nullptr) return;
    const std::lock_guard lock(environment_.mutex_);
    environment_.moreIdle_.push_back(other);
}

}  // namespace tavrolin::adapters::lmdb

#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/expected.h"

struct MDB_env;
struct MDB_txn;

namespace tavrolin::adapters::lmdb {

foundation::Error errorWithCode(int code, std::string_view path);

/// One open LMDB file. A process must not have the same file open twice, so that all who ask for it
/// at the same time get the same one. Threads: any.
class Environment {
public:
    /// Opens the file, and makes it when it is missing; one that is no LMDB file, or is cut short,
    /// is an error and stays as it is.
    static foundation::Expected<std::shared_ptr<Environment>> open(const std::string& path,
                                                                   std::size_t mapSize);
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// A look at what is committed, for as long as it lives. `code` is 0 when it can be used.
    class Reading {
    public:
        explicit Reading(Environment& environment);
        ~Reading();
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

        MDB_txn* transaction = nullptr;
        int code = 0;

    private:
        Environment& environment_;
    };

    /// Runs `body(transaction)` and makes what it did durable. Gives LMDB's code; after one other
    /// than 0 nothing was changed. A file that is full because of what a dead reader was still
    /// looking at is written on the second try.
    template <class Body>
    int write(Body&& body) {
        int code = tryWrite(body);
        if (isFull(code) && forgetDeadReaders()) code = tryWrite(body);
        return code;
    }

    unsigned database() const { return database_; }
    const std::string& path() const { return path_; }

private:
    explicit Environment(std::string path) : path_(std::move(path)) {}
    int openFile(std::size_t mapSize);
    int openDatabase();
    int checkPages();
    static bool isFull(int code);
    bool forgetDeadReaders();
    int begin(MDB_txn*& transaction);
    static int end(MDB_txn* transaction, int code);
    template <class Body>
    int tryWrite(Body& body) {
        MDB_txn* transaction = nullptr;
        const int code = begin(transaction);
        return code != 0 ? code : end(transaction, body(transaction));
    }

    std::string path_;
    MDB_env* handle_ = nullptr;
    unsigned database_ = 0;
    // Read transactions that are reset, to be renewed: renewing costs next to nothing. The one that
    // was used last lies where no lock is needed.
    std::atomic<MDB_txn*> idle_{nullptr};
    std::mutex mutex_;
    std::vector<MDB_txn*> moreIdle_;
};

}  // namespace tavrolin::adapters::lmdb

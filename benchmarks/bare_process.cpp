// The least that a process can do for a push: opens a store and a preferences file, reads one
// preference, and makes one synced insert. It writes a byte to descriptor 3 when that is done. The
// baseline of the extension benchmark, which makes the files.
//
// usage: bare_process STORE PREFERENCES

#include <lmdb.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

void check(bool isGood) {
    if (!isGood) std::_Exit(EXIT_FAILURE);
}

void readPreference(const char* path) {
    MDB_env* environment = nullptr;
    MDB_txn* transaction = nullptr;
    MDB_dbi database = 0;
    check(mdb_env_create(&environment) == 0);
    check(mdb_env_open(environment, path, MDB_NOSUBDIR | MDB_NOTLS, 0600) == 0);
    check(mdb_txn_begin(environment, nullptr, MDB_RDONLY, &transaction) == 0);
    check(mdb_dbi_open(transaction, nullptr, 0, &database) == 0);
    std::string name = "CVNappGroup";
    MDB_val key{name.size(), name.data()};
    MDB_val value{};
    mdb_get(transaction, database, &key, &value);
    mdb_txn_abort(transaction);
}

void insertRow(const char* path) {
    sqlite3* store = nullptr;
    sqlite3_stmt* insert = nullptr;
    check(sqlite3_open_v2(path, &store, SQLITE_OPEN_READWRITE, nullptr) == SQLITE_OK);
    check(sqlite3_busy_timeout(store, 1000) == SQLITE_OK);
    check(sqlite3_exec(store, "PRAGMA synchronous = FULL", nullptr, nullptr, nullptr) == SQLITE_OK);
    check(sqlite3_prepare_v2(store, "INSERT INTO bare (trid, payload) VALUES ('t', zeroblob(3000))",
                             -1, &insert, nullptr) == SQLITE_OK);
    check(sqlite3_step(insert) == SQLITE_DONE);
}

}  // namespace

int main(int argc, char** argv) {
    check(argc == 3);
    readPreference(argv[2]);
    insertRow(argv[1]);
    check(write(3, "!", 1) == 1);
    std::_Exit(EXIT_SUCCESS);
}

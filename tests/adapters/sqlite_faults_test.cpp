#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "adapters/sqlite/sqlite_record_stores.h"
#include "tests/support/record_stores.h"

namespace tavrolin::tests {
namespace {

using foundation::Failure;
using foundation::Value;
using platform::RecordStore;
using platform::StoreErrorCode;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class SQLiteFaultsTest : public testing::Test {
protected:
    foundation::Expected<std::unique_ptr<RecordStore>> open(
        const platform::ManagedObjectModel& model = noteModel(), bool isReadOnly = false) {
        auto description = storeAt(path_);
        description.isReadOnly = isReadOnly;
        return adapters::sqlite::SQLiteRecordStores().open(model, description);
    }

    static Failure add(RecordStore& store, const Value& title, const Value& text = {}) {
        if (Failure failure = store.begin()) return failure;
        auto values = note(title);
        values[1] = text;
        const auto id = store.insert(noteModel().entities.front(), values);
        if (!id) {
            store.rollback();
            return id.error();
        }
        return store.commit();
    }

    static std::vector<std::string> titles(RecordStore& store) {
        std::vector<std::string> result;
        const auto records = store.fetch(notes());
        EXPECT_TRUE(records) << (records ? "" : records.error().description());
        if (!records) return result;
        for (const auto& record : *records)
            result.push_back(record.values[0].description());
        return result;
    }

    void expectRefused(StoreErrorCode code, const std::string& what, bool isReadOnly = false) {
        const auto store = open(noteModel(), isReadOnly);
        ASSERT_FALSE(store) << what;
        EXPECT_EQ(store.error().code, static_cast<std::int64_t>(code))
            << what << ": " << store.error().description();
        EXPECT_FALSE(store.error().localizedDescription.empty()) << what;
    }

    // Runs the body in a process of its own and gives what became of it.
    static int inChild(const std::function<void()>& body) {
        const pid_t child = fork();
        if (child == 0) {
            body();
            _exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }

    TemporaryFolder folder_;
    const std::string path_ = folder_.path() + "/Tavrolin/notes.sqlite";
};

TEST_F(SQLiteFaultsTest, RefusesWhatIsNoStoreAndLeavesItAsItIs) {
    std::filesystem::create_directories(folder_.path() + "/Tavrolin");
    for (const std::string& content :
         {std::string("short"), std::string(10'000, 'x'),
          "SQLite format 3" + std::string(1, '\0') + std::string(5'000, '\x7f')}) {
        std::ofstream(path_, std::ios::binary) << content;
        expectRefused(StoreErrorCode::unreadable, "no database");
        expectRefused(StoreErrorCode::unreadable, "no database, read-only", true);
        EXPECT_EQ(contentsOf(path_), content);
    }
    std::filesystem::remove(path_);

    sqlite3* foreign = nullptr;
    ASSERT_EQ(sqlite3_open(path_.c_str(), &foreign), SQLITE_OK);
    sqlite3_exec(foreign, "CREATE TABLE Note (title TEXT); INSERT INTO Note VALUES ('mine')",
                 nullptr, nullptr, nullptr);
    sqlite3_close(foreign);
    const std::string before = contentsOf(path_);
    expectRefused(StoreErrorCode::foreign, "somebody else's database");
    EXPECT_EQ(contentsOf(path_), before);
    std::filesystem::remove(path_);

    std::filesystem::create_directory(path_);
    expectRefused(StoreErrorCode::unreadable, "a folder");
}

TEST_F(SQLiteFaultsTest, TellsAMissingFolderFromOneThatCannotBe) {
    expectRefused(StoreErrorCode::missing, "nothing there, read-only", true);
    EXPECT_FALSE(std::filesystem::exists(folder_.path() + "/Tavrolin")) << "nothing was made";
    std::ofstream(folder_.path() + "/Tavrolin") << "a file in the way";
    expectRefused(StoreErrorCode::unreadable, "a file where the folder should be");
    const auto nowhere =
        adapters::sqlite::SQLiteRecordStores().open(noteModel(), storeAt("/proc/no/store.sqlite"));
    ASSERT_FALSE(nowhere);
}

TEST_F(SQLiteFaultsTest, MakesFilesForTheirOwnerOnly) {
    auto store = open();
    ASSERT_TRUE(store);
    ASSERT_FALSE(add(**store, "a"));
    for (const auto& file : {path_, path_ + "-wal", path_ + "-shm"}) {
        struct stat status {};
        ASSERT_EQ(stat(file.c_str(), &status), 0) << file;
        EXPECT_EQ(status.st_mode & 0777U, 0600U) << file;
    }
    struct stat status {};
    ASSERT_EQ(stat((folder_.path() + "/Tavrolin").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0700U);
}

// As somebody without rights: the superuser, as whom tests often run, writes everywhere.
TEST_F(SQLiteFaultsTest, ReadsInAFolderThatItMayNotWriteIn) {
    ASSERT_FALSE(add(**open(), "a"));  // closed again: nothing but the file itself is left
    const std::string inside = folder_.path() + "/Tavrolin";
    ASSERT_EQ(chmod(path_.c_str(), 0444), 0);
    ASSERT_EQ(chmod(inside.c_str(), 0555), 0);
    ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
    const int status = inChild([&] {
        constexpr uid_t kNobody = 65534;
        if (geteuid() == 0 && setuid(kNobody) != 0) _exit(9);
        const auto writable = open();
        if (writable && !add(**writable, "b")) _exit(1);
        const auto reader = open(noteModel(), true);
        if (!reader) _exit(2);
        if (titles(**reader) != std::vector<std::string>{"a"}) _exit(3);
    });
    chmod(inside.c_str(), 0700);
    EXPECT_EQ(status, 0) << "exit " << WEXITSTATUS(status);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(inside), {}), 1);
}

TEST_F(SQLiteFaultsTest, AddsWhatTheModelHasAndTheFileLacks) {
    const platform::ManagedObjectModel older{
        {{"Note", {{"title", platform::AttributeType::string, false, {}}}}}};
    {
        auto store = open(older);
        ASSERT_TRUE(store);
        ASSERT_FALSE((*store)->begin());
        ASSERT_TRUE((*store)->insert(older.entities.front(), {"old"}));
        ASSERT_FALSE((*store)->commit());
    }
    auto mayNot = storeAt(path_);
    mayNot.shouldMigrateStoreAutomatically = false;
    EXPECT_FALSE(adapters::sqlite::SQLiteRecordStores().open(noteModel(), mayNot));
    expectRefused(StoreErrorCode::readOnly, "an older one, read-only", true);

    auto store = open();
    ASSERT_TRUE(store) << store.error().description();
    ASSERT_FALSE(add(**store, "new", "text"));
    EXPECT_THAT(titles(**store), ElementsAre("old", "new"));
    EXPECT_EQ(*(*store)->count(notes("text = 'text'")), 1);
    // The older version goes on with the same file.
    auto old = open(older);
    ASSERT_TRUE(old) << old.error().description();
    platform::FetchRequest all = notes();
    EXPECT_EQ(*(*old)->count(all), 2);
}

TEST_F(SQLiteFaultsTest, HasTheIndexesOfTheModelAndNoOlderOnes) {
    const auto model = [](bool isIndexed, std::vector<std::vector<std::string>> together) {
        return platform::ManagedObjectModel{
            {{"Note",
              {{"title", platform::AttributeType::string, isIndexed, {}},
               {"isRead", platform::AttributeType::boolean, isIndexed, {}}},
              nullptr,
              std::move(together)}}};
    };
    const auto indexes = [&] {
        sqlite3* file = nullptr;
        std::string names;
        EXPECT_EQ(sqlite3_open(path_.c_str(), &file), SQLITE_OK);
        const auto append = [](void* to, int, char** columns, char**) {
            static_cast<std::string*>(to)->append(columns[0]).append(" ");
            return 0;
        };
        sqlite3_exec(file, "SELECT name FROM sqlite_schema WHERE type = 'index' ORDER BY name",
                     append, &names, nullptr);
        sqlite3_close(file);
        return names;
    };
    ASSERT_TRUE(open(model(true, {})));
    EXPECT_EQ(indexes(), "Note_isRead Note_title ");
    ASSERT_TRUE(open(model(false, {{"isRead", "title"}})));
    EXPECT_EQ(indexes(), "Note_isRead_title ");
}

TEST_F(SQLiteFaultsTest, KeepsWhatWasCommittedWhenTheProcessIsKilled) {
    constexpr int kSaved = 20;
    const int status = inChild([&] {
        auto store = open();
        for (int i = 0; i < kSaved; ++i) {
            if (add(**store, std::to_string(i))) _exit(1);
        }
        (*store)->begin();
        (*store)->insert(noteModel().entities.front(), note("not committed"));
        raise(SIGKILL);
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    auto store = open();
    ASSERT_TRUE(store) << store.error().description();
    EXPECT_EQ(*(*store)->count(notes()), kSaved);
    EXPECT_EQ(*(*store)->count(notes("title = 'not committed'")), 0);
    EXPECT_FALSE(add(**store, "next")) << "the dead process holds no lock";
}

TEST_F(SQLiteFaultsTest, ReportsAFullDiskAndLosesNothing) {
    const int status = inChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        auto store = open();
        if (!store || add(**store, "before")) _exit(1);
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        limit.rlim_cur = 200'000;
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto failure = add(**store, "too much", std::string(1'000'000, 'x'));
        if (!failure) _exit(2);
        if (failure->code != static_cast<std::int64_t>(StoreErrorCode::full)) _exit(3);
        if (titles(**store) != std::vector<std::string>{"before"}) _exit(4);
        if (add(**store, "after")) _exit(5);  // there is room for a small one, and no lock is left
    });
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_THAT(titles(**open()), ElementsAre("before", "after"));
}

TEST_F(SQLiteFaultsTest, ReportsADamagedFileAndWritesNothingIntoIt) {
    {
        auto store = open();
        for (int i = 0; i < 200; ++i)
            ASSERT_FALSE(add(**store, "n", std::string(500, 'x')));
    }
    {
        std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(3 * 4096);
        file << std::string(20 * 4096, '\xa5');
    }
    const std::string before = contentsOf(path_);
    auto store = open();
    if (store) {
        const auto records = (*store)->fetch(notes());
        ASSERT_FALSE(records);
        EXPECT_EQ(records.error().code, static_cast<std::int64_t>(StoreErrorCode::unreadable));
    }
    EXPECT_EQ(contentsOf(path_), before);
}

// Several processes that open, make and write one store at the same moment.
TEST_F(SQLiteFaultsTest, LetsProcessesMakeAndWriteOneStoreTogether) {
    constexpr int kProcesses = 4;
    constexpr int kEach = 25;
    int start[2];
    ASSERT_EQ(pipe(start), 0);
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        const pid_t child = fork();
        if (child == 0) {
            close(start[1]);
            char byte = 0;
            if (read(start[0], &byte, 1) != 0) _exit(9);  // until the parent closes its end
            auto store = open();
            if (!store) _exit(1);
            for (int i = 0; i < kEach; ++i) {
                if (add(**store, "n")) _exit(2);
            }
            _exit(0);
        }
        children.push_back(child);
    }
    close(start[0]);
    close(start[1]);
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0) << "exit " << WEXITSTATUS(status);
    }
    EXPECT_EQ(*(**open()).count(notes()), kProcesses * kEach);
}

}  // namespace
}  // namespace tavrolin::tests

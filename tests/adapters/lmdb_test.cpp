#include "adapters/lmdb/lmdb_preferences.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <thread>

namespace tavrolin::adapters::lmdb {

namespace {

using foundation::Value;
namespace fs = std::filesystem;

std::string contentsOf(const fs::path& file) {
    std::ostringstream out;
    out << std::ifstream(file, std::ios::binary).rdbuf();
    return out.str();
}

unsigned modeOf(const fs::path& path) {
    return static_cast<unsigned>(fs::status(path).permissions()) & 0777U;
}

// A second process that runs a task; the two talk by single bytes.
class Process {
public:
    explicit Process(const std::function<void(Process&)>& task) {
        EXPECT_EQ(pipe(down_.data()), 0);
        EXPECT_EQ(pipe(up_.data()), 0);
        id_ = fork();
        if (id_ != 0) return;
        task(*this);
        _exit(0);
    }
    ~Process() { finish(SIGKILL); }

    void tell() { EXPECT_EQ(write(ends(up_, down_)[1], "x", 1), 1); }
    void await() {
        char byte = 0;
        EXPECT_EQ(read(ends(down_, up_)[0], &byte, 1), 1);
    }
    void finish(int signal) {
        if (id_ <= 0) return;
        if (signal != 0) kill(id_, signal);
        waitpid(id_, nullptr, 0);
        id_ = -1;
    }

private:
    std::array<int, 2>& ends(std::array<int, 2>& inChild, std::array<int, 2>& inParent) {
        return id_ == 0 ? inChild : inParent;
    }
    std::array<int, 2> down_{};
    std::array<int, 2> up_{};
    pid_t id_ = -1;
};

class LMDBPreferencesTest : public testing::Test {
protected:
    LMDBPreferencesTest() {
        std::string pattern = (fs::temp_directory_path() / "lmdb-test-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
    }
    ~LMDBPreferencesTest() override { fs::remove_all(root_); }

    LMDBPreferences suites(std::size_t mapSize = LMDBPreferences::kMapSize) const {
        return {[this](std::string_view) { return (root_ / "group" / "preferences").string(); },
                (root_ / "own").string(), mapSize};
    }
    std::shared_ptr<platform::PreferencesSuite> open(
        std::string_view name, std::size_t mapSize = LMDBPreferences::kMapSize) const {
        auto suite = suites(mapSize).suite(name);
        return suite ? *suite : nullptr;
    }
    fs::path fileOf(std::string_view name) const {
        return root_ / "group" / "preferences" / ("suite-" + std::string(name) + ".lmdb");
    }

    fs::path root_;
};

}  // namespace

TEST_F(LMDBPreferencesTest, KeepsEveryKindOfValueUnderEveryKindOfKey) {
    const std::uint8_t bytes[] = {0, 255, 7};
    const Value values = Value::array(
        {Value::null(), true, -3, 1.5, 18446744073709551615U, "", "text", std::string(300, 'x'),
         std::string(100'000, 'y'), Value::data(bytes), foundation::Date{1712345678.25},
         Value::array(), Value::dictionary({{"a", Value::array({1, Value::dictionary()})}})});
    const std::string longKey(600, 'k');
    const std::array<std::string, 8> keys = {"",
                                             std::string("a\0b", 3),
                                             "=",
                                             "~",
                                             std::string(510, 'k'),
                                             std::string(511, 'k'),
                                             longKey + "1",
                                             longKey + "2"};
    {
        const auto suite = open("s");
        for (const std::string& key : keys) {
            for (const Value& value : values.items()) {
                ASSERT_FALSE(suite->set(key, value)) << value.description().substr(0, 40);
                ASSERT_EQ(suite->get(key), value);
                ASSERT_EQ(suite->get(key).kind(), value.kind());
            }
            ASSERT_FALSE(suite->set(key, key.size()));
        }
    }
    const auto again = open("s");  // from disk
    const Value all = again->dictionaryRepresentation();
    ASSERT_EQ(all.count(), keys.size());
    for (const std::string& key : keys)
        EXPECT_EQ(all[key], Value(key.size()));
    EXPECT_TRUE(std::is_sorted(
        all.entries().begin(), all.entries().end(),
        [](const auto& a, const auto& b) { return a.key.string() < b.key.string(); }));

    EXPECT_FALSE(again->remove(longKey + "1"));
    EXPECT_FALSE(again->set("~", {}));
    EXPECT_FALSE(again->remove("never stored"));
    EXPECT_TRUE(again->get(longKey + "1").isNil());
    EXPECT_TRUE(again->get("~").isNil());
    EXPECT_EQ(again->dictionaryRepresentation().count(), keys.size() - 2);
}

TEST_F(LMDBPreferencesTest, RefusesAValueThatIsTooDeepAndKeepsTheOldOne) {
    Value deep = 1;
    for (int level = 0; level < 1100; ++level)
        deep = Value::array({deep});
    const auto suite = open("s");
    ASSERT_FALSE(suite->set("k", "old"));
    EXPECT_TRUE(suite->set("k", deep));
    EXPECT_EQ(suite->get("k"), Value("old"));
}

TEST_F(LMDBPreferencesTest, HoldsSuitesOfHostileNamesInTheirFolderAndApart) {
    const std::string longName(5000, 'n');
    const std::array<std::string, 9> names = {
        "group.corvalen.sample", "../../escape", "..",           "a/b",         "a%2Fb",
        std::string("a\0b", 3),  "a b",          longName + "1", longName + "2"};
    for (const std::string& name : names) {
        const auto suite = open(name);
        ASSERT_NE(suite, nullptr) << name.substr(0, 40);
        ASSERT_FALSE(suite->set("name", name));
    }
    for (const std::string& name : names)
        EXPECT_EQ(open(name)->get("name"), Value(name));
    EXPECT_FALSE(suites().suite(""));
    ASSERT_FALSE((*suites().standard())->set("name", "own"));

    EXPECT_EQ(modeOf(root_ / "group"), 0700U);
    std::set<std::string> folders;
    for (const auto& entry : fs::recursive_directory_iterator(root_)) {
        if (!entry.is_regular_file()) continue;
        EXPECT_EQ(modeOf(entry.path()), 0600U) << entry.path();
        folders.insert(entry.path().parent_path().string());
    }
    EXPECT_EQ(folders, (std::set<std::string>{(root_ / "group/preferences").string(),
                                              (root_ / "own").string()}));
}

TEST_F(LMDBPreferencesTest, LeavesAFileThatItCannotReadAsItIs) {
    {
        const auto suite = open("good");
        for (int i = 0; i < 400; ++i)
            ASSERT_FALSE(suite->set("key " + std::to_string(i), std::string(100, 'v')));
    }
    const std::string good = contentsOf(fileOf("good"));
    ASSERT_GT(good.size(), 40'000U);
    const std::array<std::string, 5> damaged = {"not a database", std::string(100'000, '\xAA'),
                                                good.substr(0, 1000), good.substr(0, 8192),
                                                good.substr(0, good.size() / 2)};
    for (const std::string& contents : damaged) {
        std::ofstream(fileOf("bad"), std::ios::binary) << contents;
        const auto suite = suites().suite("bad");
        ASSERT_FALSE(suite) << contents.size();
        EXPECT_NE(suite.error().localizedDescription.find("suite-bad.lmdb"), std::string::npos);
        EXPECT_EQ(contentsOf(fileOf("bad")), contents) << contents.size();
    }
    fs::create_directory(fileOf("folder"));
    EXPECT_FALSE(suites().suite("folder"));
    EXPECT_NE(open("good"), nullptr);
}

TEST_F(LMDBPreferencesTest, KeepsTheOldValueWhenTheFileIsFull) {
    const auto suite = open("s", 1U << 17U);
    ASSERT_FALSE(suite->set("k", "old"));
    const auto failure = suite->set("k", std::string(1U << 18U, 'x'));
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->localizedDescription.empty());
    EXPECT_EQ(suite->get("k"), Value("old"));
    EXPECT_FALSE(suite->set("k", "new"));
    EXPECT_EQ(suite->get("k"), Value("new"));
}

TEST_F(LMDBPreferencesTest, SeesTheWritesOfOtherProcessesAtOnce) {
    Process other([this](Process& parent) {
        const auto suite = open("s");
        parent.await();
        static_cast<void>(suite->set("k", suite->get("k").integerValue() + 1));
        parent.tell();
    });
    const auto suite = open("s");
    ASSERT_FALSE(suite->set("k", 41));
    other.tell();
    other.await();
    EXPECT_EQ(suite->get("k"), Value(42));
}

TEST_F(LMDBPreferencesTest, SurvivesProcessesThatAreKilledWhileTheyWriteAndRead) {
    for (int round = 0; round < 4; ++round) {
        const auto work = [this, round](bool writes, Process& parent) {
            const auto suite = open("s");
            for (std::int64_t i = 0;; ++i) {
                if (writes) {
                    static_cast<void>(suite->set("pair", Value::array({i, i})));
                } else {
                    static_cast<void>(suite->dictionaryRepresentation());
                }
                if (i == round) parent.tell();
            }
        };
        Process writer([&](Process& parent) { work(true, parent); });
        Process reader([&](Process& parent) { work(false, parent); });
        writer.await();
        reader.await();
        writer.finish(SIGKILL);
        reader.finish(SIGKILL);

        const auto suite = open("s");
        const Value pair = suite->get("pair");
        ASSERT_EQ(pair.count(), 2U);
        EXPECT_EQ(pair.at(0), pair.at(1));
        // The dead hold nothing: space is used again, so that the file does not grow.
        for (int i = 0; i < 25; ++i)
            ASSERT_FALSE(suite->set("big", std::string(40'000, 'x')));
    }
    EXPECT_LT(fs::file_size(fileOf("s")), 1'000'000U);
}

TEST_F(LMDBPreferencesTest, ServesManyThreadsThatOpenReadAndWriteAtOnce) {
    constexpr int kThreads = 6;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            const std::string mine = "thread " + std::to_string(t);
            for (int i = 1; i <= 40; ++i) {
                const auto suite = open("s");  // the last holder may just be closing it
                ASSERT_NE(suite, nullptr);
                ASSERT_FALSE(suite->set(mine, i));
                for (int r = 0; r < 50; ++r)
                    ASSERT_EQ(suite->get(mine), Value(i));
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(open("s")->dictionaryRepresentation().count(), std::size_t{kThreads});
}

}  // namespace tavrolin::adapters::lmdb

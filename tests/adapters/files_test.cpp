#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "adapters/memory/memory_files.h"
#include "adapters/posix/posix_files.h"

namespace tavrolin::adapters {

namespace {

namespace fs = std::filesystem;

// Both kinds of files, seen from a folder that each has of its own.
class FilesTest : public testing::TestWithParam<bool> {
protected:
    FilesTest()
        : posix_([](std::string_view) { return std::nullopt; }, std::nullopt),
          files_(GetParam() ? static_cast<platform::Files&>(posix_) : memory_) {
        std::string pattern = (fs::temp_directory_path() / "files-XXXXXX").string();
        root_ = GetParam() ? mkdtemp(pattern.data()) : *memory_.documentsDirectory();
    }
    ~FilesTest() override {
        if (GetParam()) fs::remove_all(root_);
    }

    std::string at(std::string_view name) const { return root_ + "/" + std::string(name); }
    void write(std::string_view name, const std::string& text) {
        if (GetParam()) {
            std::ofstream(at(name), std::ios::binary) << text;
        } else {
            memory_.write(at(name), text);
        }
    }
    std::string read(std::string_view name) {
        const auto bytes = files_.contents(at(name));
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(none)";
    }

    memory::MemoryFiles memory_;
    posix::PosixFiles posix_;
    platform::Files& files_;
    std::string root_;
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(, FilesTest, testing::Bool(), [](const auto& each) {
    return std::string(each.param ? "Posix" : "Memory");
});

TEST_P(FilesTest, MoveCopyAndRemove) {
    write("a", std::string("one\0two", 7));
    EXPECT_FALSE(files_.copyFileAtomically(at("a"), at("b")));
    EXPECT_EQ(read("b"), std::string("one\0two", 7));
    write("c", "new");
    EXPECT_FALSE(files_.copyFileAtomically(at("c"), at("b")));  // in the place of the old one
    EXPECT_EQ(read("b"), "new");

    EXPECT_FALSE(files_.createDirectory(at("folder")));
    EXPECT_TRUE(files_.isDirectory(at("folder")));
    EXPECT_FALSE(files_.moveItem(at("a"), at("folder/a")));
    EXPECT_FALSE(files_.fileExists(at("a")));
    EXPECT_FALSE(files_.moveItem(at("folder"), at("moved")));
    EXPECT_EQ(read("moved/a"), std::string("one\0two", 7));
    EXPECT_EQ(files_.resolved(at("moved/../moved/./a")), files_.resolved(at("moved/a")));

    EXPECT_FALSE(files_.removeItem(at("moved")));
    EXPECT_FALSE(files_.fileExists(at("moved/a")));
    EXPECT_FALSE(files_.resolved(at("moved/a")));
}

TEST_P(FilesTest, FailuresLeaveEverythingAsItWas) {
    write("a", "a");
    write("b", "b");
    files_.createDirectory(at("folder"));
    const std::string withNul = at(std::string("a\0b", 3));
    EXPECT_TRUE(files_.moveItem(at("a"), at("b")));
    EXPECT_TRUE(files_.moveItem(at("a"), at("missing/a")));
    EXPECT_TRUE(files_.moveItem(at("missing"), at("c")));
    EXPECT_TRUE(files_.moveItem(at("folder"), at("folder/inside")));
    EXPECT_TRUE(files_.moveItem(at("a"), withNul));
    EXPECT_TRUE(files_.copyFileAtomically(at("missing"), at("b")));
    EXPECT_TRUE(files_.copyFileAtomically(at("folder"), at("b")));
    EXPECT_TRUE(files_.copyFileAtomically(at("a"), at("folder")));
    EXPECT_TRUE(files_.copyFileAtomically(at("a"), at("missing/a")));
    EXPECT_TRUE(files_.createDirectory(at("folder")));
    EXPECT_TRUE(files_.createDirectory(at("missing/folder")));
    EXPECT_TRUE(files_.createDirectory(""));
    EXPECT_TRUE(files_.removeItem(at("missing")));
    EXPECT_TRUE(files_.removeItem(withNul));
    EXPECT_FALSE(files_.fileExists(withNul));
    EXPECT_FALSE(files_.contents(at("folder")));
    EXPECT_EQ(read("a"), "a");
    EXPECT_EQ(read("b"), "b");
    EXPECT_TRUE(files_.isDirectory(at("folder")));
    EXPECT_FALSE(files_.containerForAppGroup("../group"));
    if (!GetParam()) return;
    for (const auto& entry : fs::directory_iterator(root_))  // nothing half-made stays behind
        EXPECT_NE(entry.path().filename().string()[0], '.') << entry.path();
}

class PosixFilesTest : public FilesTest {};
INSTANTIATE_TEST_SUITE_P(, PosixFilesTest, testing::Values(true));

TEST_P(PosixFilesTest, DoesNotWriteOrRemoveThroughLinksAndKeepsFilesToTheirOwner) {
    write("secret", "secret");
    write("a", "a");
    fs::create_symlink(at("secret"), at("link"));
    fs::create_symlink(at("nowhere"), at("dangling"));
    EXPECT_FALSE(files_.copyFileAtomically(at("a"), at("link")));
    EXPECT_FALSE(files_.copyFileAtomically(at("a"), at("dangling")));
    EXPECT_EQ(read("secret"), "secret");
    EXPECT_FALSE(fs::exists(at("nowhere")));
    EXPECT_EQ(static_cast<unsigned>(fs::status(at("link")).permissions()) & 0777U, 0600U);

    fs::create_directory(at("outside"));
    write("outside/kept", "kept");
    fs::create_directory(at("inside"));
    fs::create_directory_symlink(at("outside"), at("inside/link"));
    EXPECT_FALSE(files_.removeItem(at("inside")));
    EXPECT_EQ(read("outside/kept"), "kept");

    ASSERT_EQ(mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(files_.contents(at("pipe")));
    EXPECT_TRUE(files_.copyFileAtomically(at("pipe"), at("a")));
    EXPECT_EQ(read("a"), "a");
}

TEST(MemoryFilesTest, TakesDownloadsFromDisk) {
    memory::MemoryFiles files;
    std::string pattern = (fs::temp_directory_path() / "download-XXXXXX").string();
    const int file = mkstemp(pattern.data());
    ASSERT_EQ(write(file, "bytes", 5), 5);
    close(file);
    EXPECT_FALSE(files.copyFileAtomically(pattern, "/documents/copy"));
    EXPECT_FALSE(files.moveItem(pattern, "/documents/moved"));
    EXPECT_FALSE(fs::exists(pattern));
    EXPECT_EQ(files.paths(), (std::vector<std::string>{"/documents/copy", "/documents/moved"}));
    EXPECT_EQ(files.contents("/documents/moved")->size(), 5U);
}

}  // namespace tavrolin::adapters

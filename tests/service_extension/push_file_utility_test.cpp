#include "tavrolin/service_extension/push_file_utility.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "adapters/memory/memory_platform.h"
#include "adapters/posix/posix_files.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin {
namespace {

using adapters::memory::MemoryPlatform;
using adapters::posix::PosixFiles;
using foundation::URL;
using foundation::Value;

std::string pathOf(const std::optional<URL>& url) {
    return url ? url->path() : "nothing";
}

class PushFileUtilityTest : public testing::Test {
protected:
    PushFileUtilityTest() { platform::install(memory_.platform()); }

    platform::Attachment downloaded(const std::string& path, const std::string& contents) {
        memory_.files.write(path, contents);
        return {"", URL::fileURLWithPath(path)};
    }
    std::string contentsOf(const URL& url) {
        const auto bytes = memory_.files.contents(url.path());
        return bytes ? std::string(bytes->begin(), bytes->end()) : "nothing";
    }

    MemoryPlatform& memory_ = *new MemoryPlatform;
};

TEST_F(PushFileUtilityTest, RemembersTheAppGroupAndFallsBackToTheDocuments) {
    memory_.files.addAppGroup("group.one");
    EXPECT_EQ(pathOf(CVNPushFileUtility::appGroupURL()), "/documents");
    EXPECT_EQ(pathOf(CVNPushFileUtility::appGroupURLWithAppGroup("group.one")),
              "/groups/group.one");
    // Without an identifier: nothing, and the earlier one stays.
    EXPECT_EQ(pathOf(CVNPushFileUtility::appGroupURLWithAppGroup({})), "nothing");
    EXPECT_EQ(pathOf(CVNPushFileUtility::appGroupURL()), "/groups/group.one");
    EXPECT_EQ(pathOf(CVNPushFileUtility::appGroupURLWithAppGroup("group.unknown")), "/documents");
    EXPECT_EQ(pathOf(CVNPushFileUtility::appGroupURL()), "/documents");
}

TEST_F(PushFileUtilityTest, SavedAttachmentsReplaceThoseOfTheSameName) {
    memory_.files.addAppGroup("group.one");
    CVNPushFileUtility::appGroupURLWithAppGroup("group.one");
    const std::string folder = "/groups/group.one/CVN-Notification-Media";
    const URL first = CVNPushFileUtility::saveAttachment(downloaded("/tmp/a/photo.jpg", "old"));
    EXPECT_EQ(first.path(), folder + "/photo.jpg");
    const auto newer = downloaded("/tmp/b/photo.jpg", "new");
    EXPECT_EQ(CVNPushFileUtility::saveAttachment(newer), first);
    EXPECT_EQ(contentsOf(first), "new");
    EXPECT_EQ(contentsOf(newer.url), "new");

    // One that is there already stays as it is.
    EXPECT_EQ(CVNPushFileUtility::saveAttachment({"", first}), first);
    EXPECT_EQ(contentsOf(first), "new");

    // The name is the file's, escapes and all.
    const auto odd = downloaded("/tmp/c/a%2F..%2Fb c.png", "odd");
    EXPECT_EQ(CVNPushFileUtility::saveAttachment(odd).path(), folder + "/a%2F..%2Fb c.png");

    // When the new file can't be copied, the old one does not stand in for it.
    memory_.files.removeItem(newer.url.path());
    EXPECT_EQ(CVNPushFileUtility::saveAttachment(newer), first);
    EXPECT_EQ(contentsOf(first), "nothing");
}

TEST_F(PushFileUtilityTest, SaysWhyAFolderCouldNotBeMade) {
    CVNPushFileUtility::createDirectory("inner", "/documents");
    EXPECT_TRUE(memory_.files.isDirectory("/documents/inner"));
    // A file of the name counts as present.
    memory_.files.write("/documents/file", "");
    CVNPushFileUtility::createDirectory("file", "/documents");
    EXPECT_FALSE(memory_.logSink.contains("Create directory error"));
    CVNPushFileUtility::createDirectory("inner", "/documents/missing");
    EXPECT_TRUE(memory_.logSink.contains("Create directory error: "));
    EXPECT_TRUE(memory_.logSink.contains("+[CVNPushFileUtility createDirectory:atFilePath:]"));
}

TEST_F(PushFileUtilityTest, RemovesByTheTextOfAURL) {
    memory_.files.write("/documents/a b.png", "");
    memory_.files.write("/documents/plain.png", "");
    EXPECT_FALSE(CVNPushFileUtility::removeItemAtPath("/documents/a b.png"));  // no URL
    EXPECT_TRUE(CVNPushFileUtility::removeItemAtPath("file:///documents/a%20b.png"));
    EXPECT_TRUE(CVNPushFileUtility::removeItemAtPath("/documents/plain.png"));
    EXPECT_FALSE(CVNPushFileUtility::removeItemAtPath("/documents/plain.png"));
    EXPECT_FALSE(CVNPushFileUtility::removeItemAtPath({}));
    EXPECT_TRUE(memory_.files.paths().empty());
    EXPECT_THROW(CVNPushFileUtility::removeItemAtPath(Value(7)), foundation::Exception);
}

TEST(PushFileUtility, TrustsOnlyWhatReallyLiesInTheMediaFolder) {
    namespace fs = std::filesystem;
    std::string pattern = fs::temp_directory_path() / "mediaXXXXXX";
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    const fs::path root = pattern;
    const fs::path folder = root / "group/CVN-Notification-Media";
    fs::create_directories(folder / "inner");
    fs::create_directories(root / "group/CVN-Notification-Media-2");
    for (const char* file :
         {"group/CVN-Notification-Media/own.jpg", "group/CVN-Notification-Media/inner/own.jpg",
          "group/CVN-Notification-Media/with space.jpg", "group/CVN-Notification-Media-2/near.jpg",
          "group/store.sqlite", "secret.jpg"})
        std::ofstream(root / file) << "x";
    fs::create_symlink(root / "secret.jpg", folder / "link.jpg");
    fs::create_directory_symlink(root, folder / "out");
    fs::create_directory_symlink(folder, root / "alias");

    auto& memory = *new MemoryPlatform;
    auto& files = *new PosixFiles(
        [&](std::string_view) { return std::optional((root / "group").string()); }, std::nullopt);
    platform::Platform ports = memory.platform();
    ports.files = &files;
    platform::install(ports);
    CVNPushFileUtility::appGroupURLWithAppGroup("group.one");

    const std::string in = folder.string();
    const std::pair<std::string, bool> cases[] = {
        {in + "/own.jpg", true},
        {in + "/inner/own.jpg", true},
        {in + "/with space.jpg", true},
        {"file://" + in + "/with%20space.jpg", true},
        {(root / "alias/own.jpg").string(), true},
        {in, false},
        {in + "/", false},
        {in + "/missing.jpg", false},
        {in + "/link.jpg", false},
        {in + "/out/secret.jpg", false},
        {in + "/../store.sqlite", false},
        {in + "/inner/../../store.sqlite", false},
        {"file://" + in + "/%2e%2e/store.sqlite", false},
        {in + "-2/near.jpg", false},
        {(root / "secret.jpg").string(), false},
        {"own.jpg", false},
        {"http://example.com" + in + "/own.jpg", false},
        {"", false},
    };
    for (const auto& [path, expected] : cases)
        EXPECT_EQ(CVNPushFileUtility::isInMediaFolder(path), expected) << path;
    fs::remove_all(root);
}

}  // namespace
}  // namespace tavrolin

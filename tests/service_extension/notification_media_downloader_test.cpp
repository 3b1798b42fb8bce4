#include "tavrolin/service_extension/notification_media_downloader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "adapters/memory/memory_platform.h"
#include "tavrolin/foundation/operation_queue.h"
#include "tests/support/pictures.h"

namespace tavrolin {
namespace {

using adapters::memory::MemoryPlatform;
using adapters::memory::MemoryURLSession;
using foundation::URL;
using foundation::Value;
using platform::Attachment;
using testing::EndsWith;
using testing::SizeIs;

class MediaDownloaderTest : public testing::Test {
protected:
    MediaDownloaderTest() { platform::install(memory_.platform()); }

    // What the completion got; fails unless it was called exactly once.
    std::optional<Attachment> download(const Value& url) {
        int calls = 0;
        std::optional<Attachment> result;
        CVNNotificationMediaDownloader::downloadAndSaveMediaFromURLString(
            url, [&](std::optional<Attachment> attachment) {
                ++calls;
                result = std::move(attachment);
            });
        memory_.dispatch.runUntilIdle();
        EXPECT_EQ(calls, 1) << url.description();
        return result;
    }

    MemoryPlatform& memory_ = *new MemoryPlatform;
    const std::string picture_ = test::png(2, 2);
};

TEST_F(MediaDownloaderTest, FetchesWithoutTheQueryAndNamesTheFileAfterItsMedia) {
    memory_.urlSession.setAnswer("https://example.com/a/b.png", {.body = picture_});
    const auto attachment = download("https://example.com/a/b.png?signature=abc&size=2");
    ASSERT_TRUE(attachment);
    EXPECT_EQ(attachment->identifier, "");
    const std::string path = attachment->url.path();
    EXPECT_THAT(path, EndsWith("b.png"));
    EXPECT_THAT(path, testing::Not(EndsWith("/b.png")));  // after the temporary name
    EXPECT_TRUE(memory_.files.fileExists(path));
    // Both lines name the place before the move.
    const std::string temporary =
        URL::fileURLWithPath(path.substr(0, path.size() - 5)).absoluteString();
    EXPECT_TRUE(memory_.logSink.contains("file location " + temporary + " "));
    EXPECT_TRUE(memory_.logSink.contains("typedAttachmentURL " + temporary + " "));
}

TEST_F(MediaDownloaderTest, LeavesNothingBehindWithoutAnAttachment) {
    memory_.urlSession.setDefaultAnswer({.body = picture_});
    memory_.urlSession.setAnswer("https://example.com/missing.png", {.statusCode = 404});
    const std::string longName(300, 'n');
    const Value cases[] = {
        "https://example.com/picture",      // no kind
        "https://example.com/page.html",    // one that is never attached
        "https://example.com/photo.jpg",    // other bytes than its kind's
        "https://example.com/missing.png",  // not there
        "https://example.com/a/..",         // no names
        "https://example.com/",
        "https://example.com/%2e%2e%2fx",
        Value("https://example.com/" + longName),
        "///",
    };
    for (const Value& url : cases) {
        EXPECT_EQ(download(url), std::nullopt) << url.description();
        EXPECT_THAT(memory_.files.paths(), SizeIs(0)) << url.description();
    }
}

TEST_F(MediaDownloaderTest, KeepsToTheFolderWhateverTheNameSays) {
    memory_.urlSession.setDefaultAnswer({.body = picture_});
    // Escapes are escaped once more and never read: the slashes stay part of the name.
    const auto attachment = download("https://example.com/..%2F..%2Fvictim.png");
    ASSERT_TRUE(attachment);
    EXPECT_THAT(attachment->url.path(), EndsWith("..%252F..%252Fvictim.png"));
    EXPECT_EQ(memory_.urlSession.requests().back().url.absoluteString(),
              "https://example.com/..%252F..%252Fvictim.png");
}

TEST_F(MediaDownloaderTest, AsksForNothingWithoutAURL) {
    for (const Value& url : {Value(), Value("")})
        EXPECT_EQ(download(url), std::nullopt);
    EXPECT_FALSE(memory_.logSink.contains("Could not request"));
    for (const Value& url :
         {Value::null(), Value(7), Value::array({"https://example.com/a.png"})}) {
        memory_.logSink.clear();
        EXPECT_EQ(download(url), std::nullopt) << url.description();
        EXPECT_TRUE(memory_.logSink.contains("Could not request due to exception = "));
    }
    EXPECT_THAT(memory_.urlSession.requests(), SizeIs(0));
}

TEST_F(MediaDownloaderTest, UsesTheGivenQueue) {
    memory_.urlSession.setDefaultAnswer({.body = picture_});
    int started = 0;
    foundation::OperationQueue queue([&](std::function<void()> block) {
        ++started;
        block();
    });
    bool done = false;
    CVNNotificationMediaDownloader::downloadAndSaveMediaFromURLString(
        "https://example.com/a.png", &queue,
        [&](const std::optional<Attachment>& attachment) { done = attachment.has_value(); });
    memory_.dispatch.runUntilIdle();
    EXPECT_EQ(started, 1);
    EXPECT_TRUE(done);
}

TEST_F(MediaDownloaderTest, SavingIsSilentWhenSomethingIsMissingOrRaises) {
    int calls = 0;
    const auto count = [&](const std::optional<Attachment>&) { ++calls; };
    const URL location = URL::fileURLWithPath("/tmp/dl_1.tmp");
    memory_.files.write("/tmp/dl_1.tmp", picture_);
    using Downloader = CVNNotificationMediaDownloader;
    Downloader::savetheMediaFileWithURL({}, location, count);
    Downloader::savetheMediaFileWithURL("https://example.com/a.png", std::nullopt, count);
    Downloader::savetheMediaFileWithURL("https://example.com/a.png", location, nullptr);
    EXPECT_THAT(memory_.logSink.lines(), SizeIs(0));
    Downloader::savetheMediaFileWithURL(Value(7), location, count);
    EXPECT_TRUE(memory_.logSink.contains("Could not request due to exception = "));
    EXPECT_EQ(calls, 0);
    EXPECT_TRUE(memory_.files.fileExists("/tmp/dl_1.tmp"));

    Downloader::savetheMediaFileWithURL("https://example.com/photo.png", location, count);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(memory_.files.paths(), std::vector<std::string>{"/tmp/dl_1.tmpphoto.png"});
}

TEST(RemoveQueryParameters, EncodesAndCutsTheQuery) {
    const std::pair<Value, Value> cases[] = {
        {"https://example.com/b.png", "https://example.com/b.png"},
        {"https://example.com/b.png?", "https://example.com/b.png"},
        {"https://example.com/b.png?x=1&y=2", "https://example.com/b.png"},
        {"https://example.com/a b.png?x", "https://example.com/a%20b.png"},
        {"https://example.com/a%20b.png", "https://example.com/a%2520b.png"},
        {"https://example.com/é.png", "https://example.com/%C3%A9.png"},
        {"https://example.com/a.png#part", "https://example.com/a.png%23part"},
        {"", {}},
        {{}, {}},
    };
    for (const auto& [url, expected] : cases) {
        const Value cut = CVNNotificationMediaDownloader::removeQueryParametersFromURL(url);
        EXPECT_EQ(cut, expected) << url.description();
    }
}

}  // namespace
}  // namespace tavrolin

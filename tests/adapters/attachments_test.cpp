#include "adapters/media/attachments.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace tavrolin::adapters::media {
namespace {

using foundation::URL;
using testing::HasSubstr;

constexpr std::uintmax_t kMegabyte = 1024 * 1024;

const std::string kJPEG = "\xFF\xD8\xFF\xE0";
const std::string kPNG = "\x89PNG\r\n\x1A\n";
const std::string kGIF = "GIF89a";
const std::string kAIFF(
    "FORM\0\0\0\x10"
    "AIFF",
    12);
const std::string kWAV("RIFF\x10\0\0\0WAVE", 12);
const std::string kAVI("RIFF\x10\0\0\0AVI ", 12);
const std::string kMP4(
    "\0\0\0\x18"
    "ftypisom",
    12);
const std::string kMoov("\0\0\0\x18moov\0\0\0\0", 12);
const std::string kMPEG("\0\0\1\xBA\x44\0", 6);

class AttachmentsTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = std::filesystem::temp_directory_path() / "attachmentsXXXXXX";
        ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
        folder_ = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    URL file(const std::string& name, const std::string& head, std::uintmax_t size = 0) {
        const std::filesystem::path path = folder_ / name;
        std::ofstream(path, std::ios::binary) << head;
        // The rest is a hole: nothing is written for it.
        if (size > 0) std::filesystem::resize_file(path, size);
        return URL::fileURLWithPath(path.string());
    }
    std::int64_t codeOf(const URL& url) {
        const auto made = attachments_.attachment("", url);
        return made ? 0 : made.error().code;
    }

    std::filesystem::path folder_;
    Attachments attachments_;
};

TEST_F(AttachmentsTest, FirstBytesMustAgreeWithTheExtension) {
    struct Case {
        const char* name;
        const std::string& head;
        bool accepted;
    };
    const std::string id3 = "ID3\x04";
    const std::string frame = "\xFF\xFB\x90\x64";
    const std::string aac = "\xFF\xF1\x50\x80";  // another audio stream with nearly the same mark
    const std::string text = "<html><body>Not found</body></html>";
    const Case cases[] = {
        {"a.jpg", kJPEG, true},  {"a.JPEG", kJPEG, true}, {"a.png", kPNG, true},
        {"a.gif", kGIF, true},   {"a.aiff", kAIFF, true}, {"a.aif", kAIFF, true},
        {"a.wav", kWAV, true},   {"a.mp3", id3, true},    {"b.mp3", frame, true},
        {"a.m4a", kMP4, true},   {"a.mpg", kMPEG, true},  {"a.mpeg", kMPEG, true},
        {"a.mp4", kMP4, true},   {"a.m4v", kMP4, true},   {"a.avi", kAVI, true},
        {"a.mov", kMP4, true},   {"b.mov", kMoov, true},  {"b.jpg", kPNG, false},
        {"b.png", kJPEG, false}, {"c.jpg", text, false},  {"c.mp3", aac, false},
        {"b.wav", kAVI, false},  {"b.avi", kWAV, false},  {"b.mp4", kMoov, false},
        {"b.aiff", kWAV, false}, {"b.mpg", kMP4, false},  {"b.gif", text, false},
    };
    for (const Case& c : cases) {
        const URL url = file(c.name, c.head);
        const std::int64_t wrong = Attachments::wrongContent;
        EXPECT_EQ(codeOf(url), c.accepted ? 0 : wrong) << c.name;
    }
    // Cut short in the middle of the mark.
    EXPECT_EQ(codeOf(file("d.wav", kWAV.substr(0, 10))), Attachments::wrongContent);
    EXPECT_EQ(codeOf(file("d.jpg", kJPEG.substr(0, 2))), Attachments::wrongContent);
}

TEST_F(AttachmentsTest, AnAttachmentCarriesItsIdentifierAndURL) {
    const URL url = file("dl 1.tmpphoto.jpg", kJPEG);
    const auto made = attachments_.attachment("picture", url);
    ASSERT_TRUE(made);
    EXPECT_EQ(*made, (platform::Attachment{"picture", url}));
}

TEST_F(AttachmentsTest, EachKindHasItsLimit) {
    struct Case {
        const char* name;
        const std::string& head;
        std::uintmax_t megabytes;
    };
    const Case cases[] = {{"a.jpg", kJPEG, 10}, {"a.wav", kWAV, 5}, {"a.mp4", kMP4, 50}};
    for (const Case& c : cases) {
        EXPECT_EQ(codeOf(file(c.name, c.head, c.megabytes * kMegabyte)), 0) << c.name;
        EXPECT_EQ(codeOf(file(c.name, c.head, c.megabytes * kMegabyte + 1)),
                  Attachments::invalidSize)
            << c.name;
    }
    EXPECT_EQ(codeOf(file("empty.gif", "")), Attachments::invalidSize);
}

TEST_F(AttachmentsTest, OnlyRegularFilesOfListedKindsAreTaken) {
    EXPECT_EQ(codeOf(file("photo", kJPEG)), Attachments::unrecognizedType);
    EXPECT_EQ(codeOf(file("photo.webp", kJPEG)), Attachments::unrecognizedType);
    EXPECT_EQ(codeOf(file("photo.tmp..", kJPEG)), Attachments::unrecognizedType);
    EXPECT_EQ(codeOf(URL::fileURLWithPath((folder_ / "missing.jpg").string())),
              Attachments::unreadable);
    EXPECT_EQ(codeOf(*URL::withString("http://example.com/a.jpg")), Attachments::invalidURL);

    file("real.jpg", kJPEG);
    std::filesystem::create_symlink(folder_ / "real.jpg", folder_ / "link.jpg");
    std::filesystem::create_directory(folder_ / "folder.jpg");
    ASSERT_EQ(::mkfifo((folder_ / "pipe.jpg").c_str(), 0600), 0);
    for (const char* name : {"link.jpg", "folder.jpg", "pipe.jpg"}) {
        EXPECT_EQ(codeOf(URL::fileURLWithPath((folder_ / name).string())), Attachments::unreadable)
            << name;
    }
}

TEST_F(AttachmentsTest, ErrorsNameTheFileAndTheReason) {
    const auto large = attachments_.attachment("", file("large.png", kPNG, 10 * kMegabyte + 1));
    ASSERT_FALSE(large);
    EXPECT_EQ(large.error().domain, Attachments::kErrorDomain);
    EXPECT_THAT(large.error().localizedDescription, HasSubstr("large.png"));
    EXPECT_THAT(large.error().localizedDescription, HasSubstr("10485760"));
}

TEST(MaximumUsefulSize, FollowsTheExtensionOfTheURLsPath) {
    const std::pair<const char*, std::uint64_t> cases[] = {
        {"http://example.com/a/photo.JPG", 10 * kMegabyte},
        {"http://example.com/photo.gif?size=x.mp4", 10 * kMegabyte},
        {"https://example.com/song.mp3", 5 * kMegabyte},
        {"https://example.com/film.mov#t=3", 50 * kMegabyte},
        {"https://example.com/page.html", 0},
        {"https://example.com/photo", 0},
        {"https://example.com/", 0},
        {"https://example.com/..", 0},
    };
    for (const auto& [text, size] : cases) {
        EXPECT_EQ(maximumUsefulSize(*URL::withString(text)), size) << text;
    }
}

}  // namespace
}  // namespace tavrolin::adapters::media

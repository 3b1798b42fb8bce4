#include "adapters/media/attachments.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>

namespace tavrolin::adapters::media {

using foundation::Error;
using foundation::Expected;
using foundation::URL;

namespace {

constexpr std::uint64_t kMegabyte = 1024 * 1024;
constexpr std::uint64_t kImageLimit = 10 * kMegabyte;
constexpr std::uint64_t kAudioLimit = 5 * kMegabyte;
constexpr std::uint64_t kVideoLimit = 50 * kMegabyte;

// --- First bytes --------------------------------------------------------------------------------

bool isJPEG(std::string_view head) {
    return head.starts_with("\xFF\xD8\xFF");
}

bool isPNG(std::string_view head) {
    return head.starts_with("\x89PNG\r\n\x1A\n");
}

bool isGIF(std::string_view head) {
    return head.starts_with("GIF87a") || head.starts_with("GIF89a");
}

// A chunk container: four letters, a length, and the letters of what it holds.
bool isContainer(std::string_view head, std::string_view container, std::string_view content) {
    return head.starts_with(container) && head.size() >= 12 && head.substr(8, 4) == content;
}

bool isAIFF(std::string_view head) {
    return isContainer(head, "FORM", "AIFF") || isContainer(head, "FORM", "AIFC");
}

bool isWAV(std::string_view head) {
    return isContainer(head, "RIFF", "WAVE");
}

bool isAVI(std::string_view head) {
    return isContainer(head, "RIFF", "AVI ");
}

// A tag, or the header of a frame: eleven set bits, then no reserved version, layer, bit rate or
// sample rate.
bool isMP3(std::string_view head) {
    if (head.starts_with("ID3")) return true;
    if (head.size() < 4) return false;
    const auto byte = [head](std::size_t i) { return static_cast<unsigned char>(head[i]); };
    return byte(0) == 0xFF && (byte(1) & 0xE0U) == 0xE0 && (byte(1) & 0x18U) != 0x08 &&
           (byte(1) & 0x06U) != 0 && (byte(2) & 0xF0U) != 0xF0 && (byte(2) & 0x0CU) != 0x0C;
}

std::string_view firstAtom(std::string_view head) {
    return head.size() < 8 ? std::string_view() : head.substr(4, 4);
}

bool isMPEG4(std::string_view head) {
    return firstAtom(head) == "ftyp";
}

bool isQuickTime(std::string_view head) {
    static constexpr std::array<std::string_view, 6> kAtoms = {"ftyp", "moov", "mdat",
                                                               "wide", "free", "skip"};
    return std::find(kAtoms.begin(), kAtoms.end(), firstAtom(head)) != kAtoms.end();
}

// A program stream's pack, or the sequence header of a bare video stream.
bool isMPEG(std::string_view head) {
    return head.starts_with(std::string_view("\0\0\1\xBA", 4)) ||
           head.starts_with(std::string_view("\0\0\1\xB3", 4));
}

// --- Kinds --------------------------------------------------------------------------------------

struct Kind {
    std::string_view extension;
    std::uint64_t limit;
    bool (*agrees)(std::string_view head);
};

constexpr std::array<Kind, 15> kKinds = {{
    {"jpg", kImageLimit, isJPEG},
    {"jpeg", kImageLimit, isJPEG},
    {"png", kImageLimit, isPNG},
    {"gif", kImageLimit, isGIF},
    {"aiff", kAudioLimit, isAIFF},
    {"aif", kAudioLimit, isAIFF},
    {"wav", kAudioLimit, isWAV},
    {"mp3", kAudioLimit, isMP3},
    {"m4a", kAudioLimit, isMPEG4},
    {"mpg", kVideoLimit, isMPEG},
    {"mpeg", kVideoLimit, isMPEG},
    {"mp4", kVideoLimit, isMPEG4},
    {"m4v", kVideoLimit, isMPEG4},
    {"avi", kVideoLimit, isAVI},
    {"mov", kVideoLimit, isQuickTime},
}};

const Kind* kindOf(std::string_view extension) {
    const auto sameLetter = [](char a, char b) {
        return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
    };
    const auto* kind = std::find_if(kKinds.begin(), kKinds.end(), [&](const Kind& candidate) {
        return std::equal(candidate.extension.begin(), candidate.extension.end(), extension.begin(),
                          extension.end(), sameLetter);
    });
    return kind == kKinds.end() ? nullptr : kind;
}

Error failure(Attachments::ErrorCode code, std::string why) {
    return {std::string(Attachments::kErrorDomain), code, std::move(why)};
}

Error systemFailure(const std::string& path) {
    return failure(Attachments::unreadable,
                   "\"" + path + "\" can't be attached: " + std::strerror(errno));
}

class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

}  // namespace

Expected<platform::Attachment> Attachments::attachment(std::string_view identifier,
                                                       const URL& fileURL) {
    const std::string path = fileURL.path();
    if (!fileURL.isFileURL() || path.find('\0') != std::string::npos) {
        return failure(invalidURL, "\"" + fileURL.absoluteString() + "\" is no file's URL.");
    }
    const std::string_view extension = foundation::pathExtension(path);
    const Kind* kind = kindOf(extension);
    if (kind == nullptr) {
        return failure(unrecognizedType, "Files of the kind \"" + std::string(extension) +
                                             "\" can't be attached: \"" + path + "\"");
    }
    // Opening must not follow a link, nor wait for the other end of a pipe.
    const Descriptor file(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (file.number() < 0 || ::fstat(file.number(), &status) != 0) return systemFailure(path);
    if (!S_ISREG(status.st_mode)) {
        return failure(unreadable, "\"" + path + "\" can't be attached: it is no regular file.");
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (size == 0 || size > kind->limit) {
        return failure(invalidSize, "\"" + path + "\" has " + std::to_string(size) +
                                        " bytes; files of its kind may have 1 to " +
                                        std::to_string(kind->limit) + ".");
    }
    std::array<char, 16> head{};
    const ssize_t got = ::pread(file.number(), head.data(), head.size(), 0);
    if (got < 0) return systemFailure(path);
    if (!kind->agrees({head.data(), static_cast<std::size_t>(got)})) {
        return failure(wrongContent, "\"" + path + "\" does not hold what its extension \"" +
                                         std::string(extension) + "\" says.");
    }
    return platform::Attachment{std::string(identifier), fileURL};
}

std::uint64_t maximumUsefulSize(const URL& mediaURL) {
    const std::string_view text = mediaURL.absoluteString();
    const Kind* kind = kindOf(foundation::pathExtension(text.substr(0, text.find_first_of("?#"))));
    return kind == nullptr ? 0 : kind->limit;
}

}  // namespace tavrolin::adapters::media

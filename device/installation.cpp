#include "device/installation.h"

#include <filesystem>
#include <system_error>

namespace tavrolin::device {

namespace fs = std::filesystem;

namespace {

// Programs lie at most so many folders below the prefix (bin, libexec/tavrolin).
constexpr int kDeepest = 2;

const fs::path& programFolder() {
    static const fs::path folder = [] {
        std::error_code error;
        return fs::read_symlink("/proc/self/exe", error).parent_path();
    }();
    return folder;
}

std::string find(const char* beside, const char* belowPrefix) {
    std::error_code error;
    if (fs::path path = programFolder() / beside; fs::exists(path, error)) return path.string();
    fs::path prefix = programFolder();
    for (int i = 0; i < kDeepest; ++i) {
        prefix = prefix.parent_path();
        if (fs::path path = prefix / belowPrefix; fs::exists(path, error)) return path.string();
    }
    return {};
}

}  // namespace

std::string contentExtensionProgram() {
    return find("tavrolin-content-extension",
                TAVROLIN_INSTALL_LIBEXECDIR "/tavrolin/tavrolin-content-extension");
}

std::string libraryResources() {
    return find("resources", TAVROLIN_INSTALL_DATADIR "/tavrolin/resources");
}

std::string sampleAppPictures() {
    return find("sample-app", TAVROLIN_INSTALL_DATADIR "/tavrolin/sample-app");
}

}  // namespace tavrolin::device

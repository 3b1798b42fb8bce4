#include "device/device_folder.h"

#include <sys/random.h>
#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

#include "device/device_error.h"
#include "device/file_lock.h"
#include "device/installation.h"

namespace tavrolin::device {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kInfoPlist = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
    <key>CFBundleIconFile</key>
    <string>AppIcon</string>
    <key>CFBundleIdentifier</key>
    <string>com.corvalen.sample</string>
    <key>CFBundleName</key>
    <string>Sample</string>
    <key>CFBundleURLTypes</key>
    <array>
        <dict>
            <key>CFBundleURLSchemes</key>
            <array>
                <string>sampleapp</string>
            </array>
        </dict>
    </array>
    <key>CorvalenKeys</key>
    <dict>
        <key>CorvalenAppGroup</key>
        <string>group.corvalen.sample</string>
        <key>CorvalenNotificationIcon</key>
        <string>AppIcon</string>
    </dict>
</dict>
</plist>
)";

constexpr std::string_view kConfigPlist = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
    <key>ActionButtons_v2</key>
    <dict>
        <key>CorvalenOffer</key>
        <dict>
            <key>actionItems</key>
            <array>
                <dict>
                    <key>title</key>
                    <string>Copy code</string>
                    <key>type</key>
                    <string>button</string>
                    <key>option</key>
                    <string>4</string>
                </dict>
                <dict>
                    <key>title</key>
                    <string>Later</string>
                    <key>type</key>
                    <string>button</string>
                    <key>option</key>
                    <string>4</string>
                </dict>
                <dict>
                    <key>title</key>
                    <string>Reply</string>
                    <key>placeholder</key>
                    <string>Reply here...</string>
                    <key>type</key>
                    <string>text</string>
                    <key>option</key>
                    <string>4</string>
                </dict>
            </array>
        </dict>
    </dict>
</dict>
</plist>
)";

[[noreturn]] void fail(const std::string& what, const std::string& path,
                       const std::string& reason) {
    throw DeviceError("can't " + what + " " + path + ": " + reason +
                      "; choose another folder with --device");
}

void makePrivate(const std::string& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) fail("make the folder", folder, error.message());
    // The folder may have been made by someone with another umask.
    if (chmod(folder.c_str(), 0700) != 0) {
        fail("protect the folder", folder, std::generic_category().message(errno));
    }
}

// Complete or not there at all: another command may read it meanwhile.
void writeIfMissing(const std::string& path, std::string_view text) {
    std::error_code error;
    if (fs::exists(path, error)) return;
    const std::string temporary = path + "." + randomIdentifier();
    std::ofstream file(temporary, std::ios::binary);
    file << text;
    file.close();
    if (!file) fail("write", path, std::generic_category().message(errno));
    chmod(temporary.c_str(), 0600);
    fs::rename(temporary, path, error);
    if (error) fail("write", path, error.message());
}

// The pictures that came with the sample app, as they stand beside the program.
void copyPictures(const fs::path& from, const fs::path& to) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(from, error)) {
        if (!entry.is_regular_file(error)) continue;
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(file), {});
        if (file) writeIfMissing((to / entry.path().filename()).string(), bytes);
    }
}

}  // namespace

DeviceFolder::DeviceFolder(std::string_view root) {
    std::error_code error;
    root_ = fs::absolute(fs::path(root), error).lexically_normal().string();
    if (error || root.empty()) throw DeviceError("the device's folder has no usable name");
    while (root_.size() > 1 && root_.ends_with('/'))
        root_.pop_back();
}

void DeviceFolder::make() const {
    std::error_code error;
    if (fs::exists(mark(), error)) return;
    if (error && error != std::errc::no_such_file_or_directory) {
        fail("look into", root_, error.message());
    }
    fs::create_directories(root_, error);
    if (error) fail("make the folder", root_, error.message());
    const FileLock alone(root_);  // several commands may make it at once
    refuseOtherFolders();
    fill();
}

// What is there stays, but for what tells that nothing is missing: that comes last.
void DeviceFolder::fill() const {
    makePrivate(root_);
    for (const std::string& folder :
         {system(), attachments(), app(), root_ + "/groups", root_ + "/containers"}) {
        makePrivate(folder);
    }
    writeIfMissing(app() + "/Info.plist", kInfoPlist);
    writeIfMissing(app() + "/CorvalenConfig.plist", kConfigPlist);
    copyPictures(sampleAppPictures(), app());
    writeIfMissing(mark(), "");
}

// Nobody's folder of other things becomes a device, or is emptied as one. A device is one from its
// first step on, also when that was the last that its maker lived for.
void DeviceFolder::refuseOtherFolders() const {
    std::error_code error;
    if (!fs::exists(root_, error) || fs::is_empty(root_, error)) return;
    for (const std::string& own : {mark(), attachments(), stateFile()}) {
        if (fs::exists(own, error)) return;
    }
    const bool isOnlyBegun =
        std::distance(fs::directory_iterator(root_, error), fs::directory_iterator()) == 1 &&
        fs::is_directory(system(), error) && fs::is_empty(system(), error);
    if (isOnlyBegun) return;
    throw DeviceError(root_ +
                      " holds something else than a device and was left alone; choose "
                      "another folder with --device");
}

void DeviceFolder::reset() const {
    std::error_code error;
    if (fs::exists(root_, error)) {
        const FileLock alone(root_);
        refuseOtherFolders();
        // First what says that it is whole, last what says that it is a device.
        std::vector<fs::path> parts = {mark(), app(), root_ + "/groups", root_ + "/containers"};
        for (const char* folder : {"", "/attachments"}) {
            for (const auto& entry : fs::directory_iterator(system() + folder, error)) {
                if (entry.path() != attachments()) parts.push_back(entry.path());
            }
        }
        for (const fs::path& part : parts) {
            fs::remove_all(part, error);
            if (error) fail("empty", part.string(), error.message());
        }
    }
    make();
}

std::optional<std::string> DeviceFolder::group(std::string_view name) const {
    const bool isFolderName = !name.empty() && name.size() <= 200 && name != "." && name != ".." &&
                              name.find('/') == std::string_view::npos &&
                              name.find('\0') == std::string_view::npos;
    if (!isFolderName) return std::nullopt;
    return root_ + "/groups/" + std::string(name);
}

std::optional<std::string> DeviceFolder::groupPreferences(std::string_view name) const {
    auto path = group(name);
    if (path) *path += "/Library/Preferences";
    return path;
}

std::string DeviceFolder::container(std::string_view process) const {
    return root_ + "/containers/" + std::string(process);
}

std::string DeviceFolder::temporaryFolder(std::string_view process, std::string_view run) const {
    return container(process) + "/tmp/" + std::string(run);
}

std::string defaultDeviceFolder() {
    const auto variable = [](const char* name) -> std::string {
        const char* value = std::getenv(name);
        return value == nullptr ? "" : value;
    };
    if (const std::string device = variable("TAVROLIN_DEVICE"); !device.empty()) return device;
    if (const std::string state = variable("XDG_STATE_HOME"); !state.empty()) {
        return state + "/tavrolin/device";
    }
    const std::string home = variable("HOME");
    if (home.empty()) {
        throw DeviceError("there is no home folder to keep a device in; name one with --device");
    }
    return home + "/.local/state/tavrolin/device";
}

std::string randomIdentifier() {
    std::array<std::uint8_t, 16> bytes{};
    if (getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
        throw DeviceError("the system gives no random numbers");
    }
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += kDigits[bytes[i] >> 4U];
        text += kDigits[bytes[i] & 15U];
    }
    return text;
}

}  // namespace tavrolin::device

#include "adapters/plist/folder_bundles.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "adapters/plist/property_list.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::adapters::plist {

namespace fs = std::filesystem;

using foundation::Value;

namespace {

// More than any list that is taken; a larger file is not read further.
constexpr std::uintmax_t kLargestFile = std::uintmax_t{4} * 1024 * 1024 + 4;

foundation::Expected<Value> readFile(const std::string& path) {
    std::error_code error;
    if (!fs::is_regular_file(path, error)) {
        return foundation::Error{"PropertyListErrorDomain", 1, path + " is no file"};
    }
    if (fs::file_size(path, error) > kLargestFile || error) {
        return foundation::Error{"PropertyListErrorDomain", 2, path + " is too large"};
    }
    std::ifstream file(path, std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    if (!file) return foundation::Error{"PropertyListErrorDomain", 3, "can't read " + path};
    return readPropertyList(bytes);
}

}  // namespace

FolderBundle::FolderBundle(std::vector<std::string> folders) : folders_(std::move(folders)) {}

Value FolderBundle::infoDictionary() const {
    const std::string path =
        pathForResource("Info", "plist").value_or(folders_.front() + "/Info.plist");
    const auto info = readFile(path);
    if (!info) {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                     path + ": " + info.error().localizedDescription);
    }
    if (!info->isDictionary()) {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                     path + " holds no dictionary");
    }
    return *info;
}

std::string FolderBundle::identifier() const {
    try {
        return std::string(foundation::stringOrEmpty(infoDictionary()["CFBundleIdentifier"]));
    } catch (const foundation::Exception&) {
        return {};
    }
}

std::optional<std::string> FolderBundle::pathForResource(std::string_view name,
                                                         std::string_view type) const {
    // Resources lie in the folder itself, whatever a name says.
    const bool isPlain =
        !name.empty() && name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos;
    if (!isPlain) return std::nullopt;
    std::string file(name);
    if (!type.empty()) file.append(1, '.').append(type);
    std::error_code error;
    for (const std::string& folder : folders_) {
        std::string path = folder;
        path.append(1, '/').append(file);
        if (fs::exists(path, error)) return path;
    }
    return std::nullopt;
}

FolderBundles::FolderBundles(std::string mainFolder, std::vector<std::string> libraryFolders)
    : main_(std::vector{std::move(mainFolder)}), library_(std::move(libraryFolders)) {}

platform::Bundle* FolderBundles::withIdentifier(std::string_view identifier) {
    // The library first: without an Info dictionary it has no identifier, as an app may have none.
    if (library_.identifier() == identifier) return &library_;
    if (main_.identifier() == identifier) return &main_;
    return nullptr;
}

Value FolderBundles::dictionaryWithContentsOfFile(std::string_view path) {
    const auto value = readFile(std::string(path));
    return value && value->isDictionary() ? *value : Value();
}

}  // namespace tavrolin::adapters::plist

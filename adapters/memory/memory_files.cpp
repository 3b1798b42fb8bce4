#include "adapters/memory/memory_files.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <system_error>

namespace tavrolin::adapters::memory {

using foundation::Error;
using foundation::Failure;

namespace {

constexpr std::string_view kDocuments = "/documents";

Error errorWithCode(int code, std::string_view path) {
    return {"Files", code, std::string(path) + ": " + std::generic_category().message(code)};
}

// The path without dots and spare slashes; empty for one that is not absolute or holds a NUL.
std::string normalised(std::string_view path) {
    if (!path.starts_with('/') || path.find('\0') != std::string_view::npos) return {};
    std::string result;
    while (!path.empty()) {
        path.remove_prefix(1);
        const std::string_view component = path.substr(0, path.find('/'));
        path.remove_prefix(component.size());
        if (component == "..") {
            result.resize(result.empty() ? 0 : result.rfind('/'));
        } else if (!component.empty() && component != ".") {
            result.append("/").append(component);
        }
    }
    return result.empty() ? "/" : result;
}

std::string_view parentOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 ? "/" : path.substr(0, slash);
}

bool isInside(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) &&
           (folder == "/" || path[folder.size()] == '/');
}

std::optional<std::vector<std::uint8_t>> contentsOnDisk(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return std::nullopt;
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {});
}

}  // namespace

MemoryFiles::MemoryFiles() {
    nodes_["/"].isDirectory = true;
    makeFolders(kDocuments);
}

void MemoryFiles::makeFolders(std::string_view path) {
    if (path != "/") makeFolders(parentOf(path));
    nodes_[std::string(path)].isDirectory = true;
}

void MemoryFiles::addAppGroup(std::string_view identifier) {
    const std::lock_guard lock(mutex_);
    std::string folder = "/groups/" + std::string(identifier);
    std::replace(folder.begin() + 8, folder.end(), '/', '_');
    groups_.insert_or_assign(std::string(identifier), folder);
    makeFolders(folder);
}

void MemoryFiles::write(std::string_view path, std::string_view contents) {
    const std::lock_guard lock(mutex_);
    const std::string place = normalised(path);
    if (place.empty() || place == "/") return;
    makeFolders(parentOf(place));
    nodes_[place].bytes.assign(contents.begin(), contents.end());
}

std::vector<std::string> MemoryFiles::paths() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> result;
    for (const auto& [path, node] : nodes_) {
        if (!node.isDirectory) result.push_back(path);
    }
    return result;
}

const MemoryFiles::Node* MemoryFiles::find(std::string_view path) const {
    const auto found = nodes_.find(normalised(path));
    return found == nodes_.end() ? nullptr : &found->second;
}

bool MemoryFiles::fileExists(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    return find(path) != nullptr;
}

bool MemoryFiles::isDirectory(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const Node* node = find(path);
    return node != nullptr && node->isDirectory;
}

bool MemoryFiles::isReadableFile(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const Node* node = find(path);
    return node != nullptr && !node->isDirectory;
}

std::optional<std::string> MemoryFiles::resolved(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    if (find(path) == nullptr) return std::nullopt;
    return normalised(path);
}

// Can something new be made here?
Failure MemoryFiles::checkPlace(std::string_view path) const {
    if (path.empty()) return errorWithCode(EINVAL, path);
    if (find(path) != nullptr) return errorWithCode(EEXIST, path);
    const Node* parent = find(parentOf(path));
    if (parent == nullptr) return errorWithCode(ENOENT, parentOf(path));
    if (!parent->isDirectory) return errorWithCode(ENOTDIR, parentOf(path));
    return std::nullopt;
}

Failure MemoryFiles::moveItem(std::string_view from, std::string_view to) {
    const std::lock_guard lock(mutex_);
    const std::string source = normalised(from);
    const std::string target = normalised(to);
    if (source.empty() || isInside(target, source)) return errorWithCode(EINVAL, from);
    const bool isOnDisk = find(source) == nullptr;
    auto bytes = isOnDisk ? contentsOnDisk(source) : std::nullopt;
    // A file's own folder exists where the file does: a download is renamed in its place.
    if (bytes && parentOf(source) == parentOf(target) && find(parentOf(target)) == nullptr)
        makeFolders(parentOf(target));
    if (Failure failure = checkPlace(target)) return failure;
    if (isOnDisk) {
        if (!bytes) return errorWithCode(ENOENT, from);
        nodes_[target].bytes = std::move(*bytes);
        std::remove(source.c_str());
        return std::nullopt;
    }
    Tree moved;
    for (auto each = nodes_.lower_bound(source); each != nodes_.end();) {
        if (!each->first.starts_with(source)) break;
        if (each->first == source || isInside(each->first, source)) {
            moved[target + each->first.substr(source.size())] = std::move(each->second);
            each = nodes_.erase(each);
        } else {
            ++each;
        }
    }
    nodes_.merge(moved);
    return std::nullopt;
}

Failure MemoryFiles::removeItem(std::string_view path) {
    const std::lock_guard lock(mutex_);
    const std::string place = normalised(path);
    if (place == "/") return errorWithCode(EPERM, path);
    if (find(place) == nullptr) return errorWithCode(ENOENT, path);
    std::erase_if(nodes_, [&](const auto& each) {
        return each.first == place || isInside(each.first, place);
    });
    return std::nullopt;
}

Failure MemoryFiles::createDirectory(std::string_view path) {
    const std::lock_guard lock(mutex_);
    const std::string place = normalised(path);
    if (Failure failure = checkPlace(place)) return failure;
    nodes_[place].isDirectory = true;
    return std::nullopt;
}

Failure MemoryFiles::copyFileAtomically(std::string_view from, std::string_view to) {
    auto bytes = contents(from);
    const std::lock_guard lock(mutex_);
    if (!bytes && find(from) == nullptr) {
        if (auto onDisk = contentsOnDisk(normalised(from))) bytes = std::move(*onDisk);
    }
    if (!bytes) return bytes.error();
    const std::string target = normalised(to);
    const Node* existing = find(target);
    if (existing != nullptr && existing->isDirectory) return errorWithCode(EISDIR, to);
    if (existing == nullptr) {
        if (Failure failure = checkPlace(target)) return failure;
    }
    nodes_[target].bytes = std::move(*bytes);
    return std::nullopt;
}

foundation::Expected<std::vector<std::uint8_t>> MemoryFiles::contents(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const Node* node = find(path);
    if (node == nullptr) return errorWithCode(ENOENT, path);
    if (node->isDirectory) return errorWithCode(EISDIR, path);
    return node->bytes;
}

std::optional<std::string> MemoryFiles::containerForAppGroup(std::string_view identifier) const {
    const std::lock_guard lock(mutex_);
    const auto found = groups_.find(identifier);
    if (found == groups_.end()) return std::nullopt;
    return found->second;
}

std::optional<std::string> MemoryFiles::documentsDirectory() const {
    return std::string(kDocuments);
}

}  // namespace tavrolin::adapters::memory

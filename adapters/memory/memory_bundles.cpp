#include "adapters/memory/memory_bundles.h"

namespace tavrolin::adapters::memory {

using foundation::Value;

void MemoryBundle::setInfoDictionary(Value info) {
    const std::lock_guard lock(mutex_);
    info_ = std::move(info);
}

void MemoryBundle::setResource(std::string_view name, std::string_view type, Value dictionary) {
    const std::lock_guard lock(mutex_);
    resources_.insert_or_assign(pathOf(name, type), std::move(dictionary));
}

Value MemoryBundle::resourceAtPath(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    const auto found = resources_.find(path);
    return found == resources_.end() || !found->second.isDictionary() ? Value() : found->second;
}

Value MemoryBundle::infoDictionary() const {
    const std::lock_guard lock(mutex_);
    return info_;
}

std::optional<std::string> MemoryBundle::pathForResource(std::string_view name,
                                                         std::string_view type) const {
    const std::lock_guard lock(mutex_);
    std::string path = pathOf(name, type);
    if (!resources_.contains(path)) return std::nullopt;
    return path;
}

std::string MemoryBundle::pathOf(std::string_view name, std::string_view type) const {
    std::string path = "/bundles/" + identifier_ + "/";
    path.append(name);
    if (!type.empty()) path.append(".").append(type);
    return path;
}

platform::Bundle* MemoryBundles::withIdentifier(std::string_view identifier) {
    for (MemoryBundle* bundle : {&mainBundle, &libraryBundle}) {
        if (bundle->identifier() == identifier) return bundle;
    }
    return nullptr;
}

Value MemoryBundles::dictionaryWithContentsOfFile(std::string_view path) {
    const Value found = mainBundle.resourceAtPath(path);
    return found ? found : libraryBundle.resourceAtPath(path);
}

}  // namespace tavrolin::adapters::memory

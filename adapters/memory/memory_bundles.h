#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>

#include "tavrolin/platform/bundle.h"

namespace tavrolin::adapters::memory {

/// A bundle whose Info dictionary and property-list resources are given to it. Threads: any.
class MemoryBundle final : public platform::Bundle {
public:
    explicit MemoryBundle(std::string identifier) : identifier_(std::move(identifier)) {}

    void setInfoDictionary(foundation::Value info);
    /// Adds "name.type", or replaces it.
    void setResource(std::string_view name, std::string_view type, foundation::Value dictionary);
    /// What lies at the path of one of its resources; nil for every other path.
    foundation::Value resourceAtPath(std::string_view path) const;

    std::string identifier() const override { return identifier_; }
    foundation::Value infoDictionary() const override;
    std::optional<std::string> pathForResource(std::string_view name,
                                               std::string_view type) const override;

private:
    std::string pathOf(std::string_view name, std::string_view type) const;

    std::string identifier_;
    mutable std::mutex mutex_;
    foundation::Value info_ = foundation::Value::dictionary();
    std::map<std::string, foundation::Value, std::less<>> resources_;
};

class MemoryBundles final : public platform::Bundles {
public:
    MemoryBundle mainBundle{"com.example.app"};
    MemoryBundle libraryBundle{"com.corvalen.tavrolin"};

    platform::Bundle& main() override { return mainBundle; }
    platform::Bundle& library() override { return libraryBundle; }
    platform::Bundle* withIdentifier(std::string_view identifier) override;
    foundation::Value dictionaryWithContentsOfFile(std::string_view path) override;
};

}  // namespace tavrolin::adapters::memory

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/foundation/expected.h"

namespace tavrolin::platform {

/// The file manager. Paths are absolute, UTF-8, as the system spells them. Threads: any. Operations
/// that fail say why and leave what was there before.
class Files {
public:
    virtual ~Files() = default;

    virtual bool fileExists(std::string_view path) const = 0;
    virtual bool isDirectory(std::string_view path) const = 0;
    /// A file, no folder, that this process may read.
    virtual bool isReadableFile(std::string_view path) const = 0;
    /// The path with every link and dot resolved; nothing when it doesn't exist.
    virtual std::optional<std::string> resolved(std::string_view path) const = 0;

    virtual foundation::Failure moveItem(std::string_view from, std::string_view to) = 0;
    virtual foundation::Failure removeItem(std::string_view path) = 0;
    /// Makes the folder itself, not those above it.
    virtual foundation::Failure createDirectory(std::string_view path) = 0;
    /// Makes `to` a copy of the file `from`, atomically: `to` is what it was before or complete.
    /// The file's size does not matter to the memory in use.
    virtual foundation::Failure copyFileAtomically(std::string_view from, std::string_view to) = 0;
    virtual foundation::Expected<std::vector<std::uint8_t>> contents(
        std::string_view path) const = 0;

    /// The folder that the processes of an app group share; nothing when the system knows no such
    /// group.
    virtual std::optional<std::string> containerForAppGroup(std::string_view identifier) const = 0;
    /// The process's own documents folder; nothing when it has none.
    virtual std::optional<std::string> documentsDirectory() const = 0;
};

class ForwardingFiles : public Files {
public:
    explicit ForwardingFiles(Files& target) : target_(target) {}
    bool fileExists(std::string_view path) const override { return target_.fileExists(path); }
    bool isDirectory(std::string_view path) const override { return target_.isDirectory(path); }
    bool isReadableFile(std::string_view path) const override {
        return target_.isReadableFile(path);
    }
    std::optional<std::string> resolved(std::string_view path) const override {
        return target_.resolved(path);
    }
    foundation::Failure moveItem(std::string_view from, std::string_view to) override {
        return target_.moveItem(from, to);
    }
    foundation::Failure removeItem(std::string_view path) override {
        return target_.removeItem(path);
    }
    foundation::Failure createDirectory(std::string_view path) override {
        return target_.createDirectory(path);
    }
    foundation::Failure copyFileAtomically(std::string_view from, std::string_view to) override {
        return target_.copyFileAtomically(from, to);
    }
    foundation::Expected<std::vector<std::uint8_t>> contents(std::string_view path) const override {
        return target_.contents(path);
    }
    std::optional<std::string> containerForAppGroup(std::string_view identifier) const override {
        return target_.containerForAppGroup(identifier);
    }
    std::optional<std::string> documentsDirectory() const override {
        return target_.documentsDirectory();
    }

private:
    Files& target_;
};

}  // namespace tavrolin::platform

#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/platform/files.h"

namespace tavrolin::adapters::memory {

/// A tree of files in memory, without links or permissions. A file that is not in the tree but on
/// disk can be moved or copied into it: so come downloads, which lie in temporary files.
///
/// At the start there is the documents folder, "/documents", and no app group. Threads: any.
class MemoryFiles final : public platform::Files {
public:
    MemoryFiles();

    /// Makes the group known, with "/groups/" and the identifier as its folder.
    void addAppGroup(std::string_view identifier);
    /// Writes a file, and makes the folders above it.
    void write(std::string_view path, std::string_view contents);
    /// Every file's path, without the folders, in order.
    std::vector<std::string> paths() const;

    bool fileExists(std::string_view path) const override;
    bool isDirectory(std::string_view path) const override;
    bool isReadableFile(std::string_view path) const override;
    std::optional<std::string> resolved(std::string_view path) const override;
    foundation::Failure moveItem(std::string_view from, std::string_view to) override;
    foundation::Failure removeItem(std::string_view path) override;
    foundation::Failure createDirectory(std::string_view path) override;
    foundation::Failure copyFileAtomically(std::string_view from, std::string_view to) override;
    foundation::Expected<std::vector<std::uint8_t>> contents(std::string_view path) const override;
    std::optional<std::string> containerForAppGroup(std::string_view identifier) const override;
    std::optional<std::string> documentsDirectory() const override;

private:
    struct Node {
        bool isDirectory = false;
        std::vector<std::uint8_t> bytes;
    };
    using Tree = std::map<std::string, Node, std::less<>>;

    const Node* find(std::string_view path) const;
    foundation::Failure checkPlace(std::string_view path) const;
    void makeFolders(std::string_view path);

    mutable std::mutex mutex_;
    Tree nodes_;  // by path, without dots, doubled or trailing slashes
    std::map<std::string, std::string, std::less<>> groups_;
};

}  // namespace tavrolin::adapters::memory

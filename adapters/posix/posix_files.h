#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/platform/files.h"

namespace tavrolin::adapters::posix {

/// The file manager over POSIX. What it makes is for its owner only (folders 0700, files 0600). A
/// path with a NUL in it names nothing. Threads: any.
class PosixFiles : public platform::Files {
public:
    /// The container of an app group by its identifier; nothing for a group that is not known.
    using ContainerOfGroup = std::function<std::optional<std::string>(std::string_view identifier)>;

    PosixFiles(ContainerOfGroup containerOfGroup, std::optional<std::string> documentsDirectory);

    bool fileExists(std::string_view path) const override;
    bool isDirectory(std::string_view path) const override;
    bool isReadableFile(std::string_view path) const override;
    std::optional<std::string> resolved(std::string_view path) const override;
    /// Fails when something is at `to` already. Copies where a move is not possible.
    foundation::Failure moveItem(std::string_view from, std::string_view to) override;
    /// A folder goes with all that is in it; a link goes alone.
    foundation::Failure removeItem(std::string_view path) override;
    foundation::Failure createDirectory(std::string_view path) override;
    foundation::Failure copyFileAtomically(std::string_view from, std::string_view to) override;
    foundation::Expected<std::vector<std::uint8_t>> contents(std::string_view path) const override;
    std::optional<std::string> containerForAppGroup(std::string_view identifier) const override;
    std::optional<std::string> documentsDirectory() const override { return documentsDirectory_; }

    static constexpr std::string_view kErrorDomain = "POSIX";

private:
    ContainerOfGroup containerOfGroup_;
    std::optional<std::string> documentsDirectory_;
};

}  // namespace tavrolin::adapters::posix

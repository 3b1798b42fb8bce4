#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/platform/preferences_suite.h"

namespace tavrolin::adapters::lmdb {

/// Preferences in LMDB files, one a suite, shared by the processes that open them. A value is
/// stored as its keyed archive, so it may be at most 1,024 levels deep.
///
/// A suite's file is named after the suite with everything escaped that could lead out of its
/// folder. Missing folders are made; folders and files can be read by their owner only. A process
/// that is killed leaves nothing behind that stops the others. Threads: any.
class LMDBPreferences final : public platform::PreferencesSuites {
public:
    /// The folder of the suite of this name; nothing when there is no such suite.
    using FolderOfSuite = std::function<std::optional<std::string>(std::string_view name)>;

    /// How far a file can grow. Costs address space only: the file holds what is stored.
    static constexpr std::size_t kMapSize = std::size_t{1} << 30U;

    LMDBPreferences(FolderOfSuite folderOfSuite, std::string standardFolder,
                    std::size_t mapSize = kMapSize);

    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> standard() override;
    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> suite(
        std::string_view name) override;

private:
    FolderOfSuite folderOfSuite_;
    std::string standardFolder_;
    std::size_t mapSize_;
};

}  // namespace tavrolin::adapters::lmdb

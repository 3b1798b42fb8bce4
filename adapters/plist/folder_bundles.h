#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/platform/bundle.h"

namespace tavrolin::adapters::plist {

/// A bundle that is a folder: Info.plist and the resources lie in it, side by side. It may be
/// several laid over one another: of files of one name the first folder's counts.
class FolderBundle : public platform::Bundle {
public:
    explicit FolderBundle(std::vector<std::string> folders);

    std::string identifier() const override;  // CFBundleIdentifier
    foundation::Value infoDictionary() const override;
    std::optional<std::string> pathForResource(std::string_view name,
                                               std::string_view type) const override;

private:
    std::vector<std::string> folders_;
};

/// The app's bundle and the library's.
class FolderBundles : public platform::Bundles {
public:
    FolderBundles(std::string mainFolder, std::vector<std::string> libraryFolders);

    platform::Bundle& main() override { return main_; }
    platform::Bundle& library() override { return library_; }
    platform::Bundle* withIdentifier(std::string_view identifier) override;
    foundation::Value dictionaryWithContentsOfFile(std::string_view path) override;

private:
    FolderBundle main_;
    FolderBundle library_;
};

}  // namespace tavrolin::adapters::plist

#pragma once

#include <string>
#include <string_view>

#include "tavrolin/platform/bundle.h"

namespace tavrolin::adapters::plist {

/// A bundle that is a folder: Info.plist and the resources lie in it, side by side.
class FolderBundle : public platform::Bundle {
public:
    explicit FolderBundle(std::string folder);

    std::string identifier() const override;  // CFBundleIdentifier
    foundation::Value infoDictionary() const override;
    std::optional<std::string> pathForResource(std::string_view name,
                                               std::string_view type) const override;

private:
    std::string folder_;
};

/// The app's bundle and the library's.
class FolderBundles : public platform::Bundles {
public:
    FolderBundles(std::string mainFolder, std::string libraryFolder);

    platform::Bundle& main() override { return main_; }
    platform::Bundle& library() override { return library_; }
    platform::Bundle* withIdentifier(std::string_view identifier) override;
    foundation::Value dictionaryWithContentsOfFile(std::string_view path) override;

private:
    FolderBundle main_;
    FolderBundle library_;
};

}  // namespace tavrolin::adapters::plist

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/value.h"

namespace tavrolin::platform {

/// The read-only files that came with the app and with the library. Threads: any.
class Bundle {
public:
    virtual ~Bundle() = default;

    /// "com.example.app"; empty when the bundle has none.
    virtual std::string identifier() const = 0;
    /// The bundle's Info dictionary. Raises `foundation::Exception` when it can't be read.
    virtual foundation::Value infoDictionary() const = 0;
    virtual std::optional<std::string> pathForResource(std::string_view name,
                                                       std::string_view type) const = 0;
};

/// The bundles of this process, and the reader of property lists (XML and binary).
class Bundles {
public:
    virtual ~Bundles() = default;

    /// The app's own; in an extension, the extension's own.
    virtual Bundle& main() = 0;
    /// The one that holds the library's own code.
    virtual Bundle& library() = 0;
    /// nullptr when no bundle has this identifier.
    virtual Bundle* withIdentifier(std::string_view identifier) = 0;

    /// The dictionary in a property-list file; nil when the file is missing, is no property list,
    /// is too large or too deep, or holds something else at its root.
    virtual foundation::Value dictionaryWithContentsOfFile(std::string_view path) = 0;
};

class ForwardingBundles : public Bundles {
public:
    explicit ForwardingBundles(Bundles& target) : target_(target) {}
    Bundle& main() override { return target_.main(); }
    Bundle& library() override { return target_.library(); }
    Bundle* withIdentifier(std::string_view identifier) override {
        return target_.withIdentifier(identifier);
    }
    foundation::Value dictionaryWithContentsOfFile(std::string_view path) override {
        return target_.dictionaryWithContentsOfFile(path);
    }

private:
    Bundles& target_;
};

}  // namespace tavrolin::platform

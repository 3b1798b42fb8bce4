#pragma once

#include <memory>
#include <string_view>

#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::platform {

/// One set of stored preferences, shared by every process that opens it by the same name.
///
/// Every kind of Value but nil can be stored, at any depth that an archive takes (1,024 levels). A
/// write is seen by the next read in every process and survives the death of the machine once the
/// operation has returned without a failure. Threads: any.
class PreferencesSuite {
public:
    virtual ~PreferencesSuite() = default;

    /// nil when there is nothing under the key, or nothing readable.
    virtual foundation::Value get(std::string_view key) const = 0;
    /// A nil value removes the key. A value stored before is kept when this fails.
    virtual foundation::Failure set(std::string_view key, const foundation::Value& value) = 0;
    virtual foundation::Failure remove(std::string_view key) = 0;
    /// Everything that is stored, in the order of the keys' bytes.
    virtual foundation::Value dictionaryRepresentation() const = 0;
};

/// Opens suites. What exists and can't be read is an error, never an empty suite, and is left as it
/// is. The same name gives the same suite as long as somebody holds it.
class PreferencesSuites {
public:
    virtual ~PreferencesSuites() = default;

    /// The process's own preferences, not shared with other processes.
    virtual foundation::Expected<std::shared_ptr<PreferencesSuite>> standard() = 0;
    virtual foundation::Expected<std::shared_ptr<PreferencesSuite>> suite(
        std::string_view name) = 0;
};

class ForwardingPreferencesSuite : public PreferencesSuite {
public:
    explicit ForwardingPreferencesSuite(std::shared_ptr<PreferencesSuite> target)
        : target_(std::move(target)) {}
    foundation::Value get(std::string_view key) const override { return target_->get(key); }
    foundation::Failure set(std::string_view key, const foundation::Value& value) override {
        return target_->set(key, value);
    }
    foundation::Failure remove(std::string_view key) override { return target_->remove(key); }
    foundation::Value dictionaryRepresentation() const override {
        return target_->dictionaryRepresentation();
    }

private:
    std::shared_ptr<PreferencesSuite> target_;
};

}  // namespace tavrolin::platform

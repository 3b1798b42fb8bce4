#include "adapters/memory/memory_preferences.h"

namespace tavrolin::adapters::memory {

using foundation::Value;

namespace {

class Suite final : public platform::PreferencesSuite {
public:
    Value get(std::string_view key) const override {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        return found == values_.end() ? Value() : found->second;
    }

    foundation::Failure set(std::string_view key, const Value& value) override {
        if (value.isNil()) return remove(key);
        const std::lock_guard lock(mutex_);
        values_.insert_or_assign(std::string(key), value);
        return std::nullopt;
    }

    foundation::Failure remove(std::string_view key) override {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found != values_.end()) values_.erase(found);
        return std::nullopt;
    }

    Value dictionaryRepresentation() const override {
        const std::lock_guard lock(mutex_);
        Value result = Value::dictionaryWithCapacity(values_.size());
        for (const auto& [key, value] : values_)
            result.set(key, value);
        return result;
    }

private:
    mutable std::mutex mutex_;
    std::map<std::string, Value, std::less<>> values_;
};

}  // namespace

MemoryPreferences::MemoryPreferences() : standard_(std::make_shared<Suite>()) {}

foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> MemoryPreferences::standard() {
    return standard_;
}

foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> MemoryPreferences::suite(
    std::string_view name) {
    if (name.empty()) return foundation::Error{"Preferences", 1, "a suite needs a name"};
    const std::lock_guard lock(mutex_);
    auto& suite = suites_[std::string(name)];
    if (suite == nullptr) suite = std::make_shared<Suite>();
    return suite;
}

}  // namespace tavrolin::adapters::memory

#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "tavrolin/platform/preferences_suite.h"

namespace tavrolin::adapters::memory {

/// Preferences that live as long as this object, or as somebody holds one of its suites.
class MemoryPreferences final : public platform::PreferencesSuites {
public:
    MemoryPreferences();

    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> standard() override;
    foundation::Expected<std::shared_ptr<platform::PreferencesSuite>> suite(
        std::string_view name) override;

private:
    std::mutex mutex_;
    std::shared_ptr<platform::PreferencesSuite> standard_;
    std::map<std::string, std::shared_ptr<platform::PreferencesSuite>, std::less<>> suites_;
};

}  // namespace tavrolin::adapters::memory

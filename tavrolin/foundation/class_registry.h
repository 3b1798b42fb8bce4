#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace tavrolin::foundation {

/// Classes found by name at run time: whoever has a class registers how an instance is made,
/// whoever wants one asks by name and by the interface that it must conform to. Threads: any.
template <class Interface>
class ClassRegistry {
public:
    using Factory = std::function<std::shared_ptr<Interface>()>;

    /// A later registration under the same name replaces an earlier one.
    static void registerClass(std::string_view name, Factory factory) {
        const std::lock_guard lock(mutex());
        classes()[std::string(name)] = std::move(factory);
    }

    /// Nothing happens when there is no such class.
    static void unregisterClass(std::string_view name) {
        const std::lock_guard lock(mutex());
        const auto found = classes().find(name);
        if (found != classes().end()) classes().erase(found);
    }

    /// A new instance on each call; null when there is no such class.
    static std::shared_ptr<Interface> makeInstance(std::string_view name) {
        Factory factory;
        {
            const std::lock_guard lock(mutex());
            const auto found = classes().find(name);
            if (found == classes().end()) return nullptr;
            factory = found->second;
        }
        return factory ? factory() : nullptr;
    }

    static bool isRegistered(std::string_view name) {
        const std::lock_guard lock(mutex());
        return classes().contains(name);
    }

private:
    static std::mutex& mutex() {
        static auto* instance = new std::mutex;  // both live as long as the process
        return *instance;
    }
    static std::map<std::string, Factory, std::less<>>& classes() {
        static auto* instance = new std::map<std::string, Factory, std::less<>>;
        return *instance;
    }
};

}  // namespace tavrolin::foundation

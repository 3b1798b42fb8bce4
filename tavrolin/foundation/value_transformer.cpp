#include "tavrolin/foundation/value_transformer.h"

#include <map>
#include <mutex>
#include <utility>

namespace tavrolin::foundation {

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<const ValueTransformer>, std::less<>> transformers;
};

Registry& registry() {
    static auto* instance = new Registry;
    return *instance;
}

}  // namespace

void ValueTransformer::setForName(std::string_view name, ValueTransformer transformer) {
    auto shared = std::make_shared<const ValueTransformer>(std::move(transformer));
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    all.transformers.insert_or_assign(std::string(name), std::move(shared));
}

std::shared_ptr<const ValueTransformer> ValueTransformer::forName(std::string_view name) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    const auto found = all.transformers.find(name);
    return found == all.transformers.end() ? nullptr : found->second;
}

}  // namespace tavrolin::foundation

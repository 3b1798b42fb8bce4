#include <cstdint>

#include "adapters/plist/property_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    static_cast<void>(tavrolin::adapters::plist::readPropertyList(bytes));
    return 0;
}

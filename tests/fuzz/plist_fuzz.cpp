#include <cstdint>

#include "adapters/plist/property_list.h"
#include "tavrolin/actions/notification_category_helper.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_keys.h"

// A property list, and the app's categories of buttons that it may hold.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Helper = tavrolin::CVNNotificationCategoryHelper;
    tavrolin::CVNPushLogger::setDebugLevel(-1);  // silent, so that no platform is needed
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto list = tavrolin::adapters::plist::readPropertyList(bytes);
    if (list && list->isDictionary()) {
        const auto& categories = *list;
        for (const auto& shape : {categories[tavrolin::kPlistCorvalenConfigActionButtons],
                                  categories[tavrolin::kPlistCorvalenConfigActionButtonsV2]}) {
            static_cast<void>(Helper::createNotificationCategoryArray(shape));
            static_cast<void>(Helper::createNewNotificationCategoryArray(shape));
        }
    }
    return 0;
}

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tavrolin/actions/action_button_parser.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin {

/// The categories that make a notification show buttons: two for carousels, and those that the app
/// declares in its CorvalenConfig.plist. Nothing raises; what has a wrong shape is left out and
/// logged. Threads: any.
class CVNNotificationCategoryHelper {
public:
    using Categories = std::vector<platform::NotificationCategory>;

    /// A dictionary with one key at most, of the new list or else of the old one.
    static foundation::Value getCategoriesFromCorvalenConfigFile();
    static Categories getCarouselNotificationCategories();
    static Categories getUserDefinedNotificationCategories();

    /// The old list: category identifiers to {"actionButtonTitle": titles}.
    static Categories createNotificationCategoryArray(const foundation::Value& list);
    /// The new list: category identifiers to {"actionItems": items}.
    static Categories createNewNotificationCategoryArray(const foundation::Value& list);
    /// Nothing when no action came of it.
    static std::optional<platform::NotificationCategory> createNotificationCategoryWithIdentifier(
        std::string_view identifier, const foundation::Value& andActions);
    static std::optional<platform::NotificationCategory>
    createNewNotificationCategoryWithIdentifier(
        std::string_view identifier,
        const std::vector<foundation::Ref<CVNActionItems>>& andActions);

    /// An action's identifier is its position in the list, in decimal.
    static std::vector<platform::NotificationAction> createNotificationActionButtonsFromActionArray(
        const foundation::Value& titles);
    static platform::NotificationAction createNewNotificationActionButton(
        const CVNActionItems& item, std::string_view withIdentifier);
    /// The text on its send button is the title again: deliberate.
    static platform::NotificationAction createNewNotificationActionTextInput(
        const CVNActionItems& item, std::string_view withIdentifier);
    /// "1" to "4" as they are; "4" for everything else.
    static foundation::Value getUNNotificationActionOptionValue(const foundation::Value& option);
};

}  // namespace tavrolin

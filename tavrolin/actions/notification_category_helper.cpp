#include "tavrolin/actions/notification_category_helper.h"

#include <source_location>
#include <utility>

#include "tavrolin/actions/notification_categories.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/platform/bundle.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Ref;
using foundation::Value;
using platform::NotificationAction;
using platform::NotificationCategory;
using Helper = CVNNotificationCategoryHelper;

namespace {

void warn(std::string_view operation, std::string_view message,
          std::initializer_list<Value> arguments = {},
          const std::source_location& where = std::source_location::current()) {
    log(LogLevel::warn, operation, formatMessage(message, arguments), where);
}

// The categories of a list, which maps their identifiers to {key: array}. `make` turns an
// identifier and an array that isn't empty into a category, or into nothing.
template <class Make>
Helper::Categories categoriesOf(const Value& list, std::string_view key, std::string_view operation,
                                Make make) {
    Helper::Categories categories;
    if (list.isNil()) return categories;
    if (!list.isDictionary()) {
        warn(operation, "The list of categories is no dictionary and is left out.");
        return categories;
    }
    for (const auto& [identifier, category] : list.entries()) {
        const Value elements = category.isDictionary() ? category[key] : Value();
        if (!category.isDictionary() || !(elements.isArray() || elements.isNil())) {
            warn(operation, "Category %@ has a wrong shape and is left out.", {identifier});
        } else if (elements.count() > 0) {
            if (auto made = make(identifier.string(), elements))
                categories.push_back(*std::move(made));
        }
    }
    return categories;
}

std::optional<NotificationCategory> categoryUnlessEmpty(std::string_view identifier,
                                                        std::vector<NotificationAction> actions) {
    if (actions.empty()) return std::nullopt;
    return NotificationCategory{std::string(identifier), std::move(actions)};
}

std::string textOf(const Value& value) {
    return std::string(foundation::stringOrEmpty(value));
}

std::string lowerCaseTextOf(const Value& value) {
    return value.isString() ? textOf(value.lowercaseString()) : std::string();
}

bool isNoText(const Value& value) {
    return !value.isString() && !value.isNil();
}

std::uint64_t optionsOf(const CVNActionItems& item) {
    return static_cast<std::uint64_t>(
        Helper::getUNNotificationActionOptionValue(item.options).integerValue());
}

}  // namespace

// --- The configuration -------------------------------------------------------------------------

Value CVNNotificationCategoryHelper::getCategoriesFromCorvalenConfigFile() {
    static constexpr std::string_view kOperation =
        "+[CVNNotificationCategoryHelper getCategoriesFromCorvalenConfigFile]";
    Value config;
    guard(kOperation, "Could not read CorvalenConfig.plist file due to exception: %@", [&] {
        platform::Bundles& bundles = *platform::current().bundles;
        const auto path = bundles.main().pathForResource(kPlistCorvalenConfigFileName,
                                                         kPlistCorvalenConfigFileType);
        if (!path) return;
        config = bundles.dictionaryWithContentsOfFile(*path);
        if (!config.isDictionary()) warn(kOperation, "CorvalenConfig.plist file can't be read.");
    });
    if (!config.isDictionary()) return Value::dictionary();

    const Value& oldList = config[kPlistCorvalenConfigActionButtons];
    const Value& newList = config[kPlistCorvalenConfigActionButtonsV2];
    if (!newList.isNil()) {
        if (!oldList.isNil())
            warn(kOperation, "Please remove ActionButtons key from CorvalenConfig.plist file.");
        return Value::dictionary({{kPlistCorvalenConfigActionButtonsV2, newList}});
    }
    if (!oldList.isNil()) {
        warn(kOperation, "Please update to ActionButtons_v2 key from CorvalenConfig.plist file.");
        return Value::dictionary({{kPlistCorvalenConfigActionButtons, oldList}});
    }
    return Value::dictionary();
}

Helper::Categories CVNNotificationCategoryHelper::getCarouselNotificationCategories() {
    const Value buttons = Value::dictionary(
        {{kNotificationActionButton,
          Value::array({kCarouselNextActionButtonTitle, kCarouselPreviousActionButtonTitle})}});
    return createNotificationCategoryArray(
        Value::dictionary({{kNotificationCategoryCarouselLandscape, buttons},
                           {kNotificationCategoryCarouselPortrait, buttons}}));
}

Helper::Categories CVNNotificationCategoryHelper::getUserDefinedNotificationCategories() {
    const Value config = getCategoriesFromCorvalenConfigFile();
    Categories categories =
        createNotificationCategoryArray(config[kPlistCorvalenConfigActionButtons]);
    for (auto& category :
         createNewNotificationCategoryArray(config[kPlistCorvalenConfigActionButtonsV2]))
        categories.push_back(std::move(category));
    return categories;
}

// --- The old list ------------------------------------------------------------------------------

Helper::Categories CVNNotificationCategoryHelper::createNotificationCategoryArray(
    const Value& list) {
    return categoriesOf(list, kNotificationActionButton,
                        "+[CVNNotificationCategoryHelper createNotificationCategoryArray:]",
                        createNotificationCategoryWithIdentifier);
}

std::optional<NotificationCategory>
CVNNotificationCategoryHelper::createNotificationCategoryWithIdentifier(std::string_view identifier,
                                                                        const Value& andActions) {
    return categoryUnlessEmpty(identifier,
                               createNotificationActionButtonsFromActionArray(andActions));
}

std::vector<NotificationAction>
CVNNotificationCategoryHelper::createNotificationActionButtonsFromActionArray(const Value& titles) {
    static constexpr std::string_view kOperation =
        "+[CVNNotificationCategoryHelper createNotificationActionButtonsFromActionArray:]";
    std::vector<NotificationAction> actions;
    if (!titles.isArray()) {
        if (!titles.isNil()) warn(kOperation, "The button titles are no list and are left out.");
        return actions;
    }
    for (std::size_t i = 0; i < titles.count(); ++i) {
        const Value& title = titles.at(i);
        if (title.isString()) {
            actions.push_back({std::to_string(i), textOf(title), platform::kActionForeground});
        } else {
            warn(kOperation, "Button %lu has a title that is no text and is left out.", {i});
        }
    }
    return actions;
}

// --- The new list ------------------------------------------------------------------------------

Helper::Categories CVNNotificationCategoryHelper::createNewNotificationCategoryArray(
    const Value& list) {
    return categoriesOf(list, kActionButtonItems,
                        "+[CVNNotificationCategoryHelper createNewNotificationCategoryArray:]",
                        [](std::string_view identifier, const Value& items) {
                            return createNewNotificationCategoryWithIdentifier(
                                identifier, CVNActionButtonParser::parseActionItems(items));
                        });
}

std::optional<NotificationCategory>
CVNNotificationCategoryHelper::createNewNotificationCategoryWithIdentifier(
    std::string_view identifier, const std::vector<Ref<CVNActionItems>>& andActions) {
    std::vector<NotificationAction> actions;
    for (std::size_t i = 0; i < andActions.size(); ++i) {
        if (andActions[i] == nullptr) continue;
        const CVNActionItems& item = *andActions[i];
        // An item of any other type makes no action, but its position is taken.
        const std::string type = lowerCaseTextOf(item.type);
        const bool takesText = type == kActionButtonTypeTextField;
        if (isNoText(item.type) || isNoText(item.title) ||
            (takesText && isNoText(item.placeholder))) {
            warn(
                "+[CVNNotificationCategoryHelper "
                "createNewNotificationCategoryWithIdentifier:andActions:]",
                "Item %lu of category %@ has a wrong shape and is left out.", {i, identifier});
        } else if (type == kActionButtonTypeButton) {
            actions.push_back(createNewNotificationActionButton(item, std::to_string(i)));
        } else if (takesText) {
            actions.push_back(createNewNotificationActionTextInput(item, std::to_string(i)));
        }
    }
    return categoryUnlessEmpty(identifier, std::move(actions));
}

NotificationAction CVNNotificationCategoryHelper::createNewNotificationActionButton(
    const CVNActionItems& item, std::string_view withIdentifier) {
    return {std::string(withIdentifier), textOf(item.title), optionsOf(item)};
}

NotificationAction CVNNotificationCategoryHelper::createNewNotificationActionTextInput(
    const CVNActionItems& item, std::string_view withIdentifier) {
    const std::string title = textOf(item.title);
    return {std::string(withIdentifier), title, optionsOf(item),
            NotificationAction::TextInput{title, textOf(item.placeholder)}};
}

Value CVNNotificationCategoryHelper::getUNNotificationActionOptionValue(const Value& option) {
    const bool isNumeric = option.isString() || option.isNumber();
    const std::int64_t value = isNumeric ? option.integerValue() : 0;
    return value >= 1 && value <= 4 ? option : Value("4");
}

}  // namespace tavrolin

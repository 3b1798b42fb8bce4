#include "device/content_values.h"

#include <cmath>

#include "tavrolin/events/date_utility.h"
#include "tavrolin/foundation/base64.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/utf8.h"
#include "tavrolin/payload/notification_payload.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/payload/value_transformer.h"

namespace tavrolin::device {

using foundation::Value;
using platform::NotificationContent;

namespace {

Value textOrNil(const Value& value) {
    return value.isString() ? value : Value();
}

Value orNull(const Value& value) {
    return value.isNil() ? Value::null() : value;
}

Value fromNull(const Value& value) {
    if (!value.isString() && !value.isNull() && !value.isNil()) {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                     "a content's text is neither a string nor null");
    }
    return textOrNil(value);
}

}  // namespace

NotificationContent contentOfPush(const Value& payload) {
    NotificationContent content;
    content.userInfo = payload;
    const Value aps = payload[kPNAps].isDictionary() ? payload[kPNAps] : Value();
    const Value& alert = aps[kPNAlert];
    if (alert.isDictionary()) {
        content.title = textOrNil(alert[kPNTitle]);
        content.subtitle = textOrNil(alert[kPNSubtitle]);
        content.body = textOrNil(alert[kPNBody]);
    } else {
        content.body = textOrNil(alert);
    }
    content.categoryIdentifier = textOrNil(aps[kPNCategory]);
    // A critical alert's sound is a dictionary that holds the name.
    const Value& sound = aps[kPNSound];
    content.sound = textOrNil(sound.isDictionary() ? sound["name"] : sound);
    return content;
}

Value valueOf(const NotificationContent& content) {
    Value attachments = Value::arrayWithCapacity(content.attachments.size());
    for (const platform::Attachment& attachment : content.attachments) {
        attachments.append(Value::dictionary(
            {{"identifier", attachment.identifier}, {"url", attachment.url.absoluteString()}}));
    }
    return Value::dictionary({{"title", orNull(content.title)},
                              {"subtitle", orNull(content.subtitle)},
                              {"body", orNull(content.body)},
                              {"categoryIdentifier", orNull(content.categoryIdentifier)},
                              {"sound", orNull(content.sound)},
                              {"attachments", attachments},
                              {"userInfo", orNull(content.userInfo)}});
}

NotificationContent contentOf(const Value& value) {
    NotificationContent content;
    content.title = fromNull(value["title"]);
    content.subtitle = fromNull(value["subtitle"]);
    content.body = fromNull(value["body"]);
    content.categoryIdentifier = fromNull(value["categoryIdentifier"]);
    content.sound = fromNull(value["sound"]);
    for (const Value& item : value["attachments"].items()) {
        const auto url = foundation::URL::withString(item["url"].string());
        if (!url || !url->isFileURL()) {
            foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                         "an attachment has no file URL");
        }
        content.attachments.push_back({std::string(item["identifier"].string()), *url});
    }
    content.userInfo = value["userInfo"].isNull() ? Value::dictionary() : value["userInfo"];
    if (!content.userInfo.isDictionary()) {
        foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                     "a content's user info is no dictionary");
    }
    return content;
}

Value valueOf(const std::vector<platform::NotificationAction>& actions) {
    Value result = Value::array();
    for (const platform::NotificationAction& action : actions) {
        const auto& input = action.textInput;
        result.append(Value::dictionary(
            {{"identifier", action.identifier},
             {"title", action.title},
             {"options", action.options},
             {"textInput", input ? Value::dictionary({{"buttonTitle", input->buttonTitle},
                                                      {"placeholder", input->placeholder}})
                                 : Value::null()}}));
    }
    return result;
}

std::vector<platform::NotificationAction> actionsOf(const Value& value) {
    std::vector<platform::NotificationAction> actions;
    for (const Value& each : value.items()) {
        platform::NotificationAction action{
            std::string(each["identifier"].string()), std::string(each["title"].string()),
            static_cast<std::uint64_t>(each["options"].integerValue())};
        if (const Value& input = each["textInput"]; input.isDictionary()) {
            action.textInput = {std::string(input["buttonTitle"].string()),
                                std::string(input["placeholder"].string())};
        }
        actions.push_back(std::move(action));
    }
    return actions;
}

Value valueOf(const std::vector<platform::NotificationCategory>& categories) {
    Value byIdentifier = Value::dictionary();
    for (const platform::NotificationCategory& category : categories) {
        byIdentifier.set(category.identifier,
                         Value::dictionary({{"identifier", category.identifier},
                                            {"actions", valueOf(category.actions)}}));
    }
    Value result = Value::array();
    for (const auto& [identifier, category] : byIdentifier.entries())
        result.append(category);
    return result;
}

Value payloadForm(const Value& archive) {
    if (archive.kind() != Value::Kind::data) return Value::null();
    const auto model =
        CVNNotificationPayloadModelValueTransformer::reverseTransformedValue(archive);
    return model ? jsonForm(model->toNSDictionary()) : Value::null();
}

Value dateText(const Value& date) {
    if (date.kind() != Value::Kind::date) return Value::null();
    return CVNPushDateUtility::dateStringFromDate(date.date());
}

Value jsonForm(const Value& value) {
    switch (value.kind()) {
        case Value::Kind::nil:
            return Value::null();
        case Value::Kind::date:
            return dateText(value);
        case Value::Kind::data:
            return foundation::base64Encoded(value.bytes());
        case Value::Kind::real:
            return std::isfinite(value.doubleValue()) ? value : Value::null();
        case Value::Kind::string:
            return foundation::isValidUtf8(value.string())
                       ? value
                       : foundation::repairedUtf8(value.string());
        case Value::Kind::array: {
            Value result = Value::arrayWithCapacity(value.count());
            for (const Value& item : value.items())
                result.append(jsonForm(item));
            return result;
        }
        case Value::Kind::dictionary: {
            Value result = Value::dictionaryWithCapacity(value.count());
            for (const auto& [key, item] : value.entries()) {
                result.set(jsonForm(key), jsonForm(item));
            }
            return result;
        }
        default:
            return value;
    }
}

}  // namespace tavrolin::device

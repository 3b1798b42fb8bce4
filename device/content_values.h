#pragma once

#include <string>
#include <vector>

#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/json_text.h"
#include "tavrolin/platform/user_notification_center.h"

namespace tavrolin::device {

/// What a push shows before anybody rewrites it: the alert's texts (a plain text alert is the
/// body), the category, the sound, and the whole payload as user info. Fields of a wrong kind are
/// absent.
platform::NotificationContent contentOfPush(const foundation::Value& payload);

/// {"title", "subtitle", "body", "categoryIdentifier", "sound", "attachments": [{"identifier",
/// "url"}], "userInfo"}; absent texts are null.
foundation::Value valueOf(const platform::NotificationContent& content);
/// Reads the same back, from a process that may say anything: raises foundation::Exception when it
/// is not of that form.
platform::NotificationContent contentOf(const foundation::Value& value);

/// [{"identifier", "title", "options", "textInput": null | {"buttonTitle", "placeholder"}}].
foundation::Value valueOf(const std::vector<platform::NotificationAction>& actions);
/// Reads the same back; raises foundation::Exception when it is not of that form.
std::vector<platform::NotificationAction> actionsOf(const foundation::Value& value);

/// [{"identifier", "actions": [{"identifier", "title", "options", "textInput"}]}]; of several
/// categories with one identifier the last.
foundation::Value valueOf(const std::vector<platform::NotificationCategory>& categories);

/// The value with everything in it that JSON can say: dates as "yyyy-MM-dd'T'HH:mm:ss" in UTC, data
/// as Base64, nil as null, texts as UTF-8 (what isn't becomes U+FFFD), numbers that are not finite
/// as null.
foundation::Value jsonForm(const foundation::Value& value);

/// The dictionary form of an archived payload model; null when it is absent or can't be read.
foundation::Value payloadForm(const foundation::Value& archive);

/// "yyyy-MM-dd'T'HH:mm:ss" in UTC, or null.
foundation::Value dateText(const foundation::Value& date);

}  // namespace tavrolin::device

#include "tavrolin/content_ui/layout_utility.h"

#include <algorithm>
#include <cstdint>

#include "tavrolin/content_ui/two_digits.h"
#include "tavrolin/core/logger.h"
#include "tavrolin/core/plist_utility.h"

namespace tavrolin {

using foundation::Value;

namespace {

constexpr std::string_view kMessage =
    "Could not fetch filename based on layout id due to exception: %@";

bool contains(const Value& list, const Value& item) {
    const auto items = list.items();
    return !item.isNil() && std::find(items.begin(), items.end(), item) != items.end();
}

// A number's decimal text, which is what it is remapped by.
std::string keyOf(const Value& layoutId) {
    if (!layoutId.isNil() && !layoutId.isNumber()) {
        foundation::Exception::raise(
            foundation::Exception::kInvalidArgument,
            "a layout id must be a number, not " + std::string(Value::kindName(layoutId.kind())));
    }
    return layoutId.kind() == Value::Kind::boolean ? std::to_string(layoutId.integerValue())
                                                   : layoutId.description();
}

const Value& chosen(const Value& config, const Value& layoutId, const Value& flid) {
    const Value& supported = config["supportedLayouts"];
    const Value& similar = config["similarLayouts"];
    if (const Value& instead = similar[keyOf(layoutId)]) return instead;
    if (contains(supported, layoutId)) return layoutId;
    if (contains(supported, flid)) return flid;
    return config["defaultLayout"];
}

}  // namespace

std::optional<std::string> CVNLayoutUtility::getNotificationLayoutClassName(
    const foundation::Ref<CVNNotificationPayloadModel>& payload) {
    std::optional<std::string> name;
    guard("+[CVNLayoutUtility getNotificationLayoutClassName:]",
          "Could not fetch layout id to load UI due to exception: %@", [&] {
              const CVNUi* ui = payload ? payload->cvnUi.get() : nullptr;
              const CVNPayload* section = payload ? payload->cvnPayload.get() : nullptr;
              name = getSupportedLayoutId(ui != nullptr ? ui->layoutId : Value(),
                                          ui != nullptr ? ui->fallbackLayoutId : Value(),
                                          section != nullptr ? section->type : Value());
          });
    return name;
}

std::string CVNLayoutUtility::getSupportedLayoutId(const Value& layoutId, const Value& withFlid,
                                                   const Value& andNotificationType) {
    std::int64_t result = 1;
    guard("+[CVNLayoutUtility getSupportedLayoutId:withFlid:andNotificationType:]", kMessage, [&] {
        const Value config =
            CVNPlistUility::getLayoutConfigForNotificationType(andNotificationType);
        if (config.count() > 0) result = chosen(config, layoutId, withFlid).integerValue();
    });
    return "CVNLayout" + twoDigits(static_cast<std::int32_t>(result));
}

Value CVNLayoutUtility::getSupportedLayoutIdsFromLayoutId(const Value& /*layoutId*/,
                                                          const Value& andNotificationType) {
    Value supported = Value::array();
    guard("+[CVNLayoutUtility getSupportedLayoutIdsFromLayoutId:andNotificationType:]", kMessage,
          [&] {
              const Value config =
                  CVNPlistUility::getLayoutConfigForNotificationType(andNotificationType);
              if (config.count() > 0) supported = config["supportedLayouts"];
          });
    return supported;
}

bool CVNLayoutUtility::isLayoutIdSupported(const Value& layoutId,
                                           const Value& forNotificationType) {
    return contains(getSupportedLayoutIdsFromLayoutId(layoutId, forNotificationType), layoutId);
}

bool CVNLayoutUtility::isCarouselRoute(const Value& layoutId, const Value& andNotificationType) {
    const std::int64_t id = layoutId.integerValue();
    return id == 71 || id == 91 || !isLayoutIdSupported(layoutId, andNotificationType);
}

}  // namespace tavrolin

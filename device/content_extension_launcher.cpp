#include "device/content_extension_launcher.h"

#include <algorithm>
#include <utility>

#include "device/content_extension/content_extension_process.h"
#include "device/content_values.h"
#include "device/process_messages.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::device {

using foundation::Value;

namespace {

void require(bool condition) {
    if (condition) return;
    foundation::Exception::raise(foundation::Exception::kInvalidArgument,
                                 "that is no account of an expanded view");
}

// Raises for what scripts could not rely on.
void check(const Value& view, bool wantsTree) {
    require(view["layout"].isString() || view["layout"].isNull());
    require(view["size"]["width"].isNumber() && view["size"]["height"].isNumber());
    actionsOf(view["nativeActions"]);
    for (const Value& response : view["responses"].items())
        require(response["step"].isString() &&
                (response["option"].isNull() || response["option"].isNumber()));
    for (const Value& request : view["requests"].items())
        require(request.isString());
    require(view["tree"].isDictionary() == wantsTree);
}

void checkStory(const Value& story) {
    for (const Value& chapter : story.items()) {
        require(chapter["step"].isString());
        for (const Value& request : chapter["requests"].items())
            require(request.isString());
    }
}

Value messageOf(const ExpandOrder& order, const platform::DeliveredNotification& notification,
                const std::vector<platform::NotificationAction>& actions) {
    Value steps = Value::array();
    for (const Value& step : order.steps)
        steps.append(step);
    Value message = Value::dictionary({{kMessageIdentifier, notification.request.identifier},
                                       {kMessageContent, valueOf(notification.request.content)},
                                       {kMessageDelivered, notification.date},
                                       {kMessageActions, valueOf(actions)},
                                       {kMessageWidth, order.width},
                                       {kMessageScale, order.scale},
                                       {kMessageDark, order.isDark},
                                       {kMessageCard, order.isCard},
                                       {kMessageSteps, steps},
                                       {kMessageWantsTree, order.wantsTree}});
    if (order.png) message.set(kMessagePNG, *order.png);
    if (order.svg) message.set(kMessageSVG, *order.svg);
    if (order.cardPNG) message.set(kMessageCardPNG, *order.cardPNG);
    return message;
}

}  // namespace

Expansion runContentExtension(ChildProcess& process, const ProcessStart& start,
                              const ExpandOrder& order,
                              const platform::DeliveredNotification& notification,
                              const std::vector<platform::NotificationAction>& actions) {
    Expansion expansion;
    const ProcessEnd end =
        process.converse(start, messageOf(order, notification, actions), [&](const Value& message) {
            if (message[kMessageRemoved]) expansion.isRemoved = true;
            if (const Value& failure = message[kMessageFailure])
                expansion.failure = failure.string();
            if (const Value& view = message[kMessageExpanded]) {
                check(view, order.wantsTree);
                checkStory(message[kMessageStory]);
                expansion.view = view;
                expansion.story = message[kMessageStory];
            }
        });
    expansion.isComplete = end.isProper && expansion.view.isDictionary();
    expansion.endedAt = std::max(end.at, start.start);
    return expansion;
}

}  // namespace tavrolin::device

#include "device/extension_launcher.h"

#include <algorithm>
#include <utility>

#include "device/content_values.h"
#include "device/process_messages.h"
#include "device/service_extension_process.h"

namespace tavrolin::device {

using foundation::Value;

namespace {

class Listener {
public:
    explicit Listener(foundation::Date start) { result_.handedBackAt = start; }

    void take(const Value& message) {
        if (message[kMessageContent]) takeContent(message);
        for (const Value& identifier : message[kMessageRemoved].items())
            result_.removed.emplace_back(identifier.string());
    }

    ExtensionResult resultAfter(const ProcessEnd& end) && {
        using Outcome = ExtensionResult::Outcome;
        result_.endedAt = std::max(end.at, result_.handedBackAt);
        result_.peakRSSKiB = end.peakRSSKiB;
        if (result_.content) {
            result_.outcome = hasExpired_ ? Outcome::expired : Outcome::completed;
        } else {
            // With a proper end it lived its whole time and never handed anything back.
            result_.outcome = end.isProper ? Outcome::expired : Outcome::crashed;
            result_.handedBackAt = end.at;
        }
        return std::move(result_);
    }

private:
    // The first content counts; the library may hand back a second time after its time ran out.
    void takeContent(const Value& message) {
        if (result_.content) return;
        platform::NotificationContent content = contentOf(message[kMessageContent]);
        result_.handedBackAt = std::max(message[kMessageAt].date(), result_.handedBackAt);
        hasExpired_ = message[kMessageExpired].boolValue();
        result_.content = std::move(content);
    }

    ExtensionResult result_;
    bool hasExpired_ = false;
};

}  // namespace

ExtensionResult runServiceExtension(const ProcessStart& start,
                                    const platform::NotificationRequest& request) {
    Listener listener(start.start);
    const ProcessEnd end =
        runProcess(start, kServiceExtensionProcess,
                   Value::dictionary({{kMessageIdentifier, request.identifier},
                                      {kMessageContent, valueOf(request.content)}}),
                   [&](const Value& message) { listener.take(message); });
    return std::move(listener).resultAfter(end);
}

}  // namespace tavrolin::device

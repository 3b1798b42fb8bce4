// The expanded view.

#include <algorithm>
#include <list>
#include <optional>
#include <string>
#include <utility>

#include "device/content_extension/content_extension_process.h"
#include "device/content_extension_launcher.h"
#include "device/content_values.h"
#include "device/device.h"
#include "device/device_error.h"
#include "device/installation.h"
#include "device/output_file.h"
#include "device/process_platform.h"
#include "device/system_notification_center.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::device {

using foundation::Value;

namespace {

// A step may take the device's clock through real time in which nothing happens.
double patienceFor(const ExpandOrder& order, double patience) {
    for (const Value& step : order.steps)
        patience += step["seconds"].doubleValue();
    return patience;
}

}  // namespace

platform::DeliveredNotification Device::delivered(const std::string& identifier) {
    std::vector<TrayEntry> tray = platform_->systemState().tray();
    const auto entry = std::find_if(tray.begin(), tray.end(), [&](const TrayEntry& each) {
        return each.identifier == identifier;
    });
    if (entry == tray.end()) failWithout(identifier);
    try {
        return {{entry->identifier, contentOf(readJSON(entry->content))}, entry->deliveredAt};
    } catch (const foundation::Exception& exception) {
        throw DeviceError("the notification can't be read: " + exception.reason());
    }
}

std::vector<platform::NotificationAction> Device::actionsFor(const Value& category) {
    const auto kept = platform_->systemState().setting(kSettingCategories);
    const Value all = kept ? readJSON(*kept) : Value::array();
    if (!all.isArray()) return {};
    try {
        for (const Value& each : all.items()) {
            if (category && each["identifier"] == category) return actionsOf(each["actions"]);
        }
    } catch (const foundation::Exception&) {  // damaged: no menu
    }
    return {};
}

void Device::startContentExtension() {
    const std::string program =
        options_.contentExtension.empty() ? contentExtensionProgram() : options_.contentExtension;
    if (program.empty()) {
        throw DeviceError(
            "the program tavrolin-content-extension is missing beside this one; "
            "build or install it anew");
    }
    contentExtension_.emplace(program, kContentExtensionProcess);
}

Value Device::expand(ExpandOrder order) {
    const platform::DeliveredNotification notification = delivered(order.identifier);
    if (!contentExtension_) startContentExtension();
    ProcessStart start = processStart();
    start.start = clock_.now();
    start.run = randomIdentifier();
    start.patience = patienceFor(order, start.patience);
    const std::string temporary = folder_.temporaryFolder("content-extension", start.run);
    const RunFolder run(temporary);
    std::list<OutputFile> pictures;
    for (std::optional<std::string>* file : {&order.png, &order.svg, &order.cardPNG}) {
        if (*file) *file = pictures.emplace_back(**file, order.fileMode, temporary).draft();
    }
    const Expansion expansion =
        runContentExtension(*contentExtension_, start, order, notification,
                            actionsFor(notification.request.content.categoryIdentifier));
    clock_.reach(expansion.endedAt);
    // Its view drew from the files until its end.
    if (expansion.isRemoved) storage_.remove(valueOf(notification.request.content));
    fireUntil(clock_.now());
    if (expansion.failure) throw DeviceError(*expansion.failure);
    if (!expansion.isComplete) {
        throw DeviceError(
            "the content extension died or answered nonsense; a phone shows the "
            "notification's own content then");
    }
    for (OutputFile& picture : pictures)
        picture.keep();
    return Value::dictionary({{"view", expansion.view}, {"story", expansion.story}});
}

}  // namespace tavrolin::device

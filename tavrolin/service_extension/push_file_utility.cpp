#include "tavrolin/service_extension/push_file_utility.h"

#include <mutex>

#include "tavrolin/core/logger.h"
#include "tavrolin/platform/files.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::URL;
using foundation::Value;

namespace {

platform::Files& files() {
    return *platform::current().files;
}

std::string joined(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!path.ends_with('/')) path += '/';
    return path.append(name);
}

// The app group that this process works for.
struct RememberedGroup {
    std::mutex mutex;
    std::optional<std::string> identifier;
};

RememberedGroup& rememberedGroup() {
    static auto* group = new RememberedGroup;
    return *group;
}

}  // namespace

std::optional<URL> CVNPushFileUtility::appGroupURLWithAppGroup(const Value& appGroup) {
    if (!appGroup.isString()) return std::nullopt;
    {
        RememberedGroup& group = rememberedGroup();
        const std::lock_guard lock(group.mutex);
        group.identifier = appGroup.string();
    }
    return appGroupURL();
}

std::optional<URL> CVNPushFileUtility::appGroupURL() {
    std::optional<std::string> identifier;
    {
        RememberedGroup& group = rememberedGroup();
        const std::lock_guard lock(group.mutex);
        identifier = group.identifier;
    }
    std::optional<std::string> path;
    if (identifier) path = files().containerForAppGroup(*identifier);
    if (!path) path = applicationDocumentsDirectory();
    if (!path) return std::nullopt;
    return URL::fileURLWithPath(*path);
}

std::optional<URL> CVNPushFileUtility::notificationURL() {
    const std::optional<URL> container = appGroupURL();
    if (!container) return std::nullopt;
    createDirectory(kNotificationMediaFolder, container->path());
    return container->appendingPathComponent(kNotificationMediaFolder);
}

URL CVNPushFileUtility::saveAttachment(const platform::Attachment& attachment) {
    const std::optional<URL> folder = notificationURL();
    if (!folder) return attachment.url;
    const std::string source = attachment.url.path();
    const std::string_view name = foundation::lastPathComponent(source);
    if (name.empty() || name == "." || name == ".." || name == "/") return attachment.url;
    const std::string target = joined(folder->path(), name);
    if (target != source) {
        // Out of the way first: when the copy fails, an older file must not pass for this one.
        if (files().fileExists(target)) files().removeItem(target);
        files().copyFileAtomically(source, target);
    }
    return URL::fileURLWithPath(target);
}

bool CVNPushFileUtility::removeItemAtPath(const Value& path) {
    const std::optional<URL> url = URL::withString(path.string());
    if (!url) return false;
    const std::string item = url->path();
    return files().fileExists(item) && !files().removeItem(item);
}

bool CVNPushFileUtility::isInMediaFolder(std::string_view path) {
    if (path.starts_with("file:")) {
        const std::optional<URL> url = URL::withString(path);
        const std::string local = url ? url->path() : std::string();
        return local.starts_with('/') && isInMediaFolder(local);
    }
    // A NUL would end the path for the system: it names another file than the text says.
    if (!path.starts_with('/') || path.find('\0') != std::string_view::npos) return false;
    const std::optional<URL> container = appGroupURL();
    if (!container) return false;
    const std::optional<std::string> folder =
        files().resolved(joined(container->path(), kNotificationMediaFolder));
    const std::optional<std::string> item = files().resolved(path);
    return folder && item && item->size() > folder->size() + 1 && item->starts_with(*folder) &&
           (*item)[folder->size()] == '/';
}

std::optional<std::string> CVNPushFileUtility::applicationDocumentsDirectory() {
    return files().documentsDirectory();
}

void CVNPushFileUtility::createDirectory(std::string_view name, std::string_view atFilePath) {
    const std::string path = joined(atFilePath, name);
    if (files().fileExists(path)) return;
    if (const foundation::Failure failure = files().createDirectory(path)) {
        log(LogLevel::info, "+[CVNPushFileUtility createDirectory:atFilePath:]",
            formatMessage("Create directory error: %@", {failure->description()}));
    }
}

}  // namespace tavrolin

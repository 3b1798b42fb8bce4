#include "device/attachment_storage.h"

#include <filesystem>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

namespace tavrolin::device {

namespace fs = std::filesystem;

namespace {

bool liesBelow(const fs::path& path, const fs::path& folder) {
    const auto relative = path.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != ".." && *relative.begin() != ".";
}

// The file itself when it is one and lies below one of the folders; else an empty path.
fs::path ownFile(const std::string& path, const fs::path& folder) {
    std::error_code error;
    if (!fs::is_regular_file(fs::symlink_status(path, error))) return {};
    const fs::path file = fs::canonical(path, error);
    const fs::path real = fs::canonical(folder, error);
    return !error && liesBelow(file, real) ? file : fs::path();
}

// Where the content's files lie.
std::vector<std::string> pathsOf(const foundation::Value& content) {
    std::vector<std::string> paths;
    const foundation::Value attachments =
        content.isDictionary() ? content["attachments"] : foundation::Value();
    if (!attachments.isArray()) return paths;
    for (const foundation::Value& attachment : attachments.items()) {
        if (!attachment.isDictionary() || !attachment["url"].isString()) continue;
        const auto url = foundation::URL::withString(attachment["url"].string());
        if (url && url->isFileURL()) paths.push_back(url->path());
    }
    return paths;
}

bool moveOrShare(const std::string& path, const std::string& from, const fs::path& root,
                 const fs::path& target) {
    std::error_code error;
    if (const fs::path file = ownFile(path, from); !file.empty()) {
        fs::rename(file, target, error);
        return !error;
    }
    if (const fs::path file = ownFile(path, root); !file.empty()) {
        fs::create_hard_link(file, target, error);
        if (error) fs::copy_file(file, target, error);
        return !error;
    }
    return false;
}

}  // namespace

void AttachmentStorage::take(platform::NotificationContent& content,
                             const std::string& from) const {
    if (content.attachments.empty()) return;
    const fs::path folder = fs::path(root_) / randomIdentifier();
    std::error_code error;
    fs::create_directories(folder, error);
    std::vector<platform::Attachment> taken;
    for (const platform::Attachment& attachment : content.attachments) {
        const std::string path = attachment.url.path();
        const fs::path target = folder / fs::path(path).filename();
        if (!moveOrShare(path, from, root_, target)) continue;
        taken.push_back({attachment.identifier, foundation::URL::fileURLWithPath(target.string())});
    }
    if (taken.empty()) fs::remove(folder, error);
    content.attachments = std::move(taken);
}

void AttachmentStorage::remove(const foundation::Value& content) const {
    std::error_code error;
    for (const std::string& path : pathsOf(content)) {
        const fs::path file = ownFile(path, root_);
        if (file.empty()) continue;
        fs::remove(file, error);
        fs::remove(file.parent_path(), error);  // once it is empty
    }
}

void AttachmentStorage::removeAllBut(const std::vector<foundation::Value>& contents) const {
    std::set<fs::path> kept;
    for (const foundation::Value& content : contents) {
        for (const std::string& path : pathsOf(content))
            kept.insert(fs::path(path).parent_path().filename());
    }
    std::error_code error;
    for (const auto& folder : fs::directory_iterator(root_, error)) {
        if (!kept.contains(folder.path().filename())) fs::remove_all(folder.path(), error);
    }
}

}  // namespace tavrolin::device

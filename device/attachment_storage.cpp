#include "device/attachment_storage.h"

#include <filesystem>
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
    const foundation::Value& attachments = content["attachments"];
    if (!attachments.isArray()) return;
    std::error_code error;
    for (const foundation::Value& attachment : attachments.items()) {
        if (!attachment.isDictionary() || !attachment["url"].isString()) continue;
        const auto url = foundation::URL::withString(attachment["url"].string());
        if (!url || !url->isFileURL()) continue;
        const fs::path file = ownFile(url->path(), root_);
        if (file.empty()) continue;
        fs::remove(file, error);
        fs::remove(file.parent_path(), error);  // once it is empty
    }
}

}  // namespace tavrolin::device

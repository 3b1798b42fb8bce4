#include "adapters/memory/memory_html_importer.h"

#include <charconv>
#include <utility>

namespace tavrolin::adapters::memory {

namespace {

constexpr std::size_t kNone = std::string_view::npos;

// What stands between the two; nothing when they are not there.
std::string_view between(std::string_view text, std::string_view begin, std::string_view end) {
    const std::size_t at = text.find(begin);
    if (at == kNone) return {};
    text.remove_prefix(at + begin.size());
    return text.substr(0, text.find(end));
}

platform::TextAttributes attributesOf(std::string_view rule) {
    platform::TextAttributes attributes;
    const std::string_view size = between(rule, "font-size:", "px");
    std::from_chars(size.data(), size.data() + size.size(), attributes.font.size);
    attributes.font.bold = rule.find("font-weight: bold") != kNone;
    const std::string_view color = between(rule, "color: #", ";").substr(0, 6);
    unsigned long bits = 0;
    std::from_chars(color.data(), color.data() + color.size(), bits, 16);
    if (color.size() == 6) attributes.color = platform::Color::rgba(bits << 8U | 0xFFU);
    return attributes;
}

std::string withoutTags(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t tag = text.find('<');
        result += text.substr(0, tag);
        const std::size_t end = tag == kNone ? kNone : text.find('>', tag);
        if (end == kNone) break;
        text.remove_prefix(end + 1);
    }
    return result;
}

std::string decoded(std::string_view text) {
    constexpr std::pair<std::string_view, char> kEntities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string result;
    while (!text.empty()) {
        std::size_t length = 1;
        char character = text.front();
        for (const auto& [entity, meant] : kEntities) {
            if (!text.starts_with(entity)) continue;
            length = entity.size();
            character = meant;
        }
        result += character;
        text.remove_prefix(length);
    }
    return result;
}

}  // namespace

void MemoryHTMLImporter::setError(foundation::Error error) {
    const std::lock_guard lock(mutex_);
    error_ = std::move(error);
}

std::vector<std::string> MemoryHTMLImporter::takeDocuments() {
    const std::lock_guard lock(mutex_);
    return std::exchange(documents_, {});
}

platform::HTMLImporter::Result MemoryHTMLImporter::importHTML(std::string_view document) {
    const std::size_t body = document.find("<body");
    const std::lock_guard lock(mutex_);
    documents_.emplace_back(document);
    return {platform::StyledText::plain(
                decoded(withoutTags(body == kNone ? document : document.substr(body))),
                attributesOf(between(document, "body{", "}"))),
            error_};
}

}  // namespace tavrolin::adapters::memory

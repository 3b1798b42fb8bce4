#include "adapters/html/tag_scan.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <unordered_map>

#include "adapters/html/characters.h"

namespace tavrolin::adapters::html {

namespace {

constexpr std::size_t kNone = std::string_view::npos;
constexpr std::size_t kMaximumDepth = 256;
constexpr std::size_t kMaximumAttributes = 64;
// Each further one is merged into the first, attribute by attribute.
constexpr std::size_t kMaximumRootTags = 8;

// No content, so no end.
constexpr std::string_view kVoid[] = {
    "area", "base",  "basefont", "bgsound", "br",   "col",   "embed",  "frame", "hr", "image",
    "img",  "input", "keygen",   "link",    "meta", "param", "source", "track", "wbr"};
// The parser looks for nothing but their end tag.
constexpr std::string_view kRaw[] = {"script", "style",  "title",   "textarea",
                                     "xmp",    "iframe", "noembed", "noframes"};
// The next of its kind closes it.
constexpr std::string_view kClosedByNext[] = {"p",  "li",    "dt",    "dd",    "td",    "th",
                                              "tr", "tbody", "thead", "tfoot", "option"};
constexpr std::string_view kBreaking[] = {"p",  "div", "br", "li", "tr", "td", "h1",
                                          "h2", "h3",  "h4", "h5", "h6", "ul", "ol"};

template <std::size_t N>
bool isOneOf(const std::string_view (&names)[N], std::string_view name) {
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

struct Tag {
    std::string name;
    bool isEnd = false;
    std::size_t begin = 0;
    std::size_t attributesEnd = kNone;  // of those that it may keep
    std::size_t end = kNone;            // behind ">"; kNone: the document ends inside
};

std::size_t skipBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && (isBlank(text[at]) || text[at] == '/'))
        ++at;
    return at;
}

// Behind the attribute that begins at `at`; kNone when its quote is never closed.
std::size_t endOfAttribute(std::string_view text, std::size_t at) {
    std::size_t name = at + 1;  // even a "=" may be its first character
    while (name < text.size() && !isBlank(text[name]) && text[name] != '/' && text[name] != '>' &&
           text[name] != '=') {
        ++name;
    }
    std::size_t value = name;
    while (value < text.size() && isBlank(text[value]))
        ++value;
    if (value >= text.size() || text[value] != '=') return name;
    ++value;
    while (value < text.size() && isBlank(text[value]))
        ++value;
    if (value >= text.size()) return value;
    if (text[value] == '"' || text[value] == '\'') {
        const std::size_t close = text.find(text[value], value + 1);
        return close == kNone ? kNone : close + 1;
    }
    while (value < text.size() && !isBlank(text[value]) && text[value] != '>')
        ++value;
    return value;
}

// The tag of which the name begins at `name`.
Tag scanTag(std::string_view text, std::size_t begin, std::size_t name) {
    Tag tag;
    tag.begin = begin;
    tag.isEnd = name == begin + 2;
    std::size_t at = name;
    while (at < text.size() && !isBlank(text[at]) && text[at] != '/' && text[at] != '>')
        ++at;
    constexpr std::size_t kLongestName = 32;
    tag.name = lowercased(text.substr(name, std::min(at - name, kLongestName)));
    for (std::size_t count = 0;; ++count) {
        at = skipBlanks(text, at);
        if (at >= text.size()) return tag;
        if (count == kMaximumAttributes) tag.attributesEnd = at;
        if (text[at] == '>') {
            tag.end = at + 1;
            return tag;
        }
        at = endOfAttribute(text, at);
        if (at == kNone) return tag;
    }
}

// Where the end tag of this name begins, at or behind `at`; the text's end when nowhere.
std::size_t findEndTag(std::string_view text, std::size_t at, std::string_view name) {
    while ((at = text.find("</", at)) != kNone) {
        const std::size_t after = at + 2 + name.size();
        if (after < text.size() && lowercased(text.substr(at + 2, name.size())) == name &&
            (isBlank(text[after]) || text[after] == '/' || text[after] == '>')) {
            return at;
        }
        at += 2;
    }
    return text.size();
}

// Behind a comment, a doctype or the like that begins at `at`.
std::size_t endOfMarkup(std::string_view text, std::size_t at) {
    std::size_t end = 0;
    if (text.substr(at).starts_with("<!--")) {
        // "<!-->" is a whole one.
        end = text.find("-->", at + 2);
        if (end != kNone) end += 3;
    } else {
        end = text.find('>', at);
        if (end != kNone) ++end;
    }
    return end == kNone ? text.size() : end;
}

class Bounding {
public:
    Bounding(std::string_view text, BoundedDocument& result) : text_(text), result_(result) {}

    void run() {
        std::size_t at = 0;
        while ((at = text_.find('<', at)) != kNone && at + 1 < text_.size()) {
            const bool isEnd = text_[at + 1] == '/';
            const std::size_t name = at + (isEnd ? 2 : 1);
            if (name < text_.size() && isLetter(text_[name])) {
                const Tag tag = scanTag(text_, at, name);
                if (tag.end == kNone) {
                    result_.endsInsideTag = true;
                    bound(tag);
                    break;
                }
                at = take(tag);
            } else if (isEnd || text_[at + 1] == '!' || text_[at + 1] == '?') {
                at = endOfMarkup(text_, at);
            } else {
                ++at;
            }
        }
        result_.text = text_;
        if (kept_ == 0) return;
        result_.changed.append(text_.substr(kept_));
        result_.text = result_.changed;
    }

private:
    struct Count {
        std::size_t open = 0;
        std::size_t leftOut = 0;
    };

    // Goes on behind what was returned.
    std::size_t take(const Tag& tag) {
        if (tag.isEnd) {
            takeEnd(tag);
            return tag.end;
        }
        if (isOneOf(kRaw, tag.name)) {
            bound(tag);
            return findEndTag(text_, tag.end, tag.name);
        }
        if (tag.name == "html" || tag.name == "body") {
            if (++rootTags_ > kMaximumRootTags) {
                leaveOut(tag.begin, tag.end);
            } else {
                bound(tag);
            }
            return tag.end;
        }
        if (tag.name == "svg" || tag.name == "math") isForeign_ = true;
        if (!isOneOf(kVoid, tag.name)) {
            Count& count = counts_[tag.name];
            const bool replaces = !isForeign_ && count.open > 0 && isOneOf(kClosedByNext, tag.name);
            if (!replaces && depth_ == kMaximumDepth) {
                ++count.leftOut;
                leaveOut(tag.begin, tag.end);
                return tag.end;
            }
            if (!replaces) {
                ++count.open;
                ++depth_;
            }
        }
        bound(tag);
        return tag.end;
    }

    void takeEnd(const Tag& tag) {
        const auto found = counts_.find(tag.name);
        if (found != counts_.end() && found->second.leftOut > 0) {
            --found->second.leftOut;
            leaveOut(tag.begin, tag.end);
            return;
        }
        if (found != counts_.end() && found->second.open > 0) {
            --found->second.open;
            --depth_;
        }
        bound(tag);
    }

    void bound(const Tag& tag) {
        const std::size_t end = tag.end == kNone ? text_.size() : tag.end - 1;
        if (tag.attributesEnd < end) leaveOut(tag.attributesEnd, end);
    }

    void leaveOut(std::size_t begin, std::size_t end) {
        result_.changed.append(text_.substr(kept_, begin - kept_));
        kept_ = end;
    }

    std::string_view text_;
    BoundedDocument& result_;
    std::size_t kept_ = 0;  // what is before it is copied, or left out
    std::size_t depth_ = 0;
    std::size_t rootTags_ = 0;
    bool isForeign_ = false;
    std::unordered_map<std::string, Count> counts_;
};

std::size_t beginOfBody(std::string_view document) {
    for (std::size_t at = 0; (at = document.find('<', at)) != kNone; ++at) {
        if (lowercased(document.substr(at + 1, 4)) == "body")
            return std::min(document.find('>', at), document.size() - 1) + 1;
    }
    return 0;
}

}  // namespace

void boundDocument(std::string_view document, BoundedDocument& bounded) {
    Bounding(document, bounded).run();
}

std::string withoutTags(std::string_view document) {
    std::size_t at = beginOfBody(document);
    std::string result(document.substr(0, at));
    while (at < document.size()) {
        const std::size_t begin = std::min(document.find('<', at), document.size());
        result += document.substr(at, begin - at);
        if (begin + 1 >= document.size()) break;
        const std::size_t name = begin + (document[begin + 1] == '/' ? 2 : 1);
        if (name < document.size() && isLetter(document[name])) {
            const std::size_t nameEnd =
                std::min(document.find_first_of(" \t\n\r\f/>", name), document.size());
            const std::string tag = lowercased(document.substr(name, nameEnd - name));
            if (isOneOf(kBreaking, tag)) result += ' ';
            at = std::min(document.find('>', begin), document.size() - 1) + 1;
            if (name == begin + 1 && isOneOf(kRaw, tag)) at = findEndTag(document, at, tag);
        } else if (document[begin + 1] == '!' || document[begin + 1] == '?') {
            at = endOfMarkup(document, begin);
        } else {
            result += "&lt;";
            at = begin + 1;
        }
    }
    return result;
}

}  // namespace tavrolin::adapters::html

#include "tavrolin/foundation/url.h"

#include <algorithm>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::foundation {

namespace {

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The value of a hex digit, or -1.
int hexDigit(char c) {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

bool isEscape(std::string_view text, std::size_t at) {
    return text.size() - at >= 3 && hexDigit(text[at + 1]) >= 0 && hexDigit(text[at + 2]) >= 0;
}

bool holdsOnlyUrlCharacters(std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c <= ' ' || c >= 0x7F) return false;  // a char above ASCII is negative or above
        if (std::string_view("\"<>\\^`{|}").find(c) != std::string_view::npos) return false;
        if (c == '%' && !isEscape(text, i)) return false;
    }
    return true;
}

bool isScheme(std::string_view text) {
    if (text.empty() || !isLetter(text[0])) return false;
    for (const char c : text) {
        if (!isLetter(c) && !isDigit(c) && c != '+' && c != '-' && c != '.') return false;
    }
    return true;
}

// Letters and digits always stay, and so do the `others`.
std::string percentEncoded(std::string_view text, std::string_view others) {
    static constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size() + text.size() / 4);
    for (const char c : text) {
        if (isLetter(c) || isDigit(c) || others.find(c) != std::string_view::npos) {
            result += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            result += '%';
            result += kHex[byte >> 4U];
            result += kHex[byte & 15U];
        }
    }
    return result;
}

constexpr std::string_view kStayInQuery = "-._~!$&'()*+,;=:@/?";
constexpr std::string_view kStayInQueryItem = "-._~!$'()*+,;:@/?";  // without & and =
constexpr std::string_view kStayInPath = "-._~!$&'()*+,;=:@/";

// A text whose escapes make no UTF-8 stays as it stands: it names no file anyhow.
std::string decodedOrAsItStands(std::string_view text) {
    auto decoded = removingPercentEncoding(text);
    return decoded ? std::move(*decoded) : std::string(text);
}

struct HostAndPort {
    std::string_view host;
    std::string_view port;
    bool valid = true;
};

HostAndPort hostAndPort(std::string_view authority) {
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
        authority.remove_prefix(at + 1);
    }
    HostAndPort result;
    std::string_view rest;
    if (authority.starts_with('[')) {  // an IPv6 address, which has colons of its own
        const auto close = authority.find(']');
        if (close == std::string_view::npos) return {.host = {}, .port = {}, .valid = false};
        result.host = authority.substr(1, close - 1);
        rest = authority.substr(close + 1);
    } else {
        const auto colon = authority.find(':');
        result.host = authority.substr(0, colon);
        if (colon != std::string_view::npos) rest = authority.substr(colon);
        result.valid = result.host.find_first_of("[]") == std::string_view::npos;
    }
    if (!rest.empty()) {
        result.port = rest.substr(1);
        result.valid = result.valid && rest[0] == ':' &&
                       result.port.find_first_not_of("0123456789") == std::string_view::npos;
    }
    return result;
}

}  // namespace

std::optional<URL> URL::withString(std::string_view text) {
    if (text.empty() || !holdsOnlyUrlCharacters(text)) return std::nullopt;
    URL url;
    url.text_ = text;
    if (!url.split()) return std::nullopt;
    return url;
}

URL URL::fileURLWithPath(std::string_view path) {
    if (!path.starts_with('/')) {
        Exception::raise(Exception::kInvalidArgument,
                         "the path of a file URL must be absolute: \"" + std::string(path) + '"');
    }
    URL url;
    url.text_ = "file://" + percentEncoded(path, kStayInPath);
    url.split();
    return url;
}

// Finds the parts; false when the text breaks the grammar: a colon in the first segment that ends
// no scheme, a bracket out of place in the host, a port that is no number.
bool URL::split() {
    const std::string_view text = text_;
    std::size_t at = 0;
    scheme_ = authority_ = {};
    const std::size_t mark = text.find_first_of(":/?#");
    if (mark != std::string_view::npos && text[mark] == ':') {
        scheme_ = {0, mark};
        if (!isScheme(scheme())) return false;
        at = mark + 1;
    }
    if (text.substr(at).starts_with("//")) {
        const std::size_t end = std::min(text.find_first_of("/?#", at + 2), text.size());
        authority_ = {at + 2, end};
        if (!hostAndPort(part(authority_)).valid) return false;
        at = end;
    }
    path_ = {at, std::min(text.find_first_of("?#", at), text.size())};
    at = path_.end;
    hasQuery_ = at < text.size() && text[at] == '?';
    query_ = {at, at};
    if (hasQuery_) query_ = {at + 1, std::min(text.find('#', at), text.size())};
    return true;
}

std::string_view URL::host() const {
    return hostAndPort(part(authority_)).host;
}

std::string URL::path() const {
    std::string_view path = part(path_);
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    return decodedOrAsItStands(path);
}

std::optional<std::string_view> URL::query() const {
    if (!hasQuery_) return std::nullopt;
    return part(query_);
}

bool URL::isFileURL() const {
    static constexpr std::string_view kFile = "file";
    const std::string_view text = scheme();
    if (text.size() != kFile.size()) return false;
    for (std::size_t i = 0; i < kFile.size(); ++i) {
        if ((text[i] | 0x20) != kFile[i]) return false;
    }
    return true;
}

std::string URL::lastPathComponent() const {
    return decodedOrAsItStands(foundation::lastPathComponent(part(path_)));
}

URL URL::appendingPathComponent(std::string_view component) const {
    while (component.starts_with('/'))
        component.remove_prefix(1);
    std::size_t end = path_.end;
    while (end > path_.begin && text_[end - 1] == '/')
        --end;
    URL result;
    result.text_ = text_.substr(0, end) + '/' + percentEncoded(component, kStayInPath) +
                   text_.substr(path_.end);
    result.split();
    return result;
}

void URL::setQueryItems(const std::vector<std::pair<std::string, std::string>>& items) {
    removeQuery();
    std::string query;
    for (const auto& [name, value] : items) {
        query += query.empty() ? '?' : '&';
        query +=
            percentEncoded(name, kStayInQueryItem) + '=' + percentEncoded(value, kStayInQueryItem);
    }
    text_.insert(path_.end, query);
    split();
}

void URL::removeQuery() {
    if (!hasQuery_) return;
    text_.erase(path_.end, query_.end - path_.end);
    split();
}

std::string percentEncodedForQuery(std::string_view text) {
    return percentEncoded(text, kStayInQuery);
}

std::optional<std::string> removingPercentEncoding(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        if (!isEscape(text, i)) return std::nullopt;
        result += static_cast<char>(hexDigit(text[i + 1]) * 16 + hexDigit(text[i + 2]));
        i += 2;
    }
    if (!isValidUtf8(result)) return std::nullopt;
    return result;
}

std::string_view lastPathComponent(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/'))
        path.remove_suffix(1);
    if (path == "/") return path;
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPathComponent(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    return name.substr(dot + 1);
}

}  // namespace tavrolin::foundation

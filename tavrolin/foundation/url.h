#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrolin::foundation {

/// A URL, by RFC 3986: `scheme:[//authority]path[?query][#fragment]`. Holds the text as it was
/// given; the parts are found when it is made. Immutable but for the setters.
class URL {
public:
    /// Nothing when the text is empty or holds a character that a URL can't (blanks, control
    /// characters, anything above ASCII, `"<>\^`{|}`), or a percent sign without two hex digits.
    static std::optional<URL> withString(std::string_view text);
    /// "file://" and the path, percent-encoded. The path must be absolute.
    static URL fileURLWithPath(std::string_view path);

    const std::string& absoluteString() const { return text_; }
    /// As it stands, case kept; empty when there is none.
    std::string_view scheme() const { return part(scheme_); }
    std::string_view host() const;
    /// With percent-encoding removed; without a trailing slash, as the platform gives it.
    std::string path() const;
    std::optional<std::string_view> query() const;  // still encoded
    bool isFileURL() const;
    std::string lastPathComponent() const;  // decoded
    /// The component is encoded; exactly one slash stands between it and what was there.
    URL appendingPathComponent(std::string_view component) const;

    /// Replaces the query. An empty list removes it; names and values are percent-encoded.
    void setQueryItems(const std::vector<std::pair<std::string, std::string>>& items);
    void removeQuery();

    bool operator==(const URL& other) const { return text_ == other.text_; }

private:
    struct Range {
        std::size_t begin = 0;
        std::size_t end = 0;
    };
    std::string_view part(Range range) const {
        return std::string_view(text_).substr(range.begin, range.end - range.begin);
    }
    bool split();

    std::string text_;
    Range scheme_, authority_, path_, query_;
    bool hasQuery_ = false;
};

/// The characters that stay as they are when a text is percent-encoded for a URL's query: letters,
/// digits and -._~!$&'()*+,;=:@/?
std::string percentEncodedForQuery(std::string_view text);
/// Nothing when a percent sign is not followed by two hex digits, or when the result is not UTF-8.
std::optional<std::string> removingPercentEncoding(std::string_view text);

/// The last component of a path or of a URL's text, taken as plain text: trailing slashes are
/// dropped ("/" itself stays), nothing is decoded.
std::string_view lastPathComponent(std::string_view path);
/// What follows the last dot of the last component, or nothing ("archive.tar.gz" gives "gz", ".x"
/// and "x." give "").
std::string_view pathExtension(std::string_view path);

}  // namespace tavrolin::foundation

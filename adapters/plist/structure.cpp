#include "adapters/plist/structure.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace tavrolin::adapters::plist {

// --- XML ----------------------------------------------------------------------------------------

namespace {

// Where the markup that begins at `at` ends; comments and character data count as one piece.
std::size_t endOfMarkup(std::string_view text, std::size_t at) {
    const std::string_view rest = text.substr(at);
    std::string_view end = ">";
    if (rest.starts_with("<!--")) end = "-->";
    if (rest.starts_with("<![CDATA[")) end = "]]>";
    if (rest.starts_with("<?")) end = "?>";
    const std::size_t found = text.find(end, at);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

}  // namespace

bool xmlIsWithinBounds(std::string_view text) {
    // A text with a NUL in it ends the process later on, as a key.
    if (text.find('\0') != std::string_view::npos) return false;
    int depth = 0;
    unsigned long values = 0;
    for (std::size_t at = text.find('<'); at != std::string_view::npos;) {
        const std::size_t end = endOfMarkup(text, at);
        const std::string_view tag = text.substr(at, end - at);
        if (tag.starts_with("<!")) {
            // Declarations inside could hide what is nested, and no property list has them.
            if (tag.starts_with("<!DOCTYPE") && tag.find('[') != std::string_view::npos)
                return false;
        } else if (tag.starts_with("</")) {
            if (depth > 0) --depth;
        } else if (!tag.starts_with("<?")) {
            // Attributes could hide an end, and only the list's own element has one.
            if (!tag.starts_with("<plist") && tag.find_first_of("\"'") != std::string_view::npos) {
                return false;
            }
            if (tag.starts_with("<plist") && values > 0) return false;
            ++values;
            if (!tag.ends_with("/>")) ++depth;
        }
        // The list's own element and the innermost one come on top of the levels.
        if (depth > kDeepest + 2 || values > 2 * kMostValues) return false;
        at = text.find('<', end);
    }
    return true;
}

// --- Binary -------------------------------------------------------------------------------------

namespace {

constexpr std::size_t kTrailer = 32;

// The object table of a binary list: which objects refer to which.
class Objects {
public:
    explicit Objects(std::string_view bytes) : bytes_(bytes) {}

    bool open() {
        if (bytes_.size() < 8 + kTrailer) return false;
        const std::size_t trailer = bytes_.size() - kTrailer;
        offsetSize_ = byte(trailer + 6);
        referenceSize_ = byte(trailer + 7);
        const auto count = number(trailer + 8, 8);
        const auto root = number(trailer + 16, 8);
        const auto table = number(trailer + 24, 8);
        if (!count || !root || !table || offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 ||
            referenceSize_ > 8 || *count > kMostValues || *root >= *count || *table > trailer ||
            *count * offsetSize_ > trailer - *table) {
            return false;
        }
        count_ = *count;
        root_ = *root;
        table_ = *table;
        return true;
    }

    std::size_t count() const { return count_; }
    std::size_t root() const { return root_; }

    // The objects that this one refers to; nothing when it is malformed.
    std::optional<std::vector<std::size_t>> references(std::size_t object) const {
        const auto at = number(table_ + object * offsetSize_, offsetSize_);
        if (!at || *at >= table_) return std::nullopt;
        const unsigned kind = byte(*at) >> 4U;
        if (kind != 0xA && kind != 0xC && kind != 0xD) return std::vector<std::size_t>();
        const auto contents = contentsAt(*at);
        if (!contents || contents->length > kMostValues) return std::nullopt;
        const std::size_t next = contents->next;
        std::size_t length = contents->length;
        const std::size_t keys = kind == 0xD ? length : 0;
        length += keys;  // keys, then values
        if (length > kMostValues || next > table_ || length * referenceSize_ > table_ - next) {
            return std::nullopt;
        }
        std::vector<std::size_t> result;
        result.reserve(length);
        for (std::size_t i = 0; i < length; ++i) {
            const auto reference = number(next + i * referenceSize_, referenceSize_);
            if (!reference || *reference >= count_) return std::nullopt;
            if (i < keys && !isKey(*reference)) return std::nullopt;
            result.push_back(*reference);
        }
        return result;
    }

private:
    // A text without a NUL, at which the library ends the process.
    bool isKey(std::size_t object) const {
        const auto at = number(table_ + object * offsetSize_, offsetSize_);
        if (!at || *at >= table_) return false;
        const unsigned kind = byte(*at) >> 4U;
        if (kind != 5 && kind != 6) return false;  // ASCII, or UTF-16
        const auto contents = contentsAt(*at);
        const std::size_t width = kind - 4;
        if (!contents || contents->next > table_ ||
            contents->length > (table_ - contents->next) / width) {
            return false;
        }
        for (std::size_t i = 0; i < contents->length; ++i) {
            if (*number(contents->next + i * width, width) == 0) return false;
        }
        return true;
    }

    struct Contents {
        std::size_t length = 0;  // in characters or references
        std::size_t next = 0;    // where they begin
    };

    // What follows an object's marker: a length above 14 is an integer of its own.
    std::optional<Contents> contentsAt(std::size_t at) const {
        Contents result{byte(at) & 15U, at + 1};
        if (result.length != 15) return result;
        const unsigned marker = byte(result.next);
        const std::size_t size = std::size_t{1} << (marker & 15U);
        const auto large = size <= 8 ? number(result.next + 1, size) : std::nullopt;
        if (marker >> 4U != 1 || !large) return std::nullopt;
        return Contents{*large, result.next + 1 + size};
    }

    unsigned byte(std::size_t at) const {
        return at < bytes_.size() ? static_cast<unsigned char>(bytes_[at]) : 0;
    }
    std::optional<std::size_t> number(std::size_t at, std::size_t size) const {
        if (at > bytes_.size() || size > bytes_.size() - at) return std::nullopt;
        std::uint64_t result = 0;
        for (std::size_t i = 0; i < size; ++i)
            result = result << 8U | byte(at + i);
        return result;
    }

    std::string_view bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::size_t count_ = 0;
    std::size_t root_ = 0;
    std::size_t table_ = 0;
};

// What hangs below an object, itself included; values that are referred to twice count twice.
struct Extent {
    enum class State : std::uint8_t { unknown, underWay, known } state = State::unknown;
    int depth = 1;
    unsigned long values = 1;
};

// An object on the way down, and how many of its references were looked at.
struct Visit {
    std::size_t object = 0;
    std::vector<std::size_t> references;
    std::size_t next = 0;
};

}  // namespace

bool binaryIsWithinBounds(std::string_view bytes) {
    Objects objects(bytes);
    if (!objects.open()) return false;
    std::vector<Extent> extents(objects.count());
    std::vector<Visit> way;
    const auto enter = [&](std::size_t object) {
        auto references = objects.references(object);
        if (!references || way.size() >= kDeepest) return false;
        extents[object].state = Extent::State::underWay;
        way.push_back({object, std::move(*references)});
        return true;
    };
    if (!enter(objects.root())) return false;
    while (!way.empty()) {
        Visit& visit = way.back();
        Extent& extent = extents[visit.object];
        if (visit.next == visit.references.size()) {
            extent.state = Extent::State::known;
            way.pop_back();
            continue;
        }
        const Extent& child = extents[visit.references[visit.next]];
        if (child.state == Extent::State::underWay) return false;  // a circle
        if (child.state == Extent::State::unknown) {
            if (!enter(visit.references[visit.next])) return false;
            continue;  // comes back to the same reference, known then
        }
        extent.depth = std::max(extent.depth, child.depth + 1);
        extent.values += child.values;
        if (extent.depth > kDeepest || extent.values > kMostValues) return false;
        ++visit.next;
    }
    return true;
}

}  // namespace tavrolin::adapters::plist

#include "adapters/html/style_sheet.h"

#include <algorithm>

#include "adapters/html/characters.h"

namespace tavrolin::adapters::html {

namespace {

constexpr std::size_t kMaximumRules = 256;
// What one element costs stays bounded, whatever the sheet holds.
constexpr std::size_t kMaximumClasses = 16;
constexpr std::size_t kMaximumDeclarations = 64;
constexpr std::size_t kNone = std::string_view::npos;

std::string withoutComments(std::string_view text) {
    std::string result;
    for (;;) {
        const std::size_t begin = text.find("/*");
        result += text.substr(0, begin);
        if (begin == kNone) return result;
        result += ' ';
        const std::size_t end = text.find("*/", begin + 2);
        if (end == kNone) return result;
        text.remove_prefix(end + 2);
    }
}

// Where the character first stands outside quotes and brackets; the text's end when nowhere.
std::size_t findOutside(std::string_view text, char wanted) {
    char quote = 0;
    std::size_t depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != 0) {
            if (c == quote) quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == wanted && depth == 0) {
            return i;
        } else if (c == '(') {
            ++depth;
        } else if (c == ')' && depth > 0) {
            --depth;
        }
    }
    return text.size();
}

// The end of the block of which the brace stands at `open`; blocks may hold blocks. A quote that is
// not closed ends with its line.
std::size_t endOfBlock(std::string_view text, std::size_t open) {
    std::size_t depth = 0;
    char quote = 0;
    for (std::size_t i = open; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != 0) {
            if (c == quote || c == '\n') quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '{') {
            ++depth;
        } else if (c == '}' && --depth == 0) {
            return i;
        }
    }
    return text.size();
}

bool hasClass(std::string_view classes, std::string_view wanted) {
    for (std::string_view word = takeWord(classes); !word.empty(); word = takeWord(classes)) {
        if (word == wanted) return true;
    }
    return false;
}

bool isNameCharacter(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '-' || c == '_' ||
           static_cast<unsigned char>(c) >= 0x80;
}

std::string_view takeName(std::string_view& text) {
    std::size_t length = 0;
    while (length < text.size() && isNameCharacter(text[length]))
        ++length;
    const std::string_view name = text.substr(0, length);
    text.remove_prefix(length);
    return name;
}

}  // namespace

int StyleSheet::Rule::precision() const {
    const auto inTheMiddle =
        static_cast<int>(classes.size()) + (firstChild ? 1 : 0) + (lastChild ? 1 : 0);
    return (id.empty() ? 0 : 10000) + inTheMiddle * 100 + (tag.empty() ? 0 : 1);
}

bool StyleSheet::Rule::matches(const ElementFacts& element) const {
    if (!tag.empty() && tag != element.tag) return false;
    if (!id.empty() && id != element.id) return false;
    if ((firstChild && !element.isFirstChild) || (lastChild && !element.isLastChild)) return false;
    return std::all_of(classes.begin(), classes.end(),
                       [&](const std::string& each) { return hasClass(element.classes, each); });
}

void StyleSheet::add(std::string_view text) {
    const std::string clean = withoutComments(text);
    std::string_view rest = clean;
    while (!(rest = withoutBlanks(rest)).empty()) {
        // Nothing is looked for beyond what ends the statement: that would take the square of time.
        const bool isAtRule = rest.front() == '@';
        const std::size_t open = rest.find_first_of(isAtRule ? "{;" : "{");
        if (open == kNone) return;
        if (rest[open] == ';') {  // @import and the like
            rest.remove_prefix(open + 1);
            continue;
        }
        const std::size_t end = endOfBlock(rest, open);
        if (!isAtRule) addRules(rest.substr(0, open), rest.substr(open + 1, end - open - 1));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

void StyleSheet::addRules(std::string_view selectors, std::string_view block) {
    std::vector<Rule> added;
    for (;;) {
        const std::size_t comma = selectors.find(',');
        Rule rule;
        rule.declarations = declarations_.size();
        // One selector that is not understood makes the whole list void.
        if (rules_.size() + added.size() == kMaximumRules ||
            !parseSelector(withoutBlanks(selectors.substr(0, comma)), rule)) {
            return;
        }
        added.push_back(std::move(rule));
        if (comma == kNone) break;
        selectors.remove_prefix(comma + 1);
    }
    declarations_.push_back(parsedDeclarations(block));
    for (Rule& rule : added) {
        const auto place = std::upper_bound(
            rules_.begin(), rules_.end(), rule.precision(),
            [](int precision, const Rule& other) { return precision < other.precision(); });
        rules_.insert(place, std::move(rule));
    }
}

bool StyleSheet::parseSelector(std::string_view text, Rule& rule) {
    if (text.empty()) return false;
    if (text.front() == '*') {
        text.remove_prefix(1);
    } else {
        rule.tag = lowercased(takeName(text));
    }
    while (!text.empty()) {
        const char kind = text.front();
        text.remove_prefix(1);
        const std::string_view name = takeName(text);
        if (kind == '.' && !name.empty() && rule.classes.size() < kMaximumClasses) {
            rule.classes.emplace_back(name);
        } else if (kind == '#' && !name.empty() && rule.id.empty()) {
            rule.id = name;
        } else if (kind == ':' && name == "first-child") {
            rule.firstChild = true;
        } else if (kind == ':' && name == "last-child") {
            rule.lastChild = true;
        } else {
            return false;
        }
    }
    return true;
}

std::vector<StyleSheet::Declaration> StyleSheet::parsedDeclarations(std::string_view text) {
    std::vector<Declaration> result;
    while (!text.empty() && result.size() < kMaximumDeclarations) {
        const std::size_t end = findOutside(text, ';');
        const std::string_view each = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t colon = each.find(':');
        if (colon == kNone) continue;
        Declaration declaration;
        declaration.property = lowercased(withoutBlanks(each.substr(0, colon)));
        std::string_view value = withoutBlanks(each.substr(colon + 1));
        const std::size_t mark = value.rfind('!');
        if (mark != kNone && lowercased(withoutBlanks(value.substr(mark + 1))) == "important") {
            declaration.isImportant = true;
            value = withoutBlanks(value.substr(0, mark));
        }
        declaration.value = lowercased(value);
        result.push_back(std::move(declaration));
    }
    return result;
}

void StyleSheet::apply(Style& style, const StyleContext& context,
                       const ElementFacts& element) const {
    const auto own = element.style.empty() ? std::vector<Declaration>()
                                           : parsedDeclarations(withoutComments(element.style));
    bool anyIsImportant = false;
    const auto applyAll = [&](const std::vector<Declaration>& declarations, bool important) {
        for (const Declaration& each : declarations) {
            anyIsImportant = anyIsImportant || each.isImportant;
            if (each.isImportant == important)
                applyDeclaration(style, context, each.property, each.value);
        }
    };
    const auto cascade = [&](bool important) {
        for (const Rule& rule : rules_) {
            if (rule.matches(element)) applyAll(declarations_[rule.declarations], important);
        }
        applyAll(own, important);
    };
    cascade(false);
    if (anyIsImportant) cascade(true);
}

}  // namespace tavrolin::adapters::html

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "adapters/html/style.h"

namespace tavrolin::adapters::html {

/// What a selector asks an element for.
struct ElementFacts {
    std::string_view tag;      // in lower case
    std::string_view id;       // empty: none
    std::string_view classes;  // with blanks between them
    std::string_view style;    // the attribute
    bool isFirstChild = false;
    bool isLastChild = false;
};

/// The style sheets of a document. Rules with a selector that is not understood are passed over,
/// as are those inside "@media" and the like.
class StyleSheet {
public:
    /// Adds the contents of a <style>.
    void add(std::string_view text);
    /// The cascade: rules by how precise their selector is, then by their order, then the style
    /// attribute; and the same again for what is important.
    void apply(Style& style, const StyleContext& context, const ElementFacts& element) const;

private:
    struct Declaration {
        std::string property;
        std::string value;
        bool isImportant = false;
    };
    struct Rule {
        std::string tag;  // empty: any
        std::string id;
        std::vector<std::string> classes;
        bool firstChild = false;
        bool lastChild = false;
        std::size_t declarations = 0;  // their place in declarations_

        int precision() const;
        bool matches(const ElementFacts& element) const;
    };

    static std::vector<Declaration> parsedDeclarations(std::string_view text);
    static bool parseSelector(std::string_view text, Rule& rule);
    void addRules(std::string_view selectors, std::string_view block);

    std::vector<Rule> rules_;  // by precision, then by order
    std::vector<std::vector<Declaration>> declarations_;
};

}  // namespace tavrolin::adapters::html

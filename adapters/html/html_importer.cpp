#include "adapters/html/html_importer.h"

#include <gumbo.h>

#include <algorithm>
#include <charconv>
#include <vector>

#include "adapters/html/characters.h"
#include "adapters/html/css_color.h"
#include "adapters/html/letter_case.h"
#include "adapters/html/parse_tree.h"
#include "adapters/html/style_sheet.h"
#include "adapters/html/tag_scan.h"
#include "adapters/html/text_collector.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::adapters::html {

namespace {

using platform::Color;
using platform::TextAlignment;

constexpr std::size_t kMaximumLength = 1'000'000;
constexpr std::size_t kMaximumClassLength = 1024;
constexpr double kHeadings[] = {2, 1.5, 1.17, 1, 0.83, 0.67};
constexpr double kSmaller = 1 / 1.2;

std::string_view attributeOf(const GumboElement& element, const char* name) {
    const GumboAttribute* found = gumbo_get_attribute(&element.attributes, name);
    return found == nullptr ? std::string_view() : std::string_view(found->value);
}

bool hasAttribute(const GumboElement& element, const char* name) {
    return gumbo_get_attribute(&element.attributes, name) != nullptr;
}

bool isElement(const GumboNode* node) {
    return node->type == GUMBO_NODE_ELEMENT || node->type == GUMBO_NODE_TEMPLATE;
}

// The children of which the type is text, one after the other.
std::string textOf(const GumboElement& element) {
    std::string text;
    for (unsigned i = 0; i < element.children.length; ++i) {
        const auto* child = static_cast<const GumboNode*>(element.children.data[i]);
        if (!isElement(child) && child->type != GUMBO_NODE_COMMENT) text += child->v.text.text;
    }
    return text;
}

bool isNeverShown(const GumboElement& element) {
    if (element.tag_namespace != GUMBO_NAMESPACE_HTML) return true;
    switch (element.tag) {
        case GUMBO_TAG_HEAD:
        case GUMBO_TAG_TITLE:
        case GUMBO_TAG_SCRIPT:
        case GUMBO_TAG_STYLE:
        case GUMBO_TAG_TEMPLATE:
        case GUMBO_TAG_IFRAME:
        case GUMBO_TAG_OBJECT:
        case GUMBO_TAG_EMBED:
        case GUMBO_TAG_APPLET:
        case GUMBO_TAG_NOSCRIPT:
        case GUMBO_TAG_NOFRAMES:
        case GUMBO_TAG_NOEMBED:
        case GUMBO_TAG_FRAMESET:
        case GUMBO_TAG_AUDIO:
        case GUMBO_TAG_VIDEO:
        case GUMBO_TAG_CANVAS:
        case GUMBO_TAG_SELECT:
        case GUMBO_TAG_TEXTAREA:
        case GUMBO_TAG_DATALIST:
        case GUMBO_TAG_RP:
            return true;
        default:
            return hasAttribute(element, "hidden");
    }
}

bool isBlockTag(GumboTag tag) {
    switch (tag) {
        case GUMBO_TAG_HTML:
        case GUMBO_TAG_BODY:
        case GUMBO_TAG_ADDRESS:
        case GUMBO_TAG_ARTICLE:
        case GUMBO_TAG_ASIDE:
        case GUMBO_TAG_BLOCKQUOTE:
        case GUMBO_TAG_CAPTION:
        case GUMBO_TAG_CENTER:
        case GUMBO_TAG_DD:
        case GUMBO_TAG_DETAILS:
        case GUMBO_TAG_DIR:
        case GUMBO_TAG_DIV:
        case GUMBO_TAG_DL:
        case GUMBO_TAG_DT:
        case GUMBO_TAG_FIELDSET:
        case GUMBO_TAG_FIGCAPTION:
        case GUMBO_TAG_FIGURE:
        case GUMBO_TAG_FOOTER:
        case GUMBO_TAG_FORM:
        case GUMBO_TAG_H1:
        case GUMBO_TAG_H2:
        case GUMBO_TAG_H3:
        case GUMBO_TAG_H4:
        case GUMBO_TAG_H5:
        case GUMBO_TAG_H6:
        case GUMBO_TAG_HEADER:
        case GUMBO_TAG_HGROUP:
        case GUMBO_TAG_HR:
        case GUMBO_TAG_LEGEND:
        case GUMBO_TAG_LI:
        case GUMBO_TAG_LISTING:
        case GUMBO_TAG_MAIN:
        case GUMBO_TAG_MENU:
        case GUMBO_TAG_NAV:
        case GUMBO_TAG_OL:
        case GUMBO_TAG_P:
        case GUMBO_TAG_PLAINTEXT:
        case GUMBO_TAG_PRE:
        case GUMBO_TAG_SECTION:
        case GUMBO_TAG_SUMMARY:
        case GUMBO_TAG_TABLE:
        case GUMBO_TAG_TBODY:
        case GUMBO_TAG_TFOOT:
        case GUMBO_TAG_THEAD:
        case GUMBO_TAG_TR:
        case GUMBO_TAG_UL:
        case GUMBO_TAG_XMP:
            return true;
        default:
            return false;
    }
}

// As browsers have it, which choose by whether a page is light or dark; here the text's own colour
// tells that.
Color linkColor(const std::optional<Color>& text) {
    const Color ink = text.value_or(Color::black());
    const double lightness = 0.299 * ink.red + 0.587 * ink.green + 0.114 * ink.blue;
    return Color::rgba(lightness < 0.5 ? 0x0000EEFF : 0x9E9EFFFF);
}

// What browsers do with a tag of which no style sheet speaks.
void applyTagStyle(Style& style, const GumboElement& element) {
    if (isBlockTag(element.tag)) style.display = Display::block;
    switch (element.tag) {
        case GUMBO_TAG_B:
        case GUMBO_TAG_STRONG:
        case GUMBO_TAG_TH:
            style.weight = 700;
            break;
        case GUMBO_TAG_I:
        case GUMBO_TAG_EM:
        case GUMBO_TAG_CITE:
        case GUMBO_TAG_DFN:
        case GUMBO_TAG_VAR:
        case GUMBO_TAG_ADDRESS:
            style.italic = true;
            break;
        case GUMBO_TAG_U:
        case GUMBO_TAG_INS:
            style.underline = true;
            break;
        case GUMBO_TAG_S:
        case GUMBO_TAG_STRIKE:
        case GUMBO_TAG_DEL:
            style.strikethrough = true;
            break;
        case GUMBO_TAG_A:
            if (!hasAttribute(element, "href")) break;
            style.underline = true;
            style.color = linkColor(style.color);
            break;
        case GUMBO_TAG_H1:
        case GUMBO_TAG_H2:
        case GUMBO_TAG_H3:
        case GUMBO_TAG_H4:
        case GUMBO_TAG_H5:
        case GUMBO_TAG_H6:
            style.weight = 700;
            style.fontSize *= kHeadings[element.tag - GUMBO_TAG_H1];
            break;
        case GUMBO_TAG_PRE:
        case GUMBO_TAG_XMP:
        case GUMBO_TAG_LISTING:
        case GUMBO_TAG_PLAINTEXT:
            style.whiteSpace = WhiteSpace::kept;
            style.monospaced = true;
            break;
        case GUMBO_TAG_CODE:
        case GUMBO_TAG_TT:
        case GUMBO_TAG_KBD:
        case GUMBO_TAG_SAMP:
            style.monospaced = true;
            break;
        case GUMBO_TAG_SMALL:
            style.fontSize *= kSmaller;
            break;
        case GUMBO_TAG_BIG:
            style.fontSize /= kSmaller;
            break;
        case GUMBO_TAG_SUB:
        case GUMBO_TAG_SUP:
            style.fontSize *= kSmaller;
            style.script = element.tag == GUMBO_TAG_SUB ? platform::Script::subscript
                                                        : platform::Script::superscript;
            break;
        case GUMBO_TAG_MARK:
            style.background = Color::rgba(0xFFFF00FF);
            style.color = Color::black();
            break;
        case GUMBO_TAG_CENTER:
            style.alignment = TextAlignment::center;
            break;
        default:
            break;
    }
}

// Attributes that are older than style sheets.
void applyOldAttributes(Style& style, const StyleContext& context, const GumboElement& element) {
    if (element.tag == GUMBO_TAG_FONT) {
        const std::string color = lowercased(withoutBlanks(attributeOf(element, "color")));
        if (const auto named = cssColor(color)) {
            style.color = named;
        } else if (const auto bare = cssColor("#" + color)) {
            style.color = bare;
        }
        if (const auto size = legacyFontSize(attributeOf(element, "size"))) style.fontSize = *size;
        const std::string_view face = attributeOf(element, "face");
        if (!face.empty()) applyDeclaration(style, context, "font-family", lowercased(face));
    } else if (style.display == Display::block) {
        const std::string_view align = attributeOf(element, "align");
        if (!align.empty()) applyDeclaration(style, context, "text-align", lowercased(align));
    }
}

class Walk {
public:
    explicit Walk(const GumboNode* root) { collectStyles(root), push(root, Style(), {}); }

    platform::StyledText run() {
        while (!stack_.empty()) {
            Frame& top = stack_.back();
            const GumboVector& children = top.node->v.element.children;
            if (top.next == children.length) {
                leave(top);
                stack_.pop_back();
                continue;
            }
            const unsigned index = top.next++;
            const auto* child = static_cast<const GumboNode*>(children.data[index]);
            switch (child->type) {
                case GUMBO_NODE_ELEMENT:
                    enter(child, index);
                    break;
                case GUMBO_NODE_TEXT:
                case GUMBO_NODE_CDATA:
                case GUMBO_NODE_WHITESPACE:
                    text(child->v.text.text, top);
                    break;
                default:
                    break;
            }
        }
        return collector_.finish();
    }

private:
    struct Frame {
        const GumboNode* node = nullptr;
        Style style;
        unsigned next = 0;
        // Among its children, those that are the first and the last element.
        unsigned firstElement = 0;
        unsigned lastElement = 0;
        std::optional<TextAlignment> alignment;  // of the block that it is in
        std::int64_t number = 1;                 // of the next item of a list
        std::size_t rowBegin = 0;
        bool rowHasCells = false;
    };

    void collectStyles(const GumboNode* root) {
        std::vector<const GumboNode*> open = {root};
        std::vector<const GumboNode*> sheets;
        while (!open.empty()) {
            const GumboElement& element = open.back()->v.element;
            open.pop_back();
            if (element.tag == GUMBO_TAG_STYLE && element.tag_namespace == GUMBO_NAMESPACE_HTML)
                sheet_.add(textOf(element));
            for (unsigned i = element.children.length; i > 0; --i) {
                const auto* child = static_cast<const GumboNode*>(element.children.data[i - 1]);
                if (child->type == GUMBO_NODE_ELEMENT) open.push_back(child);
            }
        }
    }

    void push(const GumboNode* node, const Style& style, std::optional<TextAlignment> alignment) {
        Frame frame;
        frame.node = node;
        frame.style = style;
        frame.alignment = style.display == Display::block ? style.alignment : alignment;
        const GumboVector& children = node->v.element.children;
        const auto isElementAt = [&](unsigned i) {
            return isElement(static_cast<const GumboNode*>(children.data[i]));
        };
        while (frame.firstElement < children.length && !isElementAt(frame.firstElement))
            ++frame.firstElement;
        for (frame.lastElement = children.length; frame.lastElement > 0;) {
            if (isElementAt(--frame.lastElement)) break;
        }
        if (node->v.element.tag == GUMBO_TAG_OL) {
            const auto start = leadingNumber(withoutBlanks(attributeOf(node->v.element, "start")));
            if (start) frame.number = numberIn(start->first);
        }
        stack_.push_back(frame);
    }

    static std::int64_t numberIn(double number) {
        return static_cast<std::int64_t>(std::clamp(number, -1e9, 1e9));
    }

    Style styleOf(const GumboElement& element, unsigned index) const {
        const Frame& parent = stack_.back();
        const StyleContext context = {parent.style, rootFontSize_};
        Style style = parent.style.handedDown();
        applyTagStyle(style, element);
        applyOldAttributes(style, context, element);
        std::string unknownTag;
        ElementFacts facts;
        facts.tag = gumbo_normalized_tagname(element.tag);
        if (element.tag == GUMBO_TAG_UNKNOWN) {
            GumboStringPiece name = element.original_tag;
            gumbo_tag_from_original_text(&name);
            facts.tag = unknownTag = lowercased({name.data, name.length});
        }
        facts.id = attributeOf(element, "id");
        facts.classes = attributeOf(element, "class").substr(0, kMaximumClassLength);
        facts.style = attributeOf(element, "style");
        facts.isFirstChild = index == parent.firstElement;
        facts.isLastChild = index == parent.lastElement;
        sheet_.apply(style, context, facts);
        return style;
    }

    void enter(const GumboNode* node, unsigned index) {
        const GumboElement& element = node->v.element;
        if (isNeverShown(element)) return;
        const Style style = styleOf(element, index);
        if (style.display == Display::none) return;
        if (element.tag == GUMBO_TAG_BR) {
            collector_.lineBreak(style.attributes());
            return;
        }
        if (style.display == Display::block) collector_.blockBoundary();
        if (element.tag == GUMBO_TAG_LI) beginItem(element, style);
        if (element.tag == GUMBO_TAG_TD || element.tag == GUMBO_TAG_TH) beginCell(style);
        push(node, style, stack_.back().alignment);
        if (element.tag == GUMBO_TAG_TR) stack_.back().rowBegin = collector_.length();
    }

    void leave(const Frame& frame) {
        if (frame.node->v.element.tag == GUMBO_TAG_LI) collector_.writeMarker();
        if (frame.style.display == Display::block) collector_.blockBoundary();
    }

    void beginItem(const GumboElement& element, const Style& style) {
        Frame& list = stack_.back();
        std::string marker = "• ";
        if (list.node->v.element.tag == GUMBO_TAG_OL) {
            const auto value = leadingNumber(withoutBlanks(attributeOf(element, "value")));
            if (value) list.number = numberIn(value->first);
            marker = std::to_string(list.number++) + ". ";
        }
        Style plain = style;
        plain.underlinedAround = plain.struckAround = plain.underline = plain.strikethrough = false;
        if (style.listMarkers) collector_.marker(std::move(marker), plain.attributes());
    }

    void beginCell(const Style& style) {
        Frame& row = stack_.back();
        if (row.rowHasCells) collector_.cellBoundary(style.attributes(), row.rowBegin);
        row.rowHasCells = true;
    }

    void text(std::string_view text, const Frame& frame) {
        const Style& style = frame.style;
        if (style.fontSize < kSmallestShown) return;
        if (style.transform == TextTransform::none) {
            collector_.text(text, style.attributes(), style.whiteSpace, frame.alignment);
        } else {
            collector_.text(transformed(text, style.transform), style.attributes(),
                            style.whiteSpace, frame.alignment);
        }
    }

    static constexpr double kSmallestShown = 0.5;

    double rootFontSize_ = Style().fontSize;
    StyleSheet sheet_;
    TextCollector collector_;
    std::vector<Frame> stack_;
};

bool hasVisibleText(const platform::StyledText& text) {
    return !foundation::trimmed(text.string).empty();
}

struct Attempt {
    std::optional<platform::StyledText> text;  // nothing when there was no room for the tree
    bool endsInsideTag = false;
};

Attempt attempt(std::string_view document) {
    BoundedDocument bounded;
    boundDocument(document, bounded);
    const ParseTree tree(bounded.text);
    Attempt result;
    result.endsInsideTag = bounded.endsInsideTag;
    if (tree.root() != nullptr) result.text = Walk(tree.root()).run();
    return result;
}

// At most so many bytes, and only whole characters.
std::string_view upTo(std::size_t length, std::string_view document) {
    while (length > 0 && (static_cast<unsigned char>(document[length]) & 0xC0U) == 0x80U)
        --length;
    return document.substr(0, length);
}

foundation::Error failure(std::string reason) {
    return {"HTMLImporter", 1, std::move(reason)};
}

}  // namespace

platform::HTMLImporter::Result HTMLImporter::importHTML(std::string_view document) {
    Result result;
    if (document.size() > kMaximumLength) {
        document = upTo(kMaximumLength, document);
        result.error = failure("The document is longer than 1 MB; the rest was left out.");
    }
    std::string repaired;
    if (!foundation::isValidUtf8(document))
        document = repaired = foundation::repairedUtf8(document);

    Attempt last = attempt(document);
    bool isCut = false;
    // Rather its beginning with all styles than all of it without them.
    for (std::size_t length = document.size() / 2; !last.text && length > 0; length /= 2) {
        const std::string_view beginning = upTo(length, document);
        last = attempt(beginning.substr(0, beginning.rfind('<')));  // no tag in half
        isCut = true;
    }
    if (isCut) result.error = failure("The document is too complex; its end was left out.");
    if (!last.text || ((isCut || last.endsInsideTag) && !hasVisibleText(*last.text)))
        last = attempt(withoutTags(document));
    if (last.text) result.text = *std::move(last.text);
    return result;
}

}  // namespace tavrolin::adapters::html

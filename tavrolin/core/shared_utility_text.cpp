#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "tavrolin/core/logger.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/payload/payload_keys.h"
#include "tavrolin/platform/html_importer.h"
#include "tavrolin/platform/language_recognizer.h"
#include "tavrolin/platform/platform.h"
#include "tavrolin/platform/typesetter.h"
#include "tavrolin/ui/label.h"

namespace tavrolin {

using foundation::Value;
using platform::StyledText;

namespace {

constexpr double kTextSize = 15;
// Whoever draws HTML asks for no size, and gets the smallest.
constexpr std::string_view kSmallestHTML = "0";

// The first version of the system whose labels take the size and the lines from the text.
bool labelsFollowTheText() {
    return platform::current().systemVersion >= 15;
}

bool isThere(const Value& text) {
    return !text.isNil() && !CVNSharedUtility::isBlank(text);
}

std::string htmlFontSize(const Value& size) {
    if (size.isNil()) return "17";
    return size.integerValue() < 1 ? "15" : size.description();
}

// The letters of some scripts and emoji come from other fonts, whose lines are higher, but no more
// for that: a line of a text that is all of the font's size counts as one of the font's.
double measuredHeight(const StyledText& text, const platform::Font& font, double width) {
    platform::Typesetter& typesetter = *platform::drawing().typesetter;
    const auto layout = typesetter.layout(text, {.width = width});
    const bool isOfItsSize = std::ranges::all_of(text.runs, [&](const platform::TextRun& run) {
        return run.attributes.font.size == font.size;
    });
    return isOfItsSize ? layout->lineCount() * typesetter.lineHeight(font) : layout->size().height;
}

}  // namespace

void CVNSharedUtility::setIsDarkMode(bool isDarkMode) {
    sharedInstance().isDarkMode_ = isDarkMode;
}

bool CVNSharedUtility::getIsDarkMode() {
    return sharedInstance().isDarkMode_;
}

std::optional<StyledText> CVNSharedUtility::getNSAttributedStringFromHTMLString(
    const Value& htmlString, bool makeBold, const Value& customFontSize) const {
    static constexpr std::string_view kOperation =
        "-[CVNSharedUtility getNSAttributedStringFromHTMLString:makeBold:customFontSize:]";
    static constexpr std::string_view kDocument =
        "<!DOCTYPE html><html dir='auto'><head><style>body{font-family:-apple-system; "
        "font-size:%@px; %@ %@} p:last-child {display: inline;} </style></head><body>%@</body>"
        "</html>";
    std::optional<StyledText> text;
    guard(kOperation, "Could not convert HTML string due to exception : %@", [&] {
        const std::string document = formatMessage(
            kDocument, {htmlFontSize(customFontSize), makeBold ? "font-weight: bold;" : "",
                        getIsDarkMode() ? "color: #FFFFFF" : "color: #000000", htmlString});
        platform::HTMLImporter::Result imported =
            platform::drawing().htmlImporter->importHTML(document);
        if (imported.error != foundation::Error{}) {
            log(LogLevel::fatal, kOperation,
                formatMessage("Could not convert HTML string to attributed string due to error : "
                              "%@",
                              {imported.error.localizedDescription}));
        }
        if (!labelsFollowTheText()) setLabelTrailing(imported.text);
        text = std::move(imported.text);
    });
    return text;
}

StyledText& CVNSharedUtility::setLabelTrailing(StyledText& text) const {
    guard("-[CVNSharedUtility setLabelTrailing:]",
          "Could not set lineBreakMode to string due to exception : %@",
          [&] { text.paragraph.lineBreakMode = platform::LineBreakMode::truncatingTail; });
    return text;
}

void CVNSharedUtility::setLabel(ui::Label& label, const Value& withHTMLText,
                                const Value& andNormalText, bool makeBold) const {
    if (labelsFollowTheText()) {
        platform::Font font = label.font();
        font.size = kTextSize;
        label.setFont(font);
        label.setNumberOfLines(0);
    }
    if (isThere(withHTMLText)) {
        label.setHidden(false);
        label.setAttributedText(
            getNSAttributedStringFromHTMLString(withHTMLText, makeBold, kSmallestHTML));
    } else if (isThere(andNormalText)) {
        label.setHidden(false);
        label.setTextAlignment(isSupportedRTLText(andNormalText) ? platform::TextAlignment::right
                                                                 : platform::TextAlignment::left);
        label.setText(andNormalText.string());
    } else {
        label.setHidden(true);
    }
}

Value CVNSharedUtility::processedText(const Value& text, bool isHTML, double width,
                                      bool isBold) const {
    static constexpr std::string_view kOperation =
        "-[CVNSharedUtility processedText:isHTML:width:isBold:]";
    Value processed = text;
    guard(kOperation, "Exception in processedText: %@", [&] {
        if (text.string().empty()) return;
        const std::int64_t lines = numberOfLinesForTextWithHTMLText(
            isHTML ? text : Value(), isHTML ? Value() : text, isBold, width);
        log(LogLevel::info, kOperation, formatMessage("Text has lines: %ld", {lines}));
        if (!isHTML && lines >= 2) processed = std::string(text.string()) + "\n";
    });
    return processed;
}

std::int64_t CVNSharedUtility::numberOfLinesForTextWithHTMLText(const Value& htmlText,
                                                                const Value& andNormalText,
                                                                bool isBold, double width) const {
    std::int64_t lines = 0;
    guard("-[CVNSharedUtility numberOfLinesForTextWithHTMLText:andNormalText:isBold:width:]",
          "Line count calculation failed due to %@", [&] {
              const platform::Font font{.size = kTextSize, .bold = isBold};
              double height = 0;
              if (isThere(htmlText)) {
                  const auto text =
                      getNSAttributedStringFromHTMLString(htmlText, isBold, kSmallestHTML);
                  if (text) height = measuredHeight(*text, font, width);
              } else if (isThere(andNormalText)) {
                  height = measuredHeight(StyledText::plain(andNormalText.string(), {.font = font}),
                                          font, width);
              }
              const double lineHeight = platform::drawing().typesetter->lineHeight(font);
              if (lineHeight > 0) lines = static_cast<std::int64_t>(std::ceil(height / lineHeight));
          });
    return lines;
}

bool CVNSharedUtility::isSupportedRTLText(const Value& text) const {
    static constexpr int kFirstVersionThatRecognises = 11;
    if (platform::current().systemVersion < kFirstVersionThatRecognises) return false;
    const auto language = platform::drawing().languageRecognizer->dominantLanguage(text.string());
    const auto languages = supportedRTLLanguages();
    return language && std::find(languages.begin(), languages.end(), *language) != languages.end();
}

bool CVNSharedUtility::isMultiImageLayoutSupportingIconAndText(
    const foundation::Ref<CVNNotificationPayloadModel>& model) const {
    static constexpr std::string_view kOperation =
        "-[CVNSharedUtility isMultiImageLayoutSupportingIconAndText:]";
    static constexpr std::int64_t kWithIconAndText = 2;
    if (!model) return true;
    std::int64_t type = kWithIconAndText;
    const auto found = [&](std::string_view message) {
        log(LogLevel::info, kOperation, formatMessage(message, {type}));
    };
    // An exception is no error here: deliberate.
    const bool read = guard(
        kOperation, "MultiImage: Exception while parsing layout type: %@",
        [&] {
            if (!model->cvnUi || !model->cvnUi->cvnLui) return;
            const Value& given = model->cvnUi->cvnLui[kPNMultiImageLayoutType];
            if (given.isNil()) {
                found("MultiImage: No layout type found in payload, using default: %ld");
            } else if (!given.isNumber()) {
                found("MultiImage: Layout type is not a number. Using default: %ld");
            } else {
                type = given.integerValue();
                found("MultiImage: Layout type found in payload: %ld");
            }
        },
        LogLevel::info);
    return !read || type == kWithIconAndText;
}

}  // namespace tavrolin

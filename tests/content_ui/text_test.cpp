#include <gmock/gmock.h>

#include "adapters/html/html_importer.h"
#include "adapters/pango/typesetter.h"
#include "tavrolin/content_ui/emoji_utility.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/ui/label.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using platform::LineBreakMode;
using platform::StyledText;
using platform::TextAlignment;
using testing::ElementsAre;
using testing::HasSubstr;

class TextTest : public ContentUITest {
protected:
    adapters::memory::MemoryHTMLImporter& html() const { return memory_.htmlImporter; }
    static CVNSharedUtility& utility() { return CVNSharedUtility::sharedInstance(); }
    static std::int64_t lines(const Value& html, const Value& plain, double width) {
        return utility().numberOfLinesForTextWithHTMLText(html, plain, false, width);
    }
};

TEST_F(TextTest, HTMLIsWrappedWithSizeWeightAndColour) {
    struct Case {
        Value size;
        const char* pixels;
    };
    const Case cases[] = {{0, "15px"},   {-3, "15px"},   {"big", "15px"}, {20, "20px"},
                          {"0", "15px"}, {"20", "20px"}, {{}, "17px"}};
    for (const Case& each : cases) {
        ASSERT_TRUE(utility().getNSAttributedStringFromHTMLString("x", false, each.size));
        EXPECT_THAT(html().takeDocuments(),
                    ElementsAre(HasSubstr(std::string("font-size:") + each.pixels + ";")))
            << each.size.description();
    }
    CVNSharedUtility::setIsDarkMode(true);
    EXPECT_EQ(utility().getNSAttributedStringFromHTMLString("<b>%@</b>", true, "0")->string, "%@");
    EXPECT_THAT(html().takeDocuments(),
                ElementsAre("<!DOCTYPE html><html dir='auto'><head><style>body{font-family:"
                            "-apple-system; font-size:15px; font-weight: bold; color: #FFFFFF} "
                            "p:last-child {display: inline;} </style></head><body><b>%@</b></body>"
                            "</html>"));

    // An error is told, and what there is comes all the same.
    html().setError({"html", 1, "cut short"});
    memory_.logSink.clear();
    EXPECT_EQ(utility().getNSAttributedStringFromHTMLString("x", false, {})->string, "x");
    EXPECT_TRUE(
        memory_.logSink.contains("(FATAL) CVNSharedUtility: Could not convert HTML string "
                                 "to attributed string due to error : cut short"));
    EXPECT_EQ(utility().getNSAttributedStringFromHTMLString("x", false, Value::array()),
              std::nullopt);
}

TEST_F(TextTest, ALabelShowsHTMLOrElseTextOrElseNothing) {
    struct Case {
        Value html, plain;
        const char* shown;  // null: the label is hidden
        TextAlignment alignment;
    };
    const Case cases[] = {
        {"<i>h</i>", "שלום", "h", TextAlignment::center},
        {" \n", "plain", "plain", TextAlignment::left},
        {{}, "שלום", "שלום", TextAlignment::right},
        {"", "سلام", "سلام", TextAlignment::right},
        {{}, " ", nullptr, TextAlignment::center},
        {{}, {}, nullptr, TextAlignment::center},
    };
    for (const Case& each : cases) {
        ui::Label label;
        label.setTextAlignment(TextAlignment::center);
        label.setNumberOfLines(1);
        label.setFont({.size = 20, .bold = true});
        label.setAttributedText(StyledText::plain("before", {}));
        label.setHidden(true);
        utility().setLabel(label, each.html, each.plain, false);
        EXPECT_EQ(label.isHidden(), each.shown == nullptr);
        if (each.shown != nullptr) {
            EXPECT_EQ(label.text(), each.shown);
        }
        EXPECT_EQ(label.textAlignment(), each.alignment);
        EXPECT_EQ(label.font(), (platform::Font{.size = 15, .bold = true}));
        EXPECT_EQ(label.numberOfLines(), 0);
    }
    ui::Label label;
    EXPECT_THROW(utility().setLabel(label, {}, 7, false), foundation::Exception);
}

TEST_F(TextTest, OlderSystemsKeepTheLabelAndKnowFewerLanguages) {
    install(14);
    ui::Label label;
    label.setFont({.size = 20});
    utility().setLabel(label, "x", {}, false);
    EXPECT_EQ(label.font().size, 20);
    EXPECT_EQ(label.numberOfLines(), 1);
    EXPECT_EQ(label.attributedText()->paragraph.lineBreakMode, LineBreakMode::truncatingTail);
    install(11);
    EXPECT_TRUE(utility().isSupportedRTLText("שלום"));
    install(10);
    EXPECT_FALSE(utility().isSupportedRTLText("שלום"));
}

TEST_F(TextTest, CountsLinesAndSetsPlainOnesOff) {
    EXPECT_EQ(lines("<b>12345678901</b>", "abc", 40), 3);
    EXPECT_EQ(lines(" ", "abc", 40), 1);
    EXPECT_EQ(lines({}, "abcdef", 40), 2);
    EXPECT_EQ(lines(" ", "", 40), 0);
    EXPECT_EQ(lines(7, {}, 40), 1);

    const auto processed = [&](const Value& text, bool isHTML) {
        return utility().processedText(text, isHTML, 40, false);
    };
    memory_.logSink.clear();
    EXPECT_EQ(processed("abcdef", false), Value("abcdef\n"));
    EXPECT_THAT(takeLog(), ElementsAre("(INFO) CVNSharedUtility: Text has lines: 2 "
                                       "-[CVNSharedUtility processedText:isHTML:width:isBold:]"));
    EXPECT_EQ(processed("abc", false), Value("abc"));
    EXPECT_EQ(processed("abcdef", true), Value("abcdef"));
    EXPECT_EQ(processed("", false), Value(""));
    EXPECT_EQ(processed({}, false), Value());
    EXPECT_EQ(processed(7, false), Value(7));
    EXPECT_TRUE(memory_.logSink.contains("(FATAL) CVNSharedUtility: Exception in processedText: "));
}

TEST_F(TextTest, CountsLinesInWhateverFontTheirLettersAre) {
    adapters::html::HTMLImporter importer;
    adapters::pango::Typesetter typesetter;
    platform::Platform ports = memory_.platform();
    ports.drawing.htmlImporter = &importer;
    ports.drawing.typesetter = &typesetter;
    platform::install(ports);
    for (const char* text : {"Sale", "🎉 Sale", "שלום לכולם", "مرحبا بكم", "日本語のお知らせ"}) {
        EXPECT_EQ(lines({}, text, 291), 1) << text;
        EXPECT_EQ(lines(text, {}, 291), 1) << text;
        EXPECT_EQ(utility().processedText(text, false, 291, false), Value(text));
    }
    EXPECT_EQ(lines({}, "مرحبا\nمرحبا\nمرحبا\nمرحبا\nمرحبا\nمرحبا\nمرحبا\nمرحبا", 291), 8);
    EXPECT_EQ(lines("<span style='font-size: 40px'>Sale</span>", {}, 291), 3);
}

TEST_F(TextTest, TellsWhetherThereIsNothingButEmoji) {
    struct Case {
        const char* text;
        bool result;
    };
    const Case cases[] = {{"😀 😀", true},  {"", true},         {" \t\n", true}, {"一亀", true},
                          {"abc", false}, {"A😀", false},      {"\r", false},   {"仿", false},
                          {"⃐", true},     {"1️⃣", false}, {"é", false}};
    for (const Case& each : cases) {
        EXPECT_EQ(CVNEmojiUtility::containsEmoji(StyledText::plain(each.text, {})), each.result)
            << each.text;
    }
    const CharacterSet custom = CVNEmojiUtility::customEmojiCharacterSet();
    for (const char32_t in : {0x20D0, 0x4EBE, 0xFE00, 0x3F2FE})
        EXPECT_TRUE(custom.contains(in));
    for (const char32_t out : {0x20CF, 0x4EBF, 0xFDFF, 0x3F2FF})
        EXPECT_FALSE(custom.contains(out));

    const CharacterSet& font = CVNEmojiUtility::emojiCharacterSet();
    EXPECT_TRUE(font.contains(0x1F600));
    for (const char out : {' ', '0', '5', '9', '#', '*'})
        EXPECT_FALSE(font.contains(out)) << out;
}

TEST_F(TextTest, OnlyOneKindOfMultiImageLayoutHasIconAndText) {
    struct Case {
        Value settings;
        bool result;
        const char* message;
    };
    const Case cases[] = {
        {Value::dictionary({{"lt", 1}}), false, "MultiImage: Layout type found in payload: 1"},
        {Value::dictionary({{"lt", 2}}), true, "MultiImage: Layout type found in payload: 2"},
        {Value::dictionary({{"lt", "1"}}), true,
         "MultiImage: Layout type is not a number. Using default: 2"},
        {Value::dictionary({{"x", 1}}), true,
         "MultiImage: No layout type found in payload, using default: 2"},
        {"settings", true, "MultiImage: Exception while parsing layout type: "},
    };
    for (const Case& each : cases) {
        const Payload model = show({}, Value::dictionary({{"lid", 92}, {"lui", each.settings}}));
        memory_.logSink.clear();
        EXPECT_EQ(utility().isMultiImageLayoutSupportingIconAndText(model), each.result);
        EXPECT_TRUE(
            memory_.logSink.contains(std::string("(INFO) CVNSharedUtility: ") + each.message))
            << each.message;
    }
    EXPECT_TRUE(utility().isMultiImageLayoutSupportingIconAndText(nullptr));
}

}  // namespace
}  // namespace tavrolin::tests

#include <gtest/gtest.h>

#include <cstdint>

#include "tavrolin/foundation/base64.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::foundation {
namespace {

#define FFFD "\xEF\xBF\xBD"

TEST(Utf8, TellsAndRepairsWhatIsInvalid) {
    const struct {
        std::string_view text;
        std::string_view repaired;
    } cases[] = {
        {"", ""},
        {"plain text of more than eight bytes", "plain text of more than eight bytes"},
        {"\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xEF\xBF\xBF \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF",
         "\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xEF\xBF\xBF \xF0\x90\x80\x80 \xF4\x8F\xBF\xBF"},
        {"\xED\x9F\xBF\xEE\x80\x80", "\xED\x9F\xBF\xEE\x80\x80"},
        {"a\x80z", "a" FFFD "z"},
        {"\xC0\xAF", FFFD FFFD},                    // overlong
        {"\xE0\x9F\xBF", FFFD FFFD FFFD},           // overlong
        {"\xED\xA0\x80", FFFD FFFD FFFD},           // a surrogate
        {"\xF4\x90\x80\x80", FFFD FFFD FFFD FFFD},  // above U+10FFFF
        {"\xF5\xFF", FFFD FFFD},
        {"caf\xC3", "caf" FFFD},  // cut short
        {"\xF0\x9F\x8D"
         "pizza",
         FFFD "pizza"},
        {"12345678\xFF"
         "12345678",
         "12345678" FFFD "12345678"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(repairedUtf8(each.text), each.repaired);
        EXPECT_EQ(isValidUtf8(each.text), each.text == each.repaired);
        EXPECT_TRUE(isValidUtf8(each.repaired));
    }
}

TEST(Utf8, TrimsBlanksAndLineBreaksAtBothEnds) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"", ""},
        {" \t\r\n\u0085\u00a0\u200b\u2028\u3000", ""},
        {"\u2003 a b\u00a0c \u2029\n", "a b\u00a0c"},
        {"\u00e0", "\u00e0"},          // ends in the byte in which a no-break space ends
        {" \xA0 \x85 ", "\xA0 \x85"},  // such bytes on their own
        {" \xE2\x80", "\xE2\x80"},
    };
    for (const auto& [text, rest] : cases)
        EXPECT_EQ(trimmed(text), rest);
}

TEST(Utf8, LowersLettersOfScriptsThatHaveCapitals) {
    const std::pair<std::string_view, std::string_view> cases[] = {
        {"", ""},
        {"ANNA@Example.com [Z]", "anna@example.com [z]"},
        {"ÀÖ×ØÞßŸ", "àö×øþßÿ"},
        {"ĀāĶķĹĺŇňŊŋŶŷŹźŽž", "āāķķĺĺňňŋŋŷŷźźžž"},
        {"İẞẠạ", "ißạạ"},
        {"ΆΈΌΎΏΑΡΣΫ", "άέόύώαρσϋ"},
        {"ЀЏАЯӀӁԮ", "ѐџаяӏӂԯ"},
        {"ԱՖＡＺ", "աֆａｚ"},
        {"漢字 😀", "漢字 😀"},
        {"A\xC3", "a\xC3"},  // cut short
    };
    for (const auto& [text, small] : cases)
        EXPECT_EQ(lowercase(text), small);
}

TEST(Base64, GoesBothWaysAndTakesNothingElse) {
    const std::pair<std::string_view, std::string_view> cases[] = {{"", ""},
                                                                   {"f", "Zg=="},
                                                                   {"fo", "Zm8="},
                                                                   {"foo", "Zm9v"},
                                                                   {"foob", "Zm9vYg=="},
                                                                   {"fooba", "Zm9vYmE="},
                                                                   {"\xFB\xFF\xFE", "+//+"}};
    for (const auto& [plain, encoded] : cases) {
        const std::vector<std::uint8_t> bytes(plain.begin(), plain.end());
        EXPECT_EQ(base64Encoded(bytes), encoded);
        EXPECT_EQ(base64Decoded(encoded), bytes);
    }
    for (const std::string_view text : {"Zg", "Zg=", "Zh==", "Zm9=", "Zg==Zg==", "Z===", "====",
                                        "Zm9v\n", "Zm 9", "Zm-_", "=Zm9"}) {
        EXPECT_EQ(base64Decoded(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace tavrolin::foundation

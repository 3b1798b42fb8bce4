#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "adapters/language/language_recognizer.h"

namespace tavrolin::adapters::language {
namespace {

std::string languageOf(std::string_view text) {
    return LanguageRecognizer().dominantLanguage(text).value_or("none");
}

TEST(Language, OfASentenceIsKnown) {
    const std::pair<const char*, const char*> cases[] = {
        {"en", "Save twenty percent on every order until Sunday evening"},
        {"de", "Sparen Sie zwanzig Prozent auf jede Bestellung bis Sonntag"},
        {"fr", "Économisez vingt pour cent sur chaque commande jusqu'à dimanche"},
        {"es", "Ahorra un veinte por ciento en cada pedido hasta el domingo"},
        {"ar", "وفر عشرين بالمئة على كل طلب حتى يوم الأحد"},
        {"he", "חסכו עשרים אחוז על כל הזמנה עד יום ראשון"},
        {"fa", "تا یکشنبه شب در هر سفارش بیست درصد صرفه جویی کنید"},
        {"ur", "اتوار کی شام تک ہر آرڈر پر بیس فیصد بچت کریں"},
        {"ps", "تر یکشنبې پورې په هر فرمایش کې شل سلنه سپما وکړئ"},
        {"ku", "تا یەکشەممە لە هەموو داواکارییەک بیست لە سەدی پاشەکەوت بکە"},
        {"dv", "އާދީއްތަ ދުވަހާއި ހަމައަށް ކޮންމެ އޯޑަރަކުން"},
        {"yi", "שפּאָרט צוואַנציק פּראָצענט אויף יעדן באַשטעלונג ביז זונטיק"},
        {"ha", "Ku adana kashi ashirin cikin dari na kowane oda har zuwa ranar Lahadi"},
        {"ks", "اتوارس تام پرتھ آرڈرس پؠٹھ ووہ فیصد بچت کٔرِو"},
        {"ru", "Сэкономьте двадцать процентов на каждом заказе до воскресенья"},
        {"zh", "在星期日之前每份订单节省百分之二十"},
        {"ja", "日曜日までにすべての注文が20％割引になります"},
    };
    for (const auto& [code, sentence] : cases)
        EXPECT_EQ(languageOf(sentence), code) << sentence;
}

TEST(Language, OfAFewWordsIsToldByTheirLetters) {
    const std::pair<const char*, const char*> cases[] = {
        {"he", "שלום"},
        {"he", "SALE 20% מבצע!"},
        {"yi", "ײִדיש"},
        {"ar", "مرحبا"},
        {"ar", "٢٠٪ خصم 🎉"},
        {"fa", "پنج"},
        {"ur", "اچھا ہے"},
        {"ps", "ښه راغلاست"},
        {"ku", "بەخێربێیت"},
        {"ks", "کٲشُر"},
        {"dv", "ވިލާ"},
        {"he", "\x01\u202Bשלום\u202C\xFF"},
        {"none", "Sale"},
        {"none", "Hello שלום"},
        {"none", ""},
        {"none", "20% 🎉 !!"},
        {"none", "\xFF\xFE\xC0\x80"},
    };
    for (const auto& [code, words] : cases)
        EXPECT_EQ(languageOf(words), code) << words;
}

TEST(Language, OfMostOfTheTextCounts) {
    EXPECT_EQ(languageOf("Order before Sunday evening and save twenty percent with שלום"), "en");
    EXPECT_EQ(languageOf("חסכו עשרים אחוז על כל הזמנה עד יום ראשון עם SUMMER"), "he");
    // Only the beginning is read, and a character is cut there.
    std::string text = "a";
    while (text.size() < 100'000)
        text += text.size() < 8'000 ? "שלום לכולם " : "hello everybody ";
    EXPECT_EQ(languageOf(text), "he");
}

}  // namespace
}  // namespace tavrolin::adapters::language

#include <cstdlib>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/keyed_archive.h"

using namespace tavrolin::foundation;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Card {
    static constexpr std::string_view kClassName = "Card";
    static Ref<Card> initWithCoder(KeyedUnarchiver& coder) {
        coder.decodeRecords<Card>("buttons");
        coder.decodeRecord<Card>("inner");
        coder.decode("id", Declared::string);
        coder.decodeRecord<Card>("reply");
        coder.decode("custom", Declared::any);
        coder.decode("when", Declared::date);
        return std::make_shared<Card>();
    }
};

// What was read once is written and read again without a change.
void goRound(Value::Bytes bytes) {
    const Bytes once = KeyedArchiver::archivedData(KeyedUnarchiver::unarchiveValue(bytes));
    const Bytes twice = KeyedArchiver::archivedData(KeyedUnarchiver::unarchiveValue(once));
    if (once != twice) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Value::Bytes bytes(data, size);
    try {
        goRound(bytes);
    } catch (const Exception&) {
    }
    for (const auto mode : {KeyedUnarchiver::Mode::strict, KeyedUnarchiver::Mode::lenient}) {
        try {
            KeyedUnarchiver::unarchive<Card>(bytes, mode);
        } catch (const Exception&) {
        }
    }
    return 0;
}

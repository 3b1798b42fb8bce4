#include <cstdlib>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/predicate.h"

using namespace tavrolin::foundation;

namespace {

const Value& record() {
    static const Value instance = Value::dictionary(
        {{"trid", "push-1"},
         {"isRead", false},
         {"time", Date{1000}},
         {"tags", Value::array({"a", "b"})},
         {"cvnPayload", Value::dictionary({{"trid", "push-1"}, {"score", 2.5}})}});
    return instance;
}

std::vector<Value> argumentsFor(std::string_view format) {
    static const Value kAll[] = {
        0,    "push-1",   Value::array({"push-1", 1}), Date{1000}, 2.5, Value(), Value::null(),
        true, "scheduled"};
    std::vector<Value> result;
    for (std::size_t i = 0; i + 1 < format.size(); ++i) {
        if (format[i] != '%') continue;
        // An integer for %d; otherwise whichever the place suggests.
        result.push_back(format[i + 1] == 'd' ? kAll[0] : kAll[i % std::size(kAll)]);
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view format(reinterpret_cast<const char*>(data), size);
    try {
        const auto predicate = Predicate::withFormat(format, argumentsFor(format));
        if (predicate->evaluate(record()) != predicate->evaluate(record())) std::abort();
    } catch (const Exception&) {
    }
    return 0;
}

#include "device/expand_order.h"

#include <charconv>
#include <cmath>
#include <map>

#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::device {

using foundation::Expected;
using foundation::Value;

namespace {

constexpr double kFarthestPoint = 1e6;
constexpr double kLongestWait = 31 * 86400.0;  // seconds

foundation::Error wrong(const std::string& why) {
    return {"device", 2, why};
}

// The whole text as a number; not a number when it is none.
double numberIn(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && next == end && !text.empty() ? number : std::nan("");
}

struct Words {
    std::string_view first;
    std::optional<std::string_view> rest;  // after the first space
};

Words split(std::string_view text) {
    const std::size_t space = text.find(' ');
    if (space == std::string_view::npos) return {text, std::nullopt};
    return {text.substr(0, space), text.substr(space + 1)};
}

using Arguments = std::optional<std::string_view>;

Expected<Value> tap(Arguments arguments) {
    const std::string_view text = arguments.value_or("");
    const std::size_t comma = text.find(',');
    if (comma != std::string_view::npos) {
        const double x = numberIn(text.substr(0, comma));
        const double y = numberIn(text.substr(comma + 1));
        if (std::abs(x) <= kFarthestPoint && std::abs(y) <= kFarthestPoint) {
            return Value::dictionary({{"x", x}, {"y", y}});
        }
    }
    return wrong("tap needs a point, such as tap 120,48");
}

Expected<Value> tapOn(Arguments arguments) {
    if (!arguments || arguments->empty()) {
        return wrong("tap-on needs an outlet's name or a text that is shown");
    }
    return Value::dictionary({{"name", *arguments}});
}

// Any identifier, the empty one included.
Expected<Value> press(Arguments arguments) {
    if (!arguments) return wrong("press needs an action's identifier");
    return Value::dictionary({{"identifier", *arguments}});
}

Expected<Value> reply(Arguments arguments) {
    const Words words = split(arguments.value_or(""));
    if (!words.rest) return wrong("reply needs an action's identifier and a text");
    return Value::dictionary({{"identifier", words.first}, {"userText", *words.rest}});
}

Expected<Value> wait(Arguments arguments) {
    const double seconds = numberIn(arguments.value_or(""));
    if (!(seconds >= 0 && seconds <= kLongestWait)) {
        return wrong("wait needs seconds, 31 days at most");
    }
    return Value::dictionary({{"seconds", seconds}});
}

Expected<Value> disappear(Arguments arguments) {
    if (arguments) return wrong("disappear takes nothing");
    return Value::dictionary();
}

}  // namespace

Expected<Value> expandStep(std::string_view text) {
    static const std::map<std::string_view, Expected<Value> (*)(Arguments)> kSteps = {
        {kStepTap, tap},     {kStepTapOn, tapOn}, {kStepPress, press},
        {kStepReply, reply}, {kStepWait, wait},   {kStepDisappear, disappear}};
    if (!foundation::isValidUtf8(text)) return wrong("a step must be UTF-8");
    const Words words = split(text);
    const auto known = kSteps.find(words.first);
    if (known == kSteps.end()) {
        return wrong(
            "no such step; there are tap X,Y, tap-on NAME, press IDENTIFIER, reply "
            "IDENTIFIER TEXT, wait SECONDS and disappear");
    }
    Expected<Value> step = known->second(words.rest);
    if (step) {
        step->set(kStepText, text);
        step->set(kStepDoes, known->first);
    }
    return step;
}

std::vector<std::string> ExpandOrder::pictures() const {
    std::vector<std::string> files;
    for (const auto* file : {&png, &svg, &cardPNG}) {
        if (*file) files.push_back(**file);
    }
    return files;
}

}  // namespace tavrolin::device

#include "apps/tavrolin/arguments.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iostream>
#include <map>
#include <vector>

#include "device/device_error.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/foundation/date.h"
#include "tavrolin/foundation/utf8.h"

namespace tavrolin::apps {

using device::DeviceError;

namespace {

constexpr double kLongestAdvance = 1e10;  // seconds: more than 300 years
// Far above every payload, and far below what would exhaust the machine.
constexpr std::size_t kPiece = std::size_t{64} * 1024;
constexpr std::size_t kLargestInput = std::size_t{64} * 1024 * 1024;

// The number that a hexadecimal digit stands for; nothing for another character.
std::optional<std::uint8_t> digit(char c) {
    if (c >= '0' && c <= '9') return static_cast<std::uint8_t>(c - '0');
    if (c >= 'a' && c <= 'f') return static_cast<std::uint8_t>(c - 'a' + 10);
    if (c >= 'A' && c <= 'F') return static_cast<std::uint8_t>(c - 'A' + 10);
    return std::nullopt;
}

// Whether the text is a number above 0 and no larger than that.
bool isUpTo(double most, const std::string& text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && next == end && number > 0 && number <= most;
}

// Of a text such as "2026-11-24T08:00:00", in UTC. No year 0: no device's clock is there.
std::optional<foundation::Date> momentOf(const std::string& text) {
    return text.starts_with("0000") ? std::nullopt : CVNPushDateUtility::dateFromString(text);
}

}  // namespace

device::DeviceOptions Arguments::options() const {
    device::DeviceOptions result;
    result.folder = device ? *device : device::defaultDeviceFolder();
    result.time = time == "jump" ? device::TimeMode::jump : device::TimeMode::real;
    if (now) result.now = momentOf(*now);
    result.logLevel = logLevel;
    return result;
}

device::ExpandOrder Arguments::expandOrder() const {
    device::ExpandOrder order = expansion;
    order.identifier = identifier;
    for (const std::string& step : steps)
        order.steps.push_back(*device::expandStep(step));
    return order;
}

// --- Files -----------------------------------------------------------------------------------

Input::Input(const std::string& name) : name_(name) {
    if (name == "-") return;
    file_.open(name, std::ios::binary);
    if (!file_) {
        throw DeviceError("can't read " + name + ": " + std::strerror(errno));
    }
    struct stat status {};
    if (stat(name.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        throw DeviceError("can't read " + name + ": it is a folder");
    }
}

std::string Input::all() {
    std::string text;
    std::string piece(kPiece, '\0');
    while (stream().read(piece.data(), static_cast<std::streamsize>(piece.size())),
           stream().gcount() > 0) {
        text.append(piece, 0, static_cast<std::size_t>(stream().gcount()));
        refuseMoreThan(text.size());
    }
    refuseBroken();
    return text;
}

bool Input::line(std::string& text) {
    text.clear();
    int c = 0;
    while ((c = stream().get()) != std::char_traits<char>::eof()) {
        if (c == '\n') return true;
        text += static_cast<char>(c);
        refuseMoreThan(text.size());
    }
    refuseBroken();
    return !text.empty();
}

std::istream& Input::stream() {
    return file_.is_open() ? static_cast<std::istream&>(file_) : std::cin;
}

void Input::refuseMoreThan(std::size_t size) const {
    if (size <= kLargestInput) return;
    throw DeviceError(name_ + " has more than " + std::to_string(kLargestInput) +
                      " bytes, which no payload has");
}

void Input::refuseBroken() {
    if (stream().bad()) throw DeviceError("can't read " + name_ + " to its end");
}

// --- Texts -----------------------------------------------------------------------------------

std::string notEmpty(const std::string& folder) {
    return folder.empty() ? "the folder's name is empty" : "";
}

std::string utf8(const std::string& text) {
    return foundation::isValidUtf8(text) ? "" : "a text must be UTF-8";
}

std::string hexadecimal(const std::string& text) {
    if (text.size() % 2 != 0) return "a token's bytes are two hexadecimal digits each";
    const bool isHexadecimal =
        std::all_of(text.begin(), text.end(), [](char c) { return digit(c).has_value(); });
    return isHexadecimal ? "" : "a token has hexadecimal digits only";
}

foundation::Value bytesOfHex(const std::string& text) {
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i + 1 < text.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(*digit(text[i]) << 4U | *digit(text[i + 1])));
    return foundation::Value::data(bytes);
}

std::optional<double> secondsOf(const std::string& text) {
    static const std::map<char, double> kUnits = {{'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}};
    double seconds = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at < end) {
        double number = 0;
        const auto [next, error] = std::from_chars(at, end, number, std::chars_format::fixed);
        const auto unit = next < end ? kUnits.find(*next) : kUnits.end();
        if (error != std::errc() || unit == kUnits.end() || !(number >= 0)) return std::nullopt;
        seconds += number * unit->second;
        at = next + 1;
    }
    return text.empty() || !(seconds <= kLongestAdvance) ? std::nullopt : std::optional(seconds);
}

std::string expandStep(const std::string& text) {
    const auto step = device::expandStep(text);
    return step ? "" : "\"" + text + "\": " + step.error().localizedDescription;
}

std::string viewWidth(const std::string& text) {
    return isUpTo(device::kWidestView, text) ? "" : "must be points above 0, 16384 at most";
}

std::string viewScale(const std::string& text) {
    return isUpTo(device::kLargestScale, text) ? "" : "must be above 0, 8 at most";
}

std::string pictureFile(const std::string& name) {
    return name.empty() || name == "-" ? "must be the name of a file" : "";
}

std::string duration(const std::string& text) {
    return secondsOf(text) ? "" : "no duration such as 30s, 5m, 2h or 31d";
}

std::string moment(const std::string& text) {
    return momentOf(text) ? "" : "no moment such as 2026-11-24T08:00:00";
}

}  // namespace tavrolin::apps

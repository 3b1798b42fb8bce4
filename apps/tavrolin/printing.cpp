#include "apps/tavrolin/printing.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/json/json_text.h"
#include "tavrolin/platform/json_text.h"

namespace tavrolin::apps {

using foundation::Value;
using platform::JSONText;

namespace {

constexpr std::size_t kWidestColumn = 44;
constexpr std::size_t kLongestText = 1000;  // bytes
constexpr std::size_t kPiece = std::size_t{64} * 1024;

std::string json(const Value& value, JSONText::Style style) {
    const auto text = adapters::json::JSONText().serialise(value, style);
    if (!text)
        throw std::runtime_error("can't print the result: " + text.error().localizedDescription);
    return *text;
}

void write(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw std::runtime_error("can't write to standard output");
    }
}

bool isTerminal() {
    static const bool answer = isatty(STDOUT_FILENO) == 1;
    return answer;
}

std::string styled(std::string_view text, std::string_view code) {
    if (!isTerminal()) return std::string(text);
    return "\033[" + std::string(code) + "m" + std::string(text) + "\033[0m";
}

// How many bytes the character at the beginning has.
std::size_t sequenceLength(std::string_view text) {
    std::size_t length = 1;
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80)
        ++length;
    return length;
}

// Neither a control character nor one that breaks the line or turns the direction of what follows.
bool isHarmless(std::string_view character) {
    const auto first = static_cast<unsigned char>(character.front());
    if (character.size() == 1) return first >= 0x20 && first < 0x7F;
    if (character.size() == 2 && first == 0xC2)
        return static_cast<unsigned char>(character[1]) >= 0xA0;
    static constexpr std::array<std::string_view, 14> kTurning = {
        "\u2028", "\u2029", "\u061c", "\u200e", "\u200f", "\u202a", "\u202b",
        "\u202c", "\u202d", "\u202e", "\u2066", "\u2067", "\u2068", "\u2069"};
    return std::find(kTurning.begin(), kTurning.end(), character) == kTurning.end();
}

std::string bold(std::string_view text) {
    return styled(text, "1");
}

std::string dim(std::string_view text) {
    return styled(text, "2");
}

// What a person reads for a value: texts bare, collections as JSON.
std::string shown(const Value& value) {
    if (value.isNil() || value.isNull()) return "-";
    if (value.isString()) return harmless(value.string());
    return harmless(json(value, JSONText::Style::compact));
}

std::size_t characters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
    }));
}

std::string shortened(const std::string& text) {
    if (characters(text) <= kWidestColumn) return text;
    std::size_t end = 0;
    for (std::size_t seen = 0; end < text.size(); ++end) {
        if ((static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80 && ++seen > kWidestColumn - 1)
            break;
    }
    return text.substr(0, end) + "…";
}

using Row = Table::Row;

void printTable(const Row& head, std::vector<Row> rows, std::string_view nothing) {
    if (rows.empty()) {
        write(std::string(nothing) + "\n");
        return;
    }
    std::vector<std::size_t> widths;
    for (const std::string& title : head)
        widths.push_back(characters(title));
    for (Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            row[i] = shortened(row[i]);
            widths[i] = std::max(widths[i], characters(row[i]));
        }
    }
    const auto line = [&](const Row& row, bool isHead) {
        std::string text;
        for (std::size_t i = 0; i < row.size(); ++i) {
            text += isHead ? bold(row[i]) : row[i];
            if (i + 1 < row.size()) text.append(widths[i] - characters(row[i]) + 2, ' ');
        }
        write(text + "\n");
    };
    line(head, true);
    for (const Row& row : rows)
        line(row, false);
}

void printField(std::string_view name, const std::string& text) {
    std::string label(name);
    label.resize(std::max<std::size_t>(label.size() + 1, 13), ' ');
    write("  " + dim(label) + text + "\n");
}

// "3 attachments"; nothing for none.
std::string counted(std::size_t count, const std::string& thing) {
    return std::to_string(count) + " " + thing + (count == 1 ? "" : "s");
}

std::string answerText(const Value& fetchResult) {
    if (fetchResult.isNull()) return "nothing";
    const std::int64_t number = fetchResult.integerValue();
    return shown(fetchResult) + (number == 0   ? " (something new)"
                                 : number == 1 ? " (nothing for it)"
                                               : " (nothing was scheduled)");
}

void printContent(const Value& content) {
    for (const char* key : {"title", "subtitle", "body", "categoryIdentifier", "sound"}) {
        if (!content[key].isNull()) {
            printField(std::string_view(key) == "categoryIdentifier" ? "category" : key,
                       shown(content[key]));
        }
    }
    for (const Value& attachment : content["attachments"].items()) {
        printField("attached", shown(attachment["url"]));
    }
    printField("user info", counted(content["userInfo"].count(), "key") + " (--json shows them)");
}

std::vector<Row> trayRows(const Value& entry) {
    const Value& content = entry["content"];
    return {{shown(entry["deliveredAt"]), shown(content["title"]), shown(content["body"]),
             std::to_string(content["attachments"].count()), shown(entry["identifier"])}};
}

std::vector<Row> pendingRows(const Value& entry) {
    const Value& content = entry["content"];
    return {{shown(entry["fireAt"]), shown(content["title"]), shown(content["body"]),
             shown(entry["identifier"])}};
}

std::string optionsText(std::int64_t options) {
    std::string text;
    const auto add = [&](bool applies, const char* what) {
        if (applies) text += (text.empty() ? "" : ", ") + std::string(what);
    };
    add((options & 1) != 0, "asks to unlock");
    add((options & 2) != 0, "destructive");
    add((options & 4) != 0, "opens the app");
    return text.empty() ? "-" : text;
}

// One for each of its actions.
std::vector<Row> categoryRows(const Value& category) {
    std::vector<Row> rows;
    for (const Value& action : category["actions"].items()) {
        rows.push_back(
            {shown(category["identifier"]), shown(action["identifier"]), shown(action["title"]),
             optionsText(action["options"].integerValue()),
             action["textInput"].isNull() ? "-" : shown(action["textInput"]["placeholder"])});
    }
    return rows;
}

std::vector<Row> recordRows(const Value& record) {
    std::string state = record["isRead"].boolValue() ? "read" : "unread";
    if (record["isDismissed"].boolValue()) state += ", dismissed";
    return {{shown(record["time"]), shown(record["trid"]), shown(record["source"]),
             shown(record["campaignType"]), shown(record["currentStatus"]), state,
             record["alreadyDisplayedOnTray"].boolValue() ? "yes" : "no",
             shown(record["collapseKey"])}};
}

std::vector<Row> eventRows(const Value& event) {
    return {{shown(event["at"]), shown(event["id"]), shown(event["name"]), shown(event["type"]),
             shown(event["payload"]["trid"])}};
}

std::string lengthText(const Value& number) {
    std::array<char, 32> text{};
    const int size = std::snprintf(text.data(), text.size(), "%.7g", number.doubleValue());
    return {text.data(), static_cast<std::size_t>(size)};
}

// What the extension asks of the system.
std::string requestText(const Value& request) {
    if (request == Value("open")) return "to open the app";
    if (request == Value("close")) return "to close the view";
    if (request == Value("remove")) return "to remove the notification";
    return shown(request);
}

// What a step in the expanded view led to.
std::string chapterText(const Value& chapter) {
    std::string text;
    if (const Value& view = chapter["takenBy"]) {
        text = view.isNull() ? "no view took it" : "taken by " + shown(view);
    }
    if (const Value& option = chapter["option"]) {
        text = option.isNull()              ? "was not answered"
               : option.integerValue() == 0 ? "the view stays"
                                            : "goes on to the app";
    }
    std::string requests;
    for (const Value& request : chapter["requests"].items())
        requests += (requests.empty() ? "" : ", ") + requestText(request);
    if (!requests.empty()) text += (text.empty() ? "asks " : "; asks ") + requests;
    return text.empty() ? "done" : text;
}

// A view a line: its class, what it is called, where it is, what it shows.
void printTree(const Value& view, std::size_t depth = 1) {
    std::string line(2 * depth, ' ');
    line += shown(view["class"]);
    if (view["outlet"].isString()) line += " " + bold(shown(view["outlet"]));
    std::string frame;
    for (const Value& number : view["frame"].items())
        frame += (frame.empty() ? "" : " ") + lengthText(number);
    line += dim("  [" + frame + "]");
    for (const char* key : {"text", "image"}) {
        if (view[key].isString() && view[key].length() > 0) {
            line += "  \"" + shortened(shown(view[key])) + "\"";
        }
    }
    if (view["hidden"].boolValue()) line += dim("  hidden");
    write(line + "\n");
    for (const Value& child : view["children"].items())
        printTree(child, depth + 1);
}

std::string_view explained(std::string_view outcome) {
    if (outcome == "completed") return "the extension rewrote it";
    if (outcome == "expired") return "the extension's time ran out; its best attempt is shown";
    if (outcome == "untouched") return "shown as received";
    if (outcome == "crashed") return "the extension died; shown as received";
    return "handed to the app, nothing is shown";
}

}  // namespace

std::string harmless(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size() && result.size() < kLongestText;) {
        const std::size_t length = sequenceLength(text.substr(at));
        const std::string_view character = text.substr(at, length);
        result += isHarmless(character) ? character : " ";
        at += length;
    }
    if (text.size() > kLongestText) result += "…";
    return result;
}

void printDone(std::string_view line) {
    write(std::string(line) + "\n");
}

void print(const Value& result, bool asJSON, Printer printer) {
    if (asJSON) {
        write(json(result, JSONText::Style::pretty) + "\n");
    } else {
        printer(result);
    }
    if (std::fflush(stdout) != 0) throw std::runtime_error("can't write to standard output");
}

void printLine(const Value& result) {
    write(json(result, JSONText::Style::compact) + "\n");
    if (std::fflush(stdout) != 0) throw std::runtime_error("can't write to standard output");
}

Table trayTable() {
    return {{"delivered", "title", "body", "files", "identifier"}, trayRows, "The tray is empty."};
}

Table pendingTable() {
    return {{"fires", "title", "body", "identifier"}, pendingRows, "Nothing is pending."};
}

Table categoriesTable() {
    return {{"category", "action", "title", "options", "text input"},
            categoryRows,
            "No categories are registered (`tavrolin app register-categories` does)."};
}

Table storeTable() {
    return {{"stored", "trid", "source", "campaign", "status", "state", "shown", "collapse key"},
            recordRows,
            "The store is empty."};
}

Table eventsTable() {
    return {{"at", "id", "name", "type", "trid"}, eventRows, "No events were recorded."};
}

void ListPrinter::add(std::string_view element) {
    if (!asJSON_) {
        const auto value = adapters::json::JSONText().parse(element);
        if (!value) throw std::runtime_error("can't print: " + value.error().localizedDescription);
        for (Row& row : table_.rowsOf(*value))
            rows_.push_back(std::move(row));
        return;
    }
    text_.append(isEmpty_ ? "[\n  " : ",\n  ").append(element);
    isEmpty_ = false;
    if (text_.size() < kPiece) return;
    write(text_);
    text_.clear();
}

void ListPrinter::end() {
    if (asJSON_) {
        write(text_.append(isEmpty_ ? "[]\n" : "\n]\n"));
    } else {
        printTable(table_.head, std::move(rows_), table_.nothing);
    }
    if (std::fflush(stdout) != 0) throw std::runtime_error("can't write to standard output");
}

void printDelivery(const Value& result) {
    const std::string_view outcome = result["outcome"].string();
    write(bold(outcome) + ": " + std::string(explained(outcome)) + "\n");
    printField("identifier", shown(result["identifier"]));
    printField("recognised", result["recognised"].boolValue() ? "yes" : "no, of another sender");
    if (result["content"].isDictionary()) printContent(result["content"]);
    for (const Value& replaced : result["replaced"].items())
        printField("replaced", shown(replaced));
    if (outcome == "silent") printField("answered", answerText(result["fetchResult"]));
    printField("seconds", shown(result["seconds"]));
    if (!result["peakRssKiB"].isNull()) {
        printField("memory",
                   std::to_string(result["peakRssKiB"].integerValue() / 1024) + " MiB at most");
    }
}

void printExpansion(const Value& result) {
    const Value& view = result["view"];
    const Value& size = view["size"];
    write(bold(view["layout"].isNull() ? "no layout, nothing is drawn" : shown(view["layout"])) +
          ", " + lengthText(size["width"]) + " x " + lengthText(size["height"]) + " points\n");
    for (const Value& action : view["nativeActions"].items()) {
        printField("button", shown(action["identifier"]) + "  " + shown(action["title"]) +
                                 (action["textInput"].isNull() ? "" : "  (takes a text)"));
    }
    for (const Value& chapter : result["story"].items())
        printField("step", shown(chapter["step"]) + ": " + chapterText(chapter));
    if (view["tree"]) printTree(view["tree"]);
}

// A list's elements stand one below the other.
void printDictionary(const Value& result) {
    if (result.count() == 0) write("There is nothing.\n");
    std::size_t width = 0;
    for (const auto& [key, value] : result.entries())
        width = std::max(width, characters(shown(key)));
    for (const auto& [key, value] : result.entries()) {
        const bool isList = value.isArray() && value.count() > 0;
        const std::string name = shown(key);
        const std::string gap(width - characters(name) + 2, ' ');
        write(bold(name) + (isList ? "" : gap + shown(value)) + "\n");
        if (!isList) continue;
        for (const Value& element : value.items())
            write("  " + shown(element) + "\n");
    }
}

void printAppState(const Value& result) {
    const std::string_view state = result["app"].string();
    write(state == "stopped" ? "The app is stopped.\n"
                             : "The app is in the " + std::string(state) + ".\n");
}

void printFetch(const Value& result) {
    printAppState(result);
    const std::size_t pending = static_cast<std::size_t>(result["pending"].integerValue());
    write(counted(pending, "request") + " pending (`tavrolin pending` shows them).\n");
    if (!result["permitted"].boolValue()) {
        write("Without permission nothing is scheduled: `tavrolin app permission grant`.\n");
    }
}

void printPermission(const Value& result) {
    static constexpr std::array<std::string_view, 5> kStatuses = {
        "not decided", "denied", "granted", "provisional", "ephemeral"};
    const auto status = static_cast<std::size_t>(result["permission"].integerValue());
    write("The permission is " + std::string(kStatuses.at(status)) +
          "; the app notices at its next start, foreground or request.\n");
}

void printRemoved(const Value& result) {
    write("Removed " + counted(result["removed"].count(), "notification") + ".\n");
}

void printFetchResult(const Value& result) {
    write("The app answered " + answerText(result["fetchResult"]) + ".\n");
}

void printBadge(const Value& result) {
    write("The badge shows " + shown(result["badge"]) + ".\n");
}

void printTime(const Value& result) {
    write("It is " + shown(result["now"]) + ".\n");
    for (const Value& identifier : result["fired"].items())
        printField("fired", shown(identifier));
}

}  // namespace tavrolin::apps

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tavrolin/foundation/value.h"

namespace tavrolin::apps {

/// Prints a result for people.
using Printer = void (*)(const foundation::Value& result);

/// As JSON, indented, or through the printer. Throws std::runtime_error when standard output can't
/// be written.
void print(const foundation::Value& result, bool asJSON, Printer printer);
/// As JSON on one line.
void printLine(const foundation::Value& result);

/// How a list is shown to people.
struct Table {
    using Row = std::vector<std::string>;
    Row head;
    std::vector<Row> (*rowsOf)(const foundation::Value& element);
    std::string nothing;  // what stands for an empty list
};

Table trayTable();
Table pendingTable();
Table categoriesTable();
Table storeTable();
Table eventsTable();

/// Prints a list whose elements come one by one, as JSON texts: as a JSON array with an element a
/// line, as they come, or as a table at the end. Throws std::runtime_error when standard output
/// can't be written.
class ListPrinter {
public:
    ListPrinter(bool asJSON, Table table) : asJSON_(asJSON), table_(std::move(table)) {}

    void add(std::string_view element);
    void end();

private:
    const bool asJSON_;
    const Table table_;
    std::vector<Table::Row> rows_;
    std::string text_;  // what is not written yet
    bool isEmpty_ = true;
};

/// The text as it may go to a terminal: on one line, without anything that moves the cursor or
/// turns the direction, and cut after some 1,000 bytes.
std::string harmless(std::string_view text);

/// One line for people.
void printDone(std::string_view line);
void printDelivery(const foundation::Value& result);
/// {"view", "story"}: as Device::expand gives it.
void printExpansion(const foundation::Value& result);
void printDictionary(const foundation::Value& result);
void printAppState(const foundation::Value& result);
void printRemoved(const foundation::Value& result);
void printFetch(const foundation::Value& result);
void printPermission(const foundation::Value& result);
void printFetchResult(const foundation::Value& result);
void printBadge(const foundation::Value& result);
void printTime(const foundation::Value& result);

}  // namespace tavrolin::apps

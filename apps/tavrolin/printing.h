#pragma once

#include "tavrolin/foundation/value.h"

namespace tavrolin::apps {

/// Prints a result for people.
using Printer = void (*)(const foundation::Value& result);

/// As JSON, indented, or through the printer. Throws std::runtime_error when standard output can't
/// be written.
void print(const foundation::Value& result, bool asJSON, Printer printer);
/// As JSON on one line.
void printLine(const foundation::Value& result);

void printDelivery(const foundation::Value& result);
void printTray(const foundation::Value& result);
void printPending(const foundation::Value& result);
void printCategories(const foundation::Value& result);
void printStore(const foundation::Value& result);
void printEvents(const foundation::Value& result);
void printDictionary(const foundation::Value& result);
void printAppState(const foundation::Value& result);
void printRemoved(const foundation::Value& result);
void printFetchResult(const foundation::Value& result);
void printBadge(const foundation::Value& result);
void printTime(const foundation::Value& result);

}  // namespace tavrolin::apps

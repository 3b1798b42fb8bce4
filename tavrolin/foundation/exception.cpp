#include "tavrolin/foundation/exception.h"

#include <utility>

namespace tavrolin::foundation {

Exception::Exception(std::string name, std::string reason)
    : name_(std::move(name)), reason_(std::move(reason)) {}

void Exception::raise(std::string_view name, std::string reason) {
    throw Exception(std::string(name), std::move(reason));
}

}  // namespace tavrolin::foundation

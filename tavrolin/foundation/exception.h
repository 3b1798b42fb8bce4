#pragma once

#include <exception>
#include <string>
#include <string_view>

namespace tavrolin::foundation {

/// The one exception that the library raises itself: a value was asked for something that it can't
/// do, an index was out of range, a nil was put into a collection, a request named something that
/// doesn't exist. Guards catch this type and let every other one through.
class Exception : public std::exception {
public:
    Exception(std::string name, std::string reason);

    const std::string& name() const { return name_; }
    const std::string& reason() const { return reason_; }
    const char* what() const noexcept override { return reason_.c_str(); }

    // The names in use.
    static constexpr std::string_view kInvalidArgument = "InvalidArgumentException";
    static constexpr std::string_view kRange = "RangeException";
    static constexpr std::string_view kInvalidArchive = "InvalidArchiveOperationException";

    [[noreturn]] static void raise(std::string_view name, std::string reason);

private:
    std::string name_;
    std::string reason_;
};

}  // namespace tavrolin::foundation

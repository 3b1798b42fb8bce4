#pragma once

#include <optional>
#include <utility>
#include <variant>

#include "tavrolin/foundation/error.h"

namespace tavrolin::foundation {

/// A result or the error that stands in its place.
template <class T>
class Expected {
public:
    Expected(T value) : state_(std::move(value)) {}
    Expected(Error error) : state_(std::move(error)) {}

    explicit operator bool() const { return state_.index() == 0; }
    T& operator*() { return std::get<0>(state_); }
    const T& operator*() const { return std::get<0>(state_); }
    T* operator->() { return &std::get<0>(state_); }
    const T* operator->() const { return &std::get<0>(state_); }
    const Error& error() const { return std::get<1>(state_); }

private:
    std::variant<T, Error> state_;
};

/// What an operation without a result gives back: nothing, or its error.
using Failure = std::optional<Error>;

}  // namespace tavrolin::foundation

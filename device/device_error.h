#pragma once

#include <stdexcept>

namespace tavrolin::device {

/// Something that the device could not do. The text is one line for people: why, and what to do.
class DeviceError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace tavrolin::device

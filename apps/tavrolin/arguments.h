#pragma once

#include <fstream>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "device/device.h"
#include "device/expand_order.h"
#include "tavrolin/foundation/value.h"

namespace tavrolin::apps {

/// What the command line says, of whatever command.
struct Arguments {
    std::optional<std::string> device;
    std::string time = "real";
    std::optional<std::string> now;
    int logLevel = 4;
    bool json = false;
    std::string file;
    std::string identifier;
    bool lines = false;
    bool noLimit = false;
    bool flushes = false;
    std::string action;
    std::optional<std::string> reply;
    std::optional<std::string> payloadFile;
    std::optional<std::string> normalFile;
    std::optional<std::string> scheduledFile;
    std::string text;
    std::string key;
    bool instant = false;
    device::ExpandOrder expansion;
    std::vector<std::string> steps;

    device::DeviceOptions options() const;
    std::optional<std::size_t> limit() const {
        return noLimit ? std::nullopt : std::optional(device::Device::kLargestPayload);
    }
    device::ExpandOrder expandOrder() const;
    std::optional<std::string> id() const {
        return identifier.empty() ? std::nullopt : std::optional(identifier);
    }
};

/// A file, or standard input for "-". Throws DeviceError for what can't be read, and for more than
/// any payload has.
class Input {
public:
    explicit Input(const std::string& name);

    std::string all();
    /// False at the end.
    bool line(std::string& text);

private:
    std::istream& stream();
    void refuseMoreThan(std::size_t size) const;
    void refuseBroken();

    std::string name_;
    std::ifstream file_;
};

// Checks, in the form that the command line wants: the complaint, or nothing.
std::string notEmpty(const std::string& folder);
std::string utf8(const std::string& text);
std::string hexadecimal(const std::string& text);
std::string duration(const std::string& text);
std::string moment(const std::string& text);
std::string expandStep(const std::string& text);
std::string viewWidth(const std::string& text);
std::string viewScale(const std::string& text);
std::string pictureFile(const std::string& name);

/// Of what `hexadecimal` has checked.
foundation::Value bytesOfHex(const std::string& text);
/// "30s", "5m", "2h", "31d", or several of them joined, in seconds; nothing for anything else.
std::optional<double> secondsOf(const std::string& text);

}  // namespace tavrolin::apps

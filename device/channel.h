#pragma once

#include <cstdint>
#include <mutex>

#include "tavrolin/foundation/value.h"

namespace tavrolin::device {

/// Messages between the device and one of its processes, over a socket: 4 bytes of length, lowest
/// first, and an archived dictionary. What comes in is taken as hostile. Threads: one may receive
/// while others send.
class Channel {
public:
    enum class Received { message, silence, closed, nonsense };

    /// Takes the descriptor over.
    explicit Channel(int descriptor) : descriptor_(descriptor) {}
    ~Channel();
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    /// False when the other side is gone, or takes nothing for 10 seconds of real time. Raises
    /// `foundation::Exception` for a message that is larger than any that is received.
    bool send(const foundation::Value& message);
    /// Waits for a whole message, for so many seconds of real time at most.
    Received receive(foundation::Value& message, double seconds);

private:
    bool fill(std::uint8_t* bytes, std::size_t size, double seconds, Received& outcome);

    int descriptor_;
    std::mutex sending_;
};

}  // namespace tavrolin::device

#include "device/channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <vector>

#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/keyed_archive.h"

namespace tavrolin::device {

using foundation::Value;

namespace {

constexpr std::size_t kLargestMessage = std::size_t{64} * 1024 * 1024;
constexpr std::size_t kPiece = std::size_t{256} * 1024;
using Header = std::array<std::uint8_t, 4>;

constexpr int kSendLimit = 10'000;  // milliseconds without anything taken

bool sendAll(int descriptor, const std::uint8_t* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t sent = ::send(descriptor, bytes, size, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            pollfd waiting{descriptor, POLLOUT, 0};
            if (poll(&waiting, 1, kSendLimit) == 0) return false;
            continue;
        }
        if (sent <= 0) return false;
        bytes += sent;
        size -= static_cast<std::size_t>(sent);
    }
    return true;
}

}  // namespace

Channel::~Channel() {
    close(descriptor_);
}

bool Channel::send(const Value& message) {
    const std::vector<std::uint8_t> body = foundation::KeyedArchiver::archivedData(message);
    if (body.size() > kLargestMessage) {
        foundation::Exception::raise(foundation::Exception::kRange,
                                     std::to_string(body.size()) + " bytes are too many at once");
    }
    Header header{};
    for (std::size_t i = 0; i < header.size(); ++i) {
        header[i] = static_cast<std::uint8_t>(body.size() >> (8 * i));
    }
    const std::lock_guard lock(sending_);
    return sendAll(descriptor_, header.data(), header.size()) &&
           sendAll(descriptor_, body.data(), body.size());
}

bool Channel::fill(std::uint8_t* bytes, std::size_t size, double seconds, Received& outcome) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                        std::chrono::duration<double>(seconds));
    while (size > 0) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting{descriptor_, POLLIN, 0};
        const int ready =
            poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(0, left.count())));
        if (ready < 0 && errno == EINTR) continue;
        if (ready < 0) {
            outcome = Received::closed;
            return false;
        }
        if (ready == 0) {
            outcome = Received::silence;
            return false;
        }
        const ssize_t got = recv(descriptor_, bytes, size, 0);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) {
            outcome = Received::closed;
            return false;
        }
        bytes += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

Channel::Received Channel::receive(Value& message, double seconds) {
    Received outcome = Received::message;
    Header header{};
    if (!fill(header.data(), header.size(), seconds, outcome)) return outcome;
    std::size_t size = 0;
    for (std::size_t i = 0; i < header.size(); ++i)
        size |= std::size_t{header[i]} << (8 * i);
    if (size > kLargestMessage) return Received::nonsense;
    // A length is only a promise: room is made as bytes arrive.
    std::vector<std::uint8_t> body;
    while (body.size() < size) {
        const std::size_t piece = std::min(kPiece, size - body.size());
        body.resize(body.size() + piece);
        if (!fill(body.data() + body.size() - piece, piece, seconds, outcome)) return outcome;
    }
    try {
        message = foundation::KeyedUnarchiver::unarchiveValue(body);
    } catch (const foundation::Exception&) {
        return Received::nonsense;
    }
    return message.isDictionary() ? Received::message : Received::nonsense;
}

}  // namespace tavrolin::device

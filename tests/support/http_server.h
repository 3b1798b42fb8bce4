#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrolin::tests {

/// What the server answers on a path, or what it does wrong.
struct HTTPReply {
    enum class Fault {
        none,
        silence,       // takes the request and says nothing
        closesAtOnce,  // takes the request and hangs up
        endless        // repeats the body until the client goes
    };

    int status = 200;
    std::string body{};
    std::vector<std::pair<std::string, std::string>> headers{};
    std::optional<std::uint64_t> declaredLength{};  // in the place of the body's own
    bool declaresLength = true;                     // false: the connection's end ends the body
    Fault fault = Fault::none;
    std::chrono::milliseconds delay{0};  // before the answer
};

struct HTTPRequest {
    std::string method;
    std::string path;  // with the query
    std::vector<std::pair<std::string, std::string>> headers;
    std::string body;

    /// Empty when there is none. Names in any case.
    std::string header(std::string_view name) const;
};

/// A web server on the loopback interface, each connection on a thread of its own. Paths without a
/// reply answer 404. Threads: any.
class HTTPServer {
public:
    enum class Security {
        none,
        tls,           // a certificate for "localhost", made for this server
        tlsWrongHost,  // one for another host
    };

    /// Without TLS in this build, a server that asks for it throws.
    explicit HTTPServer(Security security = Security::none);
    ~HTTPServer();
    HTTPServer(const HTTPServer&) = delete;
    HTTPServer& operator=(const HTTPServer&) = delete;

    static bool supportsTLS();

    void reply(std::string_view path, HTTPReply reply);
    /// "http://127.0.0.1:…" or "https://localhost:…", and the path.
    std::string url(std::string_view path) const;
    /// The file with the server's certificate, for SSL_CERT_FILE; empty without TLS.
    std::string certificateFile() const;

    std::vector<HTTPRequest> requests() const;
    /// Returns when this many requests have come in all.
    void waitForRequests(std::size_t count) const;
    std::size_t connections() const;
    /// Bytes of bodies that were handed to the system.
    std::uint64_t bodyBytesSent() const;

private:
    class Connection;
    struct State;

    void accept();

    std::unique_ptr<State> state_;
};

}  // namespace tavrolin::tests

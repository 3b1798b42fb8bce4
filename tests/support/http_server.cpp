#include "tests/support/http_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <signal.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <list>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

#ifdef TAVROLIN_TESTS_TLS
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>
#endif

namespace tavrolin::tests {

namespace {

void require(bool isTrue, const char* what) {
    if (!isTrue) throw std::runtime_error(std::string("HTTPServer: ") + what);
}

/// A connected socket, plain.
class Channel {
public:
    explicit Channel(int descriptor) : descriptor_(descriptor) {}
    virtual ~Channel() { ::close(descriptor_); }
    Channel(const Channel&) = delete;
    Channel& operator=(const Channel&) = delete;

    virtual bool open() { return true; }
    virtual long read(char* bytes, std::size_t size) { return ::recv(descriptor_, bytes, size, 0); }
    virtual long write(const char* bytes, std::size_t size) {
        return ::send(descriptor_, bytes, size, MSG_NOSIGNAL);
    }
    void shutdown() { ::shutdown(descriptor_, SHUT_RDWR); }

protected:
    const int descriptor_;
};

#ifdef TAVROLIN_TESTS_TLS

class TLSChannel : public Channel {
public:
    TLSChannel(int descriptor, SSL_CTX* context) : Channel(descriptor), ssl_(SSL_new(context)) {
        SSL_set_fd(ssl_, descriptor);
    }
    ~TLSChannel() override { SSL_free(ssl_); }

    bool open() override { return SSL_accept(ssl_) == 1; }
    long read(char* bytes, std::size_t size) override {
        return SSL_read(ssl_, bytes, static_cast<int>(size));
    }
    long write(const char* bytes, std::size_t size) override {
        return SSL_write(ssl_, bytes, static_cast<int>(size));
    }

private:
    SSL* ssl_;
};

/// A key and a self-signed certificate, made for one server and gone with it.
class Identity {
public:
    explicit Identity(const std::string& host)
        : key_(EVP_EC_gen("P-256")),
          certificate_(X509_new()),
          context_(SSL_CTX_new(TLS_server_method())) {
        X509_set_version(certificate_, X509_VERSION_3);
        ASN1_INTEGER_set(X509_get_serialNumber(certificate_), 1);
        X509_gmtime_adj(X509_getm_notBefore(certificate_), -3600);
        X509_gmtime_adj(X509_getm_notAfter(certificate_), 24L * 3600);
        X509_set_pubkey(certificate_, key_);
        X509_NAME* name = X509_get_subject_name(certificate_);
        const auto* text = reinterpret_cast<const unsigned char*>(host.c_str());
        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, text, -1, -1, 0);
        X509_set_issuer_name(certificate_, name);
        addExtension(NID_subject_alt_name, "DNS:" + host);
        addExtension(NID_basic_constraints, "critical,CA:TRUE");
        require(X509_sign(certificate_, key_, EVP_sha256()) > 0, "no certificate");
        SSL_CTX_use_certificate(context_, certificate_);
        SSL_CTX_use_PrivateKey(context_, key_);
        store();
    }
    ~Identity() {
        SSL_CTX_free(context_);
        X509_free(certificate_);
        EVP_PKEY_free(key_);
        unlink(file_.c_str());
    }
    Identity(const Identity&) = delete;
    Identity& operator=(const Identity&) = delete;

    std::unique_ptr<Channel> channel(int descriptor) {
        return std::make_unique<TLSChannel>(descriptor, context_);
    }
    const std::string& file() const { return file_; }

private:
    void addExtension(int kind, const std::string& value) {
        X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, nullptr, kind, value.c_str());
        X509_add_ext(certificate_, extension, -1);
        X509_EXTENSION_free(extension);
    }
    void store() {
        const char* folder = std::getenv("TMPDIR");
        file_ = std::string(folder != nullptr ? folder : "/tmp") + "/certificateXXXXXX";
        const int descriptor = mkstemp(file_.data());
        require(descriptor >= 0, "no file for the certificate");
        FILE* out = fdopen(descriptor, "w");
        PEM_write_X509(out, certificate_);
        fclose(out);
    }

    EVP_PKEY* key_;
    X509* certificate_;
    SSL_CTX* context_;
    std::string file_;
};

#else

struct Identity {
    explicit Identity(const std::string&) { require(false, "this build has no TLS"); }
    std::unique_ptr<Channel> channel(int) { return nullptr; }
    const std::string& file() const { return file_; }
    std::string file_;
};

#endif

}  // namespace

std::string HTTPRequest::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0) {
            return value;
        }
    }
    return {};
}

struct HTTPServer::State {
    int listener = -1;
    std::uint16_t port = 0;
    std::unique_ptr<Identity> identity;

    std::mutex mutex;
    std::condition_variable changed;
    std::map<std::string, HTTPReply, std::less<>> replies;
    std::vector<HTTPRequest> requests;
    std::uint64_t bodyBytesSent = 0;
    std::list<Channel*> open;
    std::size_t connections = 0;
    bool isStopping = false;
    std::thread acceptor;
    std::vector<std::thread> threads;  // of connections
};

/// One client, from its first request to its last.
class HTTPServer::Connection {
public:
    Connection(State& state, Channel& channel) : state_(state), channel_(channel) {}

    void serve() {
        while (readRequest() && answer()) {
        }
    }

private:
    bool readMore() {
        char bytes[4096];
        const long count = channel_.read(bytes, sizeof bytes);
        if (count > 0) input_.append(bytes, static_cast<std::size_t>(count));
        return count > 0;
    }

    bool readRequest() {
        std::size_t end = 0;
        while ((end = input_.find("\r\n\r\n")) == std::string::npos) {
            if (!readMore()) return false;
        }
        request_ = {};
        parseHead(input_.substr(0, end + 2));
        input_.erase(0, end + 4);
        const std::string length = request_.header("Content-Length");
        const std::size_t size = length.empty() ? 0 : std::stoul(length);
        while (input_.size() < size) {
            if (!readMore()) return false;
        }
        request_.body = input_.substr(0, size);
        input_.erase(0, size);
        return true;
    }

    void parseHead(const std::string& head) {
        const std::size_t lineEnd = head.find("\r\n");
        const std::string line = head.substr(0, lineEnd);
        const std::size_t first = line.find(' ');
        request_.method = line.substr(0, first);
        request_.path = line.substr(first + 1, line.rfind(' ') - first - 1);
        for (std::size_t at = lineEnd + 2; at < head.size();) {
            const std::size_t end = head.find("\r\n", at);
            const std::string field = head.substr(at, end - at);
            const std::size_t colon = field.find(": ");
            if (colon != std::string::npos) {
                request_.headers.emplace_back(field.substr(0, colon), field.substr(colon + 2));
            }
            at = end + 2;
        }
    }

    // Returns whether the connection can take another request.
    bool answer() {
        HTTPReply reply{.status = 404};
        {
            std::unique_lock lock(state_.mutex);
            state_.requests.push_back(request_);
            state_.changed.notify_all();
            const auto found = state_.replies.find(request_.path);
            if (found != state_.replies.end()) reply = found->second;
            if (reply.fault == HTTPReply::Fault::silence) {
                state_.changed.wait(lock, [this] { return state_.isStopping; });
                return false;
            }
            state_.changed.wait_for(lock, reply.delay, [this] { return state_.isStopping; });
        }
        if (reply.fault == HTTPReply::Fault::closesAtOnce) return false;
        if (!send(head(reply))) return false;
        do {
            if (!send(reply.body)) return false;
            const std::lock_guard lock(state_.mutex);
            state_.bodyBytesSent += reply.body.size();
        } while (reply.fault == HTTPReply::Fault::endless);
        return reply.declaresLength && !reply.declaredLength;
    }

    static std::string head(const HTTPReply& reply) {
        std::string text = "HTTP/1.1 " + std::to_string(reply.status) + " Status\r\n";
        for (const auto& [name, value] : reply.headers)
            text += name + ": " + value + "\r\n";
        if (reply.declaresLength) {
            const auto length = reply.declaredLength.value_or(reply.body.size());
            text += "Content-Length: " + std::to_string(length) + "\r\n";
        } else {
            text += "Connection: close\r\n";
        }
        return text + "\r\n";
    }

    bool send(std::string_view bytes) {
        while (!bytes.empty()) {
            const long count = channel_.write(bytes.data(), bytes.size());
            if (count <= 0) return false;
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
        return true;
    }

    State& state_;
    Channel& channel_;
    std::string input_;
    HTTPRequest request_;
};

HTTPServer::HTTPServer(Security security) : state_(std::make_unique<State>()) {
    signal(SIGPIPE, SIG_IGN);  // a client that hangs up on a TLS connection
    if (security == Security::tls) state_->identity = std::make_unique<Identity>("localhost");
    if (security == Security::tlsWrongHost) {
        state_->identity = std::make_unique<Identity>("elsewhere.example");
    }
    state_->listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    require(bind(state_->listener, generic, size) == 0 && listen(state_->listener, 64) == 0 &&
                getsockname(state_->listener, generic, &size) == 0,
            "cannot listen on the loopback interface");
    state_->port = ntohs(address.sin_port);
    state_->acceptor = std::thread([this] { accept(); });
}

HTTPServer::~HTTPServer() {
    {
        const std::lock_guard lock(state_->mutex);
        state_->isStopping = true;
        ::shutdown(state_->listener, SHUT_RDWR);
        for (Channel* channel : state_->open)
            channel->shutdown();
    }
    state_->changed.notify_all();
    state_->acceptor.join();  // after this nobody adds to the list
    for (std::thread& thread : state_->threads)
        thread.join();
    ::close(state_->listener);
}

void HTTPServer::accept() {
    for (;;) {
        const int descriptor = accept4(state_->listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) return;
        const int on = 1;  // small answers go out at once
        setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        auto channel = state_->identity ? state_->identity->channel(descriptor)
                                        : std::make_unique<Channel>(descriptor);
        const std::lock_guard lock(state_->mutex);
        if (state_->isStopping) return;
        ++state_->connections;
        const auto place = state_->open.insert(state_->open.end(), channel.get());
        state_->threads.emplace_back([this, place, owned = std::move(channel)]() mutable {
            if (owned->open()) Connection(*state_, *owned).serve();
            const std::lock_guard inner(state_->mutex);
            state_->open.erase(place);
            owned.reset();
        });
    }
}

bool HTTPServer::supportsTLS() {
#ifdef TAVROLIN_TESTS_TLS
    return true;
#else
    return false;
#endif
}

void HTTPServer::reply(std::string_view path, HTTPReply reply) {
    const std::lock_guard lock(state_->mutex);
    state_->replies.insert_or_assign(std::string(path), std::move(reply));
}

std::string HTTPServer::url(std::string_view path) const {
    const std::string origin = state_->identity ? "https://localhost:" : "http://127.0.0.1:";
    return origin + std::to_string(state_->port) + std::string(path);
}

std::string HTTPServer::certificateFile() const {
    return state_->identity ? state_->identity->file() : std::string();
}

std::vector<HTTPRequest> HTTPServer::requests() const {
    const std::lock_guard lock(state_->mutex);
    return state_->requests;
}

void HTTPServer::waitForRequests(std::size_t count) const {
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this, count] { return state_->requests.size() >= count; });
}

std::size_t HTTPServer::connections() const {
    const std::lock_guard lock(state_->mutex);
    return state_->connections;
}

std::uint64_t HTTPServer::bodyBytesSent() const {
    const std::lock_guard lock(state_->mutex);
    return state_->bodyBytesSent;
}

}  // namespace tavrolin::tests

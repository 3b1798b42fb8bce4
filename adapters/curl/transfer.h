#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "adapters/curl/curl_library.h"
#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/url_session.h"

namespace tavrolin::adapters::curl {

/// Where the bytes of a body go, and who hears of its end.
class Body {
public:
    virtual ~Body() = default;
    virtual foundation::Failure append(std::string_view bytes) = 0;
    /// Called once, after the last byte. An error of the transfer leaves the bytes unused.
    virtual void complete(std::optional<platform::URLResponse> response,
                          foundation::Failure error) = 0;
};

/// One request and its answer as they pass through libcurl. Used on the session's thread only, but
/// for the constructor.
class Transfer {
public:
    using Clock = std::chrono::steady_clock;

    /// The certificates to trust: a file, else a directory of hashed names, else libcurl's default.
    struct Trust {
        std::string file;
        std::string directory;
    };

    Transfer(platform::URLRequest request, std::uint64_t limit, std::shared_ptr<Body> body)
        : request_(std::move(request)), limit_(limit), body_(std::move(body)) {}
    ~Transfer();
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    /// Ties a clock to the transfer until its end.
    void setHold(std::unique_ptr<platform::Dispatch::Hold> hold) { hold_ = std::move(hold); }

    /// Makes the handle, ready to be added to a multi handle; says why when it can't.
    foundation::Failure prepare(const CurlLibrary& library, const Trust& trust);
    CURL* handle() const { return handle_; }

    /// When it has been silent for as long as it may.
    Clock::time_point deadline() const { return deadline_; }
    Clock::time_point lastProgress() const { return lastProgress_; }
    foundation::Failure timedOut() const;

    /// Why it failed; nothing when libcurl's result is a success.
    foundation::Failure result(CURLcode code) const;
    /// Hands over the body or the error, then gives the clock and libcurl's handle back. The
    /// handle must have left its multi handle.
    void complete(const foundation::Failure& error);

private:
    std::optional<platform::URLResponse> response() const;
    void release();
    template <class Argument>
    void set(CURLoption option, Argument argument);
    void setTarget(const Trust& trust);
    foundation::Failure setHeaders();
    void setMethodAndBody();
    void setCallbacks();
    bool addHeader(const std::string& line);
    bool hasHeader(std::string_view name) const;
    void progress();

    static std::size_t received(char* bytes, std::size_t size, std::size_t count, void* transfer);
    static std::size_t receivedHeader(char* bytes, std::size_t size, std::size_t count,
                                      void* transfer);
    static int connected(void* transfer, char*, char*, int, int);

    const platform::URLRequest request_;
    const std::uint64_t limit_;
    const std::shared_ptr<Body> body_;
    std::unique_ptr<platform::Dispatch::Hold> hold_;

    const CurlLibrary* library_ = nullptr;
    CURL* handle_ = nullptr;
    curl_slist* headers_ = nullptr;
    CURLcode setResult_ = CURLE_OK;  // the first option that was refused
    char message_[CURL_ERROR_SIZE] = {};
    foundation::Failure failure_;  // our own reason to stop
    std::uint64_t size_ = 0;
    std::uint64_t headerSize_ = 0;
    Clock::time_point lastProgress_;
    Clock::time_point deadline_ = Clock::time_point::max();
};

}  // namespace tavrolin::adapters::curl

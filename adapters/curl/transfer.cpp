#include "adapters/curl/transfer.h"

#include <strings.h>

#include <algorithm>
#include <limits>
#include <utility>

#include "adapters/curl/session_error.h"

namespace tavrolin::adapters::curl {

namespace {

constexpr long kRedirects = 5;
constexpr long kBufferSize = 32L * 1024;            // one a transfer: this is most of its memory
constexpr std::uint64_t kHeaderLimit = 256 * 1024;  // of all responses of a transfer
constexpr double kLongestTimeout = 1e7;             // seconds, so that no deadline overflows
constexpr const char* kProtocols = "http,https";

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

bool isClean(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

}  // namespace

Transfer::~Transfer() {
    release();
}

void Transfer::complete(const foundation::Failure& error) {
    body_->complete(response(), error);
    // Not before the completion is queued, or a jumping clock could move in between.
    hold_.reset();
    release();
}

void Transfer::release() {
    if (handle_ != nullptr) library_->easyCleanup(std::exchange(handle_, nullptr));
    if (headers_ != nullptr) library_->slistFreeAll(std::exchange(headers_, nullptr));
}

template <class Argument>
void Transfer::set(CURLoption option, Argument argument) {
    const CURLcode code = library_->easySetopt(handle_, option, argument);
    if (setResult_ == CURLE_OK) setResult_ = code;
}

foundation::Failure Transfer::prepare(const CurlLibrary& library, const Trust& trust) {
    const std::string_view scheme = request_.url.scheme();
    if (!equalsIgnoringCase(scheme, "http") && !equalsIgnoringCase(scheme, "https")) {
        return sessionError(kUnsupportedURL, "unsupported URL");
    }
    library_ = &library;
    handle_ = library.easyInit();
    if (handle_ == nullptr) return sessionError(CURLE_FAILED_INIT, "no handle");
    setTarget(trust);
    setCallbacks();
    setMethodAndBody();
    if (auto error = setHeaders()) return error;
    if (setResult_ != CURLE_OK) {
        return sessionError(setResult_, library.easyStrerror(setResult_));
    }
    progress();
    return std::nullopt;
}

void Transfer::setTarget(const Trust& trust) {
    const bool isSecure = equalsIgnoringCase(request_.url.scheme(), "https");
    set(CURLOPT_URL, request_.url.absoluteString().c_str());
    set(CURLOPT_PROTOCOLS_STR, kProtocols);
    set(CURLOPT_REDIR_PROTOCOLS_STR, kProtocols);
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, kRedirects);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_BUFFERSIZE, kBufferSize);
    set(CURLOPT_USERAGENT, "Tavrolin");
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    // Worth the wait: a connection that can be shared saves the others their handshakes.
    set(CURLOPT_PIPEWAIT, isSecure ? 1L : 0L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    // A directory is searched for the one certificate that is needed; a bundle is read as a whole.
    if (!trust.file.empty() || !trust.directory.empty()) {
        set(CURLOPT_CAINFO, trust.file.empty() ? nullptr : trust.file.c_str());
        set(CURLOPT_CAPATH, trust.file.empty() ? trust.directory.c_str() : nullptr);
    }
    // Refused as soon as the length is declared; what arrives is counted all the same.
    if (limit_ > 0 && limit_ < static_cast<std::uint64_t>(std::numeric_limits<curl_off_t>::max())) {
        set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(limit_));
    }
}

void Transfer::setCallbacks() {
    set(CURLOPT_PRIVATE, this);
    set(CURLOPT_ERRORBUFFER, message_);
    set(CURLOPT_WRITEFUNCTION, &Transfer::received);
    set(CURLOPT_WRITEDATA, this);
    set(CURLOPT_HEADERFUNCTION, &Transfer::receivedHeader);
    set(CURLOPT_HEADERDATA, this);
    set(CURLOPT_PREREQFUNCTION, &Transfer::connected);
    set(CURLOPT_PREREQDATA, this);
}

void Transfer::setMethodAndBody() {
    if (request_.body) {
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body->size()));
        set(CURLOPT_POSTFIELDS, request_.body->data());
    }
    const std::string method = request_.method.value_or("GET");
    if (method == "POST") {
        if (!request_.body) set(CURLOPT_POSTFIELDS, "");
    } else if (request_.body || method != "GET") {
        set(CURLOPT_CUSTOMREQUEST, method.c_str());
    }
}

foundation::Failure Transfer::setHeaders() {
    bool isComplete = true;
    for (const auto& [name, value] : request_.headers) {
        if (name.empty() || name.find(':') != std::string::npos || !isClean(name) ||
            !isClean(value)) {
            return sessionError(CURLE_BAD_FUNCTION_ARGUMENT, "a header that can't be sent");
        }
        // A header without a value is written with a semicolon, as libcurl wants it.
        isComplete &= addHeader(std::string(name).append(value.empty() ? ";" : ": ").append(value));
    }
    if (request_.cachePolicy == platform::CachePolicy::reloadIgnoringLocalAndRemoteCacheData &&
        !hasHeader("Cache-Control")) {
        isComplete &= addHeader("Cache-Control: no-cache");
    }
    // libcurl would add these on its own.
    if (!hasHeader("Expect")) isComplete &= addHeader("Expect:");
    if (!hasHeader("Content-Type")) isComplete &= addHeader("Content-Type:");
    if (!isComplete) return sessionError(CURLE_OUT_OF_MEMORY, "out of memory");
    set(CURLOPT_HTTPHEADER, headers_);
    return std::nullopt;
}

bool Transfer::addHeader(const std::string& line) {
    curl_slist* longer = library_->slistAppend(headers_, line.c_str());
    if (longer == nullptr) return false;
    headers_ = longer;
    return true;
}

bool Transfer::hasHeader(std::string_view name) const {
    return std::any_of(request_.headers.begin(), request_.headers.end(),
                       [name](const auto& h) { return equalsIgnoringCase(h.first, name); });
}

void Transfer::progress() {
    const double timeout = std::clamp(request_.timeoutInterval, 0.0, kLongestTimeout);
    lastProgress_ = Clock::now();
    deadline_ = lastProgress_ +
                std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(timeout));
    if (hold_) hold_->progress();
}

std::size_t Transfer::received(char* bytes, std::size_t size, std::size_t count, void* transfer) {
    auto& self = *static_cast<Transfer*>(transfer);
    self.progress();
    const std::size_t length = size * count;
    self.size_ += length;
    self.failure_ = self.size_ > self.limit_ ? sessionError(kTooLarge, "more than could be of use")
                                             : self.body_->append({bytes, length});
    // Any number but the length stops the transfer.
    return self.failure_ ? length + 1 : length;
}

std::size_t Transfer::receivedHeader(char* /*bytes*/, std::size_t size, std::size_t count,
                                     void* transfer) {
    auto& self = *static_cast<Transfer*>(transfer);
    self.progress();
    const std::size_t length = size * count;
    self.headerSize_ += length;
    if (self.headerSize_ <= kHeaderLimit) return length;
    self.failure_ = sessionError(kTooLarge, "too many headers");
    return length + 1;
}

int Transfer::connected(void* transfer, char*, char*, int, int) {
    static_cast<Transfer*>(transfer)->progress();
    return CURL_PREREQFUNC_OK;
}

foundation::Failure Transfer::timedOut() const {
    return sessionError(kTimedOut, "nothing arrived in time");
}

foundation::Failure Transfer::result(CURLcode code) const {
    if (failure_) return failure_;
    if (code == CURLE_OK) return std::nullopt;
    if (code == CURLE_FILESIZE_EXCEEDED) {
        return sessionError(kTooLarge, "more than could be of use");
    }
    return sessionError(code, message_[0] != '\0' ? message_ : library_->easyStrerror(code));
}

std::optional<platform::URLResponse> Transfer::response() const {
    long status = 0;
    // Of a response whose header was given up nothing is known.
    if (handle_ == nullptr || headerSize_ > kHeaderLimit ||
        library_->easyGetinfo(handle_, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK ||
        status == 0) {
        return std::nullopt;
    }
    return platform::URLResponse{static_cast<int>(status)};
}

}  // namespace tavrolin::adapters::curl

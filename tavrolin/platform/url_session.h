#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/url.h"

namespace tavrolin::platform {

enum class CachePolicy {
    useProtocolCachePolicy = 0,
    reloadIgnoringLocalCacheData = 1,
    reloadIgnoringLocalAndRemoteCacheData = 4
};

struct URLRequest {
    foundation::URL url;
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
    double timeoutInterval = 60;        // seconds without any progress
    std::optional<std::string> method;  // absent: the client's default, GET
    std::vector<std::pair<std::string, std::string>> headers;
    std::optional<std::string> body;
};

/// A response as far as it came. `statusCode` is absent when it is not an HTTP response.
struct URLResponse {
    std::optional<int> statusCode;
};

class URLSessionTask {
public:
    virtual ~URLSessionTask() = default;
    virtual void resume() = 0;  // a task starts suspended; a second call does nothing
    virtual void cancel() = 0;  // completes with an error unless it is complete
};

/// The HTTP client. http and https only, also after a redirect; at most 5 redirects; certificates
/// and host names are verified.
///
/// Each completion is called exactly once, on a background thread of the session, never on the
/// caller's: with a response unless none arrived, and with an error when the transfer failed. A
/// body that ends before its declared length is an error. Threads: any.
class URLSession {
public:
    using DataCompletion = std::function<void(std::string body, std::optional<URLResponse>,
                                              std::optional<foundation::Error>)>;
    /// `location` is the path of a temporary file, empty when there is none; the file is removed
    /// when the completion returns, unless it was moved.
    using DownloadCompletion = std::function<void(std::string location, std::optional<URLResponse>,
                                                  std::optional<foundation::Error>)>;

    virtual ~URLSession() = default;

    virtual std::shared_ptr<URLSessionTask> dataTask(URLRequest request,
                                                     DataCompletion completion) = 0;
    /// Streams the body to disk. Stops with an error as soon as more has arrived, or is declared,
    /// than could be of use.
    virtual std::shared_ptr<URLSessionTask> downloadTask(foundation::URL url,
                                                         DownloadCompletion completion) = 0;
};

class ForwardingURLSession : public URLSession {
public:
    explicit ForwardingURLSession(URLSession& target) : target_(target) {}
    std::shared_ptr<URLSessionTask> dataTask(URLRequest request,
                                             DataCompletion completion) override {
        return target_.dataTask(std::move(request), std::move(completion));
    }
    std::shared_ptr<URLSessionTask> downloadTask(foundation::URL url,
                                                 DownloadCompletion completion) override {
        return target_.downloadTask(std::move(url), std::move(completion));
    }

private:
    URLSession& target_;
};

}  // namespace tavrolin::platform

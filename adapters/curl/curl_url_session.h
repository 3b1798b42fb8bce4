#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/url_session.h"

namespace tavrolin::adapters::curl {

class Body;

/// The HTTP client over libcurl. One thread, started with the first transfer, carries all of them,
/// up to 10 at once to a server, or side by side on one connection where it speaks HTTP/2.
/// Completions run on the dispatch's global queue.
///
/// Certificates are looked up in the file that SSL_CERT_FILE names, else in the system's. Time-outs
/// are in seconds of real time without a byte arriving, the connection included. Each transfer
/// holds the dispatch's clock from `resume` to its end.
class CurlURLSession : public platform::URLSession {
public:
    /// The most bytes of a body that can be of use, by the URL that was asked for.
    using SizeLimit = std::function<std::uint64_t(const foundation::URL&)>;

    struct Configuration {
        std::string temporaryDirectory;  // for downloads; must exist
        SizeLimit sizeLimit;             // absent: no limit
        double timeout = 60;             // seconds, of downloads
    };

    /// The dispatch must outlive the session.
    CurlURLSession(platform::Dispatch& dispatch, Configuration configuration);
    /// Cancels what is under way.
    ~CurlURLSession() override;

    /// Ends every transfer that has been silent for a second or longer and so holds no clock, as if
    /// its time were up; then calls back on the dispatch's global queue. For those who know that on
    /// a jumping clock it is.
    void endSilentTransfers(platform::Block done);

    std::shared_ptr<platform::URLSessionTask> dataTask(platform::URLRequest request,
                                                       DataCompletion completion) override;
    std::shared_ptr<platform::URLSessionTask> downloadTask(foundation::URL url,
                                                           DownloadCompletion completion) override;

private:
    class Loop;
    class Task;

    std::shared_ptr<platform::URLSessionTask> task(platform::URLRequest request,
                                                   std::shared_ptr<Body> body);

    const Configuration configuration_;
    std::shared_ptr<Loop> loop_;
};

}  // namespace tavrolin::adapters::curl

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/foundation/value.h"
#include "tavrolin/platform/url_session.h"

namespace tavrolin {

/// One request at a time over the platform's URL session. Every outcome reaches the caller as one
/// call of success or of failure, on a background thread of the session, or, when the request could
/// not even be made, before the operation returns. Threads: any.
///
/// An absent URL is handed to the session like any other, which refuses it.
class CVNPushNetworkService : public std::enable_shared_from_this<CVNPushNetworkService> {
public:
    using OptionalURL = std::optional<foundation::URL>;
    using DataSuccess = std::function<void(const std::string& responseData)>;
    using DataFailure = std::function<void(const std::string& responseData,
                                           const foundation::Error& error, std::int64_t code)>;
    /// The file at `location` exists until the callback returns: move or copy it there and then.
    using DownloadSuccess = std::function<void(const foundation::URL& location)>;
    using DownloadFailure = std::function<void(const OptionalURL& location,
                                               const foundation::Error& error, std::int64_t code)>;

    static std::shared_ptr<CVNPushNetworkService> init();

    /// A request that ignores caches and gives up after 10 seconds without progress. A nil
    /// dictionary counts as none given.
    platform::URLRequest buildRequestFrom(const OptionalURL& URL, const foundation::Value& headers,
                                          const foundation::Value& URLParameters,
                                          const foundation::Value& bodyParameters) const;
    void makeDataRequestFor(const OptionalURL& URL, std::int64_t method,
                            const foundation::Value& URLParams, const foundation::Value& bodyParams,
                            const foundation::Value& headers, DataSuccess success,
                            DataFailure failure);
    /// A plain GET with the session's own cache policy and time-out.
    void makeDownloadRequestFor(const OptionalURL& URL, DownloadSuccess success,
                                DownloadFailure failure);
    /// Cancels the last data task and the last download task.
    void cancel();

    /// Nothing when the response says that the request succeeded.
    foundation::Failure validateResponse(const std::optional<platform::URLResponse>& response,
                                         std::string_view responseObject,
                                         const foundation::Failure& error) const;

    std::shared_ptr<platform::URLSessionTask> dataTask() const;
    std::shared_ptr<platform::URLSessionTask> downloadTask() const;

private:
    CVNPushNetworkService() = default;

    mutable std::mutex mutex_;
    std::shared_ptr<platform::URLSessionTask> dataTask_;
    std::shared_ptr<platform::URLSessionTask> downloadTask_;
};

}  // namespace tavrolin

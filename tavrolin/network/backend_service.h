#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "tavrolin/core/backend_configuration.h"
#include "tavrolin/network/network_service.h"

namespace tavrolin {

/// Downloads for an operation: each request goes through a network service of its own. Threads:
/// any.
class CVNPushBackendService {
public:
    using Success = CVNPushNetworkService::DownloadSuccess;
    using Failure = std::function<void(const foundation::Error& error)>;

    /// The configuration is taken and not used.
    static std::unique_ptr<CVNPushBackendService> initWithConfig(
        const CVNPushBackendConfiguration& config);

    /// Calls success or failure, once.
    void makeDownloadRequestFor(const CVNPushNetworkService::OptionalURL& URL, Success success,
                                Failure failure);
    /// Cancels the last request, unless it is over.
    void cancel();

    std::shared_ptr<CVNPushNetworkService> service() const;

private:
    CVNPushBackendService() = default;

    mutable std::mutex mutex_;
    std::shared_ptr<CVNPushNetworkService> service_;
};

}  // namespace tavrolin

#include "tavrolin/network/backend_service.h"

#include <utility>

#include "tavrolin/core/logger.h"

namespace tavrolin {

std::unique_ptr<CVNPushBackendService> CVNPushBackendService::initWithConfig(
    const CVNPushBackendConfiguration& /*config*/) {
    return std::unique_ptr<CVNPushBackendService>(new CVNPushBackendService);
}

void CVNPushBackendService::makeDownloadRequestFor(const CVNPushNetworkService::OptionalURL& URL,
                                                   Success success, Failure failure) {
    constexpr std::string_view kOperation =
        "-[CVNPushBackendService makeDownloadRequestFor:success:failure:]";
    try {
        log(LogLevel::info, kOperation,
            formatMessage("URL Request = %@",
                          {URL ? foundation::Value(URL->absoluteString()) : foundation::Value()}));
        const auto service = CVNPushNetworkService::init();
        {
            const std::lock_guard lock(mutex_);
            service_ = service;
        }
        service->makeDownloadRequestFor(URL, std::move(success),
                                        [failure](const auto&, const foundation::Error& error,
                                                  std::int64_t) { failure(error); });
    } catch (const foundation::Exception& exception) {
        log(LogLevel::fatal, kOperation,
            formatMessage("Could not request due to exception = %@", {exception.reason()}));
        failure({"Backend service", 0, exception.name(), exception.reason()});
    }
}

void CVNPushBackendService::cancel() {
    if (const auto current = service()) current->cancel();
}

std::shared_ptr<CVNPushNetworkService> CVNPushBackendService::service() const {
    const std::lock_guard lock(mutex_);
    return service_;
}

}  // namespace tavrolin

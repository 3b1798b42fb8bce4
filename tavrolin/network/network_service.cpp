#include "tavrolin/network/network_service.h"

#include <utility>

#include "tavrolin/core/logger.h"
#include "tavrolin/network/http_method.h"
#include "tavrolin/network/parameter_encoder.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

using foundation::Error;
using foundation::Value;

namespace {

constexpr std::string_view kDataOperation =
    "-[CVNPushNetworkService "
    "makeDataRequestFor:method:URLParams:bodyParams:headers:success:failure:]";
constexpr std::string_view kDownloadOperation =
    "-[CVNPushNetworkService makeDownloadRequestFor:success:failure:]";

constexpr double kRequestTimeout = 10;  // seconds

Value text(const CVNPushNetworkService::OptionalURL& url) {
    return url ? Value(url->absoluteString()) : Value();
}

Error serviceError(std::int64_t code, std::string description, std::string reason,
                   std::string suggestion) {
    return {"NetworkService", code, std::move(description), std::move(reason),
            std::move(suggestion)};
}

// The texts belong to the ranges as they stand: every 4xx asks to authenticate, every 5xx is a "bad
// request", and 600 is a status of its own. Deliberate.
foundation::Failure errorForStatus(int status) {
    if (status >= 200 && status <= 299) return std::nullopt;
    if (status >= 400 && status <= 499) {
        return serviceError(status, "Authentication failed",
                            "You need to be authenticated to perform this action",
                            "Authenticate and try again");
    }
    if (status >= 500 && status <= 599) {
        return serviceError(status, "Bad request", "The server encountered an internal error",
                            "Try again later");
    }
    if (status == 600) {
        return serviceError(status, "Outdated URL", "The URL you requested is no longer valid",
                            "Update the URL and try again");
    }
    return serviceError(status, formatMessage("Request failed with code %ld", {status}),
                        "The server returned an unknown error",
                        "Have you tried turning it off and on again?");
}

}  // namespace

std::shared_ptr<CVNPushNetworkService> CVNPushNetworkService::init() {
    return std::shared_ptr<CVNPushNetworkService>(new CVNPushNetworkService);
}

platform::URLRequest CVNPushNetworkService::buildRequestFrom(const OptionalURL& URL,
                                                             const Value& headers,
                                                             const Value& URLParameters,
                                                             const Value& bodyParameters) const {
    platform::URLRequest request;
    request.url = URL.value_or(foundation::URL());
    request.cachePolicy = platform::CachePolicy::reloadIgnoringLocalAndRemoteCacheData;
    request.timeoutInterval = kRequestTimeout;
    if (bodyParameters) CVNPushJSONParameterEncoder::encode(request, bodyParameters);
    if (URLParameters) CVNPushURLParameterEncoder::encode(request, URLParameters);
    if (headers) {
        for (const auto& [name, value] : headers.entries()) {
            request.headers.emplace_back(name.string(), value.string());
        }
    }
    return request;
}

void CVNPushNetworkService::makeDataRequestFor(const OptionalURL& URL, std::int64_t method,
                                               const Value& URLParams, const Value& bodyParams,
                                               const Value& headers, DataSuccess success,
                                               DataFailure failure) {
    try {
        platform::URLRequest request = buildRequestFrom(URL, headers, URLParams, bodyParams);
        request.method = CVNPushHTTPMethodString(method);
        const std::string url = request.url.absoluteString();
        log(LogLevel::info, kDataOperation, formatMessage("Request = %@", {url}));

        auto completion = [self = shared_from_this(), url, success, failure](
                              const std::string& data, const auto& response,
                              const auto& transportError) {
            if (const auto error = self->validateResponse(response, data, transportError)) {
                log(LogLevel::warn, kDataOperation,
                    formatMessage("Failure for API call %@", {url}));
                failure(data, *error, error->code);
            } else {
                log(LogLevel::info, kDataOperation,
                    formatMessage("Success for API call %@", {url}));
                success(data);
            }
        };
        const auto task =
            platform::current().urlSession->dataTask(std::move(request), std::move(completion));
        {
            const std::lock_guard lock(mutex_);
            dataTask_ = task;
        }
        task->resume();
    } catch (const foundation::Exception& exception) {
        log(LogLevel::fatal, kDataOperation,
            formatMessage("Could not request due to exception = %@", {exception.reason()}));
        // The domain is the backend service's name here: deliberate.
        failure({}, {"Backend service", 0, exception.name(), exception.reason()}, 0);
    }
}

void CVNPushNetworkService::makeDownloadRequestFor(const OptionalURL& URL, DownloadSuccess success,
                                                   DownloadFailure failure) {
    try {
        log(LogLevel::info, kDownloadOperation, formatMessage("URL Request = %@", {text(URL)}));

        auto completion = [self = shared_from_this(), URL, success, failure](
                              const std::string& path, const auto& response,
                              const auto& transportError) {
            const OptionalURL location =
                path.empty() ? std::nullopt : std::optional(foundation::URL::fileURLWithPath(path));
            if (const auto error = self->validateResponse(response, path, transportError)) {
                log(LogLevel::warn, kDownloadOperation,
                    formatMessage("Failure for downloadURL %@", {text(URL)}));
                failure(location, *error, error->code);
            } else {
                log(LogLevel::info, kDownloadOperation,
                    formatMessage("Success for downloadURL %@", {text(URL)}));
                success(location.value_or(foundation::URL()));
            }
        };
        const auto task = platform::current().urlSession->downloadTask(
            URL.value_or(foundation::URL()), std::move(completion));
        {
            const std::lock_guard lock(mutex_);
            downloadTask_ = task;
        }
        task->resume();
    } catch (const foundation::Exception& exception) {
        log(LogLevel::fatal, kDownloadOperation,
            formatMessage("Could not request due to exception = %@", {exception.reason()}));
        failure(std::nullopt, {"Network service", 0, exception.name(), exception.reason()}, 0);
    }
}

void CVNPushNetworkService::cancel() {
    const auto data = dataTask();
    const auto download = downloadTask();
    if (data) data->cancel();
    if (download) download->cancel();
}

foundation::Failure CVNPushNetworkService::validateResponse(
    const std::optional<platform::URLResponse>& response, std::string_view /*responseObject*/,
    const foundation::Failure& error) const {
    // Asked first, so a transport that never got an answer is an "invalid response" too:
    // deliberate.
    if (!response || !response->statusCode) {
        return serviceError(0, "Invalid response type",
                            "The response received is not of type NSHTTPURLResponse",
                            "Check the server configuration or the request implementation");
    }
    if (error) {
        return serviceError(0, "Request failed", "There was an error during the request",
                            "Check your internet connection and try again");
    }
    return errorForStatus(*response->statusCode);
}

std::shared_ptr<platform::URLSessionTask> CVNPushNetworkService::dataTask() const {
    const std::lock_guard lock(mutex_);
    return dataTask_;
}

std::shared_ptr<platform::URLSessionTask> CVNPushNetworkService::downloadTask() const {
    const std::lock_guard lock(mutex_);
    return downloadTask_;
}

}  // namespace tavrolin

#include "tavrolin/service_extension/push_media_operation.h"

#include <utility>

namespace tavrolin {

CVNPushMediaOperation::CVNPushMediaOperation(std::string_view URLString, Completion completion)
    : URLString_(URLString), completion_(std::move(completion)) {
    setName("CVN_Image_Fetch_Operation");
}

std::shared_ptr<CVNPushMediaOperation> CVNPushMediaOperation::initWithURLString(
    std::string_view URLString, Completion andCompletion) {
    return std::shared_ptr<CVNPushMediaOperation>(
        new CVNPushMediaOperation(URLString, std::move(andCompletion)));
}

void CVNPushMediaOperation::start() {
    if (isExecuting()) return;  // one download, one completion
    CVNPushServiceOperation::start();
    const auto self = std::static_pointer_cast<CVNPushMediaOperation>(shared_from_this());
    service().makeDownloadRequestFor(
        foundation::URL::withString(URLString_),
        [self](const foundation::URL& location) {
            self->handleSuccess(location);
            self->finish();
        },
        [self](const foundation::Error& error) {
            self->handleFailure(error);
            self->finish();
        });
}

void CVNPushMediaOperation::handleSuccess(const foundation::URL& location) {
    if (completion_) completion_(location, std::nullopt);
}

void CVNPushMediaOperation::handleFailure(const foundation::Error& error) {
    if (completion_) completion_(std::nullopt, error);
}

}  // namespace tavrolin

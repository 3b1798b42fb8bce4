#include "tavrolin/service_extension/push_service_operation.h"

namespace tavrolin {

CVNPushServiceOperation::CVNPushServiceOperation()
    : service_(
          CVNPushBackendService::initWithConfig(CVNPushBackendConfiguration::sharedInstance())) {}

void CVNPushServiceOperation::cancel() {
    service_->cancel();
    CVNPushOperation::cancel();
}

}  // namespace tavrolin

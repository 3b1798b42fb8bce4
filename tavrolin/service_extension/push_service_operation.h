#pragma once

#include <memory>

#include "tavrolin/network/backend_service.h"
#include "tavrolin/service_extension/push_operation.h"

namespace tavrolin {

/// An operation with a backend service of its own.
class CVNPushServiceOperation : public CVNPushOperation {
public:
    /// Cancels the backend service's request, then sets the operation's flag.
    void cancel() override;

    CVNPushBackendService& service() { return *service_; }

protected:
    CVNPushServiceOperation();

private:
    std::unique_ptr<CVNPushBackendService> service_;
};

}  // namespace tavrolin

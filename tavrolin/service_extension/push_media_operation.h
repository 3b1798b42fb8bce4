#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tavrolin/foundation/error.h"
#include "tavrolin/foundation/expected.h"
#include "tavrolin/foundation/url.h"
#include "tavrolin/service_extension/push_service_operation.h"

namespace tavrolin {

/// Downloads one file and hands over where it lies, or why there is none.
class CVNPushMediaOperation : public CVNPushServiceOperation {
public:
    /// Called once, on a background thread. The file exists until the call returns.
    using Completion = std::function<void(const std::optional<foundation::URL>& location,
                                          const foundation::Failure& error)>;

    static std::shared_ptr<CVNPushMediaOperation> initWithURLString(std::string_view URLString,
                                                                    Completion andCompletion);

    /// A text that is no URL ends in an error, as a failed download does.
    void start() override;
    void handleSuccess(const foundation::URL& location);
    void handleFailure(const foundation::Error& error);

    const std::string& URLString() const { return URLString_; }

private:
    CVNPushMediaOperation(std::string_view URLString, Completion completion);

    const std::string URLString_;
    const Completion completion_;
};

}  // namespace tavrolin

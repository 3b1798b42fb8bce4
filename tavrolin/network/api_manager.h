#pragma once

#include <string_view>

#include "tavrolin/foundation/operation_queue.h"
#include "tavrolin/service_extension/push_media_operation.h"

namespace tavrolin {

/// The way to the network for the rest of the library.
class CVNPushAPIManager {
public:
    /// Downloads in an operation on the given queue, or on the shared network queue when it is
    /// null. The completion is called once, on a background thread, with a file that exists until
    /// it returns, or with an error.
    static void retrieveMediaLocationWithURLString(std::string_view URLString,
                                                   foundation::OperationQueue* downloadQueue,
                                                   CVNPushMediaOperation::Completion andCompletion);
};

}  // namespace tavrolin

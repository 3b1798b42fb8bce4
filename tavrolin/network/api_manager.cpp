#include "tavrolin/network/api_manager.h"

#include <utility>

#include "tavrolin/network/network_queue.h"

namespace tavrolin {

void CVNPushAPIManager::retrieveMediaLocationWithURLString(
    std::string_view URLString, foundation::OperationQueue* downloadQueue,
    CVNPushMediaOperation::Completion andCompletion) {
    auto operation = CVNPushMediaOperation::initWithURLString(URLString, std::move(andCompletion));
    if (downloadQueue != nullptr) {
        downloadQueue->addOperation(std::move(operation));
    } else {
        CVNPushNetworkQueue::sharedInstance().addOperation(std::move(operation));
    }
}

}  // namespace tavrolin

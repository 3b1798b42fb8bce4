#include "tavrolin/service_extension/push_operation.h"

#include "tavrolin/core/logger.h"

namespace tavrolin {

void CVNPushOperation::start() {
    if (isExecuting()) return;
    setReady(false);
    setExecuting(true);
    setFinished(false);
    log(LogLevel::debug, "-[CVNPushOperation start]",
        formatMessage("\"%@\" Operation Started.", {name()}));
}

void CVNPushOperation::finish() {
    if (!isExecuting()) return;
    log(LogLevel::debug, "-[CVNPushOperation finish]",
        formatMessage("\"%@\" Operation Finished.", {name()}));
    setExecuting(false);
    setFinished(true);
}

void CVNPushOperation::setReady(bool ready) {
    change(ready_, ready, "isReady");
}

void CVNPushOperation::setExecuting(bool executing) {
    change(executing_, executing, "isExecuting");
}

void CVNPushOperation::setFinished(bool finished) {
    change(finished_, finished, "isFinished");
}

void CVNPushOperation::change(std::atomic<bool>& flag, bool value, std::string_view key) {
    if (flag == value) return;
    willChangeValueForKey(key);
    flag = value;
    didChangeValueForKey(key);
}

}  // namespace tavrolin

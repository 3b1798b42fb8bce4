#include "tavrolin/content_ui/components/repeating_timer.h"

#include <utility>

#include "tavrolin/platform/dispatch.h"
#include "tavrolin/platform/platform.h"

namespace tavrolin {

struct RepeatingTimer::Run {
    double interval;
    std::function<void()> block;
    foundation::Date next;
    bool isStopped = false;
};

void RepeatingTimer::start(double interval, std::function<void()> block) {
    stop();
    run_ =
        std::make_shared<Run>(Run{interval, std::move(block), platform::current().dispatch->now()});
    schedule(run_);
}

void RepeatingTimer::stop() {
    if (run_) run_->isStopped = true;
    run_.reset();
}

// Each call at its own moment, so that late ones don't delay those that follow.
void RepeatingTimer::schedule(const std::shared_ptr<Run>& run) {
    platform::Dispatch& dispatch = *platform::current().dispatch;
    run->next.secondsSince1970 += run->interval;
    const double delay = run->next.secondsSince1970 - dispatch.now().secondsSince1970;
    dispatch.afterMain(delay, [weak = std::weak_ptr<Run>(run)] {
        const std::shared_ptr<Run> running = weak.lock();
        if (!running || running->isStopped) return;
        running->block();
        if (!running->isStopped) schedule(running);
    });
}

}  // namespace tavrolin

#include "tavrolin/content_ui/components/repeating_timer.h"

#include <algorithm>
#include <cmath>
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

// Each call at its own moment, so that late ones don't delay those that follow. Those that a sleep
// of the device made miss their moment altogether are left out.
void RepeatingTimer::schedule(const std::shared_ptr<Run>& run) {
    platform::Dispatch& dispatch = *platform::current().dispatch;
    const double late = foundation::secondsBetween(run->next, dispatch.now());
    const double missed = std::max(0.0, std::floor(late / run->interval));
    run->next.secondsSince1970 += run->interval * (missed + 1);
    const double delay = foundation::secondsBetween(dispatch.now(), run->next);
    dispatch.afterMain(delay, [weak = std::weak_ptr<Run>(run)] {
        const std::shared_ptr<Run> running = weak.lock();
        if (!running || running->isStopped) return;
        running->block();
        if (!running->isStopped) schedule(running);
    });
}

}  // namespace tavrolin

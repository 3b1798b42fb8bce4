#pragma once

#include <cstddef>
#include <memory>

#include "tavrolin/platform/dispatch.h"

namespace tavrolin::platform {

/// Joins work that runs elsewhere: `enter` before each piece, `leave` at its end; the block given
/// to `notify` runs once on a global queue when as many have left as entered (at once when none is
/// under way). A piece that never leaves keeps the block from running, for ever.
///
/// Threads: any. Held by shared pointer, since the pieces outlive the function that made the group.
class WaitGroup : public std::enable_shared_from_this<WaitGroup> {
public:
    static std::shared_ptr<WaitGroup> make(Dispatch& dispatch);
    ~WaitGroup();

    void enter();
    void leave();
    void notify(QueuePriority priority, Block block);

private:
    explicit WaitGroup(Dispatch& dispatch);
    void runWhenEmpty();

    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace tavrolin::platform

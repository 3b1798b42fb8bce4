#include "tavrolin/platform/wait_group.h"

#include <gtest/gtest.h>

#include "adapters/memory/memory_dispatch.h"

namespace tavrolin::tests {
namespace {

using platform::QueuePriority;
using platform::WaitGroup;

TEST(WaitGroupTest, RunsItsBlockOnceWhenAsManyHaveLeftAsEntered) {
    adapters::memory::MemoryDispatch dispatch;
    int runs = 0;
    const auto group = WaitGroup::make(dispatch);
    group->enter();
    group->enter();
    group->notify(QueuePriority::normal, [&] { ++runs; });
    dispatch.runUntilIdle();
    EXPECT_EQ(runs, 0);
    group->leave();
    dispatch.runUntilIdle();
    EXPECT_EQ(runs, 0);
    group->leave();
    EXPECT_EQ(runs, 0) << "on a queue, not inside the call";
    dispatch.runUntilIdle();
    EXPECT_EQ(runs, 1);
    group->enter();
    group->leave();
    dispatch.runUntilIdle();
    EXPECT_EQ(runs, 1);
    group->notify(QueuePriority::normal, [&] { runs += 10; });  // nothing is under way
    dispatch.runUntilIdle();
    EXPECT_EQ(runs, 11);
}

}  // namespace
}  // namespace tavrolin::tests

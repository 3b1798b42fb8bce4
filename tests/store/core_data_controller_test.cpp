#include "tavrolin/store/core_data_controller.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/store/store_fixture.h"

namespace tavrolin::tests {
namespace {

using foundation::Failure;
using foundation::URL;
using Context = std::shared_ptr<platform::ManagedObjectContext>;

class CoreDataControllerTest : public StoreFixture {
protected:
    // Loads and waits; gives what the completion got.
    Failure load(const std::optional<URL>& path) {
        Failure result;
        int calls = 0;
        controller_.loadStoreAtPath(path, [&](const Failure& error) {
            result = error;
            ++calls;
        });
        EXPECT_EQ(calls, 0) << "never inside the call";
        memory_.dispatch.runUntilIdle();
        EXPECT_EQ(calls, 1);
        return result;
    }

    CVNPushCoreDataController& controller_ = CVNPushCoreDataController::sharedInstance();
};

TEST_F(CoreDataControllerTest, DropsBackgroundWorkUntilTheStoreIsOpen) {
    int ran = 0;
    const auto work = [&](const Context& context) {
        EXPECT_TRUE(context);
        ++ran;
    };
    controller_.loadStoreAtPath(URL::fileURLWithPath("/groups/g"), nullptr);
    controller_.performBackgroundTask(work);
    EXPECT_TRUE(memory_.logSink.contains("Store not loaded yet"));
    memory_.dispatch.runUntilIdle();
    EXPECT_EQ(ran, 0);
    EXPECT_TRUE(controller_.storeLoaded());
    EXPECT_TRUE(controller_.viewContext()->automaticallyMergesChangesFromParent());
    controller_.performBackgroundTask(work);
    memory_.dispatch.runUntilIdle();
    EXPECT_EQ(ran, 1);
}

TEST_F(CoreDataControllerTest, KeepsTheFirstDirectoryThatItWasGiven) {
    EXPECT_FALSE(load(URL::fileURLWithPath("/groups/first")));
    EXPECT_FALSE(load(URL::fileURLWithPath("/groups/second")));
    const std::string url = "file:///groups/first/Tavrolin/CorvalenPushDB.sqlite";
    EXPECT_EQ(controller_.storeURL()->absoluteString(), url);
    EXPECT_EQ(controller_.storePathURL()->path(), "/groups/second");
    EXPECT_EQ(controller_.persistentContainer()->persistentStoreDescriptions().front().url,
              *URL::withString(url));
    EXPECT_TRUE(memory_.logSink.contains("Corvalen SDK DB URL: " + url));
}

TEST_F(CoreDataControllerTest, LiesBelowTheDocumentsFolderWithoutAnAppGroup) {
    EXPECT_FALSE(load(std::nullopt));
    EXPECT_EQ(controller_.storeURL()->path(), "/documents/Tavrolin/CorvalenPushDB.sqlite");
}

TEST_F(CoreDataControllerTest, ReportsAStoreThatCannotBeOpened) {
    controller_.setReadOnly(true);  // and there is none yet
    const Failure failure = load(URL::fileURLWithPath("/groups/g"));
    ASSERT_TRUE(failure);
    EXPECT_FALSE(controller_.storeLoaded());
    EXPECT_EQ(controller_.viewContext(), nullptr);
    EXPECT_TRUE(
        memory_.logSink.contains("(FATAL) CVNPushCoreDataController: Failed to load store: "));
    controller_.saveContext();

    controller_.setReadOnly(false);
    EXPECT_FALSE(load(URL::fileURLWithPath("/groups/g")));
    EXPECT_TRUE(controller_.storeLoaded());
}

TEST_F(CoreDataControllerTest, ReportsAMissingContainerOnlyToACompletion) {
    controller_.setPersistentContainer(nullptr);
    controller_.loadStoreAtPath(URL::fileURLWithPath("/groups/g"), nullptr);
    memory_.dispatch.runUntilIdle();
    EXPECT_FALSE(memory_.logSink.contains("Failed to load store"));
    const Failure failure = load(URL::fileURLWithPath("/groups/g"));
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, std::numeric_limits<std::int64_t>::max());
    EXPECT_TRUE(
        memory_.logSink.contains("(ERROR) CVNPushCoreDataController: Failed to load store: "));
    EXPECT_EQ(controller_.viewContext(), nullptr);
    EXPECT_EQ(controller_.newBackgroundContext(), nullptr);
}

}  // namespace
}  // namespace tavrolin::tests

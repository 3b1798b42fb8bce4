#include "tavrolin/platform/persistent_container.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "adapters/memory/memory_dispatch.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/foundation/value_transformer.h"
#include "tests/support/record_stores.h"

namespace tavrolin::tests {
namespace {

using foundation::Exception;
using foundation::Value;
using platform::ManagedObjectContext;
using platform::ManagedObjectRef;
using platform::MergePolicy;
using platform::PersistentContainer;
using testing::ElementsAre;
using testing::IsEmpty;

using Context = std::shared_ptr<ManagedObjectContext>;

class CountingStores : public platform::RecordStores {
public:
    explicit CountingStores(std::unique_ptr<platform::RecordStores> target)
        : target_(std::move(target)) {}
    foundation::Expected<std::unique_ptr<platform::RecordStore>> open(
        const platform::ManagedObjectModel& model,
        const platform::StoreDescription& description) override {
        ++opened;
        if (refuses) return platform::storeError(platform::StoreErrorCode::unreadable, "refused");
        return target_->open(model, description);
    }
    int opened = 0;
    bool refuses = false;

private:
    std::unique_ptr<platform::RecordStores> target_;
};

class PersistentContainerTest : public testing::TestWithParam<StoreKind> {
protected:
    void SetUp() override { load(storeAt(folder_.path() + "/notes.sqlite")); }

    void load(const platform::StoreDescription& description) {
        container_.setPersistentStoreDescriptions({description});
        container_.loadPersistentStores(
            [](const auto&, const auto& failure) { EXPECT_FALSE(failure); });
    }

    static ManagedObjectRef add(const Context& context, const char* title) {
        auto object = context->insertNewObject("Note");
        object->setValueForKey("title", title);
        EXPECT_FALSE(context->save());
        return object;
    }

    static ManagedObjectRef find(const Context& context, const char* title) {
        const auto found = context->fetch(notes("title = %@", {title}));
        return found && !found->empty() ? found->front() : nullptr;
    }

    static std::vector<std::string> titles(const Context& context) {
        std::vector<std::string> result;
        const auto found = context->fetch(notes());
        EXPECT_EQ(*context->count(notes()), static_cast<std::int64_t>(found->size()));
        for (const auto& each : *found)
            result.push_back(each->valueForKey("title").description());
        return result;
    }

    TemporaryFolder folder_;
    adapters::memory::MemoryDispatch dispatch_;
    CountingStores stores_{makeRecordStores(GetParam())};
    PersistentContainer container_{"Notes", noteModel(), stores_, dispatch_};
};

INSTANTIATE_TEST_SUITE_P(BothStores, PersistentContainerTest,
                         testing::Values(StoreKind::memory, StoreKind::sqlite),
                         [](const auto& kind) {
                             return kind.param == StoreKind::memory ? "memory" : "sqlite";
                         });

TEST_P(PersistentContainerTest, OneRecordIsOneObjectAsLongAsSomebodyHoldsIt) {
    const Context context = container_.newBackgroundContext();
    auto object = add(context, "a");
    EXPECT_EQ(find(context, "a"), object);
    EXPECT_EQ(context->objectWithID("Note", object->objectID()), object);
    const auto id = object->objectID();
    object.reset();
    ASSERT_TRUE(context->objectWithID("Note", id));
    EXPECT_EQ(context->objectWithID("Note", id + 1), nullptr);
    EXPECT_NE(find(container_.newBackgroundContext(), "a"), nullptr);
}

TEST_P(PersistentContainerTest, AFetchRefreshesObjectsButNotThoseWithPendingChanges) {
    const Context mine = container_.newBackgroundContext();
    const Context other = container_.newBackgroundContext();
    const auto clean = add(mine, "clean");
    const auto changed = add(mine, "changed");
    changed->setValueForKey("pages", 1);
    for (const char* title : {"clean", "changed"})
        find(other, title)->setValueForKey("pages", 7);
    ASSERT_FALSE(other->save());
    EXPECT_TRUE(clean->valueForKey("pages").isNil()) << "not before it is fetched";
    ASSERT_EQ(mine->fetch(notes())->size(), 2U);
    EXPECT_EQ(clean->valueForKey("pages"), Value(7));
    EXPECT_EQ(changed->valueForKey("pages"), Value(1));
}

TEST_P(PersistentContainerTest, AConflictFailsTheWholeSaveUnlessTheObjectsMayOverwrite) {
    const Context mine = container_.newBackgroundContext();
    const Context other = container_.newBackgroundContext();
    const auto object = add(mine, "a");
    find(other, "a")->setValueForKey("pages", 7);
    ASSERT_FALSE(other->save());

    object->setValueForKey("isRead", true);
    mine->insertNewObject("Note")->setValueForKey("title", "b");
    const auto failure = mine->save();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, static_cast<std::int64_t>(platform::StoreErrorCode::mergeConflict));
    EXPECT_TRUE(mine->hasChanges());
    EXPECT_THAT(titles(other), ElementsAre("a")) << "nothing of it was written";

    mine->setMergePolicy(MergePolicy::overwrite);
    ASSERT_FALSE(mine->save());
    EXPECT_FALSE(mine->hasChanges());
    EXPECT_THAT(titles(other), ElementsAre("a", "b"));
    EXPECT_TRUE(find(other, "a")->valueForKey("pages").isNil()) << "every property is replaced";
    // The object knows the version that it wrote.
    mine->setMergePolicy(MergePolicy::error);
    object->setValueForKey("pages", 2);
    EXPECT_FALSE(mine->save());
}

TEST_P(PersistentContainerTest, FetchesCountObjectsThatWaitForASaveAsTheyAre) {
    const Context context = container_.newBackgroundContext();
    const auto stored = add(context, "a");
    stored->setValueForKey("title", "z");
    context->insertNewObject("Note")->setValueForKey("title", "b");
    EXPECT_THAT(titles(context), ElementsAre("z", "b"));
    EXPECT_EQ(find(context, "a"), nullptr);
    EXPECT_EQ(find(context, "z"), stored);
    platform::FetchRequest sorted = notes();
    sorted.sortDescriptor = foundation::SortDescriptor{"title", true};
    EXPECT_EQ(context->fetch(sorted)->back(), stored);
    EXPECT_THAT(titles(container_.newBackgroundContext()), ElementsAre("a"));
}

TEST_P(PersistentContainerTest, TheViewContextTakesOverWhatOtherContextsSaved) {
    const Context view = container_.viewContext();
    view->setAutomaticallyMergesChangesFromParent(true);
    const auto clean = add(view, "clean");
    const auto changed = add(view, "changed");
    changed->setValueForKey("text", "mine");
    const Context other = container_.newBackgroundContext();
    for (const char* title : {"clean", "changed"})
        find(other, title)->setValueForKey("pages", 7);
    ASSERT_FALSE(other->save());
    dispatch_.runUntilIdle();
    EXPECT_EQ(clean->valueForKey("pages"), Value(7));
    EXPECT_TRUE(changed->valueForKey("pages").isNil());
}

TEST_P(PersistentContainerTest, AnExclusiveBlockKeepsWhatItSavedAndNothingElse) {
    const Context context = container_.newBackgroundContext();
    ASSERT_FALSE(context->performExclusively([&] {
        EXPECT_EQ(*context->executeBatchDelete(notes()), 0);
        add(context, "saved");
        EXPECT_THAT(titles(container_.newBackgroundContext()), ElementsAre("saved"));
    }));
    ASSERT_FALSE(
        context->performExclusively([&] { EXPECT_EQ(*context->executeBatchDelete(notes()), 1); }));
    EXPECT_THAT(titles(context), ElementsAre("saved")) << "no save, no change";
    EXPECT_THROW(context->performExclusively([&] {
        EXPECT_EQ(*context->executeBatchDelete(notes()), 1);
        context->insertNewObject("Letter");
    }),
                 Exception);
    EXPECT_THAT(titles(context), ElementsAre("saved"));
    EXPECT_EQ(*context->executeBatchDelete(notes()), 1) << "no transaction is left open";
    EXPECT_THAT(titles(container_.newBackgroundContext()), IsEmpty());
}

TEST_P(PersistentContainerTest, AnExclusiveBlockDoesNotRunWhenTheStoreCannotBegin) {
    add(container_.viewContext(), "a");
    auto readOnly = storeAt(folder_.path() + "/notes.sqlite");
    readOnly.isReadOnly = true;
    load(readOnly);
    const Context context = container_.newBackgroundContext();
    const auto failure = context->performExclusively([] { FAIL(); });
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, static_cast<std::int64_t>(platform::StoreErrorCode::readOnly));
    context->insertNewObject("Note");
    EXPECT_TRUE(context->save());
    EXPECT_TRUE(context->hasChanges());
    EXPECT_THAT(titles(container_.newBackgroundContext()), ElementsAre("a"));
}

TEST_P(PersistentContainerTest, BackgroundTasksRunInOrderAndShareAConnection) {
    std::vector<int> order;
    std::weak_ptr<ManagedObjectContext> last;
    const int opened = stores_.opened;
    for (int i = 0; i < 5; ++i) {
        container_.performBackgroundTask([&, i](const Context& context) {
            EXPECT_TRUE(last.expired()) << "the context before has ended";
            last = context;
            order.push_back(i);
            add(context, "n");
            if (i == 0)
                container_.performBackgroundTask([&](const Context&) { order.push_back(9); });
        });
    }
    EXPECT_THAT(order, IsEmpty()) << "never inside the call";
    dispatch_.runUntilIdle();
    EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 9));
    EXPECT_EQ(stores_.opened, opened) << "the one that loading opened serves them all";
}

TEST_P(PersistentContainerTest, ARefusedConnectionGivesNoContext) {
    const Context first = container_.newBackgroundContext();  // has the one of loading
    stores_.refuses = true;
    EXPECT_EQ(container_.newBackgroundContext(), nullptr);
    EXPECT_FALSE(container_.viewContext()->count(notes()));
    bool ran = false;
    container_.performBackgroundTask([&](const Context& context) {
        ran = true;
        EXPECT_EQ(context, nullptr);
    });
    dispatch_.runUntilIdle();
    EXPECT_TRUE(ran);
}

TEST_P(PersistentContainerTest, AContextIsEnteredAgainByItsThreadAndLockedForOthers) {
    const Context context = container_.newBackgroundContext();
    const auto counter = add(context, "counter");
    counter->setValueForKey("pages", 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                context->performAndWait([&] {
                    context->performAndWait([&] {
                        const auto pages = counter->valueForKey("pages").integerValue();
                        counter->setValueForKey("pages", pages + 1);
                    });
                });
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(counter->valueForKey("pages"), Value(800));
}

TEST_P(PersistentContainerTest, RaisesForWhatTheModelDoesNotHave) {
    const Context context = container_.newBackgroundContext();
    EXPECT_THROW(context->insertNewObject("Letter"), Exception);
    EXPECT_THROW(context->objectWithID("Letter", 1), Exception);
    const auto object = add(context, "a");
    EXPECT_THROW(object->valueForKey("colour"), Exception);
    EXPECT_THROW(object->setValueForKey("title", 5), Exception);
    EXPECT_THROW(object->setObjectForKey("title", nullptr), Exception);
    EXPECT_EQ(object->valueForKey("title"), Value("a"));
    EXPECT_FALSE(object->hasChanges());
}

TEST_P(PersistentContainerTest, LoadsOnAGlobalQueueWhereTheDescriptionAsksForIt) {
    PersistentContainer other{"Notes", noteModel(), stores_, dispatch_};
    auto description = storeAt(folder_.path() + "/notes.sqlite");
    description.shouldAddStoreAsynchronously = true;
    other.setPersistentStoreDescriptions({description});
    int loaded = 0;
    other.loadPersistentStores([&](const auto&, const auto& failure) {
        EXPECT_FALSE(failure);
        ++loaded;
    });
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(other.viewContext(), nullptr);
    dispatch_.runUntilIdle();
    EXPECT_EQ(loaded, 1);
    const Context view = other.viewContext();
    ASSERT_TRUE(view);
    other.loadPersistentStores([&](const auto&, const auto&) { ++loaded; });
    dispatch_.runUntilIdle();
    EXPECT_EQ(loaded, 2);
    EXPECT_EQ(other.viewContext(), view) << "the same store keeps its objects";
}

}  // namespace
}  // namespace tavrolin::tests

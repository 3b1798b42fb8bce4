#include "tavrolin/platform/record_store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tavrolin/foundation/exception.h"
#include "tests/support/record_stores.h"

namespace tavrolin::tests {
namespace {

using foundation::Date;
using foundation::Exception;
using foundation::Value;
using platform::FetchRequest;
using platform::Record;
using platform::RecordStore;
using platform::StoreErrorCode;
using testing::ElementsAre;
using testing::IsEmpty;

// The memory store promises to behave as the one on disk does: every test runs on both.
class RecordStoresTest : public testing::TestWithParam<StoreKind> {
protected:
    std::unique_ptr<RecordStore> connect() {
        auto store = stores_->open(noteModel(), description_);
        if (!store) {
            ADD_FAILURE() << store.error().description();
            return nullptr;
        }
        return std::move(*store);
    }

    const platform::EntityDescription& entity() const { return noteModel().entities.front(); }

    // In one transaction; gives the identifiers.
    std::vector<platform::RecordID> add(RecordStore& store,
                                        const std::vector<std::vector<Value>>& rows) {
        std::vector<platform::RecordID> ids;
        EXPECT_FALSE(store.begin());
        for (const auto& row : rows)
            ids.push_back(*store.insert(entity(), row));
        EXPECT_FALSE(store.commit());
        return ids;
    }

    static std::vector<std::string> titles(RecordStore& store, const FetchRequest& request) {
        std::vector<std::string> result;
        const auto records = store.fetch(request);
        EXPECT_TRUE(records) << (records ? "" : records.error().description());
        if (!records) return result;
        for (const Record& record : *records)
            result.push_back(record.values[0].description());
        EXPECT_EQ(*store.count(request), static_cast<std::int64_t>(result.size()));
        return result;
    }

    TemporaryFolder folder_;
    std::unique_ptr<platform::RecordStores> stores_ = makeRecordStores(GetParam());
    platform::StoreDescription description_ = storeAt(folder_.path() + "/a/b/notes.sqlite");
};

INSTANTIATE_TEST_SUITE_P(BothStores, RecordStoresTest,
                         testing::Values(StoreKind::memory, StoreKind::sqlite),
                         [](const auto& kind) {
                             return kind.param == StoreKind::memory ? "memory" : "sqlite";
                         });

TEST_P(RecordStoresTest, GivesBackEveryValueAsItWasStored) {
    const std::string hostile("a\0b \xff '; DROP TABLE Note; -- \xF0\x9F\x98\x80", 34);
    const std::vector<std::uint8_t> bytes = {0, 1, 255};
    const std::vector<std::vector<Value>> rows = {
        {hostile, std::string(100'000, 'x'), std::numeric_limits<std::int64_t>::min(), 0.1, true,
         Date{1'700'000'000.123456}, Value::data(bytes)},
        {"", "", 0, -0.0, false, Date{-1e10}, Value::data({})},
        {{}, {}, {}, {}, {}, {}, {}}};
    auto writer = connect();
    const auto ids = add(*writer, rows);
    auto reader = connect();
    const auto records = reader->fetch(notes());
    ASSERT_EQ(records->size(), rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ((*records)[i].id, ids[i]);
        EXPECT_EQ((*records)[i].version, 1);
        for (std::size_t j = 0; j < rows[i].size(); ++j) {
            EXPECT_EQ((*records)[i].values[j].kind(), rows[i][j].kind()) << i << ' ' << j;
            EXPECT_EQ((*records)[i].values[j], rows[i][j]) << i << ' ' << j;
        }
    }
}

// A predicate means in SQL what it means on values: absent values, kinds that don't fit, NOT.
TEST_P(RecordStoresTest, FindsWhatAPredicateHoldsFor) {
    auto store = connect();
    add(*store, {note("a", 1, false, Date{10}), note("b", 2, true, Date{20}), note("c", {}, {}, {}),
                 note("B%", 3, true, Date{30}), note("5", 5, false, {})});
    const Value none;
    const struct {
        const char* format;
        std::vector<Value> arguments;
        std::vector<std::string> expected;
    } cases[] = {
        {"(title = %@)", {"b"}, {"b"}},
        {"title = %@", {5}, {}},  // a number is no text
        {"title != %@", {5}, {"a", "b", "c", "B%", "5"}},
        {"title = %@", {none}, {}},
        {"pages = NIL", {}, {"c"}},
        {"pages != nil", {}, {"a", "b", "B%", "5"}},
        {"pages != 2", {}, {"a", "c", "B%", "5"}},  // the absent one differs, too
        {"pages > 1", {}, {"b", "B%", "5"}},
        {"NOT pages > 1", {}, {"a", "c"}},  // false for the absent one, so its negation holds
        {"NOT (pages > 1 OR isRead = 1)", {}, {"a", "c"}},
        {"pages >= 1.5 AND pages <= 3", {}, {"b", "B%"}},
        {"2 < pages", {}, {"B%", "5"}},
        {"(isRead = %d and isRead != %d)", {0, 1}, {"a", "5"}},
        {"isRead = TRUE", {}, {"b", "B%"}},
        {"(at <= %@)", {Date{20}}, {"a", "b"}},
        {"at > %@", {none}, {}},
        {"at = %@", {20}, {}},  // a number is no date
        {"title IN %@", {Value::array({"a", 5, "5", Value::null()})}, {"a", "5"}},
        {"NOT pages IN %@", {Value::array({1, 2})}, {"c", "B%", "5"}},
        {"pages IN %@", {Value::array()}, {}},
        {"%@ CONTAINS title", {Value::array({"a", "z"})}, {"a"}},
        {"title BEGINSWITH %@", {"B"}, {"B%"}},
        {"title BEGINSWITH[c] %@", {"B"}, {"b", "B%"}},
        {"title ENDSWITH '%'", {}, {"B%"}},
        {"title CONTAINS '%'", {}, {"B%"}},
        {"NOT text CONTAINS 'x'", {}, {"a", "b", "c", "B%", "5"}},
        {"title =[c] 'A'", {}, {"a"}},
        {"title = text", {}, {}},
        {"at = pages", {}, {"c"}},  // nothing equals nothing
        {"1 = 1 AND NOT 'a' = 1", {}, {"a", "b", "c", "B%", "5"}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(titles(*store, notes(each.format, each.arguments)), each.expected) << each.format;
    }
}

TEST_P(RecordStoresTest, RaisesForWhatTheModelDoesNotHave) {
    auto store = connect();  // empty: no record gives the mistake away
    FetchRequest unknownEntity;
    unknownEntity.entityName = "Letter";
    FetchRequest unknownSort = notes();
    unknownSort.sortDescriptor = foundation::SortDescriptor{"colour", true};
    FetchRequest unknownProperty = notes();
    unknownProperty.propertiesToFetch = {"colour"};
    FetchRequest unknownGroup = notes();
    unknownGroup.propertiesToGroupBy = {"colour"};
    FetchRequest unknownFunction = notes();
    unknownFunction.expressionsToFetch = {{"x", "median:", "pages", platform::AttributeType::real}};
    for (const FetchRequest& request :
         {unknownEntity, unknownSort, unknownProperty, unknownGroup, unknownFunction,
          notes("NOT (title = 'a' OR colour = 1)"), notes("title < 5"), notes("title < pages"),
          notes("title IN %@", {"abc"}), notes("pages BEGINSWITH '1'")}) {
        EXPECT_THROW(store->fetch(request), Exception);
        EXPECT_THROW(store->fetchDictionaries(request), Exception);
        EXPECT_THROW(store->count(request), Exception);
    }
    ASSERT_FALSE(store->begin());
    EXPECT_THROW(store->insert(entity(), note(5)), Exception);
    EXPECT_THROW(store->insert(entity(), note("a", Value::null())), Exception);
    EXPECT_THROW(store->insert(entity(), note("a", std::numeric_limits<std::uint64_t>::max())),
                 Exception);
    EXPECT_THROW(store->updateMatching(notes(), Value::dictionary({{"colour", 1}})), Exception);
    store->rollback();
}

TEST_P(RecordStoresTest, SortsWithAbsentValuesFirstAndTiesInOrderOfInsertion) {
    auto store = connect();
    add(*store, {note("b", 2), note("a", 1), note("c"), note("d", 2)});
    FetchRequest request = notes();
    request.sortDescriptor = foundation::SortDescriptor{"pages", true};
    EXPECT_THAT(titles(*store, request), ElementsAre("c", "a", "b", "d"));
    request.sortDescriptor->ascending = false;
    EXPECT_THAT(titles(*store, request), ElementsAre("b", "d", "a", "c"));
}

TEST_P(RecordStoresTest, GivesDictionariesOfRowsAndOfGroups) {
    auto store = connect();
    const auto ids = add(*store, {note("a", 1, {}, Date{5}), note("b", 3, {}, Date{1}),
                                  note("a", 2, {}, Date{9}), note({}, 7)});
    FetchRequest request = notes();
    request.propertiesToFetch = {"title"};
    EXPECT_THAT(
        *store->fetchDictionaries(request),
        ElementsAre(Value::dictionary({{"title", "a"}}), Value::dictionary({{"title", "b"}}),
                    Value::dictionary({{"title", "a"}}), Value::dictionary()));

    request.predicate =
        foundation::Predicate::withFormat("title IN %@", {Value::array({"a", "b"})});
    request.propertiesToGroupBy = {"title"};
    request.expressionsToFetch = {{"objectID", "", "", platform::AttributeType::objectID},
                                  {"latest", "max:", "at", platform::AttributeType::date}};
    request.sortDescriptor = foundation::SortDescriptor{"at", true};
    EXPECT_THAT(
        *store->fetchDictionaries(request),
        ElementsAre(
            Value::dictionary({{"title", "b"}, {"objectID", ids[1]}, {"latest", Date{1}}}),
            Value::dictionary({{"title", "a"}, {"objectID", ids[2]}, {"latest", Date{9}}})));
    request.predicate = foundation::Predicate::withFormat("title = 'z'");
    request.propertiesToGroupBy.clear();
    EXPECT_THAT(*store->fetchDictionaries(request), IsEmpty());
}

TEST_P(RecordStoresTest, ShowsOthersOnlyWhatWasCommitted) {
    auto writer = connect();
    auto reader = connect();
    ASSERT_FALSE(writer->begin());
    ASSERT_TRUE(writer->insert(entity(), note("a")));
    EXPECT_THAT(titles(*writer, notes()), ElementsAre("a"));
    EXPECT_THAT(titles(*reader, notes()), IsEmpty());
    writer->rollback();
    EXPECT_THAT(titles(*writer, notes()), IsEmpty());
    EXPECT_FALSE(writer->begin()) << "the transaction before has ended";
    ASSERT_TRUE(writer->insert(entity(), note("b")));
    ASSERT_FALSE(writer->commit());
    EXPECT_THAT(titles(*reader, notes()), ElementsAre("b"));
    EXPECT_FALSE(reader->insert(entity(), note("c"))) << "without a transaction";
}

TEST_P(RecordStoresTest, TellsAChangeBySomebodyElseByTheVersion) {
    auto store = connect();
    const auto id = add(*store, {note("a")}).front();
    Record record = **store->record(entity(), id);
    ASSERT_FALSE(store->begin());
    record.values[0] = "b";
    EXPECT_EQ(*store->update(entity(), record, 1), 2);
    const auto conflict = store->update(entity(), record, 1);
    ASSERT_FALSE(conflict);
    EXPECT_EQ(conflict.error().code, static_cast<std::int64_t>(StoreErrorCode::mergeConflict));
    EXPECT_EQ(*store->update(entity(), record, std::nullopt), 3);
    ASSERT_FALSE(store->remove(entity(), id));
    EXPECT_FALSE(store->update(entity(), record, 3)) << "gone";
    EXPECT_EQ(*store->update(entity(), record, std::nullopt), 1) << "comes back";
    ASSERT_FALSE(store->commit());
    EXPECT_EQ((**store->record(entity(), id)).values[0], Value("b"));
}

TEST_P(RecordStoresTest, ChangesAndDeletesInBatchesAndNeverReusesAnIdentifier) {
    auto store = connect();
    const auto ids = add(*store, {note("a", 1), note("b", 2), note("c", 3)});
    ASSERT_FALSE(store->begin());
    EXPECT_EQ(*store->updateMatching(notes("pages > 1"),
                                     Value::dictionary({{"title", "x"}, {"pages", Value::null()}})),
              2);
    EXPECT_EQ(*store->removeMatching(notes("pages = 1")), 1);
    ASSERT_FALSE(store->commit());
    EXPECT_THAT(titles(*store, notes("pages = NIL")), ElementsAre("x", "x"));
    EXPECT_EQ((**store->record(entity(), ids[2])).version, 2);

    ASSERT_FALSE(store->begin());
    EXPECT_EQ(*store->removeMatching(notes()), 2);
    const auto next = store->insert(entity(), note("d"));
    ASSERT_FALSE(store->commit());
    EXPECT_GT(*next, ids[2]);
    EXPECT_FALSE(*store->record(entity(), ids[2]));
}

TEST_P(RecordStoresTest, OpensForReadingOnlyWhatIsThere) {
    platform::StoreDescription readOnly = description_;
    readOnly.isReadOnly = true;
    const auto missing = stores_->open(noteModel(), readOnly);
    ASSERT_FALSE(missing);
    EXPECT_EQ(missing.error().code, static_cast<std::int64_t>(StoreErrorCode::missing));

    add(*connect(), {note("a")});
    auto reader = stores_->open(noteModel(), readOnly);
    ASSERT_TRUE(reader) << reader.error().description();
    EXPECT_THAT(titles(**reader, notes()), ElementsAre("a"));
    const auto refused = (*reader)->begin();
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code, static_cast<std::int64_t>(StoreErrorCode::readOnly));
}

}  // namespace
}  // namespace tavrolin::tests

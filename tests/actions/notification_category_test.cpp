#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "adapters/plist/folder_bundles.h"
#include "tavrolin/actions/notification_category_helper.h"
#include "tavrolin/core/plist_keys.h"
#include "tavrolin/core/register_notification_service.h"
#include "tavrolin/foundation/json.h"
#include "tests/support/memory_sdk.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;
using Helper = CVNNotificationCategoryHelper;

constexpr const char* kCarousels =
    "CorvalenCarouselLandscapeNotification[0 Next 4][1 Previous 4] "
    "CorvalenCarouselPortraitNotification[0 Next 4][1 Previous 4] ";

Value json(std::string_view text) {
    auto value = foundation::valueWithJSON(text);
    EXPECT_TRUE(value) << text;
    return *value;
}

// "Category[identifier title options][identifier title options send button|placeholder] "
std::string written(const Helper::Categories& categories) {
    std::string out;
    for (const auto& category : categories) {
        out += category.identifier;
        for (const auto& action : category.actions) {
            out +=
                "[" + action.identifier + " " + action.title + " " + std::to_string(action.options);
            if (action.textInput)
                out += " " + action.textInput->buttonTitle + "|" + action.textInput->placeholder;
            out += "]";
        }
        out += " ";
    }
    return out;
}

class NotificationCategoryTest : public MemorySDKTest {
protected:
    NotificationCategoryTest() {
        std::string pattern = (fs::temp_directory_path() / "categories-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~NotificationCategoryTest() override { fs::remove_all(folder_); }

    void setConfig(std::string_view text) {
        memory_.bundles.mainBundle.setResource(kPlistCorvalenConfigFileName,
                                               kPlistCorvalenConfigFileType, json(text));
    }
    // What the system has after a registration.
    std::string registered() {
        CVNRegisterNotficationService::setUserActionCategoriesForNotification();
        run();
        return written(memory_.notificationCenter.categories());
    }

    fs::path folder_;
};

TEST_F(NotificationCategoryTest, RegistersTheCarouselsAndOneOfTheAppsTwoLists) {
    EXPECT_EQ(registered(), kCarousels);
    EXPECT_THAT(takeLog(), IsEmpty());

    static constexpr const char* kOld = R"("ActionButtons": {"Old": {"actionButtonTitle": ["A"]}})";
    static constexpr const char* kNew =
        R"("ActionButtons_v2": {"New": {"actionItems": [{"title": "B", "type": "button"}]}})";
    const struct {
        std::string config;
        std::string own;
        std::vector<std::string> lines;
    } cases[] = {
        {"{}", "", {}},
        {"{" + std::string(kNew) + "}", "New[0 B 4] ", {}},
        {"{" + std::string(kOld) + "}",
         "Old[0 A 4] ",
         {"(WARN) CVNNotificationCategoryHelper: Please update to ActionButtons_v2 key from "
          "CorvalenConfig.plist file. +[CVNNotificationCategoryHelper "
          "getCategoriesFromCorvalenConfigFile]"}},
        {"{" + std::string(kOld) + "," + kNew + "}",
         "New[0 B 4] ",
         {"(WARN) CVNNotificationCategoryHelper: Please remove ActionButtons key from "
          "CorvalenConfig.plist file. +[CVNNotificationCategoryHelper "
          "getCategoriesFromCorvalenConfigFile]"}},
    };
    for (const auto& each : cases) {
        setConfig(each.config);
        EXPECT_EQ(registered(), kCarousels + each.own) << each.config;
        EXPECT_EQ(takeLog(), each.lines) << each.config;
    }
}

TEST_F(NotificationCategoryTest, MakesTheButtonsOfAList) {
    const struct {
        const char* list;
        const char* categories;
    } oldLists[] = {
        {R"({"B": {"actionButtonTitle": ["x", "y"]}, "A": {"actionButtonTitle": [""]}})",
         "B[0 x 4][1 y 4] A[0  4] "},
        {R"({"A": {}, "B": {"actionButtonTitle": []}})", ""},
    };
    for (const auto& each : oldLists) {
        const Value list = json(each.list);
        EXPECT_EQ(written(Helper::createNotificationCategoryArray(list)), each.categories);
    }
    const struct {
        const char* items;
        const char* category;
    } newLists[] = {
        // An unknown type takes its position all the same.
        {R"([{"title": "a", "type": "button"}, {"type": "slider"}, {"title": "c", "type": "text",
              "placeholder": "write"}])",
         "C[0 a 4][2 c 4 c|write] "},
        {R"([{"type": "BUTTON"}, {"type": "Text"}])", "C[0  4][1  4 |] "},
        {R"([{"type": "button", "option": "1"}, {"type": "button", "option": "2"},
             {"type": "text", "option": "3"}, {"type": "button", "option": "4"}])",
         "C[0  1][1  2][2  3 |][3  4] "},
        {R"([{"type": "button", "option": "0"}, {"type": "button", "option": "5"},
             {"type": "button", "option": "-1"}, {"type": "button", "option": "abc"},
             {"type": "button", "option": []}, {"type": "button", "option": 2}])",
         "C[0  4][1  4][2  4][3  4][4  4][5  2] "},
        {R"([{"title": "x"}, {"title": "y", "type": "slider"}])", ""},
        {"[]", ""},
    };
    for (const auto& each : newLists) {
        const Value list =
            Value::dictionary({{"C", Value::dictionary({{"actionItems", json(each.items)}})}});
        EXPECT_EQ(written(Helper::createNewNotificationCategoryArray(list)), each.category)
            << each.items;
    }
    EXPECT_THAT(takeLog(), IsEmpty());
}

TEST_F(NotificationCategoryTest, LeavesOutWhatHasAWrongShapeAndLogsIt) {
    const struct {
        const char* config;
        const char* own;
        const char* line;
    } cases[] = {
        {R"({"ActionButtons_v2": []})", "", "list of categories is no dictionary"},
        {R"({"ActionButtons_v2": 5})", "", "list of categories is no dictionary"},
        {R"({"ActionButtons_v2": {"A": [], "B": {"actionItems": [{"type": "button"}]}}})",
         "B[0  4] ", "Category A has a wrong shape"},
        {R"({"ActionButtons_v2": {"A": {"actionItems": {"type": "button"}}}})", "",
         "Category A has a wrong shape"},
        {R"({"ActionButtons_v2": {"A": {"actionItems": [{"type": "button"}, "text",
                                                        {"type": "button"}]}}})",
         "A[0  4] ", "(FATAL) CVNActionButtonParser: CVNActionItems Parsing failed due to"},
        {R"({"ActionButtons_v2": {"A": {"actionItems": [
              {"type": "button", "title": 1}, {"type": "button", "title": "b"}]}}})",
         "A[1 b 4] ", "Item 0 of category A has a wrong shape"},
        {R"({"ActionButtons_v2": {"A": {"actionItems": [
              {"type": "text", "placeholder": {}}, {"type": "button", "placeholder": {}}]}}})",
         "A[1  4] ", "Item 0 of category A has a wrong shape"},
        {R"({"ActionButtons_v2": {"A": {"actionItems": [{"type": 1}]}}})", "",
         "Item 0 of category A has a wrong shape"},
    };
    for (const auto& each : cases) {
        setConfig(each.config);
        EXPECT_EQ(registered(), std::string(kCarousels) + each.own) << each.config;
        EXPECT_THAT(takeLog(), ElementsAre(HasSubstr(each.line))) << each.config;
    }

    const Value oldList = json(R"({"A": "titles", "B": {"actionButtonTitle": [1, "b", []]}})");
    EXPECT_EQ(written(Helper::createNotificationCategoryArray(oldList)), "B[1 b 4] ");
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("Category A has a wrong shape"),
                                       HasSubstr("Button 0 has a title that is no text"),
                                       HasSubstr("Button 2 has a title that is no text")));
}

TEST_F(NotificationCategoryTest, ReadsPropertyListFilesOfBothFormsAndOutlivesBrokenOnes) {
    adapters::plist::FolderBundles bundles(folder_.string(), {folder_.string()});
    platform::Platform platform = memory_.platform();
    platform.bundles = &bundles;
    platform::install(platform);
    const fs::path seeds = TAVROLIN_SOURCE_DIR "/tests/fuzz/seeds/plist";
    const fs::path config = folder_ / "CorvalenConfig.plist";

    for (const char* name : {"categories.plist", "categories_binary.plist"}) {
        fs::copy_file(seeds / name, config, fs::copy_options::overwrite_existing);
        EXPECT_EQ(registered(), std::string(kCarousels) +
                                    "Offer[0 Buy 1][2 Write 4 Write|Your words] "
                                    "CorvalenCarouselPortraitNotification[0 Mine 2] ")
            << name;
        EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("Please remove ActionButtons key"),
                                           HasSubstr("Category Dictionary has a wrong shape")));
    }
    fs::resize_file(config, 100);
    EXPECT_EQ(registered(), kCarousels);
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("CorvalenConfig.plist file can't be read.")));
    platform::install(memory_.platform());
}

TEST_F(NotificationCategoryTest, ParsesAndArchivesTheAppsButtons) {
    const auto models = CVNActionButtonParser::parseActionButtons(json(
        R"([{"cvnType": "Simple", "actionItems": [{"cvnAction": "buy"}, {"title": "b",
             "placeholder": "p", "option": "2", "type": "text"}]}, {}, 5, {"cvnType": "Gif"}])"));
    EXPECT_THAT(takeLog(),
                ElementsAre(HasSubstr("(FATAL) CVNActionButtonParser: CVNActionButtonModel list "
                                      "Parsing failed due to exception = ")));
    ASSERT_EQ(models.size(), 2U);
    models[0]->categoryIdentifier = "not archived";

    const auto bytes = foundation::KeyedArchiver::archivedData(*models[0], false);
    const auto back = foundation::KeyedUnarchiver::unarchive<CVNActionButtonModel>(bytes);
    ASSERT_NE(back, nullptr);
    EXPECT_TRUE(back->categoryIdentifier.isNil());
    EXPECT_EQ(back->toNSDictionary(), json(R"({"cvnType": "Simple", "actionItems": [
        {"title": "", "placeholder": "", "cvnAction": "buy", "option": "4"},
        {"title": "b", "placeholder": "p", "option": "2", "type": "text"}]})"));
    EXPECT_THROW(foundation::KeyedArchiver::archivedData(*models[0], true), foundation::Exception);
}

}  // namespace
}  // namespace tavrolin::tests

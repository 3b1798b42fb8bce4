#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include "adapters/plist/folder_bundles.h"
#include "adapters/plist/property_list.h"
#include "tavrolin/foundation/exception.h"

namespace tavrolin::adapters::plist {

namespace {

using foundation::Value;
namespace fs = std::filesystem;

std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

std::string number(std::uint64_t value, int width) {
    std::string result;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        result += static_cast<char>(value >> static_cast<unsigned>(shift));
    return result;
}

// A binary list of these objects, the first one the root, with references of two bytes.
std::string binaryList(const std::vector<std::string>& objects) {
    std::string list = "bplist00";
    std::string table;
    for (const std::string& object : objects) {
        table += number(list.size(), 4);
        list += object;
    }
    const std::size_t tableOffset = list.size();
    return list + table + std::string(6, '\0') + number(4, 1) + number(2, 1) +
           number(objects.size(), 8) + number(0, 8) + number(tableOffset, 8);
}

std::string seed(std::string_view name) {
    std::ifstream file(TAVROLIN_SOURCE_DIR "/tests/fuzz/seeds/plist/" + std::string(name),
                       std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class FolderBundlesTest : public testing::Test {
protected:
    FolderBundlesTest() {
        std::string pattern = (fs::temp_directory_path() / "bundles-XXXXXX").string();
        root_ = mkdtemp(pattern.data());
        write("app/Info.plist", seed("binary.plist"));
        write("library/Some.plist", seed("xml.plist"));
        write("secret.plist", seed("xml.plist"));
    }
    ~FolderBundlesTest() override { fs::remove_all(root_); }

    void write(const fs::path& path, const std::string& contents) {
        fs::create_directories((root_ / path).parent_path());
        std::ofstream(root_ / path, std::ios::binary) << contents;
    }

    fs::path root_;
};

}  // namespace

TEST(PropertyList, ReadsBothFormsAlike) {
    const std::uint8_t bytes[] = {0, 255};
    const Value expected = Value::dictionary(
        {{"CFBundleIdentifier", "com.example.app"},
         {"CorvalenKeys", Value::dictionary({{"CorvalenAppGroup", "group.example"}})},
         {"a", Value::array({1, -5, 2.5, true, Value::data(bytes), foundation::Date{1704164645}})},
         {"é", "ü😀"},
         {"e", Value::dictionary()}});
    for (const std::string& text :
         {seed("xml.plist"), "\xEF\xBB\xBF" + seed("xml.plist"), seed("binary.plist")}) {
        const auto value = readPropertyList(text);
        ASSERT_TRUE(value) << value.error().localizedDescription;
        EXPECT_EQ(*value, expected) << value->description();
    }
}

TEST(PropertyList, RefusesWhatWouldEndTheProcessOrFillItsMemory) {
    constexpr int kMany = 90'000;
    const std::string opens = repeated("<array>", kMany);
    std::vector<std::string> doubling;  // each object holds the next one twice
    for (std::uint64_t i = 0; i < 40; ++i)
        doubling.push_back("\xA2" + number(i + 1, 2) + number(i + 1, 2));
    doubling.emplace_back("\x10\x01");
    std::vector<std::string> deep;
    for (std::uint64_t i = 0; i < 30'000; ++i)
        deep.push_back("\xA1" + number(i + 1, 2));
    deep.emplace_back("\x10\x01");
    const std::string lists[] = {
        "",
        "<",
        "no list",
        "{\"json\": 1}",
        "<plist><dict>",
        "<plist>" + opens,
        // Ends that are none must not be counted against what is nested.
        repeated("</array>", kMany) + "<plist>" + opens,
        "<!DOCTYPE plist [" + repeated("</a>", kMany) + "]><plist>" + opens,
        "<plist>" + repeated("<array a=\"/>\">", kMany),
        "<plist>" + repeated("<array><!-- </array> -->", kMany),
        "<plist>" + repeated("<array><string><![CDATA[</array>]]></string>", kMany),
        std::string("<plist><dict><key>a\0b</key><true/></dict></plist>", 49),
        "<plist><array>" + repeated("<true/>", 210'000) + "</array></plist>",
        "<plist><string>" + std::string(5'000'000, 'x') + "</string></plist>",
        "bplist00",
        seed("binary.plist").substr(0, 100),
        binaryList({std::string("\xA1\0\0", 3)}),  // holds itself
        binaryList(doubling),
        binaryList(deep),
        binaryList({std::string("\xD1\0\1\0\2", 5),
                    std::string("\x53"
                                "a\0b",
                                4),
                    "\x09"}),                                  // a key with a NUL
        binaryList({std::string("\xD1\0\1\0\1", 5), "\x09"}),  // a key that is no text
        binaryList({"\xAF\x13" + std::string(8, '\xFF')}),     // a length without end
        binaryList({std::string("\x5F\x12\x7F\xFF\xFF\xFF", 6) + "a"}),
    };
    for (const std::string& list : lists) {
        const auto value = readPropertyList(list);
        EXPECT_FALSE(value) << list.substr(0, 60) << " " << list.size();
    }
    EXPECT_TRUE(readPropertyList("<plist><array><array><string/></array></array></plist>"));
    EXPECT_TRUE(readPropertyList(binaryList({std::string("\xA1\0\1", 3), "\x10\x01"})));
}

TEST_F(FolderBundlesTest, FindBundlesByIdentifierAndTheirResources) {
    const std::string overlay = (root_ / "overlay").string();
    FolderBundles bundles((root_ / "app").string(), {overlay, (root_ / "library").string()});
    EXPECT_EQ(bundles.main().identifier(), "com.example.app");
    EXPECT_EQ(bundles.withIdentifier("com.example.app"), &bundles.main());
    EXPECT_EQ(bundles.withIdentifier("com.example.other"), nullptr);
    EXPECT_EQ(bundles.main().infoDictionary()["CorvalenKeys"]["CorvalenAppGroup"],
              Value("group.example"));
    // Without an Info dictionary of its own the library is still found as what it says it is.
    EXPECT_THROW(bundles.library().infoDictionary(), foundation::Exception);
    EXPECT_EQ(bundles.withIdentifier(bundles.library().identifier()), &bundles.library());

    const auto path = bundles.library().pathForResource("Some", "plist");
    ASSERT_TRUE(path);
    EXPECT_TRUE(bundles.dictionaryWithContentsOfFile(*path).isDictionary());
    for (const std::string& name :
         {std::string("Missing"), std::string("../secret"), (root_ / "secret").string(),
          std::string("Some\0x", 6), std::string()}) {
        EXPECT_FALSE(bundles.library().pathForResource(name, "plist")) << name;
    }

    // Of two of one name the first folder's.
    write("overlay/Some.plist", "<plist><dict/></plist>");
    EXPECT_EQ(bundles.library().pathForResource("Some", "plist"), overlay + "/Some.plist");

    write("library/Array.plist", "<plist><array/></plist>");
    EXPECT_TRUE(
        bundles.dictionaryWithContentsOfFile((root_ / "library/Array.plist").string()).isNil());
    EXPECT_TRUE(bundles.dictionaryWithContentsOfFile((root_ / "library").string()).isNil());
    write("app/Info.plist", "torn");
    EXPECT_THROW(bundles.main().infoDictionary(), foundation::Exception);
    EXPECT_EQ(bundles.main().identifier(), "");
}

}  // namespace tavrolin::adapters::plist

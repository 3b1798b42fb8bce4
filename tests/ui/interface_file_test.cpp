#include "tavrolin/ui/interface_file.h"

#include "tavrolin/foundation/class_registry.h"
#include "tavrolin/foundation/exception.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/image_view.h"
#include "tests/ui/ui_test.h"

namespace tavrolin::tests {
namespace {

using ui::View;

class Card : public View {
public:
    std::string_view className() const override { return "Card"; }
    ui::Label* title = nullptr;
    ui::LayoutConstraint* mediaHeight = nullptr;
    std::vector<std::string> calls;

    void connect(ui::Connections& connections) override {
        connections.view("title", title);
        connections.constraint("mediaHeight", mediaHeight);
        connections.action("press", [this](View& sender) { calls.push_back(sender.outlet()); });
    }
    void awakeFromNib() override { calls.emplace_back("awake"); }
};

class InterfaceFileTest : public UITest, public platform::Bundle {
protected:
    InterfaceFileTest() {
        foundation::ClassRegistry<View>::registerClass("Card",
                                                       [] { return std::make_shared<Card>(); });
    }

    std::string identifier() const override { return "test"; }
    foundation::Value infoDictionary() const override { return {}; }
    std::optional<std::string> pathForResource(std::string_view name,
                                               std::string_view type) const override {
        std::string path = "/bundle/" + std::string(name) + "." + std::string(type);
        if (!memory.files.fileExists(path)) return std::nullopt;
        return path;
    }

    std::shared_ptr<View> load(std::string_view text) {
        memory.files.write("/bundle/File.json", text);
        return ui::loadInterfaceFile("File", *this);
    }
    std::string complaint(std::string_view text) {
        try {
            load(text);
        } catch (const foundation::Exception& exception) {
            return exception.reason();
        }
        return "none";
    }
};

TEST_F(InterfaceFileTest, MakesAndConnectsTheTree) {
    const auto root = load(R"({
        "root": {"class": "Card", "backgroundColor": {"light": "#102030", "dark": "#10203040"},
            "subviews": [{"class": "StackView", "id": "column", "axis": "vertical", "spacing": 8,
                "margins": [1, 2, 3, 4], "alignment": "center",
                "arranged": [
                    {"class": "Label", "outlet": "title", "text": "hi", "fontSize": 10,
                     "numberOfLines": 2, "lineBreakMode": "wordWrapping", "hugging": [251, 252]},
                    {"class": "ImageView", "outlet": "media", "image": "missing", "onTap": "press",
                     "contentMode": "scaleAspectFit"},
                    {"class": "Button", "outlet": "go", "title": "Go", "action": "press",
                     "insets": [4, 8, 4, 8], "tag": 7, "hidden": true}]}]},
        "constraints": ["column.leading = self.leading + 16", "column.top = superview.top",
            "column.trailing <= self.trailing - 16", "title.width <= 0.5 * self.width - 8 @750",
            "media.width = title.width / 2 + 1",
            {"outlet": "mediaHeight", "constraint": "media.height = 30", "active": false}]})");
    ASSERT_NE(root, nullptr);
    auto& card = static_cast<Card&>(*root);
    EXPECT_THAT(card.calls, testing::ElementsAre("awake"));
    EXPECT_EQ(card.backgroundColor()->dark, platform::Color::rgba(0x10203040));
    EXPECT_EQ(card.title->text(), "hi");
    EXPECT_EQ(card.title->verticalPriorities().hugging, 252);
    EXPECT_FALSE(card.mediaHeight->isActive());
    EXPECT_EQ(card.mediaHeight->constant(), 30);
    root->setFrame({0, 0, 300, 200});
    root->layoutIfNeeded();
    EXPECT_EQ(outlet(*root, "media")->frame().width, 6);
    EXPECT_EQ(outlet(*root, "media")->frame().height, 0);
    card.mediaHeight->setActive(true);
    root->layoutIfNeeded();
    EXPECT_EQ(outlet(*root, "media")->frame().height, 30);
    card.mediaHeight->setActive(false);
    EXPECT_EQ(card.mediaHeight->constant(), 30);  // kept, for the field refers to it
    EXPECT_EQ(ui::tap(*root, root->subviews()[0]->frame().origin()), nullptr);
    outlet(*root, "go")->takeTap({});
    EXPECT_EQ(card.calls.back(), "go");
    EXPECT_EQ(outlet(*root, "go")->tag(), 7);
}

TEST_F(InterfaceFileTest, SaysWhatIsWrongWhere) {
    const auto view = [](std::string_view entries) {
        return R"({"root": {"class": "View", )" + std::string(entries) + "}}";
    };
    const auto constraint = [](std::string_view text) {
        return R"({"root": {"class": "View", "subviews": [{"class": "View", "id": "a"}]},)"
               R"("constraints": [")" +
               std::string(text) + R"("]})";
    };
    std::string deep;
    for (int i = 0; i < 70; ++i)
        deep += R"({"class": "View", "subviews": [)";
    for (int i = 0; i < 70; ++i)
        deep += "]}";
    std::string many = R"({"class": "View"})";
    for (int i = 0; i < 2'000; ++i)
        many += R"(,{"class": "View"})";
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"{", "line 1, column 2"},
        {"[]", "an object expected"},
        {R"({"root": {"class": "View"}, "extra": 1})", "unknown key \"extra\""},
        {R"({"root": {"class": "Nobody"}})", "root: unknown class \"Nobody\""},
        {R"({"root": {"subviews": []}})", "root: unknown class \"\""},
        {view(R"("colour": 1)"), "root: View has no property \"colour\""},
        {view(R"("subviews": [{"class": "Label", "fontSize": "big"}])"),
         "root.subviews[0].fontSize: a number expected, not big"},
        {view(R"("backgroundColor": "#12345")"), "root.backgroundColor: a colour expected"},
        {view(R"("hidden": 1)"), "root.hidden: true or false expected, not 1"},
        {view(R"("arranged": [])"), "root.arranged: only a StackView has these"},
        {view(R"("hugging": [1])"), "root.hugging: 2 numbers expected"},
        {view(R"("subviews": [{"class": "StackView", "axis": "up"}])"),
         "root.subviews[0].axis: one of horizontal vertical expected, not up"},
        {view(R"("id": "x", "subviews": [{"class": "View", "outlet": "x"}])"),
         "root.subviews[0].outlet: the name \"x\" is taken"},
        {view(R"("onTap": "jump")"), "root.onTap: unknown operation \"jump\""},
        {R"({"root": {"class": "Card"}})", "the outlet \"title\" is missing or of another class"},
        {R"({"root": )" + deep + "}", "more than 64 levels"},
        {view(R"("subviews": [)" + many + "]"), "more than 2,000 views"},
        {std::string(1'000'001, ' '), "more than 1 MB"},
        {constraint("b.left = self.left"),
         "constraints[0]: \"b.left = self.left\": unknown item \"b\""},
        {constraint("a.middle = 3"), "column 3: an attribute expected"},
        {constraint("a.width == 3"), "column 10: an item expected"},
        {constraint("a.width = 3 @0"), "a priority above 0 and at most 1000 expected"},
        {constraint("a.width = self.width + self.height"), "column 24: a number expected"},
        {constraint("a.width = self.width / 0"), "a number other than 0 expected"},
        {constraint("a.width = 1e999"), "a number expected"},
        {constraint("a.width = 1e308 * self.width / 0.1"), "numbers within range expected"},
        {constraint("a.width = 1e308 + 1e308"), "numbers within range expected"},
        {constraint("a.width"), "column 8: =, <= or >= expected"},
        {constraint("self.width = superview.width"), "unknown item \"superview\""},
    };
    for (const auto& [text, expected] : cases) {
        const std::string reason = complaint(text);
        EXPECT_THAT(reason, testing::StartsWith("File.json: "));
        EXPECT_THAT(reason, testing::HasSubstr(expected));
    }
    EXPECT_THROW(ui::loadInterfaceFile("Other", *this), foundation::Exception);
}

}  // namespace
}  // namespace tavrolin::tests

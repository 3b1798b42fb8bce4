#include "tavrolin/content_ui/color_utility.h"

#include <gtest/gtest.h>

#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using platform::Color;
using platform::Point;
using Utility = CVNColorUtility;

class ColorUtilityTest : public ContentUITest {};

TEST_F(ColorUtilityTest, ReadsColoursOfEveryLength) {
    struct Case {
        const char* text;
        unsigned long rgba;
    };
    const Case cases[] = {
        {"#FF0000", 0xFF0000FF},
        {"FF000080", 0xFF000080},
        {"#80FF0000", 0x80FF0000},
        {"fff", 0x00000FFF},
        {"0xFF00", 0xFF00FF},
        {"##FF00", 0},
        {"12345Z", 0x12345},
        {"zzz", 0},
        {"#", 0},
        {"FF0000FFFF", 0xFFFFFFFF},
        {" 12", 0x12},
    };
    for (const Case& each : cases)
        EXPECT_EQ(Utility::colorFromHexString(each.text), Color::rgba(each.rgba)) << each.text;
    for (const Value& none : {Value(), Value(""), Value(0xFF0000), Value::array(), Value::null()})
        EXPECT_EQ(Utility::colorFromHexString(none), std::nullopt) << none.description();
}

TEST_F(ColorUtilityTest, GradientsRunAlongTheirAngles) {
    struct Case {
        Value type, angle;
        Point start, end;
    };
    const Case cases[] = {
        {1, 0, {1, 1}, {1, 0}},       {"1", "45", {0, 1}, {1, 0}}, {1, 90, {0, 1}, {1, 1}},
        {1, 135, {0, 0}, {1, 1}},     {1, 180, {1, 0}, {1, 1}},    {1, 225, {1, 0}, {0, 1}},
        {"1", "270", {1, 1}, {0, 1}}, {1, 315, {1, 1}, {0, 0}},    {1, 17, {0, 1}, {1, 1}},
        {2, 45, {0, 1}, {1, 1}},      {{}, 45, {0, 1}, {1, 1}},
    };
    for (const Case& each : cases) {
        ui::View view;
        view.setFrame({5, 6, 30, 40});
        Utility::addBackgroundGradientColor(
            view,
            Value::array({each.type ? each.type : Value(""), "FF0000", "#00FF0080", each.angle}));
        EXPECT_EQ(view.backgroundColor(), ui::DynamicColor(Color::clear()));
        ASSERT_EQ(view.layer().sublayers().size(), 1U);
        const auto& layer = dynamic_cast<ui::GradientLayer&>(*view.layer().sublayers()[0]);
        EXPECT_EQ(layer.frame(), (platform::Rect{0, 0, 30, 40}));
        EXPECT_TRUE(layer.masksToBounds());
        EXPECT_EQ(layer.gradient(),
                  (platform::Gradient{
                      {Color::rgba(0xFF0000FF), Color::rgba(0x00FF0080)}, each.start, each.end}))
            << each.angle.description();
    }
    ui::View view;
    EXPECT_THROW(Utility::addBackgroundGradientColor(view, Value::array({"1", "FF0000", "00FF00"})),
                 foundation::Exception);
}

}  // namespace
}  // namespace tavrolin::tests

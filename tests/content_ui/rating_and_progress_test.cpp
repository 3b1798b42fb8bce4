#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "tavrolin/content_ui/components/progress_component.h"
#include "tavrolin/content_ui/components/rating_component.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tavrolin/ui/label.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Value;
using platform::Rect;

class RatingAndProgressTest : public ContentUITest {
protected:
    RatingAndProgressTest() {
        controller_.view().addSubview(container_);
        ui::pinEdgesToSuperview(*container_);
    }
    static Value options(const std::vector<Value>& titles, Value rating = Value::dictionary()) {
        Value buttons = Value::array();
        for (const Value& title : titles)
            buttons.append(Value::dictionary({{"t", title}}));
        rating.set("ty", 2);
        rating.set("btn", buttons);
        return rating;
    }
    static Value stars(std::int64_t scale) { return Value::dictionary({{"ty", 1}, {"sc", scale}}); }
    std::shared_ptr<CVNRatingComponent> showRating(const Value& rating) {
        record_ = show({}, Value::dictionary({{"rat", rating}}))->cvnUi->cvnRat;
        return load<CVNRatingComponent>("CVNRatingComponent");
    }
    std::shared_ptr<CVNProgressComponent> showProgress(Value timer, const Value& received) {
        timer.set("ty", 2);
        show(Value::dictionary({{"receivedDate", received}, {"htT", "T"}}),
             Value::dictionary({{"tim", timer}}));
        return load<CVNProgressComponent>("CVNProgressComponent");
    }
    Value dateIn(double seconds) const {
        return CVNPushDateUtility::dateStringFromDate({now() + seconds});
    }
    /// Where it is on screen.
    Rect place(const ui::View& view) {
        window_.size();  // lays out
        return view.convertRect(view.bounds(), controller_.view());
    }
    void tap(const ui::View& view) {
        const Rect there = place(view);
        ui::tap(controller_.view(), {there.x + there.width / 2, there.y + there.height / 2});
    }
    /// A star for each button that is a full one or stands out, a dash for each other.
    static std::string marks(const CVNRatingComponent& rating) {
        std::string all;
        for (const ui::Button* button : rating.ratingButtonArray()) {
            const bool isMarked = button->image() ? button->image()->name() == kFull
                                                  : button->backgroundColor()->light == kChosenBox;
            all += isMarked ? '*' : '-';
        }
        return all;
    }
    bool submits() { return !outlet(*container_, "submitButtonContainerView")->isHidden(); }
    /// The countdown, its title, and the bar in hundredths.
    std::string countdown() {
        const double progress = outletOf<ui::ProgressView>(*container_, "progressView").progress();
        ui::View& below = *outlet(*container_, "progressContainerView");
        const auto& title = outletOf<ui::Label>(below, "titleLabel");
        return outletOf<ui::Label>(below, "timerLabel").text() + " " +
               (title.isHidden() ? "hidden" : title.text()) + " " +
               std::to_string(std::lround(progress * 100));
    }

    static constexpr const char* kFull = "cvn-pn-rating-star-icon-selected";
    static constexpr platform::Color kChosenBox = platform::Color::rgba(0x0052CCFF);

    ui::ViewController controller_;
    ui::Window window_{controller_, kWidth, {}};
    foundation::Ref<CVNRat> record_;
};

TEST_F(RatingAndProgressTest, StarsAreAsManyAsTheScaleSaysWhereItIsUsable) {
    const std::pair<std::int64_t, std::size_t> cases[] = {
        {1, 1}, {3, 3}, {10, 10}, {20, 20}, {0, 5}, {-1, 5}, {21, 5}, {1000, 5}, {INT64_MIN, 5}};
    for (const auto& [scale, count] : cases) {
        const auto rating = showRating(stars(scale));
        EXPECT_EQ(marks(*rating), std::string(count, '-')) << scale;
        EXPECT_FALSE(submits());
        double end = 0;
        for (const ui::Button* star : rating->ratingButtonArray()) {
            const Rect there = place(*star);
            EXPECT_GE(there.width, kWidth / 12) << scale;
            EXPECT_EQ(there.height, 44);
            EXPECT_LE(there.x + there.width, kWidth - 15.9) << scale;
            EXPECT_GE(there.x, star->tag() % 10 == 0 ? 15.9 : end - 0.1) << scale;
            end = there.x + there.width;
        }
    }
}

TEST_F(RatingAndProgressTest, AStarLeavesItsNumberOnceItIsHandedIn) {
    Value payload = stars(4);
    payload.set("ratingIndex", 7);
    const auto rating = showRating(payload);
    tap(*rating->ratingButtonArray()[3]);
    tap(*rating->ratingButtonArray()[2]);
    EXPECT_EQ(marks(*rating), "***-");
    ASSERT_TRUE(submits());
    EXPECT_EQ(record_->ratingValue, Value("3"));
    EXPECT_FALSE(CVNSharedUtility::sharedInstance().isRatingGiven());
    tap(*outlet(*rating, "submitButton"));
    EXPECT_EQ(CVNPushPreferencesManager::getRatingValue(), Value("3"));
    EXPECT_EQ(CVNPushPreferencesManager::getRatingIndex(), Value(7)) << "as the record had it";
    EXPECT_EQ(rating->eventData(), Value::dictionary({{"eventData", 1}}));
}

TEST_F(RatingAndProgressTest, AnOptionLeavesItsTitleAndIndex) {
    const auto rating = showRating(options({"Bad", "Good", 3}));
    EXPECT_EQ(rating->ratingButtonArray()[2]->title(), "3") << "of a number";
    tap(*rating->ratingButtonArray()[2]);
    tap(*rating->ratingButtonArray()[1]);
    EXPECT_EQ(marks(*rating), "-*-");
    EXPECT_FALSE(CVNSharedUtility::sharedInstance().isRatingGiven());
    tap(*outlet(*rating, "submitButton"));
    EXPECT_EQ(CVNPushPreferencesManager::getRatingValue(), Value("Good"));
    EXPECT_EQ(CVNPushPreferencesManager::getRatingIndex(), Value(1));

    for (const std::int64_t index : {-1, 3}) {
        rating->updateNotificationRating(index);
        EXPECT_EQ(record_->ratingIndex, 1);
        EXPECT_TRUE(
            memory_.logSink.contains("(FATAL) CVNRatingComponent: Could not update rating due to "
                                     "exception  "));
        memory_.logSink.clear();
    }
    showRating(options({}));
    EXPECT_EQ(window_.size().height, 0);
}

TEST_F(RatingAndProgressTest, AChoiceThatThePayloadCarriesIsShownAgain) {
    struct Case {
        std::int64_t type;
        const char* value;
        std::int64_t index;
        const char* marks;
    };
    const Case cases[] = {
        {1, "2", -1, "**-"},        {1, "3", 0, "***"}, {1, "4", 0, "---"},
        {1, "0", 0, "---"},         {1, "x", 0, "---"}, {1, "-9223372036854775808", 0, "---"},
        {1, "Not Given", 1, "---"}, {2, "b", 1, "-*-"}, {2, "b", -1, "---"},
        {2, "b", 3, "---"},         {2, "", 1, "---"},  {2, "Not Given", 1, "---"}};
    for (const Case& each : cases) {
        Value payload = options({"a", "b", "c"});
        payload.set("ty", each.type);
        payload.set("sc", 3);
        payload.set("rating", each.value);
        payload.set("ratingIndex", each.index);
        EXPECT_EQ(marks(*showRating(payload)), each.marks) << each.value << " " << each.index;
        EXPECT_EQ(submits(), each.marks != std::string("---"));
        EXPECT_EQ(record_->ratingValue, Value(each.value));
    }
}

TEST_F(RatingAndProgressTest, StarsAreThePayloadsOwnWhereTheyWereDownloaded) {
    memory_.imageDecoder.setFrames({{.width = 500, .height = 500}});
    memory_.files.write("/media/my heart.png", "GIF89a");
    Value payload = stars(2);
    payload.set("selectedIconPath", "/media/my heart.png");
    payload.set("unselectedIconPath", "/media/gone.png");
    const auto rating = showRating(payload);
    rating->updateRating(0);
    const auto& buttons = rating->ratingButtonArray();
    EXPECT_EQ(buttons[0]->image()->name(), "my heart.png");
    EXPECT_EQ(buttons[1]->image()->name(), "cvn-pn-rating-star-icon-unselected");
    EXPECT_EQ(place(*buttons[0]).width, 44);
}

TEST_F(RatingAndProgressTest, OptionsTakeAsManyRowsAsTheirTitlesNeed) {
    const auto rows = [&](const std::vector<Value>& titles) {
        const auto rating = showRating(options(titles));
        std::set<double> tops;
        double end = 0;
        for (const ui::Button* option : rating->ratingButtonArray()) {
            const Rect there = place(*option);
            const bool isFirst = tops.insert(there.y).second;
            EXPECT_NEAR(there.x, isFirst ? 16 : end + 8, 0.5);
            end = there.x + there.width;
            EXPECT_LE(end, kWidth - 15.5);
        }
        EXPECT_NEAR(end, kWidth - 16, 0.5);
        return tops.size();
    };
    const std::string longTitle(100, 'x');
    EXPECT_EQ(rows({"1", "2", "3", "4", "5"}), 1);
    EXPECT_EQ(rows({"1", "2", "3", "4", "5", "6"}), 2);
    EXPECT_EQ(rows(std::vector<Value>(50, "1")), 10);
    EXPECT_EQ(rows({longTitle, "2", longTitle}), 3);
    EXPECT_EQ(rows(std::vector<Value>(20, "something like this")), 20);

    const auto hebrew = showRating(options({"😀", "טוב"}));
    EXPECT_GT(place(*hebrew->ratingButtonArray()[0]).x, place(*hebrew->ratingButtonArray()[1]).x);
}

TEST_F(RatingAndProgressTest, OptionsCanBeReadInAnyColor) {
    struct Case {
        const char* hex;
        bool isOnDark;
    };
    for (const Case& each : {Case{"FFFFFF", true},
                             {"000000", false},
                             {"FF0000", false},
                             {"FFC107", true},
                             {"37474F", false}}) {
        const auto rating = showRating(
            options({"a", "b"}, Value::dictionary({{"stc", each.hex}, {"utc", each.hex}})));
        rating->updateRating(1);
        const auto& options = rating->ratingButtonArray();
        EXPECT_NE(options[0]->backgroundColor(), options[1]->backgroundColor()) << each.hex;
        for (const ui::Button* option : options) {
            for (const auto& box :
                 {option->backgroundColor()->light, option->backgroundColor()->dark})
                EXPECT_EQ(box.green < 0.5, each.isOnDark) << each.hex;
        }
    }
    // A colour of which nothing could be seen is none.
    const auto rating = showRating(options({"a"}, Value::dictionary({{"utc", "zzz"}})));
    const auto box = *rating->ratingButtonArray()[0]->backgroundColor();
    EXPECT_GT(box.light.green, 0.5);
    EXPECT_LT(box.dark.green, 0.5);
}

TEST_F(RatingAndProgressTest, TheBarFillsUntilTheTimeIsUp) {
    const auto component = showProgress(Value::dictionary({{"et", dateIn(60)},
                                                           {"tt", "Soon"},
                                                           {"ft", "Over"},
                                                           {"bgc", "FF0000"},
                                                           {"tc", "00FF00"}}),
                                        dateIn(-20));
    EXPECT_EQ(
        outletOf<ui::Label>(*outlet(*component, "textComponentContainer"), "titleLabel").text(),
        "T");
    const auto red = ui::DynamicColor(platform::Color::rgba(0xFF0000FF));
    const auto green = platform::Color::rgba(0x00FF00FF);
    ui::View& below = *outlet(*component, "progressContainerView");
    auto& title = outletOf<ui::Label>(below, "titleLabel");
    EXPECT_EQ(outlet(below, "timerBackgroundView")->backgroundColor(), red);
    EXPECT_EQ(outletOf<ui::ProgressView>(below, "progressView").progressTintColor(), red);
    EXPECT_EQ(outletOf<ui::Label>(below, "timerLabel").textColor(), ui::DynamicColor(green));
    EXPECT_EQ(title.attributedText()->firstColor(), green);

    EXPECT_EQ(countdown(), "00:01:00 Soon 25");
    memory_.dispatch.advance(20);
    EXPECT_EQ(countdown(), "00:00:40 Soon 50");
    component->stopCountdownTimer();
    memory_.dispatch.advance(20);
    EXPECT_EQ(countdown(), "00:00:40 Soon 50");
    component->scheduleCountdownTimer();
    EXPECT_EQ(countdown(), "00:00:20 Soon 75");
    run();
    EXPECT_EQ(countdown(), "00:00:00 Over 100");
    EXPECT_EQ(title.attributedText()->firstColor(), green);
    EXPECT_FALSE(memory_.dispatch.hasWork());
}

TEST_F(RatingAndProgressTest, ACountdownOfStrangeDatesIsShownAllTheSame) {
    struct Case {
        Value end;
        Value start;
        const char* shown;
    };
    const Case cases[] = {{dateIn(-5), dateIn(-60), "00:00:00 hidden 100"},
                          {"soon", dateIn(0), "00:00:00 hidden 100"},
                          {dateIn(3600), "earlier", "01:00:00 Soon 100"},
                          {dateIn(60), dateIn(120), "00:01:00 Soon 100"},
                          {dateIn(60), dateIn(60), "00:01:00 Soon 0"},
                          {dateIn(360000), dateIn(0), "100:00:00 Soon 0"}};
    memory_.logSink.clear();
    for (const Case& each : cases) {
        showProgress(Value::dictionary({{"et", each.end}, {"tt", "Soon"}}), each.start);
        EXPECT_EQ(countdown(), each.shown) << each.end.description();
    }
    EXPECT_FALSE(memory_.logSink.contains("(FATAL)"));
    container_->subviews().front()->removeFromSuperview();
    run();  // nobody is left to be ticked
}

TEST_F(RatingAndProgressTest, TheCountdownStandsAtTheEndOfItsTitle) {
    for (const std::string& title :
         {std::string("Soon"), std::string("בקרוב"), "Soon" + std::string(100, 'x')}) {
        const auto component =
            showProgress(Value::dictionary({{"et", dateIn(60)}, {"tt", title}}), dateIn(0));
        ui::View& below = *outlet(*component, "progressContainerView");
        const Rect words = place(*outlet(below, "titleLabel"));
        const Rect time = place(*outlet(below, "timerLabel"));
        const bool isReversed = title.front() != 'S';
        EXPECT_GT(time.width, 0);
        if (isReversed) {
            EXPECT_GE(words.x, time.x + time.width + 12) << title;
        } else {
            EXPECT_GE(time.x, words.x + words.width + 12) << title;
        }
        EXPECT_EQ(outlet(below, "progressView")->effectiveLayoutDirection() ==
                      ui::LayoutDirection::rightToLeft,
                  isReversed);
    }
}

}  // namespace
}  // namespace tavrolin::tests

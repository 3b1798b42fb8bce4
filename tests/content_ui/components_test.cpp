#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "tavrolin/content_ui/components/audio_component.h"
#include "tavrolin/content_ui/components/countdown.h"
#include "tavrolin/content_ui/components/fitting_height.h"
#include "tavrolin/content_ui/components/gif_component.h"
#include "tavrolin/content_ui/components/header_component.h"
#include "tavrolin/content_ui/components/image_component.h"
#include "tavrolin/content_ui/components/repeating_timer.h"
#include "tavrolin/content_ui/components/text_and_timer_component.h"
#include "tavrolin/content_ui/components/video_component.h"
#include "tavrolin/events/date_utility.h"
#include "tavrolin/ui/controls.h"
#include "tavrolin/ui/image_view.h"
#include "tavrolin/ui/label.h"
#include "tavrolin/ui/layer.h"
#include "tavrolin/ui/stack_view.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using foundation::Date;
using foundation::URL;
using foundation::Value;
using testing::ElementsAre;
using testing::HasSubstr;

class ComponentsTest : public ContentUITest {
protected:
    ComponentsTest() {
        memory_.imageDecoder.setFrames({{.width = 40, .height = 20}, {.width = 40, .height = 20}});
        memory_.files.write("/media/wide.pic", "GIF89a");
        memory_.files.write("/media/with blank.pic", "GIF89a");
        memory_.files.write("/media/broken.pic", "x");
        memory_.logSink.clear();
    }
    /// Shows a file of that type in a window.
    template <class T>
    std::shared_ptr<T> showFile(std::string_view className, const Value& path) {
        Value section;
        section.setIfPresent("mediaURLPath", path);
        show(section);
        return load<T>(className);
    }
    /// Lays out what is in the container, and says how high it is.
    double height() {
        controller_.view().addSubview(container_);
        ui::pinEdgesToSuperview(*container_);
        return window_.size().height;
    }
    Value endIn(double seconds) const {
        return CVNPushDateUtility::dateStringFromDate({now() + seconds});
    }
    /// A countdown of type 1 with these texts.
    std::shared_ptr<CVNTextAndTimerComponent> showTexts(const Value& section, Value timer,
                                                        std::int64_t layoutId = 1) {
        Value ui = Value::dictionary({{"lid", layoutId}});
        ui.setIfPresent("tim", std::move(timer));
        Value all = push("t1", section);
        all.set("cvnUi", ui);
        if (section) all.set("aps", Value::dictionary({{"alert", section}}));
        CVNNotificationViewHelper::setNotificationPayloadModel(parsed(all));
        return load<CVNTextAndTimerComponent>("CVNTextAndTimerComponent");
    }
    std::string text(std::string_view name) {
        const auto& label = outletOf<ui::Label>(*container_, name);
        return label.isHidden() ? "hidden" : label.text();
    }

    platform::MediaPlayer* player() const { return memory_.mediaPlayers.player(); }

    ui::ViewController controller_;
    ui::Window window_{controller_, kWidth, {}};
};

TEST_F(ComponentsTest, PicturesTakeTheHeightOfTheirProportions) {
    struct Case {
        const char* component;
        const char* view;
        const char* top;
        const char* path;
        bool shown;
    };
    const Case cases[] = {
        {"CVNImageComponent", "imageView", "topHeaderImageView", "/media/wide.pic", true},
        {"CVNImageComponent", "imageView", "topHeaderImageView", "file:///media/with%20blank.pic",
         true},
        {"CVNImageComponent", "imageView", "topHeaderImageView", "/media/with blank.pic", false},
        {"CVNImageComponent", "imageView", "topHeaderImageView", "/media/broken.pic", false},
        {"CVNImageComponent", "imageView", "topHeaderImageView", nullptr, false},
        {"CVNGifComponent", "animatedImageView", "topHeaderView", "/media/with blank.pic", true},
        {"CVNGifComponent", "animatedImageView", "topHeaderView", "/media/broken.pic", false},
        {"CVNGifComponent", "animatedImageView", "topHeaderView", "wide.pic", false},
    };
    for (const Case& each : cases) {
        const auto component = showFile<NotificationView>(each.component, each.path);
        EXPECT_EQ(height(), each.shown ? kWidth / 2 : 0) << each.path;
        EXPECT_EQ(height(), each.shown ? kWidth / 2 : 0) << "settles";
        const auto& view = outletOf<ui::ImageView>(*component, each.view);
        EXPECT_EQ(view.image() != nullptr, each.shown) << each.path;
        if (view.image()) {
            EXPECT_EQ(view.image()->isAnimated(), each.view != std::string("imageView"));
            EXPECT_THAT(std::string(each.path), testing::EndsWith(".pic"));
        }
        EXPECT_EQ(outlet(*component, each.top)->isHidden(), !each.shown) << each.path;
    }
    EXPECT_TRUE(
        memory_.logSink.contains("(FATAL) CVNGifComponent: Could not set Gif due to "
                                 "exception  "));
}

TEST_F(ComponentsTest, AFittingHeightNeedsAWidthAndARatio) {
    const auto view = std::make_shared<ui::View>();
    const auto height = ui::LayoutConstraint::make(*view, ui::LayoutAttribute::height,
                                                   ui::LayoutRelation::equal, 7);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [width, ratio] : {std::pair{0.0, 2.0},
                                       {300.0, 0.0},
                                       {nan, 2.0},
                                       {300.0, nan},
                                       {-300.0, 2.0},
                                       {1e300, 1e-300}}) {
        setFittingHeight(*height, width, ratio);
        EXPECT_EQ(height->constant(), 7) << width << " " << ratio;
    }
    setFittingHeight(*height, 300, 1.5);
    EXPECT_EQ(height->constant(), 200);
}

TEST_F(ComponentsTest, TellsWhyAPictureCannotBeRead) {
    using Component = CVNBaseComponentView;
    EXPECT_EQ(Component::getImageFromURL(URL::withString("/media/missing.pic")), nullptr);
    EXPECT_EQ(Component::getImageFromURL(std::nullopt), nullptr);
    EXPECT_EQ(Component::getImageFromURL(URL::withString("/media/broken.pic")), nullptr);
    EXPECT_THAT(takeLog(),
                ElementsAre(HasSubstr("(ERROR) CVNBaseComponentView: Could not get the image from "
                                      "URL: /media/missing.pic due to and error "),
                            HasSubstr("(FATAL) CVNBaseComponentView: Could not get the image from "
                                      "the URL: (null) due to an execption: ")));
    EXPECT_EQ(Component::getImageFromURL(URL::withString("/media/wide.pic"))->name(), "wide.pic");

    const auto plain = platform::StyledText::plain("abc", {});
    EXPECT_EQ(Component::setForegroundColor(platform::Color::white(), plain).firstColor(),
              platform::Color::white());
    EXPECT_EQ(Component::setForegroundColor(std::nullopt, plain), plain);
    EXPECT_THAT(takeLog(), ElementsAre(HasSubstr("(FATAL) CVNBaseComponentView: Could not change "
                                                 "color of HTML string due to exception : ")));
}

TEST_F(ComponentsTest, SecondsAreShownWithoutHoursUpToADay) {
    const std::pair<std::int32_t, const char*> cases[] = {
        {0, "00:00"},        {65, "01:05"},        {3599, "59:59"},
        {3700, "01:40"},     {86399, "59:59"},     {86400, "00:00:00"},
        {90000, "01:00:00"}, {172799, "23:59:59"}, {-65, "-1:-5"},
    };
    for (const auto& [seconds, text] : cases)
        EXPECT_EQ(CVNAudioComponent::formatSecondvalue(seconds), text);
}

TEST_F(ComponentsTest, SoundPlaysPausesAndReturnsToItsStart) {
    memory_.mediaPlayers.setFile("/media/a.wav", {.duration = 65.9});
    const auto component = showFile<CVNAudioComponent>("CVNAudioComponent", "/media/a.wav");
    EXPECT_EQ(player(), nullptr) << "it comes a turn later";
    run();
    ASSERT_NE(player(), nullptr);
    auto& slider = outletOf<ui::Slider>(*component, "playerSlider");
    const auto state = [&] {
        memory_.dispatch.runReady();
        const auto& button = outletOf<ui::Button>(*component, "playPauseButton");
        return text("startTime") + " " + text("endTime") + " " +
               std::to_string(static_cast<int>(slider.value())) + " " +
               (button.image() ? button.image()->name() : "no icon");
    };
    EXPECT_EQ(slider.maximumValue(), 65.9);
    EXPECT_EQ(state(), "00:00 01:05 0 cvn-pn-audio-play");
    const auto press = [&] { component->playPauseNotificationEvent(*component); };

    press();
    memory_.dispatch.advance(61.5);
    EXPECT_EQ(state(), "01:01 01:05 61 cvn-pn-audio-pause");
    press();
    EXPECT_EQ(player()->rate(), 0);
    EXPECT_EQ(state(), "01:01 01:05 61 cvn-pn-audio-play");
    player()->seekToTime(3);
    EXPECT_EQ(state(), "01:01 01:05 61 cvn-pn-audio-play") << "nobody observes it any more";
    slider.setValue(7);
    component->audioSeekEvent(slider);
    EXPECT_EQ(player()->currentTime(), 7);

    press();
    memory_.dispatch.advance(100);
    EXPECT_EQ(player()->currentTime(), 0);
    EXPECT_EQ(player()->rate(), 0);
    EXPECT_EQ(state(), "00:00 01:05 0 cvn-pn-audio-play");
    press();
    EXPECT_EQ(player()->rate(), 1) << "ready to be played again";
    press();
    slider.setValue(65.9);
    component->audioSeekEvent(slider);
    press();
    EXPECT_EQ(state(), "00:00 01:05 0 cvn-pn-audio-play") << "nothing was left to play";
    press();
    memory_.dispatch.advance(2);
    EXPECT_EQ(state(), "00:02 01:05 2 cvn-pn-audio-pause");
}

TEST_F(ComponentsTest, SoundWithoutAFileOrALengthStaysQuiet) {
    const auto start = [&](const Value& path) {
        const auto component = showFile<CVNAudioComponent>("CVNAudioComponent", path);
        run();
        component->playPauseNotificationEvent(*component);
        component->audioSeekEvent(*component);
        return component;
    };
    start({});
    EXPECT_EQ(player(), nullptr);
    // What can't be played is started anew by each press.
    const auto broken = start("/media/broken.wav");
    broken->playPauseNotificationEvent(*broken);
    EXPECT_EQ(outletOf<ui::Button>(*broken, "playPauseButton").image()->name(),
              "cvn-pn-audio-pause");
    EXPECT_EQ(player()->rate(), 0);

    memory_.mediaPlayers.setFile("/media/endless.wav", {.duration = std::nan("")});
    EXPECT_EQ(start("/media/endless.wav")->audioDuration(), 0);
    EXPECT_EQ(player()->rate(), 1);
    memory_.mediaPlayers.setFile("/media/long.wav", {.duration = 3e12});
    start("/media/long.wav");
    EXPECT_EQ(text("endTime"), CVNAudioComponent::formatSecondvalue(2147483647));

    // A component that is gone before its player comes, or while it plays.
    showFile<CVNAudioComponent>("CVNAudioComponent", "/media/late.wav");
    container_ = std::make_shared<ui::View>();
    run();
    EXPECT_EQ(memory_.mediaPlayers.paths().back(), "/media/long.wav");
}

TEST_F(ComponentsTest, AFilmPlaysOnceItIsToldTo) {
    const auto picture =
        std::make_shared<platform::Image>(platform::Image{4, 3, std::vector<std::uint8_t>(48)});
    memory_.mediaPlayers.setFile("/media/my film.mp4",
                                 {.duration = 10, .picture = [&](double) { return picture; }});
    const auto component = showFile<CVNVideoComponent>("CVNVideoComponent", "/media/my film.mp4");
    EXPECT_EQ(height(), 225) << "4 to 3";
    ui::View& content = *outlet(*component, "videoContentView");
    ASSERT_EQ(content.layer().sublayers().size(), 1U);
    EXPECT_EQ(content.layer().sublayers()[0]->frame(), (platform::Rect{0, 0, kWidth, 225}));
    const auto& button = outletOf<ui::Button>(*component, "playButton");
    ASSERT_NE(button.image(), nullptr);
    EXPECT_EQ(button.image()->name(), "cvn-pn-video-play");
    EXPECT_EQ(player()->rate(), 0);

    component->playVideoNotificationEvent(*component);
    EXPECT_TRUE(button.isHidden());
    memory_.dispatch.advance(4);
    component->playVideoNotificationEvent(*component);
    EXPECT_EQ(player()->currentTime(), 4);
    memory_.dispatch.advance(6);
    EXPECT_EQ(player()->currentTime(), 0);
    EXPECT_FALSE(button.isHidden());

    component->configureNotification();
    EXPECT_EQ(content.layer().sublayers().size(), 1U) << "the layer before goes";
    memory_.mediaPlayers.setFile("/media/no-picture.mp4", {.duration = 10});
    showFile<CVNVideoComponent>("CVNVideoComponent", "/media/no-picture.mp4");
    EXPECT_NEAR(height(), kWidth * 9 / 16, 0.5);  // whole pixels
    showFile<CVNVideoComponent>("CVNVideoComponent", "relative.mp4");
    EXPECT_TRUE(
        memory_.logSink.contains("(FATAL) CVNVideoComponent: Could not set video due to "
                                 "exception  "));
}

TEST_F(ComponentsTest, TheHeaderTakesTheTimersComponent) {
    const auto shown = [&](const Value& timer) {
        Value ui = Value::dictionary();
        ui.setIfPresent("tim", timer);
        show({}, ui);
        const auto header = load("CVNHeaderComponent");
        return std::string(outlet(*header, "timerComponentContainer")->isHidden() ? "" : "timer") +
               (outlet(*header, "progressComponentContainer")->isHidden() ? "" : "progress");
    };
    EXPECT_EQ(shown({}), "");
    EXPECT_EQ(shown(Value::dictionary({{"ty", 1}})), "timer");
    EXPECT_EQ(shown(Value::dictionary({{"ty", 0}})), "timer");
    EXPECT_EQ(shown(Value::dictionary({{"ty", 2}})), "progress");
}

TEST_F(ComponentsTest, ACountdownTruncatesWhatIsLeft) {
    struct Case {
        double left;
        const char* text;
        bool isOver;
    };
    const Case cases[] = {{90061, "25:01:01", false}, {59.9, "00:00:59", false},
                          {1, "00:00:01", false},     {0.9, "00:00:00", true},
                          {-0.5, "-1:59:59", true},   {-1, "00:00:00", true},
                          {-1e9, "00:00:00", true},   {360000, "100:00:00", false}};
    for (const Case& each : cases) {
        const Countdown left = countdownAt(Date{1000}, Date{1000 + each.left});
        EXPECT_EQ(left.text, each.text) << each.left;
        EXPECT_EQ(left.isOver, each.isOver) << each.left;
    }
}

TEST_F(ComponentsTest, ARepeatingTimerKeepsItsMoments) {
    std::vector<double> calls;
    const double start = now();
    auto timer = std::make_unique<RepeatingTimer>();
    timer->start(1, [&] { calls.push_back(now() - start); });
    timer->start(2, [&] {
        calls.push_back(now() - start);
        if (calls.size() == 3) timer->stop();
    });
    run();
    EXPECT_THAT(calls, ElementsAre(2, 4, 6));
    EXPECT_FALSE(timer->isRunning());
    timer->start(1, [&] { timer.reset(); });
    run();
    EXPECT_EQ(timer, nullptr);
}

TEST_F(ComponentsTest, ARepeatingTimerDoesNotMakeUpForASleep) {
    std::vector<double> calls;
    const double start = now();
    RepeatingTimer timer;
    timer.start(1, [&] {
        calls.push_back(now() - start);
        if (calls.size() == 1) memory_.dispatch.advance(28'800.5);
        if (calls.size() == 3) timer.stop();
    });
    run();
    EXPECT_THAT(calls, ElementsAre(1, 28'802, 28'803));
}

TEST_F(ComponentsTest, TextsCountDownAndThenSayThatItIsOver) {
    const Value texts = Value::dictionary({{"title", "T"}, {"subtitle", "S"}, {"body", "B"}});
    const auto component = showTexts(
        texts,
        Value::dictionary(
            {{"ty", 1}, {"et", endIn(62)}, {"bgc", "FF0000"}, {"tc", "00FF00"}, {"ft", "Over"}}));
    EXPECT_EQ(text("titleLabel") + text("subtitleLabel") + text("bodyLabel"), "TSB");
    EXPECT_EQ(text("timerLabel"), "00:01:02");
    EXPECT_FALSE(outlet(*component, "titleSubtitleTimerStackView")->isHidden());
    EXPECT_FALSE(outlet(*component, "timerContainerView")->isHidden());
    EXPECT_EQ(outlet(*component, "timerBackgroundView")->backgroundColor(),
              ui::DynamicColor(platform::Color::rgba(0xFF0000FF)));
    EXPECT_EQ(outletOf<ui::Label>(*component, "timerLabel").textColor(),
              ui::DynamicColor(platform::Color::rgba(0x00FF00FF)));
    memory_.dispatch.advance(61);
    EXPECT_EQ(text("timerLabel") + text("titleLabel"), "00:00:01T");
    run();
    EXPECT_EQ(text("timerLabel") + " " + text("titleLabel") + " " + text("subtitleLabel") + " " +
                  text("bodyLabel"),
              "00:00:00 Over hidden hidden");
    EXPECT_FALSE(memory_.dispatch.hasWork());

    // Over at once, without words for it; no date at all; a component that is gone.
    for (const Value& end : {endIn(-5), Value("soon"), Value()}) {
        Value timer = Value::dictionary({{"ty", 1}, {"ft", " "}});
        timer.setIfPresent("et", end);
        showTexts(texts, timer);
        EXPECT_EQ(text("timerLabel") + " " + text("titleLabel"), "00:00:00 T");
        run();
    }
    showTexts(texts, Value::dictionary({{"ty", 1}, {"et", endIn(1e9)}}));
    container_ = std::make_shared<ui::View>();
    run();
    // Without a countdown the room for it goes.
    const auto plain = showTexts(texts, Value::dictionary({{"ty", 3}}));
    EXPECT_TRUE(outlet(*plain, "titleSubtitleTimerStackView")->isHidden());
    EXPECT_TRUE(outlet(*plain, "timerContainerView")->isHidden());
    memory_.logSink.clear();
    showTexts(Value::dictionary({{"title", 7}}), {});
    EXPECT_TRUE(
        memory_.logSink.contains("(FATAL) CVNTextAndTimerComponent: Could not load timer "
                                 "due to exception  "));
}

TEST_F(ComponentsTest, TextsComeFromThePayloadByTheirOrder) {
    Value section =
        Value::dictionary({{"title", "plain"}, {"subtitle", ""}, {"htT", "<b>html</b>"}});
    const std::string longText(100, 'x');
    section.set("body", longText);
    controller_.view().addSubview(container_);
    ui::pinEdgesToSuperview(*container_);
    const auto component = showTexts(section, Value::dictionary({{"ty", 0}}), 23);
    EXPECT_EQ(text("titleLabel") + " " + text("subtitleLabel"), "html hidden");
    EXPECT_EQ(text("bodyLabel"), longText + "\n");
    EXPECT_EQ(outletOf<ui::Label>(*component, "titleLabel").numberOfLines(), 1);
    EXPECT_EQ(outletOf<ui::Label>(*component, "bodyLabel").numberOfLines(), 2);
    section.set("body", "short");
    showTexts(section, Value::dictionary({{"ty", 0}}));
    EXPECT_EQ(text("bodyLabel"), "short") << "counted at the width that it has on screen";
    EXPECT_EQ(outletOf<ui::Label>(*container_, "bodyLabel").numberOfLines(), 0);
}

TEST_F(ComponentsTest, TheIconStandsWhereTheTextBegins) {
    struct Case {
        Value section;
        bool mirrored;
    };
    const Case cases[] = {
        {Value::dictionary({{"title", "Hello"}, {"body", "שלום"}}), false},
        {Value::dictionary({{"title", "שלום"}, {"body", "Hello"}}), true},
        {Value::dictionary({{"htT", "<b>42 سلام</b>"}}), true},
        {Value::dictionary({{"htT", "<b>Hello שלום</b>"}, {"title", "שלום"}}), false},
        {Value::dictionary({{"body", "שלום"}}), true},
    };
    CVNNotificationViewHelper::setNotificationImageIcon(
        CVNBaseComponentView::getImageFromURL(URL::withString("/media/wide.pic")));
    for (const Case& each : cases) {
        // The layout around it may run the other way, to have a picture on the right.
        container_->setSemanticContentAttribute(
            each.mirrored ? ui::SemanticContentAttribute::unspecified
                          : ui::SemanticContentAttribute::forceRightToLeft);
        const auto component = showTexts(each.section, Value::dictionary({{"ty", 0}}));
        height();
        const ui::View& icon = *outlet(*component, "appIconView");
        EXPECT_FALSE(icon.isHidden());
        const double x = icon.convertRect(icon.bounds(), *component).x;
        EXPECT_EQ(x > kWidth / 2, each.mirrored) << each.section.description();
    }
    CVNNotificationViewHelper::setNotificationImageIcon(nullptr);
    EXPECT_TRUE(outlet(*showTexts({}, {}), "appIconView")->isHidden());
}

}  // namespace
}  // namespace tavrolin::tests

#include <gmock/gmock.h>

#include "adapters/memory/memory_extension_context.h"
#include "tavrolin/content_ui/components/base_component_view.h"
#include "tavrolin/content_ui/notification_content_handler.h"
#include "tavrolin/core/push_preferences_manager.h"
#include "tavrolin/core/shared_utility.h"
#include "tavrolin/events/event_recorder.h"
#include "tavrolin/ui/gesture_recognizer.h"
#include "tests/support/content_ui.h"

namespace tavrolin::tests {
namespace {

using adapters::memory::MemoryExtensionContext;
using foundation::Value;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Option = platform::ContentExtensionResponseOption;

class ControllerTest : public ContentUITest {
protected:
    ControllerTest() {
        controller_->setExtensionContext(context_);
        controller_->view();
        memory_.logSink.clear();
    }
    static platform::DeliveredNotification notification(const Value& section, const Value& ui) {
        Value all = push("t1", section);
        all.setIfPresent("cvnUi", ui);
        platform::DeliveredNotification delivered;
        delivered.request.identifier = "n1";
        delivered.request.content.userInfo = all;
        return delivered;
    }
    void receive(const Value& section, const Value& ui = {}) {
        controller_->didReceiveNotification(notification(section, ui));
    }
    std::string layout() const {
        const auto& layout = controller_->baseNotificationView();
        return layout ? std::string(layout->className()) : "";
    }
    /// What the completion got, at once or within two seconds; "never" when it was not called.
    std::string press(const std::string& identifier, const platform::DeliveredNotification& on) {
        std::string answer = "never";
        controller_->didReceiveNotificationResponse({identifier, on, "typed"}, [&](Option option) {
            answer = std::to_string(static_cast<int>(option));
        });
        if (answer != "never") return answer;
        memory_.dispatch.advance(1.9);
        if (answer != "never") return answer + " too early";
        memory_.dispatch.advance(0.1);
        return answer == "never" ? answer : answer + " later";
    }

    std::shared_ptr<MemoryExtensionContext> context_ = std::make_shared<MemoryExtensionContext>();
    std::shared_ptr<CVNCustomNotificationViewController> controller_ =
        std::make_shared<CVNCustomNotificationViewController>();
};

TEST_F(ControllerTest, OpensTheStoresWhenItIsLoaded) {
    const auto fresh = std::make_shared<CVNCustomNotificationViewController>();
    setAdapter();
    fresh->view();
    run();
    EXPECT_TRUE(store().storeLoaded());
    EXPECT_THAT(coreSDK_->calls, ElementsAre("loadCorvalenStore"));
    EXPECT_TRUE(memory_.logSink.contains(
        "(SYSTEM) CVNCustomNotificationViewController: ✅ ✅ ✅ 👍 Tavrolin NCE Called ✅ ✅ ✅"));
}

TEST_F(ControllerTest, BuildsTheLayoutOfEachNotification) {
    receive(Value::dictionary({{"type", "Image"}}), Value::dictionary({{"lid", 24}}));
    EXPECT_EQ(layout(), "CVNLayout24");
    receive(Value::dictionary({{"type", "Gif"}}), Value::dictionary({{"lid", 21}}));
    EXPECT_EQ(layout(), "CVNLayout41");
    ASSERT_EQ(controller_->view().subviews().size(), 1U);
    EXPECT_EQ(controller_->view().subviews()[0], controller_->baseNotificationView());
    EXPECT_EQ(CVNNotificationViewHelper::getNotificationPayloadModel()->cvnPayload->type,
              Value("Gif"));
    EXPECT_EQ(CVNNotificationViewHelper::getNotificationExtenstionContent(), context_);
    EXPECT_EQ(CVNNotificationViewHelper::getCustomNotificationDelegate(), controller_);

    // What can't be shown leaves what is there.
    auto foreign = notification({}, {});
    foreign.request.content.userInfo = Value::dictionary({{"aps", Value::dictionary()}});
    controller_->didReceiveNotification(foreign);
    EXPECT_EQ(layout(), "CVNLayout41");
    memory_.bundles.libraryBundle.setResource(
        "CorvalenPushSDKConfig", "plist",
        Value::dictionary(
            {{"LayoutConfig",
              Value::dictionary({{"Odd", Value::dictionary({{"defaultLayout", 7}})}})}}));
    memory_.logSink.clear();
    receive(Value::dictionary({{"type", "Odd"}}));
    EXPECT_EQ(layout(), "CVNLayout41");
    EXPECT_TRUE(memory_.logSink.contains(
        "(FATAL) CVNCustomNotificationViewController: Class 'CVNLayout07' not found."));
    EXPECT_EQ(controller_->currentNotification()->request.content.userInfo["cvnPayload"]["type"],
              Value("Odd"));

    // A broken interface file too.
    memory_.files.write(*memory_.bundles.libraryBundle.pathForResource("CVNLayout01", "json"), "{");
    receive(Value::dictionary({{"type", "Simple"}}));
    EXPECT_TRUE(
        memory_.logSink.contains("Could not load template based on layout id due to "
                                 "exception: "));
}

TEST_F(ControllerTest, ShowsTheIconThatTheSettingsName) {
    memory_.bundles.mainBundle.setInfoDictionary(Value::dictionary(
        {{"CorvalenKeys", Value::dictionary({{"CorvalenNotificationIcon", "icon"}})}}));
    memory_.bundles.mainBundle.setResource("icon", "png", {});
    memory_.files.write(*memory_.bundles.mainBundle.pathForResource("icon", "png"),
                        "\x89PNG\r\n\x1A\n");
    ASSERT_NE(controller_->getNotificationIcon(), nullptr);
    EXPECT_EQ(controller_->getNotificationIcon()->name(), "icon");
}

TEST_F(ControllerTest, PaintsTheBackgroundAfterEachPass) {
    ui::Window window(*controller_, kWidth, {});
    const Value gradient = Value::array({"1", "FF0000", "00FF00", "90"});
    receive({}, Value::dictionary({{"bgc", "112233"}, {"bggc", gradient}}));
    window.layoutIfNeeded();
    EXPECT_EQ(controller_->view().backgroundColor(),
              ui::DynamicColor(platform::Color::rgba(0x112233FF)));
    EXPECT_THAT(controller_->view().layer().sublayers(), IsEmpty());

    receive({}, Value::dictionary({{"bggc", gradient}}));
    for (int pass = 0; pass < 3; ++pass) {
        controller_->view().setNeedsLayout();
        window.layoutIfNeeded();
        EXPECT_EQ(controller_->view().layer().sublayers().size(), 1U) << pass;
    }
    // Too short an array ends nothing.
    receive({}, Value::dictionary({{"bggc", Value::array({"FF0000"})}}));
    controller_->applyBackgroundColor();
    EXPECT_THAT(controller_->view().layer().sublayers(), IsEmpty());
}

TEST_F(ControllerTest, FollowsTheAppearance) {
    struct Case {
        int version;
        ui::UserInterfaceStyle before, after;
        bool dark;
        const char* message;  // null: nothing changed
    };
    using Style = ui::UserInterfaceStyle;
    const Case cases[] = {
        {17, Style::light, Style::dark, true, "The device is in dark mode."},
        {17, Style::dark, Style::dark, true, nullptr},
        {17, Style::dark, Style::light, false, "The device is in light mode."},
        {12, Style::light, Style::dark, false,
         "The device is in light mode since the device did not support dark mode."},
    };
    ui::Window window(*controller_, kWidth, {});
    for (const Case& each : cases) {
        install(each.version);
        window.setTraitCollection({.userInterfaceStyle = each.before});
        CVNSharedUtility::setIsDarkMode(each.before == Style::dark);
        memory_.logSink.clear();
        window.setTraitCollection({.userInterfaceStyle = each.after});
        EXPECT_EQ(CVNSharedUtility::getIsDarkMode(), each.dark) << each.version;
        if (each.message != nullptr) {
            EXPECT_TRUE(memory_.logSink.contains(each.message)) << each.message;
        } else {
            EXPECT_FALSE(memory_.logSink.contains("mode."));
        }
    }
}

TEST_F(ControllerTest, TapsOpenTheAppButOnACarousel) {
    ui::View& view = controller_->view();
    view.setFrame({0, 0, 300, 200});
    ASSERT_EQ(view.gestureRecognizers().size(), 1U);
    EXPECT_NE(ui::tap(view, {10, 10}), nullptr);
    EXPECT_THAT(context_->takeRequests(), ElementsAre("open"));

    const auto box = std::make_shared<ui::View>();
    box->setFrame({20, 50, 200, 100});
    const auto carousel = std::make_shared<RecordingCarousel>();
    carousel->setFrame({10, 10, 100, 50});
    box->addSubview(carousel);
    view.addSubview(box);
    EXPECT_FALSE(controller_->gestureRecognizerShouldReceiveTouch({30, 60}));
    EXPECT_TRUE(controller_->gestureRecognizerShouldReceiveTouch({29, 60}));
    EXPECT_TRUE(controller_->gestureRecognizerShouldReceiveTouch({130, 60}));
    EXPECT_EQ(ui::tap(view, {30, 60}), nullptr);

    controller_->viewWillDisappear(false);
    EXPECT_THAT(carousel->calls, IsEmpty()) << "no notification was shown";
    show({});
    controller_->viewWillDisappear(false);
    EXPECT_THAT(carousel->calls, ElementsAre("stop"));
}

TEST_F(ControllerTest, DoesWhatComponentsAskFor) {
    struct Case {
        Value data;
        std::vector<std::string> requests;
    };
    const Case cases[] = {{1, {"open"}}, {"2", {"close"}}, {3, {"close"}},
                          {0, {}},       {4, {}},          {Value::array(), {}}};
    deliverToTray("n1", {});
    deliverToTray("n2", {});
    receive({});
    for (const Case& each : cases) {
        controller_->handleCustomPushNotificationInteraction(
            Value::dictionary({{"eventData", each.data}}));
        EXPECT_EQ(context_->takeRequests(), each.requests) << each.data.description();
    }
    EXPECT_THAT(tray(), ElementsAre("n2"));
    controller_->handleCustomPushNotificationInteraction("1");
    controller_->handleActionButtonInteraction({});
    EXPECT_THAT(context_->takeRequests(), ElementsAre("open"));

    // A component's tap finds its way here.
    RecordingCarousel component;
    component.tapNotificationEvent(component);
    EXPECT_THAT(context_->takeRequests(), ElementsAre("open"));
    EXPECT_EQ(component.eventData(), Value::dictionary({{"eventData", 1}}));

    install(11);
    controller_->performPushNotificationTap();
    controller_->performPushNotificationClose();
    EXPECT_THAT(context_->takeRequests(), IsEmpty()) << "the system can't do it yet";
}

TEST_F(ControllerTest, AnswersTheNotificationsButtons) {
    const auto button = [](std::int64_t type, const Value& config) {
        Value made = Value::dictionary({{"actionName", "a"}, {"aTyp", type}});
        made.setIfPresent("config", config);
        return made;
    };
    const Value opens = Value::dictionary({{"oapp", 1}, {"ctxt", "CODE"}});
    const Value copies = Value::dictionary({{"ctxt", "CODE"}});
    const Value all = Value::array({button(1, opens), button(2, opens), button(2, copies),
                                    button(3, {}), button(4, Value::dictionary({{"intl", "9"}}))});
    const Value two = Value::array({button(1, opens), button(2, copies)});
    const auto reply = [](std::int64_t type) {
        return Value::dictionary({{"name", "r"}, {"aTyp", type}});
    };
    struct Case {
        std::int64_t layoutId;
        Value buttons, reply;
        const char* identifier;
        const char* answer;
        std::vector<std::string> effects;
    };
    const Case cases[] = {
        {1, all, {}, "", "2", {}},
        {1, all, {}, "0", "2", {}},
        {1, all, {}, "1", "2", {}},
        {1, all, {}, "2", "0", {"close", "copied"}},
        {1, all, {}, "3", "0", {"close", "removed", "dismissed"}},
        {1, all, {}, "4", "0", {"close", "removed", "snoozed"}},
        {1, all, {}, "UNNotificationDefaultActionIdentifier", "2", {}},  // reads as 0
        {1, two, {}, "1", "0", {"close", "copied"}},
        {1, two, {}, "2", "never", {"raised"}},
        {1, two, {}, "3", "2", {}},
        {1, two, {}, "-1", "2", {}},
        {1, {}, {}, "0", "never", {"raised"}},
        {1, {}, {}, "1", "2", {}},
        {1, two, reply(5), "2", "0 later", {"close", "removed", "clicked", "replied typed"}},
        {1, two, reply(1), "2", "2", {}},
        {1, two, reply(5), "3", "2", {}},
        {1, {}, reply(5), "0", "0 later", {"close", "removed", "clicked", "replied typed"}},
        {500, all, {}, "2", "0", {}},  // a layout that the type may not be shown with
    };
    loadStore();
    setAdapter();
    int number = 0;
    for (const Case& each : cases) {
        Value section = Value::dictionary({{"type", "Simple"}});
        section.setIfPresent("actionButton", each.buttons);
        section.setIfPresent("rbtn", each.reply);
        const std::string trid = "t" + std::to_string(++number);
        auto delivered = notification(section, Value::dictionary({{"lid", each.layoutId}}));
        Value push = delivered.request.content.userInfo;
        section.set("trid", trid);
        push.set("cvnPayload", section);
        delivered.request.content.userInfo = push;
        deliverToTray("n1", push);
        CVNPushEventRecorder::recordNotificationDeliveryEventWithId(12, 3, parsed(push), 2, 0);
        controller_->didReceiveNotification(delivered);
        run();
        coreSDK_->calls.clear();
        context_->takeRequests();
        memory_.logSink.clear();
        memory_.pasteboard.setString("");
        const std::size_t waiting = pending().size();

        EXPECT_EQ(press(each.identifier, delivered), each.answer) << number;
        const std::size_t waitingNow = pending().size();
        run();
        std::vector<std::string> effects = context_->takeRequests();
        if (tray().empty()) effects.emplace_back("removed");
        if (memory_.pasteboard.string() == "CODE") effects.emplace_back("copied");
        if (waitingNow > waiting) effects.emplace_back("snoozed");
        for (const std::string& call : coreSDK_->calls) {
            if (call.starts_with("recordEventWithId 13 3 ")) effects.emplace_back("clicked");
            if (call.starts_with("recordEventWithId 14 3 ")) effects.emplace_back("dismissed");
            if (call.starts_with("recordEventWithName nc_apn_reply_submitted") &&
                call.find(R"("repliedText": "typed")") != std::string::npos)
                effects.emplace_back("replied typed");
        }
        if (memory_.logSink.contains("Could not handle notification response due to exception: "))
            effects.emplace_back("raised");
        EXPECT_THAT(effects, ElementsAreArray(each.effects)) << number;
    }
    auto foreign = notification({}, {});
    foreign.request.content.userInfo = Value::dictionary();
    EXPECT_EQ(press("", foreign), "never");
}

TEST_F(ControllerTest, CarouselsGetTheirButtonsAndStayOpen) {
    for (const auto& [layoutId, type] : {std::pair{71, "CarouselLandscape"},
                                         {91, "CarouselPortrait"},
                                         {72, "CarouselLandscape"}}) {
        registerClass<RecordingCarousel>("CVN" + std::string(type).substr(8) + "CarouselComponent");
        const auto shown = notification(
            Value::dictionary(
                {{"type", type},
                 {"carousel", Value::array({Value::dictionary(), Value::dictionary()})}}),
            Value::dictionary({{"lid", layoutId}}));
        controller_->didReceiveNotification(shown);
        auto* const carousel = dynamic_cast<RecordingCarousel*>(
            controller_->findCarouselComponentInViewHierarchy(controller_->view()));
        ASSERT_NE(carousel, nullptr);
        EXPECT_EQ(press("", shown), "2") << "that is no button";
        if (layoutId != 72) {
            EXPECT_EQ(press("1", shown), "0");
            EXPECT_THAT(carousel->calls, ElementsAre("1"));
        } else {
            EXPECT_EQ(press("1", shown), "2") << "the buttons are the campaign's";
            EXPECT_THAT(carousel->calls, IsEmpty());
        }
    }
}

TEST_F(ControllerTest, TheContentHandlerOnlyRecognises) {
    auto& handler = CVNNotificationContentHandler::sharedInstance();
    const auto view = std::make_shared<ui::View>();
    handler.loadCustomNotificationContentView(view);
    EXPECT_EQ(handler.contentView(), view);
    handler.didReceiveCustomNotification(notification({}, {}));
    EXPECT_TRUE(
        memory_.logSink.contains("(SYSTEM) CVNNotificationContentHandler: CVNLogger(INFO) "
                                 "This notification is from Corvalen"));
    EXPECT_THAT(view->subviews(), IsEmpty());
    std::vector<int> options;
    for (const char* identifier : {"", "0"}) {
        handler.didReceiveCustomNotificationResponse(
            {identifier, {}}, [&](Option option) { options.push_back(static_cast<int>(option)); });
    }
    EXPECT_THAT(options, ElementsAre(2, 0));
}

}  // namespace
}  // namespace tavrolin::tests
